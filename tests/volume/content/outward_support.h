// Blocks of a file, handed to a kind of content as the engine does it, and the text that comes out; and the same text
// put together a second time, slowly, byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/volume_builder.h"
#include "volume/content/content.h"

namespace tests
{

using Blocks = std::vector<Bytes>; // each of 0 to 256 bytes

struct OutwardText {
    std::string text;
    ContentStep step = ContentStep::more; // of the last block that was handed over
    uint32_t blocks = 0;                  // that were handed over: none behind an end
};

bool operator==(const OutwardText &left, const OutwardText &right);
void PrintTo(const OutwardText &outcome, std::ostream *stream);

// Each block in memory of exactly its length, so that a look behind it is seen; into buffers of several sizes.
OutwardText outward(const ContentConverter &row, const Blocks &blocks);

std::string text_of_block(const ContentConverter &row, const Bytes &block); // a file of one block
std::string text_of_file(const ContentConverter &row, const Bytes &content);

Blocks in_blocks(const Bytes &content); // of 256 bytes, the last of what is left
Bytes bytes_of(std::string_view text);
Bytes joined(const std::vector<Bytes> &parts);
Bytes filled_to(Bytes bytes, size_t size, uint8_t fill = 0); // never shorter than it was
Bytes front_of(const Bytes &bytes, size_t size);             // at most so many

// The literal form of each kind, by its number. One state for each file.
struct LiteralState {
    uint32_t count = 0;
    bool flag = true;
    bool first = true;
};

ContentStep literal_block(uint32_t kind, LiteralState *state, const Bytes &block, std::string *text);
OutwardText literal_outward(uint32_t kind, const Blocks &blocks);

// Compares the two on files of random blocks of all lengths, and holds the text against what the bytes can yield.
// alphabet: the bytes that mean something to the kind; the others are random.
struct RandomFiles {
    const ContentConverter &row;
    Bytes alphabet;
    Bytes head;             // of the first block
    uint32_t most_yield;    // bytes of text a byte of the file, times 8
    uint32_t most_more = 0; // and so many for a block, whatever its length
};

void expect_as_literal(const RandomFiles &files);

}
