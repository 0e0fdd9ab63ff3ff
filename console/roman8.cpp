// The character set Roman-8 of HP machines, and well-formed UTF-8.
#include "console/roman8.h"

#include <cstdint>
#include <cstring>

namespace
{
constexpr char16_t replacement = 0xFFFD;
constexpr uint8_t first_letter = 0xA0;

constexpr char16_t letters[] = {
    // clang-format off
    0x00A0, 0x00C0, 0x00C2, 0x00C8, 0x00CA, 0x00CB, 0x00CE, 0x00CF, // A0
    0x00B4, 0x02CB, 0x02C6, 0x00A8, 0x02DC, 0x00D9, 0x00DB, 0x20A4, // A8
    0x00AF, 0x00DD, 0x00FD, 0x00B0, 0x00C7, 0x00E7, 0x00D1, 0x00F1, // B0
    0x00A1, 0x00BF, 0x00A4, 0x00A3, 0x00A5, 0x00A7, 0x0192, 0x00A2, // B8
    0x00E2, 0x00EA, 0x00F4, 0x00FB, 0x00E1, 0x00E9, 0x00F3, 0x00FA, // C0
    0x00E0, 0x00E8, 0x00F2, 0x00F9, 0x00E4, 0x00EB, 0x00F6, 0x00FC, // C8
    0x00C5, 0x00EE, 0x00D8, 0x00C6, 0x00E5, 0x00ED, 0x00F8, 0x00E6, // D0
    0x00C4, 0x00EC, 0x00D6, 0x00DC, 0x00C9, 0x00EF, 0x00DF, 0x00D4, // D8
    0x00C1, 0x00C3, 0x00E3, 0x00D0, 0x00F0, 0x00CD, 0x00CC, 0x00D3, // E0
    0x00D2, 0x00D5, 0x00F5, 0x0160, 0x0161, 0x00DA, 0x0178, 0x00FF, // E8
    0x00DE, 0x00FE, 0x00B7, 0x00B5, 0x00B6, 0x00BE, 0x2014, 0x00BC, // F0
    0x00BD, 0x00AA, 0x00BA, 0x00AB, 0x25A0, 0x00BB, 0x00B1, 0xFFFD, // F8
    // clang-format on
};
static_assert(sizeof letters / sizeof letters[0] == 256 - first_letter);

char *put_utf8(char *target, char16_t character)
{
    auto put = [&target](unsigned value) { *target++ = static_cast<char>(static_cast<uint8_t>(value)); };
    unsigned code = character;
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | (code >> 6));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xE0 | (code >> 12));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    }
    return target;
}

// The first byte of a character, and what its second byte may be; the others are 80 to BF.
struct LeadBytes {
    uint8_t first;
    uint8_t last;
    uint8_t length;
    uint8_t second_least;
    uint8_t second_most;
};
constexpr LeadBytes lead_bytes[] = {
    // first  last  length  second
    {0x00, 0x7F, 1, 0x00, 0x00}, // ASCII
    {0xC2, 0xDF, 2, 0x80, 0xBF}, // to U+07FF
    {0xE0, 0xE0, 3, 0xA0, 0xBF}, // from U+0800
    {0xE1, 0xEC, 3, 0x80, 0xBF}, //
    {0xED, 0xED, 3, 0x80, 0x9F}, // without the surrogates
    {0xEE, 0xEF, 3, 0x80, 0xBF}, // to U+FFFF
    {0xF0, 0xF0, 4, 0x90, 0xBF}, // from U+10000
    {0xF1, 0xF3, 4, 0x80, 0xBF}, //
    {0xF4, 0xF4, 4, 0x80, 0x8F}, // to U+10FFFF
};

bool follows(const LeadBytes &row, std::string_view source)
{
    if (source.size() < row.length) return false;
    for (size_t index = 1; index < row.length; index++) {
        auto byte = static_cast<uint8_t>(source[index]);
        uint8_t least = index == 1 ? row.second_least : uint8_t{0x80};
        uint8_t most = index == 1 ? row.second_most : uint8_t{0xBF};
        if (byte < least || byte > most) return false;
    }
    return true;
}

// Bytes of the character at the front, 0 when there is none.
size_t character_length(std::string_view source)
{
    auto first = static_cast<uint8_t>(source[0]);
    for (const LeadBytes &row : lead_bytes) {
        if (first >= row.first && first <= row.last) return follows(row, source) ? row.length : 0;
    }
    return 0;
}
}

size_t roman8_to_utf8(char *target, std::string_view source)
{
    char *position = target;
    for (char byte : source) {
        auto code = static_cast<uint8_t>(byte);
        position = put_utf8(position, code < first_letter ? char16_t{code} : letters[code - first_letter]);
    }
    return static_cast<size_t>(position - target);
}

size_t repair_utf8(char *target, std::string_view source)
{
    char *position = target;
    while (!source.empty()) {
        size_t length = character_length(source);
        if (length == 0) {
            position = put_utf8(position, replacement);
            source.remove_prefix(1);
            continue;
        }
        std::memcpy(position, source.data(), length);
        position += length;
        source.remove_prefix(length);
    }
    return static_cast<size_t>(position - target);
}
