// Gives any bytes to the kinds of content on their way out. Whatever they are, the text is no longer than such bytes
// can make it, and the same blocks give the same text, through a large buffer and through the smallest.
//
// The input: the number of a kind, a byte that chooses the lengths of the blocks (0: 256 each), the content. Each block
// stands in memory of its own size, so that one byte too far is found.
#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "fuzz/support.h"
#include "volume/content/content.h"
#include "volume/content/sink.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;

constexpr uint32_t most_lengths = 257; // of a block: 0 to 256

// What a block can become: bytes of text for each of its bytes, and once for what it began or carried on.
struct Bound {
    uint32_t kind;
    size_t times;
    size_t once;
};

constexpr Bound bounds[] = {
    {.kind = 1, .times = 4, .once = 24},  // a number of 4 bytes takes up to 16 characters
    {.kind = 3, .times = 2, .once = 2},   // a line end for a word
    {.kind = 4, .times = 112, .once = 1}, // up to 223 blanks for two bytes
    {.kind = 5, .times = 2, .once = 2},   // a line end for a head
    {.kind = 6, .times = 3, .once = 24},  // a number of 8 bytes takes up to 23
    {.kind = 7, .times = 3, .once = 8},   // a line number of up to 5 digits, and a line end, for a head of 3 bytes
};

const ContentConverter *converter_of(uint32_t kind)
{
    for (const ContentConverter *converter : content_converters()) {
        if (converter->kind == kind) return converter;
    }
    return nullptr;
}

const Bound &bound_of(uint32_t kind)
{
    const auto *bound = std::find_if(std::begin(bounds), std::end(bounds),
                                     [kind](const Bound &candidate) { return candidate.kind == kind; });
    demand(bound != std::end(bounds));
    return *bound;
}

std::vector<Bytes> blocks_of(std::span<const uint8_t> content, uint8_t lengths)
{
    std::vector<Bytes> blocks;
    for (uint32_t number = 1; !content.empty(); number++) {
        const size_t length = lengths == 0 ? RECORD_SIZE : number * lengths % most_lengths;
        const auto block = content.first(std::min(length, content.size()));
        blocks.emplace_back(block.begin(), block.end());
        content = content.subspan(block.size());
    }
    return blocks;
}

bool keep(void *context, const uint8_t *bytes, uint32_t count)
{
    auto *text = static_cast<Bytes *>(context);
    text->insert(text->end(), bytes, bytes + count);
    return true;
}

Bytes text_of(const ContentConverter &converter, const std::vector<Bytes> &blocks, size_t buffer_bytes)
{
    Bytes text;
    std::vector<uint8_t> buffer(buffer_bytes);
    Sink sink;
    sink.hand_over = keep;
    sink.context = &text;
    sink.buffer = buffer.data();
    sink.size = static_cast<uint32_t>(buffer.size());
    OutwardState state;
    state.sink = &sink;
    const Bound &bound = bound_of(converter.kind);
    size_t most = 0;
    for (const Bytes &block : blocks) {
        const ContentStep step = converter.outward(&state, block.data(), static_cast<uint32_t>(block.size()));
        state.first_block = false;
        most += block.size() * bound.times + bound.once;
        demand(text.size() + sink.filled <= most);
        if (step != ContentStep::more) break;
    }
    flush(&sink);
    demand(!sink.failed && sink.total == text.size());
    return text;
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const ContentConverter *converter = converter_of(input.take_byte());
    if (converter == nullptr) return -1; // of no use to the fuzzer
    const uint8_t lengths = input.take_byte();
    const std::vector<Bytes> blocks = blocks_of(input.rest(), lengths);
    const Bytes text = text_of(*converter, blocks, 64 * 1024);
    demand(text_of(*converter, blocks, 64 * 1024) == text);
    demand(text_of(*converter, blocks, 2) == text);
    return 0;
}
