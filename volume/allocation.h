/* Free space of a volume: the free list of a System 45 disk, and the room behind the last file elsewhere. */
#ifndef TARVO_VOLUME_ALLOCATION_H
#define TARVO_VOLUME_ALLOCATION_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads the availability table into md->alloc_list; 0 at once on formats without one.
 * Returns 0; -1 with error 105 or that of a failed read, md holding what was read. */
TARVO_API int32_t get_alloc_table(MediaDescriptor *md, int32_t use_spare);

/* Writes md->alloc_list over the availability table. Returns 0; -1 with error 213 (the table stands where it can't be),
 * nothing written; -1 with the error of a failed write. */
TARVO_API int32_t update_alloc_table(MediaDescriptor *md, int32_t use_spare);

/* Finds room for a file of size records. Returns its first record, 0 for no space. Errors set: 105, with 0. */
TARVO_API uint16_t image_allocate(MediaDescriptor *md, uint32_t size);

/* Gives records back to the free list; nothing on formats without one. Errors set: 105, the range is then lost. */
TARVO_API void image_free_allocation(MediaDescriptor *md, uint32_t location, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
