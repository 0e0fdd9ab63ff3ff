// The one way by which the engine prints: text goes into a buffer and leaves it in large pieces. Standard output by
// default; a program that wants its standard output for itself points it elsewhere.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/file.h"

void output_to(FileHandle file); // flushes, then goes there; 0 means standard output
void output_text(std::string_view text);
void output_format(const char *format, ...) __attribute__((format(printf, 1, 2)));
char *output_reserve(size_t bytes); // room for at most `bytes` (up to 4,096), to be filled in place
void output_advance(size_t bytes);  // that many of them are text now
void output_flush();                // every exported function that prints ends with this
bool output_at_line_start();        // the text so far is nothing, or ends with a line feed
bool output_failed();               // a write has failed since the last call of this function
