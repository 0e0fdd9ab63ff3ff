/* Lays a new, empty volume onto a medium. */
#ifndef TARVO_VOLUME_INITIALIZE_H
#define TARVO_VOLUME_INITIALIZE_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { HP9825_BOOT_SIZE = 30720 }; /* bytes, 120 records */

/* Program code of a 9825 that goes onto its volumes; zero unless somebody fills it. */
extern TARVO_API uint8_t hp9825_boot[HP9825_BOOT_SIZE];

/* Makes a medium blank: an image file gets zero records over all of md->size. Returns 0; -1 with error 103, or 202 for
 * a medium that knows no such thing. A failed write of an image file isn't looked at. */
TARVO_API int32_t image_format(MediaDescriptor *md);

/* Lays a new volume onto a medium that was opened without reading its volume. md holds what the format needs: format,
 * magic, geometry, places and sizes of the tables, label, date; on a tape they are filled in here.
 *   quickformat  not 0: header and tables only
 *   progress     may be null; called after each record of the file area as in image_extract_file; not 0 makes it the
 *                last one
 * Returns 0 or more, or -1. Errors set: 103, 105, 203 for a format that can't be laid out, those of a failed write. */
TARVO_API int32_t image_initialize(MediaDescriptor *md, int32_t quickformat, ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
