// A piece of the private heap for the time of a transfer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/error.h"
#include "base/memory.h"

constexpr uint32_t transfer_bytes = 128 * 1024; // moved at once between a medium and the host

class Scratch
{
  public:
    explicit Scratch(size_t size) : bytes_(static_cast<uint8_t *>(my_malloc(size)))
    {
        if (bytes_ == nullptr) set_error(105, "");
    }
    ~Scratch()
    {
        my_free(bytes_);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    explicit operator bool() const
    {
        return bytes_ != nullptr;
    }
    uint8_t *bytes() const
    {
        return bytes_;
    }

  private:
    uint8_t *bytes_;
};
