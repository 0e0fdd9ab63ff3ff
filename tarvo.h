/* The whole public interface of the engine library. */
#ifndef TARVO_H
#define TARVO_H

#include "base/api.h"
#include "base/convert.h"
#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "base/memory.h"
#include "base/timing.h"
#include "base/wide.h"
#include "config/config_file.h"
#include "plugin/plugin.h"
#include "volume/allocation.h"
#include "volume/catalogue.h"
#include "volume/copy.h"
#include "volume/entries.h"
#include "volume/extract.h"
#include "volume/filetypes.h"
#include "volume/initialize.h"
#include "volume/insert.h"
#include "volume/media.h"
#include "volume/media_table.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/open.h"
#include "volume/operations.h"
#include "volume/repair.h"
#include "volume/table.h"
#include "volume/target.h"

#endif
