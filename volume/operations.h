/* Operations on files of an open medium. The tables in memory change; the
 * caller writes them to the medium. */
#ifndef TARVO_VOLUME_OPERATIONS_H
#define TARVO_VOLUME_OPERATIONS_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes an entry out of its list and releases it, or only marks it as purged;
 * its records become free on volumes with an allocation table. Returns 0. */
TARVO_API int32_t image_delete_file(MediaDescriptor *md, FileInfo *info, int32_t mark_only);

/* Copies a file to another medium or under another name. Returns -1 with error
 * 109: copying isn't supported yet. */
TARVO_API int32_t image_copy_file(MediaDescriptor *md, FileInfo *from_file, MediaDescriptor *dest_md,
                                  const char *to_file, int32_t overwrite);

#ifdef __cplusplus
}
#endif

#endif
