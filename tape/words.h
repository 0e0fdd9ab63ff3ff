// The words of a magtape container: what one is, and how it stands in the file.
#pragma once

#include <cstdint>

constexpr uint32_t word_bytes = 4;
constexpr uint32_t half_gap_bytes = 2;

constexpr uint32_t mark_word = 0;
constexpr uint32_t end_word = 0xFFFFFFFF;
constexpr uint32_t gap_word = 0xFFFFFFFE;
constexpr uint32_t half_gap_word = 0xFFFEFFFF; // a half gap and the first half of the gap word behind it

constexpr uint32_t largest_record = 0xFFFFFF;
constexpr uint32_t slot_length_junk = 0x7F000000; // bits that no length in a slot has; its highest bit isn't looked at

enum class TapeWord : uint8_t { tape_mark, gap, half_gap, end_of_medium, record, bad };

constexpr TapeWord classify(uint32_t word)
{
    if (word == gap_word) return TapeWord::gap;
    if (word == mark_word) return TapeWord::tape_mark;
    if (word == half_gap_word) return TapeWord::half_gap;
    if (word == end_word) return TapeWord::end_of_medium;
    return word <= largest_record ? TapeWord::record : TapeWord::bad;
}

// Going back, the half gap is the high half of a word whose low half is the end of what stands in front: that of a
// length, or of a tape mark.
constexpr TapeWord classify_reverse(uint32_t word)
{
    if ((word & 0xFFFF7F00) == 0xFFFF0000) return TapeWord::half_gap;
    return word == half_gap_word ? TapeWord::bad : classify(word);
}

constexpr uint32_t word_at(const uint8_t *bytes)
{
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

constexpr void store_word(uint8_t *bytes, uint32_t word)
{
    for (uint32_t i = 0; i < word_bytes; i++) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}

// Bytes of a record's data in the file, the zero byte behind an odd number included.
constexpr uint64_t padded(uint64_t length)
{
    return length + (length & 1);
}
