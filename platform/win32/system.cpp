// The last error and its words; what the system is.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platform/platform.h"
#include "platform/win32/inner.h"

namespace
{

constexpr DWORD system_language = 1024;

size_t store(std::string_view words, char *text, size_t size)
{
    const size_t length = std::min(words.size(), size - 1);
    memcpy(text, words.data(), length);
    text[length] = '\0';
    return length;
}

std::string_view without_end(std::string_view words)
{
    while (!words.empty() && strchr("\r\n ", words.back()) != nullptr) words.remove_suffix(1);
    if (!words.empty() && words.back() == '.') words.remove_suffix(1);
    return words;
}

} // namespace

uint32_t platform_last_error()
{
    return GetLastError();
}

void platform_set_last_error(uint32_t code)
{
    SetLastError(code);
}

size_t platform_error_text(uint32_t code, char *text, size_t size)
{
    if (size == 0) return 0;
    LPSTR words = nullptr;
    const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD length =
        FormatMessageA(flags, nullptr, code, system_language, reinterpret_cast<LPSTR>(&words), 0, nullptr);
    if (length == 0) {
        char unnamed[32];
        snprintf(unnamed, sizeof(unnamed), "System error %u", code);
        return store(unnamed, text, size);
    }
    const size_t stored = store(without_end({words, length}), text, size);
    LocalFree(words);
    return stored;
}

bool platform_is_nt_family()
{
    return (GetVersion() & 0x80000000) == 0;
}
