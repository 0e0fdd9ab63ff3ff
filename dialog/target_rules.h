// What may stand in the target's line of the dialog, and why something may not. Knows no window and no system; texts
// are ANSI.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t target_size = 260; // bytes of the plug-in's buffer, with the NUL

constexpr uint32_t bus_address = 31;     // no drive: the bus itself
constexpr uint32_t highest_address = 32; // that an engine takes; the dialog offers 0 to 31
constexpr uint32_t highest_unit = 9;
constexpr uint32_t highest_volume = 7;
constexpr uint32_t floppy_drives = 4;

enum class TargetKind : uint8_t { floppy, gpib, image };

enum class TargetFault : uint8_t {
    none,
    empty,
    too_long,
    gpib_form,
    gpib_address,
    gpib_unit,
    gpib_volume,
    image_unnamed,
    image_missing,
    image_is_folder
};

struct GpibDrive {
    uint32_t address = 0;
    uint32_t unit = 0;
    uint32_t volume = 0;
};

// What the host has under a path.
enum class PathState : uint8_t { missing, folder, file };
using LookAtPath = PathState (*)(const char *path);

// The target that a typed text means: without the blanks around it, and without the quotes that come with a copied
// path.
std::string plain_target(const std::string &typed);

// Which medium a target names; meaningful for faulty ones as well.
TargetKind target_kind(const std::string &target);

// The path of an image's file, without the filespec behind its colon.
std::string image_path(const std::string &target);

// Reads the form 7AAUV: at the front of a target, unit and volume as digits that may be left out, or the whole
// target "7:". Sets ret_drive when all is well.
TargetFault read_gpib(const std::string &target, GpibDrive *ret_drive);

// What is wrong with a target; the host is asked for images only.
TargetFault target_fault(const std::string &target, LookAtPath look);

// The words for a fault, at most two lines of the dialog; empty for none.
const char *fault_text(TargetFault fault);

// The target of a drive. For the address of the bus unit and volume don't count.
std::string compose_gpib(const GpibDrive &drive);
std::string compose_floppy(uint32_t drive);
