// Lines through the inward half of a kind of content, and the bytes that come out of it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/volume_builder.h"
#include "volume/content/content.h"

namespace tests::insertion
{

using Lines = std::vector<std::string>; // without their ends
using Words = std::initializer_list<uint16_t>;

struct InwardOrder {
    const char *source_name = "source.txt";
    const FileInfo *info = nullptr; // null: a file named FILE
};

// All that the row writes, its head in place. Nothing may depend on how large the sink's buffer is, and nothing behind
// a line and its NUL may be looked at.
Bytes inward(const ContentConverter &row, const Lines &lines, const InwardOrder &order = {});

Bytes bytes_of(std::string_view text);
Bytes repeated(uint8_t byte, size_t count);
Bytes joined(std::initializer_list<Bytes> parts);
Bytes part_of(const Bytes &bytes, size_t from, size_t count); // what there is of it
std::string text_of(const Bytes &bytes);

}
