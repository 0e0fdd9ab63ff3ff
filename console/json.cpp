// JSON into the engine's output: texts, dates and numbers as the records have them.
#include "console/json.h"

#include <array>
#include <cstring>

#include "console/roman8.h"

namespace
{
static_assert(json_longest_text * json_byte_size + 2 < json_room, "any text has room");
constexpr char hex_digits[] = "0123456789ABCDEF";

// The texts of all numbers of two digits, one behind the other.
constexpr std::array<char, 512> pairs_of_digits(size_t base)
{
    std::array<char, 512> pairs = {};
    for (size_t number = 0; number < base * base; number++) {
        pairs[2 * number] = hex_digits[number / base];
        pairs[2 * number + 1] = hex_digits[number % base];
    }
    return pairs;
}
constexpr auto decimal_pairs = pairs_of_digits(10);
constexpr auto hex_pairs = pairs_of_digits(16);

char *put_pair(char *target, const std::array<char, 512> &pairs, size_t number)
{
    std::memcpy(target, &pairs[2 * number], 2);
    return target + 2;
}

// What a text holds almost always: characters that need neither conversion nor escaping.
constexpr auto plain_characters = [] {
    std::array<bool, 256> plain = {};
    for (size_t code = ' '; code <= '~'; code++) plain[code] = code != '"' && code != '\\';
    return plain;
}();

// A control character as JSON writes it. Those of the second set and DEL needn't be escaped there, but a terminal
// would act on them.
char *put_control(char *target, uint8_t code)
{
    const char text[json_byte_size] = {'\\', 'u', '0', '0', hex_digits[code >> 4], hex_digits[code & 15]};
    std::memcpy(target, text, json_byte_size);
    return target + json_byte_size;
}

// The text with its quotes; there is room for json_byte_size for each byte that the text had before it was UTF-8, and
// for the quotes.
char *quote(char *position, std::string_view utf8)
{
    *position++ = '"';
    for (size_t index = 0; index < utf8.size(); index++) {
        auto code = static_cast<uint8_t>(utf8[index]);
        bool second_set = code == 0xC2 && index + 1 < utf8.size() && static_cast<uint8_t>(utf8[index + 1]) < 0xA0;
        if (second_set) {
            position = put_control(position, static_cast<uint8_t>(utf8[++index]));
        } else if (code < 0x20 || code == 0x7F) {
            position = put_control(position, code);
        } else {
            if (code == '"' || code == '\\') *position++ = '\\';
            *position++ = utf8[index];
        }
    }
    *position++ = '"';
    return position;
}

using Conversion = size_t (*)(char *target, std::string_view source);

char *put_text(char *target, std::string_view text, Conversion conversion)
{
    text = text.substr(0, json_longest_text);
    char *position = target;
    *position++ = '"';
    size_t index = 0;
    for (; index < text.size() && plain_characters[static_cast<uint8_t>(text[index])]; index++) {
        *position++ = text[index];
    }
    if (index < text.size() && text[index] != '\0') {
        char utf8[json_longest_text * utf8_bytes];
        return quote(target, std::string_view(utf8, conversion(utf8, text.substr(0, text.find('\0')))));
    }
    *position++ = '"';
    return position;
}

bool in_range(int32_t value, int32_t least, int32_t most)
{
    return value >= least && value <= most;
}

int32_t true_month(int32_t month)
{
    constexpr int32_t october_of_bcd = 15;
    return month == october_of_bcd ? 10 : month + 1;
}

bool is_date(const TimeRecord &date)
{
    return in_range(date.tm_mday, 1, 31) && in_range(true_month(date.tm_mon), 1, 12) &&
           in_range(date.tm_year, -1900, 9999 - 1900) && in_range(date.tm_hour, 0, 23) &&
           in_range(date.tm_min, 0, 59) && in_range(date.tm_sec, 0, 59);
}

size_t count_digits(uint64_t value)
{
    constexpr size_t most_digits = 20;
    size_t count = 1;
    for (uint64_t limit = 10; count < most_digits && value >= limit; limit *= 10) count++;
    return count;
}

void put_two_digits(char *target, int32_t value)
{
    put_pair(target, decimal_pairs, static_cast<size_t>(value));
}
}

char *json_put_number(char *target, uint64_t value)
{
    char *end = target + count_digits(value);
    char *first = end;
    for (; value >= 10; value /= 100) put_pair(first -= 2, decimal_pairs, value % 100);
    if (first != target) *target = static_cast<char>('0' + value);
    return end;
}

char *json_put_roman8(char *target, std::string_view text)
{
    return put_text(target, text, roman8_to_utf8);
}

char *json_put_host_text(char *target, std::string_view text)
{
    return put_text(target, text, repair_utf8);
}

char *json_put_hex(char *target, std::string_view bytes)
{
    bytes = bytes.substr(0, json_longest_text);
    *target++ = '"';
    for (char byte : bytes) {
        if (byte == '\0') break;
        target = put_pair(target, hex_pairs, static_cast<uint8_t>(byte));
    }
    *target++ = '"';
    return target;
}

char *json_put_date(char *target, const TimeRecord &date)
{
    if (!is_date(date)) {
        std::memcpy(target, "null", 4);
        return target + 4;
    }
    int32_t year = date.tm_year + 1900;
    std::memcpy(target, "\"0000-00-00T00:00:00\"", 21);
    put_two_digits(target + 1, year / 100);
    put_two_digits(target + 3, year % 100);
    put_two_digits(target + 6, true_month(date.tm_mon));
    put_two_digits(target + 9, date.tm_mday);
    put_two_digits(target + 12, date.tm_hour);
    put_two_digits(target + 15, date.tm_min);
    put_two_digits(target + 18, date.tm_sec);
    return target + 21;
}
