// HP 75 TEXT: a head of 28 bytes with "T" in its sixth, then lines: the number as two bytes of BCD, low digits first,
// the length, and the characters. The bytes $99 $A9 end the text. A line may go on in the next block, its head may not.
#include <algorithm>
#include <ctime>

#include "base/convert.h"
#include "base/log.h"
#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
constexpr uint32_t head_bytes = 28;
constexpr uint32_t mark_offset = 5;
constexpr uint8_t text_mark = 'T';
constexpr uint16_t end_word = 0x99A9;
constexpr uint32_t line_head_bytes = 3;

// ---- out -----------------------------------------------------------------------------------------------

// The characters of a line as far as the block has them. Where what follows begins.
uint32_t take_characters(OutwardState *state, const Block &block, uint32_t index)
{
    const uint32_t count = block.within(index, state->pending);
    put_bytes(state->sink, block.at(index), count);
    state->pending -= count;
    if (state->pending == 0) put_line_end(state->sink);
    return index + count;
}

ContentStep take_lines(OutwardState *state, const Block &block, uint32_t index)
{
    if (state->pending != 0) index = take_characters(state, block, index);
    while (index + line_head_bytes < block.length) {
        if (block.big_word(index) == end_word) return ContentStep::end;
        put_format(state->sink, "%4d ", bcd2dec(block[index]) + bcd2dec(block[index + 1]) * 100);
        state->pending = block[index + 2];
        index = take_characters(state, block, index + line_head_bytes);
    }
    return ContentStep::more;
}

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    if (!state->first_block) return take_lines(state, block, 0);
    if (block[mark_offset] == text_mark) return take_lines(state, block, head_bytes);
    log_file(0, "Not a valid HP 75 TEXT file\n");
    return ContentStep::foreign;
}

// ---- in ------------------------------------------------------------------------------------------------
// state->written counts the bytes of the whole file.

constexpr uint32_t block_bytes = 256;
constexpr uint32_t longest_line = 96;
constexpr uint64_t largest_number = UINT32_MAX; // far beyond what two bytes hold
constexpr uint8_t end_bytes[] = {0x99, 0xA9, 0x02, 0x8A, 0x0E};
constexpr uint32_t seconds_1900_to_1970 = 2208988800;
constexpr uint32_t new_head_bytes = 18;
constexpr uint32_t name_offset = 10;
constexpr uint8_t head_mark = 0xBE;

void put_counted(InwardState *state, const uint8_t *bytes, uint32_t count)
{
    put_bytes(state->sink, bytes, count);
    state->written += count;
}

void begin(InwardState *state)
{
    put_repeated(state->sink, 0, head_bytes);
    state->written = head_bytes;
}

bool is_digit(char character)
{
    return character >= '0' && character <= '9';
}

void put_line(InwardState *state, char *text, uint32_t length)
{
    const char *end = text + length;
    const char *at =
        std::find_if(static_cast<const char *>(text), end, [](char character) { return character != ' '; });
    if (end - at > longest_line) {
        cut_line(state);
        end = at + longest_line;
    }
    uint64_t number = 0;
    for (; at != end && is_digit(*at); at++) {
        number = std::min(number * 10 + static_cast<uint64_t>(*at - '0'), largest_number);
    }
    if (at != end) at++;
    const auto rest = static_cast<uint32_t>(end - at);
    const uint8_t head[line_head_bytes] = {dec2bcd(static_cast<uint8_t>(number % 100)),
                                           dec2bcd(static_cast<uint8_t>(number / 100)), static_cast<uint8_t>(rest)};
    put_counted(state, head, line_head_bytes);
    put_counted(state, reinterpret_cast<const uint8_t *>(at), rest);
}

// A text that fills its last block gets one more.
void end(InwardState *state)
{
    put_counted(state, end_bytes, sizeof end_bytes);
    put_repeated(state->sink, 0, block_bytes - state->written % block_bytes);
}

// Seconds of a local time since 1900, their low 32 bits; those of 1970 for a date that is none.
uint32_t seconds_since_1900(const TimeRecord &date)
{
    std::tm parts = {};
    parts.tm_sec = date.tm_sec;
    parts.tm_min = date.tm_min;
    parts.tm_hour = date.tm_hour;
    parts.tm_mday = date.tm_mday;
    parts.tm_mon = date.tm_mon;
    parts.tm_year = date.tm_year;
    parts.tm_isdst = date.tm_isdst;
    const std::time_t seconds = std::mktime(&parts);
    return seconds_1900_to_1970 + (seconds == -1 ? 0 : static_cast<uint32_t>(seconds));
}

void set_little(uint8_t *target, uint32_t value, uint32_t bytes)
{
    for (uint32_t index = 0; index < bytes; index++) target[index] = static_cast<uint8_t>(value >> (8 * index));
}

uint32_t make_head(const InwardState *state, uint8_t *ret_head)
{
    std::fill_n(ret_head, new_head_bytes, uint8_t{0});
    set_little(ret_head + 2, state->written - new_head_bytes, 2);
    ret_head[4] = head_mark;
    ret_head[mark_offset] = text_mark;
    set_little(ret_head + 6, seconds_since_1900(state->info->date), 4);
    std::fill_n(ret_head + name_offset, new_head_bytes - name_offset, uint8_t{' '});
    const char *name = state->info->name;
    for (uint32_t at = name_offset; at < new_head_bytes && *name != ' ' && *name != '\0'; at++) {
        ret_head[at] = static_cast<uint8_t>(*name++);
    }
    return new_head_bytes;
}

constexpr ServedType served[] = {{FORMAT_LIF, 0xFFFF, 0xE052}};
}

const ContentConverter hp75_text = {
    .kind = 7,
    .name = "HP 75 TEXT",
    .serves = served,
    .outward = to_text,
    .begin = begin,
    .line = put_line,
    .end = end,
    .head = make_head,
};
