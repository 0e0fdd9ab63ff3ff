// The console as a terminal that knows the ANSI sequences, and the text for a debugger.
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "platform/platform.h"
#include "platform/posix/inner.h"

namespace
{

constexpr uint16_t default_attributes = 7; // white on black, which here means the terminal's own colours
constexpr uint16_t bright = 8;

uint16_t present_attributes = default_attributes;

bool is_console()
{
    return isatty(STDOUT_FILENO) == 1;
}

// The attributes count blue, green, red from bit 0 on, a terminal red, green, blue.
unsigned colour_code(unsigned attributes, unsigned normal, unsigned shining)
{
    constexpr std::array<uint8_t, 8> colours = {0, 4, 2, 6, 1, 5, 3, 7};
    return ((attributes & bright) != 0 ? shining : normal) + colours[attributes & 7];
}

} // namespace

bool platform_console_attributes(uint16_t *ret_attributes)
{
    if (!is_console()) return false;
    *ret_attributes = present_attributes;
    return true;
}

void platform_console_set_attributes(uint16_t attributes)
{
    if (!is_console()) return;
    present_attributes = attributes & 0xff;
    if (present_attributes == default_attributes) {
        dprintf(STDOUT_FILENO, "\033[0m");
        return;
    }
    const unsigned text = colour_code(present_attributes, 30, 90);
    const unsigned ground = colour_code(present_attributes >> 4u, 40, 100);
    dprintf(STDOUT_FILENO, "\033[0;%u;%um", text, ground);
}

void platform_console_column(uint32_t column)
{
    if (is_console()) dprintf(STDOUT_FILENO, "\033[%uG", column + 1);
}

void platform_debug_text(const char *text)
{
    platform_write(file_of(STDERR_FILENO), text, static_cast<uint32_t>(strlen(text)));
}
