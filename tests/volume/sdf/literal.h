// A volume of twelve records written down in bytes, field by field.
#pragma once

#include <string>

#include "tests/support/medium.h"

namespace tests
{

// Bytes as "07 00 ...", blanks between as one likes.
Bytes from_hex(const std::string &digits);
void put_hex(Bytes &bytes, size_t position, const std::string &digits);

constexpr size_t literal_table = 2 * record_bytes; // its inodes, in two pieces: 0 to 3 here,
constexpr size_t literal_tail = 5 * record_bytes;  // 4 and 5 here
constexpr size_t literal_root = 6 * record_bytes;  // entries ALPHA and DIR
constexpr size_t literal_alpha = 8 * record_bytes; // 300 bytes of 'a'

// Boot area in block 1, attributes table in blocks 2, 3 and 5, root directory in block 6, that of DIR in block 7, ALPHA
// in blocks 8 and 9; blocks 4, 10 and 11 are free.
Bytes literal_sdf();

}
