// The verb that joins the free space of a System 45 disk: pack.
#pragma once

#include "console/verbs.h"

int run_pack(const Arguments &arguments);
