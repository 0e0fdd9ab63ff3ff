// The user of the dialog.
#include "tests/dialog/dialog_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <utility>

#include "dialog/dialog_ids.h"

namespace tests
{
namespace
{
constexpr std::chrono::seconds patience{60}; // the end of a run that hangs

// The meeting of the present thread, for its hook.
thread_local Meeting *here = nullptr;
}

// Where the user's thread waits for windows of the dialog's thread.
struct Meeting {
    std::promise<HWND> dialog; // set by the hook when it is ready, else with null when the call came back
    std::promise<HWND> child;
    HWND window = nullptr; // of the dialog; this and what follows is for its thread only
    bool dialog_told = false;
    bool child_told = false;

    // The dialog is shown when it finds nothing to do for the first time.
    void see(const CWPRETSTRUCT &message)
    {
        const bool starts = message.message == WM_INITDIALOG;
        if (starts && window == nullptr) window = message.hwnd;
        if (starts && GetWindow(message.hwnd, GW_OWNER) == window) tell_child(message.hwnd);
        const bool moved = message.message == WM_WINDOWPOSCHANGED && message.hwnd == window;
        if (moved && IsWindowVisible(window)) tell_dialog(window);
    }

    void tell_dialog(HWND started)
    {
        if (!std::exchange(dialog_told, true)) dialog.set_value(started);
    }

    void tell_child(HWND started)
    {
        if (!std::exchange(child_told, true)) child.set_value(started);
    }
};

namespace
{
LRESULT CALLBACK behind_each_message(int code, WPARAM wparam, LPARAM lparam)
{
    const auto *message = reinterpret_cast<const CWPRETSTRUCT *>(lparam);
    if (code == HC_ACTION && here != nullptr) here->see(*message);
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

Ended run_dialog(const std::string &target, uint32_t options, Meeting *meeting)
{
    here = meeting;
    const HHOOK hook = SetWindowsHookExA(WH_CALLWNDPROCRET, behind_each_message, nullptr, GetCurrentThreadId());
    char buffer[260] = "";
    std::memcpy(buffer, target.c_str(), target.size() + 1);
    Ended ended;
    ended.options = options;
    ended.result = dialog_call()(1, buffer, &ended.options);
    ended.target = buffer;
    UnhookWindowsHookEx(hook);
    meeting->tell_dialog(nullptr);
    meeting->tell_child(nullptr);
    return ended;
}

HWND wait_for(std::promise<HWND> *promise)
{
    std::future<HWND> window = promise->get_future();
    return window.wait_for(patience) == std::future_status::ready ? window.get() : nullptr;
}
}

HMODULE dialog_library()
{
    static const HMODULE library = LoadLibraryA("tarvodialog64.dll");
    return library;
}

TarvoDialogCall dialog_call()
{
    return reinterpret_cast<TarvoDialogCall>(reinterpret_cast<void *>(GetProcAddress(dialog_library(), "TarvoDialog")));
}

bool windows_can_be_made()
{
    const HWND window = CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 8, 8, nullptr, nullptr, nullptr, nullptr);
    return window != nullptr && DestroyWindow(window) != 0;
}

DialogRun::DialogRun(const std::string &target, uint32_t options) : meeting(std::make_shared<Meeting>())
{
    ended = std::async(std::launch::async, [=, own = meeting] { return run_dialog(target, options, own.get()); });
    window = wait_for(&meeting->dialog);
    thread_id = GetWindowThreadProcessId(window, nullptr);
}

DialogRun::~DialogRun()
{
    if (ended.valid() && IsWindow(window)) press_later(IDCANCEL);
}

void DialogRun::press(int control) const
{
    SendMessageA(window, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED), reinterpret_cast<LPARAM>(item(control)));
}

void DialogRun::press_later(int control) const
{
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED), reinterpret_cast<LPARAM>(item(control)));
}

void DialogRun::close() const
{
    PostMessageA(window, WM_CLOSE, 0, 0);
}

HWND DialogRun::child_dialog() const
{
    return wait_for(&meeting->child);
}

void DialogRun::key(WPARAM virtual_key) const
{
    PostMessageA(focus(), WM_KEYDOWN, virtual_key, 1);
}

void DialogRun::mnemonic(char letter) const
{
    constexpr LPARAM with_alt = 1 << 29;
    PostMessageA(focus(), WM_SYSCHAR, static_cast<WPARAM>(letter), with_alt | 1);
}

// As a keyboard does it: into the line, which then tells the dialog.
void DialogRun::type_target(const std::string &text) const
{
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    SendMessageA(item(ID_TARGET), CB_GETCOMBOBOXINFO, 0, reinterpret_cast<LPARAM>(&info));
    SendMessageA(info.hwndItem, EM_SETSEL, 0, -1);
    SendMessageA(info.hwndItem, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

std::string DialogRun::text(int control) const
{
    char buffer[1000] = "";
    SendMessageA(item(control), WM_GETTEXT, sizeof buffer, reinterpret_cast<LPARAM>(buffer));
    return buffer;
}

bool DialogRun::checked(int control) const
{
    return SendMessageA(item(control), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool DialogRun::open() const
{
    return IsWindow(window) && IsWindowVisible(window);
}

HWND DialogRun::focus() const
{
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(thread_id, &info);
    return info.hwndFocus != nullptr ? info.hwndFocus : window;
}

HWND DialogRun::item(int control) const
{
    return GetDlgItem(window, control);
}

std::string DialogRun::row(int control, int number) const
{
    char buffer[1000] = "";
    const LRESULT length =
        SendMessageA(item(control), CB_GETLBTEXT, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(buffer));
    return length == CB_ERR ? "no such row" : buffer;
}

void DialogRun::choose_row(int control, int number) const
{
    SendMessageA(item(control), CB_SETCURSEL, static_cast<WPARAM>(number), 0);
    SendMessageA(window, WM_COMMAND, MAKEWPARAM(control, CBN_SELCHANGE), reinterpret_cast<LPARAM>(item(control)));
}

Ended DialogRun::end()
{
    if (ended.wait_for(patience) == std::future_status::ready) return ended.get();
    ADD_FAILURE() << "the dialog didn't end";
    press_later(IDCANCEL);
    return {};
}

Ended DialogRun::end(int control)
{
    press(control);
    return end();
}

PrivateRegistry::PrivateRegistry() : name("Software\\TarvoDialogTests" + std::to_string(GetCurrentProcessId()))
{
    RegCreateKeyExA(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (RegOverridePredefKey(HKEY_CURRENT_USER, key) != ERROR_SUCCESS) ADD_FAILURE() << "the registry is the user's";
}

PrivateRegistry::~PrivateRegistry()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(key);
    RegDeleteTreeA(HKEY_CURRENT_USER, name.c_str());
}

ImageFolder::ImageFolder()
{
    char temporary[MAX_PATH] = "";
    char path[MAX_PATH] = "";
    GetTempPathA(sizeof temporary, temporary);
    GetTempFileNameA(temporary, "trv", 0, path); // makes a file, whose name the folder gets
    DeleteFileA(path);
    CreateDirectoryA(path, nullptr);
    folder = path;
    image = folder + "\\disc.lif";
    CloseHandle(CreateFileA(image.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
}

ImageFolder::~ImageFolder()
{
    DeleteFileA(image.c_str());
    RemoveDirectoryA(folder.c_str());
}
}
