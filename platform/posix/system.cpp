// The last error and its words; what the system is.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "platform/platform.h"

uint32_t platform_last_error()
{
    return static_cast<uint32_t>(errno);
}

void platform_set_last_error(uint32_t code)
{
    errno = static_cast<int>(code);
}

size_t platform_error_text(uint32_t code, char *text, size_t size)
{
    if (size == 0) return 0;
    std::array<char, 256> unnamed;
    const char *words = strerror_r(static_cast<int>(code), unnamed.data(), unnamed.size());
    const size_t length = std::min(strlen(words), size - 1);
    memcpy(text, words, length);
    text[length] = '\0';
    return length;
}

bool platform_is_nt_family()
{
    return true;
}
