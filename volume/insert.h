/* Files of the host into files of an open medium. */
#ifndef TARVO_VOLUME_INSERT_H
#define TARVO_VOLUME_INSERT_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { /* flags of image_add_file */
       INSERT_OVERWRITE = 1,
       INSERT_CONVERT = 2,
       INSERT_FORCE = 4,
       INSERT_TXT = 8
};

/* Copies a file of the host to the medium. Returns -1 with error 109: copying
 * isn't supported yet. */
TARVO_API int32_t image_add_file(MediaDescriptor *md, FileInfo *new_file, const char *filename, uint16_t flags,
                                 ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
