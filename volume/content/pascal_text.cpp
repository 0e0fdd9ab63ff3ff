// Pascal TEXT: a header of 1,024 bytes, then pages of 1,024 bytes. A line is 16 and its indentation plus 32, which may
// be missing, the text, and 13; zeros fill a page behind its last line.
#include <algorithm>
#include <array>

#include "base/log.h"
#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
constexpr uint32_t page_bytes = 1024;
constexpr uint32_t header_blocks = 4;
constexpr uint8_t indentation_mark = 16;
constexpr uint8_t indentation_base = 32;
constexpr uint8_t line_mark = 13;
constexpr uint32_t largest_indentation = 224;
constexpr uint32_t longest_text = 1021;
constexpr uint32_t line_overhead = 3; // mark, indentation, line mark

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    for (uint32_t index = 0; index < length; index++) {
        const uint8_t byte = block[index];
        if (byte == line_mark) {
            put_line_end(state->sink);
            state->padding_next = true;
        } else if (byte == indentation_mark) {
            const uint8_t indentation = std::max(block[++index], indentation_base);
            put_repeated(state->sink, ' ', static_cast<size_t>(indentation - indentation_base));
        } else if (byte != 0 || !state->padding_next) {
            put_byte(state->sink, byte);
            if (byte != 0) state->padding_next = false;
        }
    }
    return ContentStep::more;
}

struct HeaderByte {
    uint32_t offset;
    uint8_t value;
};

constexpr HeaderByte header_bytes[] = {
    {0x73, 0x01}, {0x77, 0x01}, {0x7B, 0x4E}, {0x7D, 0x05}, {0x7F, 0x5E},
    {0x80, 0x8C}, {0x81, 0x11}, {0x82, 0x8C}, {0x83, 0x11}, {0x84, 0x01},
};

void begin(InwardState *state)
{
    std::array<uint8_t, page_bytes> header = {};
    for (const HeaderByte &byte : header_bytes) header[byte.offset] = byte.value;
    put_bytes(state->sink, header.data(), header.size());
    state->written = 0; // bytes of the present page
}

void fill_page(InwardState *state)
{
    put_repeated(state->sink, 0, page_bytes - state->written);
    state->written = 0;
}

void put_line(InwardState *state, char *text, uint32_t length)
{
    uint32_t indentation = 0;
    while (indentation < largest_indentation && indentation < length && text[indentation] == ' ') indentation++;
    text += indentation;
    length -= indentation;
    if (length > longest_text) {
        cut_line(state);
        length = longest_text;
    }
    if (state->written + length + line_overhead > page_bytes) fill_page(state);
    put_byte(state->sink, indentation_mark);
    // Kept: the largest indentation has no byte of its own and goes out as 0.  [KeepsIndentationOf224AsZero]
    put_byte(state->sink, static_cast<uint8_t>(indentation + indentation_base));
    put_bytes(state->sink, reinterpret_cast<const uint8_t *>(text), length);
    put_byte(state->sink, line_mark);
    state->written += length + line_overhead;
}

constexpr ServedType served[] = {{FORMAT_LIF, 0xFFFF, 0xEA3E}};
}

const ContentConverter pascal_text = {
    .kind = 4,
    .name = "Pascal TEXT",
    .serves = served,
    .skipped_blocks = header_blocks,
    .outward = to_text,
    .begin = begin,
    .line = put_line,
    .end = fill_page,
};
