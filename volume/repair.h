/* Checks of a volume, and the joining of its free space. */
#ifndef TARVO_VOLUME_REPAIR_H
#define TARVO_VOLUME_REPAIR_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Opens a volume with the checks of its tables on, and closes it. repair not 0: corrupt entries are passed over.
 * Returns 0, or -1 with the error of image_open. */
TARVO_API int32_t image_check(const char *target, int32_t repair);

/* Moves the files of a System 45 disk together, so that its free space is one run. Works in place: a failure between
 * the first moved file and the written tables loses files. Returns 0, or -1 with the error set: 203 for a volume
 * without a free list, 211, 215 for a directory that can't be read whole, 300, 302, 306, those of extraction and of
 * writing. */
TARVO_API int32_t image_defrag(const char *target);

#ifdef __cplusplus
}
#endif

#endif
