// Runs the dialog of tarvodialog64.dll in a thread of its own, as a file manager does, and is its user: finds its
// window, fills in, presses, and waits for the end.
#pragma once

#include <windows.h>

#include <cstdint>
#include <future>
#include <memory>
#include <string>

namespace tests
{
using TarvoDialogCall = int32_t (*)(int32_t kind, char *target, uint32_t *options);

HMODULE dialog_library(); // null when it isn't beside the program
TarvoDialogCall dialog_call();
bool windows_can_be_made(); // false where there is no display

struct Ended {
    int32_t result = -1;
    std::string target;
    uint32_t options = 0;
};

struct DialogRun {
    HWND window = nullptr; // null when none came

    DialogRun(const std::string &target, uint32_t options);
    DialogRun(const DialogRun &) = delete;
    DialogRun &operator=(const DialogRun &) = delete;
    ~DialogRun(); // cancels what still runs

    // These return when the dialog has done what comes of them.
    void press(int control) const;
    void type_target(const std::string &text) const;
    void choose_row(int control, int number) const;

    // These go into the dialog's queue, one behind the other.
    void press_later(int control) const;
    void key(WPARAM virtual_key) const;
    void mnemonic(char letter) const; // with Alt
    void close() const;               // as the cross in the title bar does

    bool open() const; // shown, and not closed
    HWND item(int control) const;
    HWND focus() const;
    std::string text(int control) const;
    bool checked(int control) const;
    std::string row(int control, int number) const; // of a list

    HWND child_dialog() const; // waits for a dialog in front of this one; null when none comes
    Ended end();               // waits for the end
    Ended end(int control);    // presses that and waits

  private:
    std::shared_ptr<struct Meeting> meeting;
    std::future<Ended> ended;
    DWORD thread_id = 0;
};

// While it lives the user's part of the registry is an empty one of this test's own.
struct PrivateRegistry {
    PrivateRegistry();
    PrivateRegistry(const PrivateRegistry &) = delete;
    PrivateRegistry &operator=(const PrivateRegistry &) = delete;
    ~PrivateRegistry();

  private:
    std::string name;
    HKEY key = nullptr;
};

// A folder with an image file in it, while it lives.
struct ImageFolder {
    std::string folder;
    std::string image;

    ImageFolder();
    ImageFolder(const ImageFolder &) = delete;
    ImageFolder &operator=(const ImageFolder &) = delete;
    ~ImageFolder();
};
}
