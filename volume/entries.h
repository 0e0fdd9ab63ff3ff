/* One entry of a directory, between its bytes on the medium and a FileInfo. */
#ifndef TARVO_VOLUME_ENTRIES_H
#define TARVO_VOLUME_ENTRIES_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads an entry of md->dir_entry_size bytes into a zeroed info; ret_size receives the bytes that the file takes.
 * Returns 1 read, 0 end of the directory, -1 refused with error 213 (or 203: no such format). */
TARVO_API int32_t get_file_info(MediaDescriptor *md, FileInfo *ret_info, const uint8_t *dir_entry, uint32_t *ret_size);

/* Writes an entry; nothing on formats that aren't written. */
TARVO_API void set_file_info(const MediaDescriptor *md, const FileInfo *info, uint8_t *dir_entry);

/* Fills in what goes with the type: system text, default bytes, record_len where it is 0. */
TARVO_API void add_file_info(uint32_t format, FileInfo *info);

#ifdef __cplusplus
}
#endif

#endif
