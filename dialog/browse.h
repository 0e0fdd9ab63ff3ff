// The system's own dialog for opening a file.
#pragma once

#include <windows.h>

#include <string>

enum class Browsed : uint8_t { chosen, cancelled, too_long };

// Lets the user choose an image file, beginning at the one of the present target if that exists.
Browsed browse_image(HWND owner, const std::string &target, std::string *ret_path);
