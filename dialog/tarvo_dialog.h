// tarvodialog64.dll: the dialog in which the user of the file manager's plug-in chooses a target.
#pragma once

#include <cstdint>

// Shows the dialog and waits for its end.
//   kind     1; any other value shows nothing
//   target   buffer of 260 bytes with the present target, ANSI; may be empty
//   options  option word: bit 1 typed extensions, bit 2 file conversion, bit 3 purged files shown, bits 4 and 5 file
//            headers (0 none, 1 HPBASIC, 2 HPCALC); other bits stay as they are
// Returns 1 when the user has chosen, with target and options set; 0 when the dialog was left otherwise or could not be
// shown, with both as they were.
extern "C" __declspec(dllexport) int32_t TarvoDialog(int32_t kind, char *target, uint32_t *options);
