// Console input below safe_gets, which can't tell its caller that the input has ended.
#pragma once

#include <cstdint>

// Reads standard input up to a line feed, which isn't stored, or size - 1 characters; terminates what it stored.
//   buffer, size  size is at least 1
// Returns false when the input ended, or failed, before a line feed or the last character.
bool read_input_line(char *buffer, uint32_t size);
