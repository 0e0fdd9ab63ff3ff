// Every kind of content turned into text a second time, as slowly and plainly as can be: one byte after the other,
// with a look-up that gives zero behind the block's end.
#include <cstdarg>
#include <cstdio>

#include "base/convert.h"
#include "tests/volume/content/outward_support.h"

namespace tests
{

namespace
{

// The bytes of a block, zero behind its end.
struct Reader {
    const Bytes &block;

    uint32_t at(size_t position) const
    {
        return position < block.size() ? block[position] : 0;
    }
    uint32_t high(size_t position) const
    {
        return at(position) >> 4;
    }
    uint32_t low(size_t position) const
    {
        return at(position) & 15;
    }
    uint32_t big_word(size_t position) const
    {
        return at(position) * 256 + at(position + 1);
    }
    uint32_t little_word(size_t position) const
    {
        return at(position) + at(position + 1) * 256;
    }
};

constexpr const char *line_end = "\r\n";

__attribute__((format(printf, 2, 3))) void print(std::string *text, const char *format, ...)
{
    char piece[64];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    text->append(piece);
}

char host_character(uint32_t byte)
{
    return static_cast<char>(hp2win(static_cast<uint8_t>(byte)));
}

void print_digits(std::string *text, const Reader &block, size_t position)
{
    print(text, "%X%X", block.high(position), block.low(position));
}

// ---- kind 1

void long_real(const Reader &block, size_t i, std::string *text)
{
    int exponent = static_cast<int>(block.at(i) * 4 + (block.at(i + 1) >> 6));
    if (exponent > 511) exponent -= 1024;
    if ((block.at(i + 1) & 1) != 0) text->push_back('-');
    print(text, "%01X.%01X%02X", block.high(i + 2), block.low(i + 2), block.at(i + 3));
    print(text, "%02X%02X", block.at(i + 4), block.at(i + 5));
    print(text, "%02X%02X", block.at(i + 6), block.at(i + 7));
    if (exponent != 0) print(text, "E%+04d", exponent);
    text->append(line_end);
}

bool short_real(const Reader &block, size_t i, std::string *text)
{
    if (block.high(i + 1) > 9 || block.low(i + 1) > 9) return false;
    const int exponent = static_cast<int>((block.at(i) & 0x3E) >> 1);
    if ((block.at(i) & 1) != 0) text->push_back('-');
    print(text, "%01X.%01X%02X%02X", block.high(i + 1), block.low(i + 1), block.at(i + 2), block.at(i + 3));
    if (exponent != 0) print(text, "E%+03d", exponent);
    text->append(line_end);
    return true;
}

size_t last_piece(const Reader &block, size_t i, std::string *text)
{
    const size_t count = block.big_word(i + 2);
    i += 4;
    for (size_t done = 0; done < count; ++done, ++i) {
        const uint32_t character = block.at(i) & 127;
        if (character > 31) text->push_back(host_character(character));
    }
    text->append(line_end);
    return i + count % 2;
}

size_t piece(const Reader &block, size_t i, std::string *text)
{
    for (i += 4; i < block.block.size(); ++i) text->push_back(host_character(block.at(i) & 127));
    return i;
}

ContentStep data_items_block(LiteralState *, const Reader &block, std::string *text)
{
    size_t i = 0;
    while (i + 1 < block.block.size()) {
        if (block.at(i) == 13) {
            i += 1;
            continue;
        }
        const uint32_t code = block.at(i + 1) & 0x3E;
        if (code == 62) return ContentStep::end;
        if (code == 10) {
            print(text, "%d\n", static_cast<int16_t>(block.big_word(i + 2)));
            i += 4;
        } else if (code == 12 || code == 28) {
            i = piece(block, i, text);
        } else if (code == 26) {
            long_real(block, i, text);
            i += 8;
        } else if (code == 30) {
            i += 2;
        } else if (code == 44 || code == 60) {
            i = last_piece(block, i, text);
        } else {
            if (!short_real(block, i, text)) return ContentStep::rejected;
            i += 4;
        }
    }
    return ContentStep::more;
}

// ---- kind 3

ContentStep ascii_block(LiteralState *state, const Reader &block, std::string *text)
{
    size_t i = 0;
    while (i + 1 < block.block.size()) {
        if (state->count == 0) {
            state->count = block.big_word(i);
            if (state->count == 0xFFFF) return ContentStep::end;
            i += 2;
        }
        while (state->count != 0 && i < block.block.size()) {
            text->push_back(host_character(block.at(i)));
            i += 1;
            state->count -= 1;
            if (state->count == 0) text->append(line_end);
        }
        if (i % 2 != 0) i += 1;
    }
    return ContentStep::more;
}

// ---- kind 4

ContentStep pascal_block(LiteralState *state, const Reader &block, std::string *text)
{
    for (size_t i = 0; i < block.block.size(); ++i) {
        const uint32_t byte = block.at(i);
        if (byte == 13) {
            text->append(line_end);
            state->flag = true;
        } else if (byte == 16) {
            i += 1;
            for (uint32_t blank = 32; blank < block.at(i); ++blank) text->push_back(' ');
        } else if (byte != 0) {
            text->push_back(static_cast<char>(byte));
            state->flag = false;
        } else if (!state->flag) {
            text->push_back('\0');
        }
    }
    return ContentStep::more;
}

// ---- kind 5

ContentStep sdf_block(LiteralState *, const Reader &block, std::string *text)
{
    size_t i = 0;
    while (i + 1 < block.block.size()) {
        uint32_t count = block.at(i + 2) * 65536 + block.big_word(i + 3);
        i += 5;
        while (count != 0 && i < block.block.size()) {
            if (block.at(i) < 128) text->push_back(static_cast<char>(block.at(i)));
            i += 1;
            count -= 1;
            if (count == 0) text->append(line_end);
        }
    }
    return ContentStep::more;
}

// ---- kind 6

size_t bdat_string(const Reader &block, size_t i, bool ends_line, std::string *text)
{
    uint32_t count = block.little_word(i + 1);
    i += 3;
    while (count != 0 && i < block.block.size()) {
        text->push_back(host_character(block.at(i)));
        i += 1;
        count -= 1;
    }
    if (count == 0 && ends_line) text->append(line_end);
    return i;
}

void bdat_integer(const Reader &block, size_t i, std::string *text)
{
    if (block.high(i + 7) != 0) text->push_back('-');
    const uint32_t value = block.low(i + 7) * 10000 + block.high(i + 6) * 1000 + block.low(i + 6) * 100 +
                           block.high(i + 5) * 10 + block.low(i + 5);
    print(text, "%d%s", static_cast<int>(value), line_end);
}

void bdat_real(const Reader &block, size_t i, std::string *text)
{
    if (block.low(i + 1) != 0) text->push_back('-');
    print(text, "%X.%X", block.high(i + 7), block.low(i + 7));
    for (size_t position = i + 6; position >= i + 2; --position) print_digits(text, block, position);
    text->push_back('E');
    const uint32_t hundreds = block.high(i + 1);
    if (hundreds < 5) {
        print(text, "%X%X%X", hundreds, block.low(i), block.high(i));
    } else {
        print(text, "%+04d", static_cast<int>(hundreds * 100 + block.high(i) * 10 + block.low(i)) - 1000);
    }
    text->append(line_end);
}

ContentStep bdat_block(LiteralState *, const Reader &block, std::string *text)
{
    size_t i = 0;
    while (i + 1 < block.block.size()) {
        const uint32_t mark = block.at(i);
        if (mark == 0xEF || mark == 0xFF) break;
        if (mark == 0xDF || mark == 0x6F) {
            i = bdat_string(block, i, true, text);
        } else if (mark == 0xCF || mark == 0x7F) {
            i = bdat_string(block, i, false, text);
        } else {
            if (block.at(i + 4) == 0xFF) {
                bdat_integer(block, i, text);
            } else {
                bdat_real(block, i, text);
            }
            i += 8;
        }
    }
    return ContentStep::more;
}

// ---- kind 7

void rest_of_line(LiteralState *state, const Reader &block, size_t *i, std::string *text)
{
    while (state->count != 0 && *i < block.block.size()) {
        text->push_back(static_cast<char>(block.at(*i)));
        *i += 1;
        state->count -= 1;
    }
    if (state->count == 0) text->append(line_end);
}

ContentStep hp75_block(LiteralState *state, const Reader &block, std::string *text)
{
    size_t i = 0;
    if (state->first) {
        state->first = false;
        if (block.block.size() < 6 || block.at(5) != 'T') return ContentStep::foreign;
        i = 28;
    }
    if (state->count != 0) rest_of_line(state, block, &i, text);
    while (i + 4 <= block.block.size()) {
        if (block.at(i) == 0x99 && block.at(i + 1) == 0xA9) return ContentStep::end;
        const uint32_t number = block.high(i) * 10 + block.low(i) + (block.high(i + 1) * 10 + block.low(i + 1)) * 100;
        print(text, "%4d ", static_cast<int>(number));
        state->count = block.at(i + 2);
        i += 3;
        rest_of_line(state, block, &i, text);
    }
    return ContentStep::more;
}

}

ContentStep literal_block(uint32_t kind, LiteralState *state, const Bytes &block, std::string *text)
{
    const Reader reader = {block};
    switch (kind) {
    case 1: return data_items_block(state, reader, text);
    case 3: return ascii_block(state, reader, text);
    case 4: return pascal_block(state, reader, text);
    case 5: return sdf_block(state, reader, text);
    case 6: return bdat_block(state, reader, text);
    case 7: return hp75_block(state, reader, text);
    default: return ContentStep::more;
    }
}

}
