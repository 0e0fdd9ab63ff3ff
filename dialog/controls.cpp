// Fills the dialog's controls and reads them.
#include "dialog/controls.h"

#include "dialog/dialog_ids.h"

namespace
{
constexpr const char *hint =
    "An image file, a floppy drive (0: to 3:) or a GPIB drive (7AAUV:), with a filespec behind "
    "its colon if wanted.";

void add_row(HWND dialog, int control, const std::string &text)
{
    SendDlgItemMessageA(dialog, control, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void select_row(HWND dialog, int control, uint32_t row)
{
    SendDlgItemMessageA(dialog, control, CB_SETCURSEL, row, 0);
}

uint32_t selected_row(HWND dialog, int control)
{
    const LRESULT row = SendDlgItemMessageA(dialog, control, CB_GETCURSEL, 0, 0);
    return row < 0 ? 0 : static_cast<uint32_t>(row);
}

// The rows 0 to `highest`, so that a row's place is its value.
void add_numbers(HWND dialog, int control, uint32_t highest)
{
    for (uint32_t number = 0; number <= highest; number++) {
        add_row(dialog, control, std::to_string(number) + (number == bus_address ? " (the bus)" : ""));
    }
}

void fill_gpib(HWND dialog, const std::string &target)
{
    add_numbers(dialog, ID_ADDRESS, bus_address);
    add_numbers(dialog, ID_UNIT, highest_unit);
    add_numbers(dialog, ID_VOLUME, highest_volume);
    GpibDrive drive;
    if (target_kind(target) == TargetKind::gpib) read_gpib(target, &drive);
    select_row(dialog, ID_ADDRESS, drive.address <= bus_address ? drive.address : 0);
    select_row(dialog, ID_UNIT, drive.unit);
    select_row(dialog, ID_VOLUME, drive.volume);
    enable_gpib_controls(dialog);
}

void fill_options(HWND dialog, uint32_t word)
{
    const ShownOptions shown = shown_options(word);
    CheckDlgButton(dialog, ID_TYPED_EXTENSIONS, shown.typed_extensions ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(dialog, ID_FILE_CONVERSION, shown.file_conversion ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(dialog, ID_SHOW_PURGED, shown.show_purged ? BST_CHECKED : BST_UNCHECKED);
    CheckRadioButton(dialog, ID_HEADERS_NONE, ID_HEADERS_HPCALC, ID_HEADERS_NONE + static_cast<int>(shown.headers));
}

bool checked(HWND dialog, int control)
{
    return IsDlgButtonChecked(dialog, control) == BST_CHECKED;
}
}

void fill_controls(HWND dialog, const Choice &choice)
{
    for (const std::string &target : choice.last) add_row(dialog, ID_TARGET, target);
    set_target_line(dialog, choice.target);
    fill_gpib(dialog, choice.target);
    fill_options(dialog, choice.options);
    show_hint(dialog);
}

std::string target_line(HWND dialog)
{
    const HWND line = GetDlgItem(dialog, ID_TARGET);
    std::string text(static_cast<size_t>(GetWindowTextLengthA(line)) + 1, '\0');
    const int length = GetWindowTextA(line, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<size_t>(length));
    return text;
}

void set_target_line(HWND dialog, const std::string &target)
{
    SetDlgItemTextA(dialog, ID_TARGET, target.c_str());
}

void select_target_line(HWND dialog)
{
    const HWND line = GetDlgItem(dialog, ID_TARGET);
    SendMessageA(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(line), TRUE);
    SendMessageA(line, CB_SETEDITSEL, 0, MAKELPARAM(0, -1));
}

GpibDrive gpib_controls(HWND dialog)
{
    return {selected_row(dialog, ID_ADDRESS), selected_row(dialog, ID_UNIT), selected_row(dialog, ID_VOLUME)};
}

void enable_gpib_controls(HWND dialog)
{
    const BOOL drive = selected_row(dialog, ID_ADDRESS) != bus_address;
    EnableWindow(GetDlgItem(dialog, ID_UNIT), drive);
    EnableWindow(GetDlgItem(dialog, ID_VOLUME), drive);
}

ShownOptions option_controls(HWND dialog)
{
    ShownOptions shown;
    shown.typed_extensions = checked(dialog, ID_TYPED_EXTENSIONS);
    shown.file_conversion = checked(dialog, ID_FILE_CONVERSION);
    shown.show_purged = checked(dialog, ID_SHOW_PURGED);
    if (checked(dialog, ID_HEADERS_HPBASIC)) shown.headers = FileHeaders::hpbasic;
    if (checked(dialog, ID_HEADERS_HPCALC)) shown.headers = FileHeaders::hpcalc;
    return shown;
}

void show_fault(HWND dialog, const char *text)
{
    SetDlgItemTextA(dialog, ID_MESSAGE, text);
    // Programs that read the screen aloud don't look at a text by themselves.
    NotifyWinEvent(EVENT_SYSTEM_ALERT, GetDlgItem(dialog, ID_MESSAGE), OBJID_CLIENT, CHILDID_SELF);
    MessageBeep(MB_ICONWARNING);
}

void show_hint(HWND dialog)
{
    SetDlgItemTextA(dialog, ID_MESSAGE, hint);
}
