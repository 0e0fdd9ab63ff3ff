/* The private heap, from which all records of the engine come. */
#ifndef TARVO_BASE_MEMORY_H
#define TARVO_BASE_MEMORY_H

#include <stddef.h>
#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

extern TARVO_API void *heap; /* null: none */

/* Makes the heap, of size bytes at first; it can grow. Returns 1, or 0 with a line on standard error. */
TARVO_API int32_t memory_prepare(uint32_t size);
/* Destroys the heap with all that is left in it. Returns 1. */
TARVO_API int32_t memory_release(void);
/* A zero-filled block of size bytes, to be given back with my_free; null when there is none to be had or no heap. */
TARVO_API void *my_malloc(size_t size);
/* Gives a block back; null, or no heap, is ignored. */
TARVO_API void my_free(void *block);

#ifdef __cplusplus
}
#endif

#endif
