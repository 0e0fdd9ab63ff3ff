// Names in UTF-8 and in wide characters of 32 bits, without a locale. A byte that is no UTF-8 stands as the wide
// character 0xDC00 + byte, so that every name a folder holds comes back as it is.
#pragma once

#include <climits>
#include <cstddef>

// Both cut at whole characters to what fits with a NUL, and return the length without it; size 0 stores nothing.
size_t wide_to_utf8(char *target, size_t size, const wchar_t *source);
size_t utf8_to_wide(wchar_t *target, size_t size, const char *source);

// A wide name as this system takes it, less the mark of long names that the layer above puts before them.
struct Utf8Name {
    explicit Utf8Name(const wchar_t *name);
    bool fits; // false, with ENAMETOOLONG as last error, for a longer one
    char text[PATH_MAX + 4];
};
