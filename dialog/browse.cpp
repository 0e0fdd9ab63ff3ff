// Asks for an image file.
#include "dialog/browse.h"

#include <cstring>

#include "dialog/path_state.h"
#include "dialog/target_rules.h"

namespace
{
constexpr const char filters[] = "Image files\0*.lif;*.hpi;*.img;*.tap;*.tape;*.simh\0"
                                 "Block images (*.lif, *.hpi, *.img)\0*.lif;*.hpi;*.img\0"
                                 "Tape images (*.tap, *.tape, *.simh)\0*.tap;*.tape;*.simh\0"
                                 "All files\0*.*\0";
}

Browsed browse_image(HWND owner, const std::string &target, std::string *ret_path)
{
    char path[target_size] = "";
    // A name that is no file would keep the system's dialog from opening.
    if (target_kind(target) == TargetKind::image && target_fault(target, path_state) == TargetFault::none) {
        const std::string present = image_path(target);
        std::memcpy(path, present.c_str(), present.size() + 1);
    }
    OPENFILENAMEA request = {};
    request.lStructSize = sizeof request;
    request.hwndOwner = owner;
    request.lpstrFilter = filters;
    request.lpstrFile = path;
    request.nMaxFile = sizeof path;
    request.lpstrTitle = "Choose an image file";
    request.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (GetOpenFileNameA(&request) != 0) {
        *ret_path = path;
        return Browsed::chosen;
    }
    return CommDlgExtendedError() == FNERR_BUFFERTOOSMALL ? Browsed::too_long : Browsed::cancelled;
}
