/* Files of an open medium into files of the host. */
#ifndef TARVO_VOLUME_EXTRACT_H
#define TARVO_VOLUME_EXTRACT_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { /* flags of image_extract_file */
       EXTRACT_OVERWRITE = 1,
       EXTRACT_CONVERT = 2,
       EXTRACT_FORCE = 4,
       EXTRACT_TXT = 8
};

/* Copies a file to the host. Returns -1 with error 109: copying isn't supported
 * yet. */
TARVO_API int32_t image_extract_file(MediaDescriptor *md, const FileInfo *info, const char *destination,
                                     const char *filename, char *ret_filename, uint16_t flags,
                                     ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
