// The row of heap calls that a test may replace to make an allocation or the heap itself fail.
#pragma once

#include <cstddef>

#include "platform/platform.h"

struct HeapCalls {
    void *(*allocate)(void *heap, size_t bytes) = platform_heap_allocate;
    void (*release)(void *heap, void *block) = platform_heap_free;
    void *(*create)(size_t initial_bytes) = platform_heap_create;
    void (*destroy)(void *heap) = platform_heap_destroy;
};

extern const HeapCalls *heap_calls; // never null
