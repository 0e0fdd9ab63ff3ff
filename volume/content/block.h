// A block of at most 256 bytes as the conversions look at it: what lies behind its end reads as zero.
#pragma once

#include <algorithm>
#include <cstdint>

struct Block {
    const uint8_t *bytes;
    uint32_t length;

    uint8_t operator[](uint32_t index) const
    {
        return index < length ? bytes[index] : uint8_t{0};
    }
    uint16_t big_word(uint32_t index) const
    {
        return static_cast<uint16_t>((*this)[index] << 8 | (*this)[index + 1]);
    }
    uint16_t little_word(uint32_t index) const
    {
        return static_cast<uint16_t>((*this)[index + 1] << 8 | (*this)[index]);
    }
    const uint8_t *at(uint32_t index) const
    {
        return bytes + std::min(index, length);
    }
    // How many of `count` bytes from index on are in the block.
    uint32_t within(uint32_t index, uint32_t count) const
    {
        return index < length ? std::min(count, length - index) : 0;
    }
};

constexpr uint8_t high_nibble(uint8_t byte)
{
    return byte >> 4;
}
constexpr uint8_t low_nibble(uint8_t byte)
{
    return byte & 15;
}
