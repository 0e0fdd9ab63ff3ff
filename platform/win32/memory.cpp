// The private heap is the system's.
#include "platform/platform.h"
#include "platform/win32/inner.h"

void *platform_heap_create(size_t initial_bytes)
{
    return HeapCreate(0, initial_bytes, 0); // grows without a limit
}

void *platform_heap_allocate(void *heap, size_t bytes)
{
    return HeapAlloc(heap, HEAP_ZERO_MEMORY, bytes);
}

void platform_heap_free(void *heap, void *block)
{
    HeapFree(heap, 0, block);
}

void platform_heap_destroy(void *heap)
{
    HeapDestroy(heap);
}
