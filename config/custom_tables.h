/* The tables that a configuration file fills: the built-in ones, changed and lengthened. */
#ifndef TARVO_CONFIG_CUSTOM_TABLES_H
#define TARVO_CONFIG_CUSTOM_TABLES_H

#include "base/api.h"
#include "gpib/drives/drive_table.h"
#include "volume/filetypes.h"
#include "volume/media_table.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { MOST_CUSTOM_MEDIA = 256, MOST_CUSTOM_DRIVES = 256, MOST_CUSTOM_LIFTYPES = 1024 };

/* Each has one row more than may be filled, which ends it. */
extern TARVO_API MediaTableRow custom_media_table[MOST_CUSTOM_MEDIA + 1];
extern TARVO_API GpibDriveInfo custom_drive_table[MOST_CUSTOM_DRIVES + 1];
extern TARVO_API LifType custom_liftype_table[MOST_CUSTOM_LIFTYPES + 1];

#ifdef __cplusplus
}
#endif

#endif
