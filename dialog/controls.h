// The dialog's controls as plain values.
#pragma once

#include <windows.h>

#include <string>

#include "dialog/choice.h"
#include "dialog/option_word.h"
#include "dialog/target_rules.h"

void fill_controls(HWND dialog, const Choice &choice);

std::string target_line(HWND dialog); // as typed
void set_target_line(HWND dialog, const std::string &target);
void select_target_line(HWND dialog); // with the keyboard in it
GpibDrive gpib_controls(HWND dialog);
void enable_gpib_controls(HWND dialog); // unit and volume, unless the bus itself is chosen
ShownOptions option_controls(HWND dialog);

void show_fault(HWND dialog, const char *text);
void show_hint(HWND dialog); // in place of a fault
