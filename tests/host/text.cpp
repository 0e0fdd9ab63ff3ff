// Words of a line, and texts that can be compared between systems.
#include "tests/host/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace host
{

namespace
{

constexpr char separator = static_cast<char>(std::filesystem::path::preferred_separator);
constexpr int64_t seconds_to_1970 = 11644473600; // from 1601
constexpr uint64_t units = 10000000;             // of a second

int digit_of(char character)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const size_t position = digits.find(character);
    if (position == std::string_view::npos) throw std::runtime_error("no hexadecimal digit");
    return static_cast<int>(position);
}

uint8_t byte_of(std::string_view digits)
{
    if (digits.size() < 2) throw std::runtime_error("no byte");
    return static_cast<uint8_t>(digit_of(digits[0]) * 16 + digit_of(digits[1]));
}

// What stands behind a backslash.
char escaped(std::string_view line, size_t *position)
{
    const char kind = *position < line.size() ? line[*position] : '\0';
    ++*position;
    if (kind == 'n') return '\n';
    if (kind != 'x') throw std::runtime_error("unknown escape");
    *position += 2;
    return static_cast<char>(byte_of(line.substr(*position - 2)));
}

std::string take_word(std::string_view line, size_t *position, const std::string &folder)
{
    constexpr std::string_view folder_word = "$TMP";
    std::string word;
    bool in_quotes = false;
    while (*position < line.size() && (in_quotes || line[*position] != ' ')) {
        if (line.substr(*position).starts_with(folder_word)) {
            word += folder;
            *position += folder_word.size();
            continue;
        }
        const char character = line[(*position)++];
        if (character == '"') {
            in_quotes = !in_quotes;
        } else if (character == '\\') {
            word += escaped(line, position);
        } else {
            word += character == '~' ? separator : character;
        }
    }
    return word;
}

std::string printable(char character)
{
    if (character >= ' ' && character <= '~' && character != '"' && character != '\\') return {character};
    std::array<char, 5> text{};
    snprintf(text.data(), text.size(), "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(character)));
    return text.data();
}

}

Words words_of(std::string_view line, const std::string &folder)
{
    Words words;
    size_t position = 0;
    while (true) {
        while (position < line.size() && line[position] == ' ') ++position;
        if (position == line.size() || line[position] == '#') return words;
        words.push_back(take_word(line, &position, folder));
    }
}

std::string visible(std::string_view text)
{
    std::string result;
    for (const char character : text) result += printable(character);
    return result;
}

std::string visible_path(std::string path, const std::string &folder)
{
    if (path.starts_with(folder)) path.replace(0, folder.size(), "$TMP");
    std::replace(path.begin(), path.end(), separator, '~');
    return visible(path);
}

std::string visible_message(std::string text, const std::string &folder)
{
    for (size_t found = text.find(folder); found != std::string::npos; found = text.find(folder, found)) {
        const size_t end = text.find_first_of(" \"\n", found + folder.size());
        const size_t length = (end == std::string::npos ? text.size() : end) - found;
        std::string path = text.substr(found + folder.size(), length - folder.size());
        std::replace(path.begin(), path.end(), separator, '~');
        text.replace(found, length, "$TMP" + path);
        found += path.size();
    }
    return visible(text);
}

std::string quoted(const std::string &text)
{
    return '"' + text + '"';
}

uint32_t number_of(const std::string &word)
{
    size_t used = 0;
    const unsigned long value = std::stoul(word, &used, 0);
    if (used != word.size()) throw std::runtime_error("no number: " + word);
    return static_cast<uint32_t>(value);
}

std::vector<uint8_t> bytes_of(const std::string &hexadecimal)
{
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < hexadecimal.size(); i += 2)
        bytes.push_back(byte_of(std::string_view(hexadecimal).substr(i)));
    return bytes;
}

int64_t seconds_of(const std::string &iso)
{
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    if (sscanf(iso.c_str(), "%d-%u-%uT%u:%u:%u", &year, &month, &day, &hour, &minute, &second) != 6)
        throw std::runtime_error("no time: " + iso);
    const std::chrono::sys_days date =
        std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day));
    return date.time_since_epoch().count() * 86400 + hour * 3600 + minute * 60 + second;
}

uint64_t time_of(const std::string &iso)
{
    return static_cast<uint64_t>(seconds_of(iso) + seconds_to_1970) * units;
}

std::string iso_of_seconds(int64_t seconds)
{
    const int64_t days = seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400;
    const int64_t rest = seconds - days * 86400;
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
    std::array<char, 64> text{};
    snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), static_cast<int>(rest / 3600),
             static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
    return text.data();
}

std::string iso_of(uint64_t time)
{
    if (time == 0) return "never";
    std::string result = iso_of_seconds(static_cast<int64_t>(time / units) - seconds_to_1970);
    if (time % units != 0) result += " and " + std::to_string(time % units) + " units";
    return result;
}

}
