// UTF-8: a first byte tells how many follow, each of those holds six bits; the shortest form is the only one.
#include "platform/posix/utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <cwchar>

static_assert(sizeof(wchar_t) == 4);

namespace
{

constexpr uint32_t replacement = 0xfffd;
constexpr uint32_t stray_byte = 0xdc00; // a byte of $80 and more without a character is this plus the byte
constexpr size_t longest_sequence = 4;

constexpr bool is_surrogate(uint32_t character)
{
    return character >= 0xd800 && character < 0xe000;
}

constexpr size_t sequence_length(uint32_t character)
{
    if (character < 0x80) return 1;
    if (character < 0x800) return 2;
    return character < 0x10000 ? 3 : 4;
}

using Sequence = std::array<char, longest_sequence>;

size_t encode(uint32_t character, Sequence &bytes)
{
    if (character >= stray_byte + 0x80 && character <= stray_byte + 0xff) {
        bytes[0] = static_cast<char>(character - stray_byte);
        return 1;
    }
    if (is_surrogate(character) || character > 0x10ffff) character = replacement;
    const size_t length = sequence_length(character);
    for (size_t at = length - 1; at > 0; --at) {
        bytes[at] = static_cast<char>(0x80 | (character & 0x3f));
        character >>= 6;
    }
    constexpr std::array<uint8_t, 5> marks = {0, 0, 0xc0, 0xe0, 0xf0};
    bytes[0] = static_cast<char>(marks[length] | character);
    return length;
}

// The bytes that a first byte announces, 0 for none that can be first.
size_t announced_length(uint8_t first)
{
    if (first < 0x80) return 1;
    if (first < 0xc2 || first > 0xf4) return 0;
    if (first < 0xe0) return 2;
    return first < 0xf0 ? 3 : 4;
}

// One character at `source`; returns how many bytes it takes.
size_t decode(const char *source, wchar_t *ret_character)
{
    const auto first = static_cast<uint8_t>(*source);
    const size_t length = announced_length(first);
    uint32_t character = length > 1 ? first & (0x7fu >> length) : first;
    size_t at = 1;
    while (at < length && (static_cast<uint8_t>(source[at]) & 0xc0) == 0x80)
        character = character << 6 | (static_cast<uint8_t>(source[at++]) & 0x3fu);
    const bool whole = length > 0 && at == length && sequence_length(character) == length && !is_surrogate(character) &&
                       character <= 0x10ffff;
    *ret_character = static_cast<wchar_t>(whole ? character : stray_byte + first);
    return whole ? length : 1;
}

// `\\?\name` stands for name, `\\?\UNC\name` for `\\name`.
const wchar_t *without_long_mark(const wchar_t *name)
{
    constexpr size_t shortest_marked = 264;
    if (wcslen(name) < shortest_marked || wcsncmp(name, L"\\\\?\\", 4) != 0) return name;
    return name + 4;
}

} // namespace

size_t wide_to_utf8(char *target, size_t size, const wchar_t *source)
{
    if (size == 0) return 0;
    size_t length = 0;
    for (; *source != L'\0'; ++source) {
        Sequence bytes;
        const size_t count = encode(static_cast<uint32_t>(*source), bytes);
        if (length + count > size - 1) break;
        memcpy(target + length, bytes.data(), count);
        length += count;
    }
    target[length] = '\0';
    return length;
}

size_t utf8_to_wide(wchar_t *target, size_t size, const char *source)
{
    if (size == 0) return 0;
    size_t length = 0;
    while (*source != '\0' && length < size - 1) source += decode(source, &target[length++]);
    target[length] = L'\0';
    return length;
}

Utf8Name::Utf8Name(const wchar_t *name)
{
    const wchar_t *plain = without_long_mark(name);
    size_t done = 0;
    if (plain != name && wcsncmp(plain, L"UNC\\", 4) == 0) {
        text[done++] = '\\';
        plain += 3;
    }
    // A last character that doesn't fit would be left out whole: there is room for any one beyond the longest name.
    fits = done + wide_to_utf8(text + done, sizeof(text) - done, plain) < PATH_MAX;
    if (!fits) errno = ENAMETOOLONG;
}
