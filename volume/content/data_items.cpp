// Typed DATA: items of an even number of bytes. The low six bits of an item's second byte say what it is; a byte that
// is the first digits of a short real is none of these codes. Onto a medium every line goes as a string.
#include "base/convert.h"
#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
enum ItemCode : uint8_t {
    code_integer = 10,
    code_middle_piece = 12,
    code_real = 26,
    code_first_piece = 28,
    code_pad = 30,
    code_last_piece = 44,
    code_string = 60,
    code_end = 62
};
constexpr uint8_t code_mask = 0x3E;
constexpr uint8_t pad_byte = 13;
constexpr uint8_t character_mask = 127;

constexpr uint32_t block_bytes = 256;
constexpr uint32_t string_head_bytes = 4; // the item's word and the length
constexpr uint32_t integer_bytes = 4;
constexpr uint32_t real_bytes = 8;
constexpr uint32_t short_real_bytes = 4;
constexpr uint32_t word_bytes = 2;

// ---- out -----------------------------------------------------------------------------------------------

// What is left of the block belongs to a string that goes on in the next one.
uint32_t take_open_string(Sink *sink, const Block &block, uint32_t index)
{
    for (index += string_head_bytes; index < block.length; index++) {
        const uint8_t character = block[index] & character_mask;
        put_byte(sink, hp2win(character));
    }
    return block.length;
}

uint32_t take_string_end(Sink *sink, const Block &block, uint32_t index)
{
    const uint32_t length = block.big_word(index + 2);
    index += string_head_bytes;
    const uint32_t end = index + block.within(index, length);
    for (uint32_t at = index; at < end; at++) {
        const uint8_t character = block[at] & character_mask;
        if (character > 31) put_byte(sink, hp2win(character));
    }
    put_line_end(sink);
    return index + length + (length & 1);
}

uint32_t take_integer(Sink *sink, const Block &block, uint32_t index)
{
    put_format(sink, "%d", static_cast<int16_t>(block.big_word(index + 2)));
    put_byte(sink, '\n'); // Kept: a line feed alone behind integers.  [KeepsLineFeedAloneBehindIntegers]
    return index + integer_bytes;
}

uint32_t take_real(Sink *sink, const Block &block, uint32_t index)
{
    auto digits = [&block, index](uint32_t at) { return static_cast<unsigned>(block[index + at]); };
    int exponent = block[index] * 4 + (block[index + 1] >> 6);
    if (exponent > 511) exponent -= 1024;
    if ((block[index + 1] & 1) != 0) put_byte(sink, '-');
    put_format(sink, "%01X.%01X%02X", digits(2) >> 4, digits(2) & 15, digits(3));
    put_format(sink, "%02X%02X%02X%02X", digits(4), digits(5), digits(6), digits(7));
    if (exponent != 0) put_format(sink, "E%+04d", exponent);
    put_line_end(sink);
    return index + real_bytes;
}

bool is_short_real(const Block &block, uint32_t index)
{
    return high_nibble(block[index + 1]) <= 9 && low_nibble(block[index + 1]) <= 9;
}

uint32_t take_short_real(Sink *sink, const Block &block, uint32_t index)
{
    auto digits = [&block, index](uint32_t at) { return static_cast<unsigned>(block[index + at]); };
    const int exponent = (block[index] & code_mask) >> 1;
    if ((block[index] & 1) != 0) put_byte(sink, '-');
    put_format(sink, "%01X.%01X%02X%02X", digits(1) >> 4, digits(1) & 15, digits(2), digits(3));
    if (exponent != 0) put_format(sink, "E%+03d", exponent);
    put_line_end(sink);
    return index + short_real_bytes;
}

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    Sink *sink = state->sink;
    uint32_t index = 0;
    while (index + 1 < length) {
        if (block[index] == pad_byte) {
            index++;
            continue;
        }
        switch (block[index + 1] & code_mask) {
        case code_integer: index = take_integer(sink, block, index); break;
        case code_middle_piece:
        case code_first_piece: index = take_open_string(sink, block, index); break;
        case code_real: index = take_real(sink, block, index); break;
        case code_pad: index += word_bytes; break;
        case code_last_piece:
        case code_string: index = take_string_end(sink, block, index); break;
        case code_end: return ContentStep::end;
        default:
            if (!is_short_real(block, index)) return ContentStep::rejected;
            index = take_short_real(sink, block, index);
        }
    }
    return ContentStep::more;
}

// ---- in ------------------------------------------------------------------------------------------------
// state->written counts the bytes of the present block.

void begin(InwardState *state)
{
    state->written = 0;
}

uint32_t free_bytes(const InwardState *state)
{
    return block_bytes - state->written;
}

void put_item(InwardState *state, ItemCode code, uint32_t length, const char *text, uint32_t count)
{
    put_byte(state->sink, 0);
    put_byte(state->sink, code);
    put_word(state->sink, static_cast<uint16_t>(length));
    put_as_hp(state->sink, text, count);
    state->written = (state->written + string_head_bytes + count) % block_bytes;
}

// An item ends at an even place, and leaves no room in which another one could not begin.
void finish_item(InwardState *state)
{
    if (state->written % 2 != 0) {
        put_byte(state->sink, pad_byte);
        state->written++;
    }
    if (free_bytes(state) > string_head_bytes) return;
    for (; state->written < block_bytes; state->written += word_bytes) put_word(state->sink, code_pad);
    state->written = 0;
}

void put_line(InwardState *state, char *text, uint32_t length)
{
    if (length + string_head_bytes <= free_bytes(state)) {
        put_item(state, code_string, length, text, length);
        if (state->written != 0) finish_item(state);
        return;
    }
    ItemCode code = code_first_piece;
    while (length + string_head_bytes > free_bytes(state)) {
        const uint32_t count = free_bytes(state) - string_head_bytes;
        put_item(state, code, length, text, count);
        text += count;
        length -= count;
        code = code_middle_piece;
    }
    put_item(state, code_last_piece, length, text, length);
    if (state->written != 0) finish_item(state);
}

void end(InwardState *state)
{
    put_word(state->sink, code_end);
}

constexpr ServedType served[] = {
    {FORMAT_DISK45, 0x7F00, 36 << 8},
    {FORMAT_TAPE45, 0x007F, 36},
    {FORMAT_LIF, 0xFFFF, 0xE848},
};
}

const ContentConverter data_items = {
    .kind = 1,
    .name = "typed DATA",
    .serves = served,
    .outward = to_text,
    .begin = begin,
    .line = put_line,
    .end = end,
};
