// SDF DATA: records, each a mark, an ignored byte, a count of three bytes, and its characters. A record ends with its
// block. Characters from 128 on are dropped.
#include "volume/content/block.h"
#include "volume/content/content.h"

namespace
{
constexpr uint32_t head_bytes = 5;

ContentStep to_text(OutwardState *state, const uint8_t *bytes, uint32_t length)
{
    const Block block = {bytes, length};
    uint32_t index = 0;
    while (index + 1 < length) {
        const uint32_t count = uint32_t{block[index + 2]} << 16 | block.big_word(index + 3);
        index += head_bytes;
        const uint32_t taken = block.within(index, count);
        for (uint32_t end = index + taken; index < end; index++) {
            if (block[index] < 128) put_byte(state->sink, block[index]);
        }
        if (count != 0 && taken == count) put_line_end(state->sink);
    }
    return ContentStep::more;
}

constexpr ServedType served[] = {{FORMAT_SDF, 0xFFFF, 0xE9C9}};
}

const ContentConverter sdf_records = {.kind = 5, .name = "SDF DATA", .serves = served, .outward = to_text};
