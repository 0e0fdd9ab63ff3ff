// Conversions of numbers, text and characters. All of them are pure but the reading of a console line.
#include "base/convert.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/convert_inner.h"
#include "base/file.h"

namespace
{

// An HP code and the host's code for the same letter or sign.
struct CharacterPair {
    uint8_t hp;
    uint8_t host;
};

constexpr CharacterPair character_pairs[] = {
    {0xB8, 0xAD}, {0xB9, 0xA8}, {0xBB, 0x9C}, {0xD8, 0x8E}, {0xDA, 0x99}, {0xDB, 0x9A}, {0xCC, 0x84}, {0xCE, 0x94},
    {0xCF, 0x81}, {0xDE, 0xE1}, {0xE1, 0xCC}, {0xE2, 0xC9}, {0xE3, 0xCB}, {0xE4, 0xCD}, {0xE5, 0xBB}, {0xE6, 0xB9},
    {0xE7, 0xBA}, {0xE8, 0xD8}, {0xE9, 0xC3}, {0xEA, 0xDA}, {0xEB, 0xC2}, {0xEC, 0xC4}, {0xED, 0xBF}, {0xEE, 0xB4},
    {0xEF, 0xD7}, {0xF1, 0xC7}, {0xF2, 0xC0}, {0xF3, 0xC1}, {0xF4, 0xC5}, {0xF5, 0xD9}, {0xF6, 0xB6}, {0xF9, 0xCF},
    {0xFA, 0xC8}, {0xFB, 0xCA}, {0xFC, 0xCE}, {0xFD, 0xBC}, {0xFE, 0xD1}, {0xFF, 0xB1},
};

using CharacterMap = std::array<uint8_t, 256>;

constexpr CharacterMap make_map(uint8_t CharacterPair::*from, uint8_t CharacterPair::*to)
{
    CharacterMap map{};
    for (size_t i = 0; i < map.size(); ++i) map[i] = static_cast<uint8_t>(i);
    for (const CharacterPair &pair : character_pairs) map[pair.*from] = pair.*to;
    return map;
}

constexpr CharacterMap host_of_hp = make_map(&CharacterPair::hp, &CharacterPair::host);
constexpr CharacterMap hp_of_host = make_map(&CharacterPair::host, &CharacterPair::hp);

// No code stands twice in a column, so that each way is the other's inverse.
constexpr bool pairs_are_unique()
{
    for (const CharacterPair &pair : character_pairs)
        if (hp_of_host[host_of_hp[pair.hp]] != pair.hp || host_of_hp[hp_of_host[pair.host]] != pair.host) return false;
    return true;
}

static_assert(std::size(character_pairs) == 38 && pairs_are_unique());

bool is_blank(char character)
{
    return character == ' ' || character == '\t';
}

bool ends_number(char character)
{
    return character == '\0' || is_blank(character) || character == '\r' || character == '\n';
}

constexpr size_t most_blanks = 1024; // ahead of a number
constexpr size_t most_digits = 32;

struct Digits {
    int base;
    std::array<char, 1 + most_digits + 1> text; // sign, digits, NUL
};

const char *skip_blanks(const char *text)
{
    for (size_t i = 0; i < most_blanks; ++i)
        if (!is_blank(text[i])) return text + i;
    return nullptr;
}

// Collects the digits of a number; false for a character that is none.
bool collect_digits(Digits *digits, const char *text, bool with_sign)
{
    *digits = {10, {}};
    if (text == nullptr) return false;
    text = skip_blanks(text);
    if (text == nullptr) return false;
    size_t count = 0;
    if (with_sign && *text == '-') digits->text[count++] = *text++;
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        digits->base = 16;
        text += 2;
    }
    for (const size_t end = count + most_digits; count < end && !ends_number(*text); ++text) {
        const bool letter = (*text >= 'a' && *text <= 'f') || (*text >= 'A' && *text <= 'F');
        if (!letter && (*text < '0' || *text > '9')) return false;
        if (letter) digits->base = 16; // Kept: a letter alone makes it hexadecimal.  [KeepsLetterThatMakesHexadecimal]
        digits->text[count++] = *text;
    }
    return true; // Kept: a text without digits is the number 0.  [KeepsTextWithoutDigitsAsZero]
}

bool parse_unsigned(const char *text, uint32_t largest, uint32_t *ret_value)
{
    Digits digits;
    if (!collect_digits(&digits, text, false)) return false;
    const unsigned long long value = strtoull(digits.text.data(), nullptr, digits.base);
    const auto bounded = static_cast<uint32_t>(std::min<unsigned long long>(value, UINT32_MAX));
    if (bounded > largest) return false;
    *ret_value = bounded;
    return true;
}

bool is_forbidden_in_host_name(uint8_t character)
{
    return character < 32 || character > 126 ||
           std::string_view("\"\\/:?*<>|").find(static_cast<char>(character)) != std::string_view::npos;
}

} // namespace

uint16_t get_word(const uint8_t *bytes)
{
    if (bytes == nullptr) return 0;
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

uint32_t get_dword(const uint8_t *bytes)
{
    if (bytes == nullptr) return 0;
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void set_word(uint8_t *bytes, uint16_t value)
{
    if (bytes == nullptr) return;
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

void set_dword(uint8_t *bytes, uint32_t value)
{
    if (bytes == nullptr) return;
    bytes[0] = static_cast<uint8_t>(value >> 24);
    bytes[1] = static_cast<uint8_t>(value >> 16);
    bytes[2] = static_cast<uint8_t>(value >> 8);
    bytes[3] = static_cast<uint8_t>(value);
}

char *get_binary_string(uint8_t value, char *buffer)
{
    if (buffer == nullptr) return nullptr;
    for (int bit = 0; bit < 8; ++bit) buffer[bit] = (value & (0x80 >> bit)) != 0 ? '1' : '0';
    buffer[8] = '\0';
    return buffer;
}

uint8_t bcd2dec(uint8_t value)
{
    return static_cast<uint8_t>((value >> 4) * 10 + (value & 15));
}

uint8_t dec2bcd(uint8_t value)
{
    return static_cast<uint8_t>(value / 10 * 16 + value % 10);
}

void to_uppercase(char *text)
{
    if (text == nullptr) return;
    for (; *text != '\0'; ++text)
        if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
}

void trim(char *text)
{
    if (text == nullptr || *text == '\0') return;
    const size_t last = strlen(text) - 1;
    size_t first_kept = 0;
    size_t last_kept = last;
    while (first_kept < last && is_blank(text[first_kept])) ++first_kept;
    while (last_kept > 0 && is_blank(text[last_kept])) --last_kept;
    text[last_kept + 1] = '\0'; // Kept: text of blanks only keeps its first one.  [KeepsFirstBlankOfBlankText]
    if (first_kept > last_kept) return;
    const size_t count = last_kept - first_kept + 1;
    memmove(text, text + first_kept, count); // Kept: the old tail stays behind it.  [KeepsOldTailOfTrimmedText]
}

int32_t safe_strtoul(const char *text, uint32_t *ret_value)
{
    if (ret_value == nullptr) return -1;
    return parse_unsigned(text, UINT32_MAX, ret_value) ? 0 : -1;
}

int32_t safe_strtoui(const char *text, uint16_t *ret_value)
{
    uint32_t value = 0;
    if (ret_value == nullptr || !parse_unsigned(text, UINT16_MAX, &value)) return -1;
    *ret_value = static_cast<uint16_t>(value);
    return 0;
}

int32_t safe_strtouc(const char *text, uint8_t *ret_value)
{
    uint32_t value = 0;
    if (ret_value == nullptr || !parse_unsigned(text, UINT8_MAX, &value)) return -1;
    *ret_value = static_cast<uint8_t>(value);
    return 0;
}

int32_t safe_strtoi(const char *text, int32_t *ret_value)
{
    Digits digits;
    if (ret_value == nullptr || !collect_digits(&digits, text, true)) return -1;
    const long long value = strtoll(digits.text.data(), nullptr, digits.base);
    *ret_value = static_cast<int32_t>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
    return 0;
}

bool read_input_line(char *buffer, uint32_t size)
{
    uint32_t length = 0;
    bool more = true;
    while (length + 1 < size) {
        char character = '\0';
        more = file_read(Stdin, &character, 1) == 1;
        if (!more || character == '\n') break;
        buffer[length++] = character;
    }
    buffer[length] = '\0';
    return more;
}

char *safe_gets(char *buffer, uint32_t size)
{
    if (buffer == nullptr || size == 0) return nullptr;
    read_input_line(buffer, size);
    return buffer;
}

uint8_t hp2win(uint8_t character)
{
    return host_of_hp[character];
}

uint8_t win2hp(uint8_t character)
{
    return hp_of_host[character];
}

void string_hp2win(char *target, const char *source, int32_t filter)
{
    if (target == nullptr || source == nullptr) return;
    for (; *source != '\0'; ++source) {
        const auto character = static_cast<uint8_t>(*source);
        if (filter != 0 && is_forbidden_in_host_name(character))
            *target++ = '_'; // Kept: the filter takes the letters above 126 too.  [KeepsHpLettersAsUnderscores]
        else
            *target++ = static_cast<char>(hp2win(character));
    }
    *target = '\0';
}

void string_win2hp(char *target, const char *source, int32_t filter)
{
    if (target == nullptr || source == nullptr) return;
    for (; *source != '\0'; ++source) {
        if (filter != 0 && *source == ' ') continue;
        const bool refused = filter != 0 && (*source == '"' || *source == ':');
        *target++ = refused ? '_' : static_cast<char>(win2hp(static_cast<uint8_t>(*source)));
    }
    *target = '\0';
}
