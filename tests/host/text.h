// Texts of scripts and of what is printed: equal on all systems.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

using Words = std::vector<std::string>;

// The words of a line: divided by blanks, except in double quotes. \n and \xNN are bytes, ~ is the system's separator,
// $TMP the folder. A # at the begin of a word ends the line.
Words words_of(std::string_view line, const std::string &folder);

// Printable: bytes outside ASCII, quotes and backslashes as \xNN. In a path the folder becomes $TMP again, the
// separator ~.
std::string visible(std::string_view text);
std::string visible_path(std::string path, const std::string &folder);
// A message: the folder becomes $TMP, the separators behind it ~.
std::string visible_message(std::string text, const std::string &folder);
std::string quoted(const std::string &text);

uint32_t number_of(const std::string &word);                   // decimal, or hexadecimal behind 0x
std::vector<uint8_t> bytes_of(const std::string &hexadecimal); // throws std::runtime_error for anything else

// Units of 100 ns since 1601 and "1985-06-21T14:05:12".
uint64_t time_of(const std::string &iso);
std::string iso_of(uint64_t time); // with a blank between date and time; "never" for 0
// The same in seconds since 1970.
int64_t seconds_of(const std::string &iso);
std::string iso_of_seconds(int64_t seconds);

}
