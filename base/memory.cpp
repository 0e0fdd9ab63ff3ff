// The private heap.
#include "base/memory.h"

#include "base/file.h"
#include "base/memory_inner.h"

namespace
{
constexpr HeapCalls system_heap_calls;
}

constinit void *heap = nullptr;
constinit const HeapCalls *heap_calls = &system_heap_calls;

int32_t memory_prepare(uint32_t size)
{
    if (heap != nullptr) return 1;
    heap = heap_calls->create(size);
    if (heap != nullptr) return 1;
    file_printf(Stderr, "Unable to allocate memory heap\n");
    return 0;
}

int32_t memory_release(void)
{
    if (heap != nullptr) heap_calls->destroy(heap);
    heap = nullptr;
    return 1;
}

void *my_malloc(size_t size)
{
    return heap != nullptr ? heap_calls->allocate(heap, size) : nullptr;
}

void my_free(void *block)
{
    if (heap != nullptr && block != nullptr) heap_calls->release(heap, block);
}
