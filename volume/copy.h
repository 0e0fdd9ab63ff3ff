/* Records from one open medium to another. */
#ifndef TARVO_VOLUME_COPY_H
#define TARVO_VOLUME_COPY_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Copies a run of 256-byte records.
 *   from_start, to_start, count  records
 *   do_stream                    drives move an unbroken run of bytes; no meaning for image files
 *   break_on_error               not 0: the first failed read ends the copy; otherwise such a record becomes zeros
 *   progress                     may be null; called after each record with the bytes done, the record's index and the
 *                                percentage; not 0 makes this record the last
 * Returns 0, or -1 with the error of a failed read or write. Errors set: 103 null pointers, 105. */
TARVO_API int32_t image_blockcopy(MediaDescriptor *from_md, uint32_t from_start, MediaDescriptor *to_md,
                                  uint32_t to_start, uint32_t count, int32_t do_stream, int32_t break_on_error,
                                  ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
