// The dialog's window.
#pragma once

#include <windows.h>

#include "dialog/choice.h"

// Runs the dialog on a choice, which changes only when it ends with OK. True for OK.
bool run_window(HINSTANCE library, HWND owner, Choice *choice);
