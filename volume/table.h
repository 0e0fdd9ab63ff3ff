/* The file table of a volume, between the medium and the list in memory. */
#ifndef TARVO_VOLUME_TABLE_H
#define TARVO_VOLUME_TABLE_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { MAX_DIRECTORY_LEVEL = 999 };

/* Reads a directory into a list.
 *   path        not empty: only tests for that directory, nothing is listed; may be null
 *   directory   null for the top level, whose list becomes md->root
 *   level       of the entries; 0 and 1 are the top
 *   use_spare   not 0: from the spare directory, where a format reads one
 *   do_sort     list sorted by location; do_check, do_repair: -1, or silence, at a corrupt entry
 *   recursive   read sub-directories too
 * Returns 0; -1 with error 105, 213, 217 or that of a failed read, md holding what was read. */
TARVO_API int32_t get_file_table(MediaDescriptor *md, const char *path, FileInfo *directory, int32_t level,
                                 int32_t use_spare, int32_t do_sort, int32_t do_check, int32_t do_repair,
                                 int32_t recursive);

/* Writes the list of the top level over the directory, records in ascending order.
 * Returns 0; -1 with error 216 (more entries than slots) or 213 (the directory stands where it can't be), nothing
 * written; -1 with the error of a failed write. */
TARVO_API int32_t update_file_table(MediaDescriptor *md, int32_t use_spare);

#ifdef __cplusplus
}
#endif

#endif
