// A sink that keeps all it is handed, and the two ways to the text.
#include "tests/volume/content/outward_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <ostream>
#include <random>

namespace tests
{

namespace
{

bool keep(void *context, const uint8_t *bytes, uint32_t count)
{
    static_cast<std::string *>(context)->append(bytes, bytes + count);
    return true;
}

OutwardText outward_by(const ContentConverter &row, const Blocks &blocks, uint32_t buffer_size)
{
    OutwardText outcome;
    Bytes buffer(buffer_size);
    Sink sink;
    sink.hand_over = keep;
    sink.context = &outcome.text;
    sink.buffer = buffer.data();
    sink.size = buffer_size;
    OutwardState state;
    state.sink = &sink;
    for (const Bytes &block : blocks) {
        const std::unique_ptr<uint8_t[]> exact(new uint8_t[block.size()]);
        std::copy(block.begin(), block.end(), exact.get());
        outcome.step = row.outward(&state, exact.get(), static_cast<uint32_t>(block.size()));
        state.first_block = false;
        ++outcome.blocks;
        if (outcome.step != ContentStep::more) break;
    }
    flush(&sink);
    EXPECT_EQ(sink.total, outcome.text.size());
    return outcome;
}

std::string random_file_name(size_t round)
{
    return "file " + std::to_string(round);
}

Blocks random_blocks(const RandomFiles &files, std::mt19937 *chance)
{
    auto below = [chance](uint32_t limit) { return static_cast<uint32_t>((*chance)() % limit); };
    Blocks blocks;
    const uint32_t count = 1 + below(4);
    for (uint32_t i = 0; i < count; ++i) {
        const bool whole = i + 1 < count || below(3) == 0;
        Bytes block = i == 0 ? files.head : Bytes();
        block.resize(whole ? 256 : below(257), 0);
        for (size_t at = i == 0 ? files.head.size() : 0; at < block.size(); ++at)
            block[at] = below(3) != 0 ? files.alphabet[below(static_cast<uint32_t>(files.alphabet.size()))]
                                      : static_cast<uint8_t>(below(256));
        blocks.push_back(block);
    }
    return blocks;
}

size_t most_text(const RandomFiles &files, const Blocks &blocks)
{
    size_t most = 0;
    for (const Bytes &block : blocks) most += (block.size() * files.most_yield + 7) / 8 + files.most_more;
    return most;
}

}

bool operator==(const OutwardText &left, const OutwardText &right)
{
    return left.text == right.text && left.step == right.step && left.blocks == right.blocks;
}

void PrintTo(const OutwardText &outcome, std::ostream *stream)
{
    const char *const steps[] = {"more", "end", "rejected", "foreign"};
    *stream << testing::PrintToString(outcome.text) << ", " << steps[static_cast<uint8_t>(outcome.step)] << " after "
            << outcome.blocks << " blocks";
}

OutwardText outward(const ContentConverter &row, const Blocks &blocks)
{
    OutwardText outcome = outward_by(row, blocks, 4096);
    for (const uint32_t size : {2u, 3u, 61u}) EXPECT_EQ(outward_by(row, blocks, size), outcome) << "buffer " << size;
    return outcome;
}

std::string text_of_block(const ContentConverter &row, const Bytes &block)
{
    return outward(row, {block}).text;
}

std::string text_of_file(const ContentConverter &row, const Bytes &content)
{
    return outward(row, in_blocks(content)).text;
}

Blocks in_blocks(const Bytes &content)
{
    Blocks blocks;
    for (size_t at = 0; at < content.size(); at += 256) {
        const size_t size = std::min<size_t>(256, content.size() - at);
        blocks.emplace_back(content.begin() + static_cast<std::ptrdiff_t>(at),
                            content.begin() + static_cast<std::ptrdiff_t>(at + size));
    }
    return blocks;
}

Bytes bytes_of(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

Bytes joined(const std::vector<Bytes> &parts)
{
    Bytes whole;
    for (const Bytes &part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes filled_to(Bytes bytes, size_t size, uint8_t fill)
{
    if (bytes.size() < size) bytes.resize(size, fill);
    return bytes;
}

Bytes front_of(const Bytes &bytes, size_t size)
{
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes.size())));
}

OutwardText literal_outward(uint32_t kind, const Blocks &blocks)
{
    OutwardText outcome;
    LiteralState state;
    for (const Bytes &block : blocks) {
        outcome.step = literal_block(kind, &state, block, &outcome.text);
        ++outcome.blocks;
        if (outcome.step != ContentStep::more) break;
    }
    return outcome;
}

void expect_as_literal(const RandomFiles &files)
{
    std::mt19937 chance(files.row.kind);
    for (size_t round = 0; round < 1000; ++round) {
        const Blocks blocks = random_blocks(files, &chance);
        const OutwardText outcome = outward(files.row, blocks);
        ASSERT_EQ(outcome, literal_outward(files.row.kind, blocks)) << random_file_name(round);
        ASSERT_LE(outcome.text.size(), most_text(files, blocks)) << random_file_name(round);
    }
}

}
