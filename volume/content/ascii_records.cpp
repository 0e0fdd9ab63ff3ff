// LIF ASCII: records of text, each a big-endian count and its characters, filled up to an even length. A record may go
// on in the next block; the count $FFFF ends the file.
#include <array>
#include <cstring>

#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
constexpr uint16_t end_of_file = 0xFFFF;

// Characters move in pieces of one size, since lengths that nobody can foresee cost more than bytes that are moved in
// vain; those are overwritten by what follows.
constexpr uint32_t piece_bytes = 128;
constexpr uint32_t block_bytes = 256;

struct Characters { // of a block, in the host's set; the counts among them mean nothing
    std::array<uint8_t, block_bytes + piece_bytes> bytes = {};
};

// A line end takes as much as the count of its record; one more belongs to a record that began in an earlier block.
struct BlockText {
    std::array<uint8_t, block_bytes + 2 + piece_bytes> bytes;
    uint32_t length = 0;
};

void put_characters(BlockText *text, const uint8_t *characters, uint32_t count)
{
    uint8_t *target = text->bytes.data() + text->length;
    for (uint32_t at = 0; at < count; at += piece_bytes) std::memcpy(target + at, characters + at, piece_bytes);
    text->length += count;
}

void put_line_end(BlockText *text)
{
    text->bytes[text->length++] = '\r';
    text->bytes[text->length++] = '\n';
}

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    Characters characters;
    copy_as_host(characters.bytes.data(), bytes, length);
    BlockText text;
    uint32_t pending = state->pending;
    uint32_t index = 0;
    ContentStep step = ContentStep::more;
    while (index + 1 < length) {
        if (pending == 0) {
            const uint16_t count = block.big_word(index);
            if (count == end_of_file) {
                step = ContentStep::end;
                break;
            }
            pending = count;
            index += 2;
        }
        const uint32_t taken = block.within(index, pending);
        put_characters(&text, characters.bytes.data() + index, taken);
        pending -= taken;
        if (taken != 0 && pending == 0) put_line_end(&text);
        index += taken;
        index += index & 1;
    }
    state->pending = pending;
    put_bytes(state->sink, text.bytes.data(), text.length);
    return step;
}

void put_line(InwardState *state, char *text, uint32_t length)
{
    put_word(state->sink, static_cast<uint16_t>(length));
    put_as_hp(state->sink, text, length);
    if ((length & 1) != 0) put_byte(state->sink, ' ');
}

void begin(InwardState *) {}

void end(InwardState *state)
{
    put_word(state->sink, end_of_file);
}

constexpr ServedType served[] = {{FORMAT_LIF, 0xFFFF, 1}};
}

const ContentConverter ascii_records = {
    .kind = 3,
    .name = "LIF ASCII",
    .serves = served,
    .outward = to_text,
    .begin = begin,
    .line = put_line,
    .end = end,
};
