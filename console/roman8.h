// Texts as UTF-8: from the character set of HP machines, Roman-8, and from what the host hands over.
#pragma once

#include <cstddef>
#include <string_view>

constexpr size_t utf8_bytes = 3; // that one byte of a text takes at most

// Turns bytes into UTF-8 and returns its length; target has room for utf8_bytes times the source's length. Bytes below
// 160 keep their number, as control characters from 128 on; 255, which has no meaning, becomes U+FFFD.
size_t roman8_to_utf8(char *target, std::string_view source);

// Copies UTF-8; each byte that belongs to no character becomes U+FFFD. Returns the length, room as above.
size_t repair_utf8(char *target, std::string_view source);
