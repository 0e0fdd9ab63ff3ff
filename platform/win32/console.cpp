// The console, and the text for a debugger.
#include "platform/platform.h"
#include "platform/win32/inner.h"

namespace
{

bool console_info(CONSOLE_SCREEN_BUFFER_INFO *ret_info)
{
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), ret_info);
}

} // namespace

bool platform_console_attributes(uint16_t *ret_attributes)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!console_info(&info)) return false;
    *ret_attributes = info.wAttributes;
    return true;
}

void platform_console_set_attributes(uint16_t attributes)
{
    SetConsoleTextAttribute(GetStdHandle(STD_OUTPUT_HANDLE), attributes);
}

void platform_console_column(uint32_t column)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!console_info(&info)) return;
    const COORD place = {static_cast<SHORT>(column), info.dwCursorPosition.Y};
    SetConsoleCursorPosition(GetStdHandle(STD_OUTPUT_HANDLE), place);
}

void platform_debug_text(const char *text)
{
    OutputDebugStringA(text);
}
