// BDAT: strings, each a mark and a little-endian length, and numbers of eight bytes with the last byte first: reals of
// twelve decimal digits, and integers of five, which have $FF in their fifth byte.
#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
constexpr uint32_t number_bytes = 8;
constexpr uint32_t string_head_bytes = 3;
constexpr uint8_t integer_mark = 0xFF;
constexpr char digits[] = "0123456789ABCDEF"; // of a damaged number they go beyond 9

enum class Item : uint8_t { end_of_block, line, piece, number };

Item classify(uint8_t mark)
{
    switch (mark) {
    case 0xEF:
    case 0xFF: return Item::end_of_block;
    case 0xDF:
    case 0x6F: return Item::line;
    case 0xCF:
    case 0x7F: return Item::piece;
    default: return Item::number;
    }
}

uint32_t take_string(Sink *sink, const Block &block, uint32_t index, bool ends_line)
{
    const uint32_t length = block.little_word(index + 1);
    index += string_head_bytes;
    const uint32_t taken = block.within(index, length);
    put_as_host(sink, block.at(index), taken);
    if (ends_line && taken == length) put_line_end(sink);
    return index + taken;
}

void put_integer(Sink *sink, const Block &block, uint32_t index)
{
    if (high_nibble(block[index + 7]) != 0) put_byte(sink, '-');
    int32_t value = low_nibble(block[index + 7]);
    for (uint32_t at : {index + 6, index + 5}) {
        value = value * 100 + high_nibble(block[at]) * 10 + low_nibble(block[at]);
    }
    put_format(sink, "%d", value);
}

void put_exponent(Sink *sink, uint8_t hundreds, uint8_t byte)
{
    if (hundreds < 5) {
        // Kept: the nibbles of the exponent change places here and not below.  [KeepsNibblesOfPositiveExponentSwapped]
        for (uint8_t digit : {hundreds, low_nibble(byte), high_nibble(byte)}) {
            put_byte(sink, static_cast<uint8_t>(digits[digit]));
        }
        return;
    }
    put_format(sink, "%+04d", hundreds * 100 + high_nibble(byte) * 10 + low_nibble(byte) - 1000);
}

void put_real(Sink *sink, const Block &block, uint32_t index)
{
    if (low_nibble(block[index + 1]) != 0) put_byte(sink, '-');
    for (uint32_t at = index + 7; at >= index + 2; at--) {
        put_byte(sink, static_cast<uint8_t>(digits[high_nibble(block[at])]));
        if (at == index + 7) put_byte(sink, '.');
        put_byte(sink, static_cast<uint8_t>(digits[low_nibble(block[at])]));
    }
    put_byte(sink, 'E');
    put_exponent(sink, high_nibble(block[index + 1]), block[index]);
}

uint32_t take_number(Sink *sink, const Block &block, uint32_t index)
{
    if (block[index + 4] == integer_mark) {
        put_integer(sink, block, index);
    } else {
        put_real(sink, block, index);
    }
    put_line_end(sink);
    return index + number_bytes;
}

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    uint32_t index = 0;
    while (index + 1 < length) {
        const Item item = classify(block[index]);
        if (item == Item::end_of_block) break;
        index = item == Item::number ? take_number(state->sink, block, index)
                                     : take_string(state->sink, block, index, item == Item::line);
    }
    return ContentStep::more;
}

constexpr ServedType served[] = {{FORMAT_LIF, 0xFFFF, 0xE010}};
}

const ContentConverter bdat_items = {.kind = 6, .name = "BDAT", .serves = served, .outward = to_text};
