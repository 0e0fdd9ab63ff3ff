// Memory for the time of one operation.
#pragma once

#include <cstdint>
#include <memory>

#include "base/memory.h"

struct TapeBuffer {
    using Release = void (*)(void *);
    std::unique_ptr<void, Release> block; // null: there was none to be had

    explicit TapeBuffer(uint64_t bytes) : block(my_malloc(bytes), my_free) {}

    uint8_t *bytes() const
    {
        return static_cast<uint8_t *>(block.get());
    }
};
