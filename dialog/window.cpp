// The dialog's window procedure: what happens on which control.
#include "dialog/window.h"

#include "dialog/browse.h"
#include "dialog/controls.h"
#include "dialog/dialog_ids.h"
#include "dialog/path_state.h"

namespace
{
struct Run {
    Choice *choice;
    bool faulty; // the message is a fault
};

constexpr COLORREF fault_colour = RGB(176, 0, 0);

Run *run_of(HWND dialog)
{
    return reinterpret_cast<Run *>(GetWindowLongPtrA(dialog, DWLP_USER));
}

void refuse(HWND dialog, TargetFault fault)
{
    run_of(dialog)->faulty = true;
    show_fault(dialog, fault_text(fault));
    select_target_line(dialog);
}

void forget_fault(HWND dialog)
{
    if (!run_of(dialog)->faulty) return;
    run_of(dialog)->faulty = false;
    show_hint(dialog);
}

void take_target(HWND dialog, const std::string &target)
{
    set_target_line(dialog, target);
    forget_fault(dialog);
    select_target_line(dialog);
}

void browse(HWND dialog)
{
    std::string path;
    const Browsed browsed = browse_image(dialog, plain_target(target_line(dialog)), &path);
    if (browsed == Browsed::chosen) take_target(dialog, path);
    if (browsed == Browsed::too_long) refuse(dialog, TargetFault::too_long);
}

void accept(HWND dialog)
{
    const std::string target = plain_target(target_line(dialog));
    const TargetFault fault = target_fault(target, path_state);
    if (fault != TargetFault::none) {
        refuse(dialog, fault);
        return;
    }
    Choice *choice = run_of(dialog)->choice;
    choice->target = target;
    choice->options = changed_word(choice->options, option_controls(dialog));
    EndDialog(dialog, IDOK);
}

bool press(HWND dialog, int control)
{
    switch (control) {
    case IDOK: accept(dialog); return true;
    case IDCANCEL: EndDialog(dialog, IDCANCEL); return true;
    case ID_BROWSE: browse(dialog); return true;
    case ID_USE_GPIB: take_target(dialog, compose_gpib(gpib_controls(dialog))); return true;
    case ID_FLOPPY_0:
    case ID_FLOPPY_1:
    case ID_FLOPPY_2:
    case ID_FLOPPY_3: take_target(dialog, compose_floppy(static_cast<uint32_t>(control - ID_FLOPPY_0))); return true;
    default: return false;
    }
}

bool command(HWND dialog, int control, int notice)
{
    if (control == ID_TARGET && (notice == CBN_EDITCHANGE || notice == CBN_SELCHANGE)) forget_fault(dialog);
    if (control == ID_ADDRESS && notice == CBN_SELCHANGE) enable_gpib_controls(dialog);
    return notice == BN_CLICKED && press(dialog, control);
}

bool start(HWND dialog, LPARAM run)
{
    SetWindowLongPtrA(dialog, DWLP_USER, run);
    fill_controls(dialog, *run_of(dialog)->choice);
    return true;
}

// The brush for the text of a control, or 0 for the usual one.
INT_PTR text_brush(HWND dialog, HDC context, HWND control)
{
    if (GetDlgCtrlID(control) != ID_MESSAGE || !run_of(dialog)->faulty) return 0;
    SetTextColor(context, fault_colour);
    SetBkMode(context, TRANSPARENT);
    return reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE));
}

INT_PTR handle(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam)
{
    if (message == WM_INITDIALOG) return start(dialog, lparam);
    if (run_of(dialog) == nullptr) return FALSE; // messages that come while the window is made
    switch (message) {
    case WM_COMMAND: return command(dialog, LOWORD(wparam), HIWORD(wparam));
    case WM_CTLCOLORSTATIC: return text_brush(dialog, reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam));
    default: return FALSE;
    }
}

// Nothing is thrown through the system that calls this. Where memory is short the dialog is left as by Cancel.
INT_PTR CALLBACK dialog_procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam)
{
    try {
        return handle(dialog, message, wparam, lparam);
    } catch (...) {
        EndDialog(dialog, IDCANCEL);
        return TRUE;
    }
}
}

bool run_window(HINSTANCE library, HWND owner, Choice *choice)
{
    Run run = {choice, false};
    return DialogBoxParamA(library, MAKEINTRESOURCEA(DIALOG_TARGET), owner, dialog_procedure,
                           reinterpret_cast<LPARAM>(&run)) == IDOK;
}
