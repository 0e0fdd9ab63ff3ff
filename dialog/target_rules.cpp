// The rules for targets. They follow the order in which the engine takes a target apart, and are stricter in one
// thing: what stands for a digit must be one.
#include "dialog/target_rules.h"

namespace
{
constexpr size_t address_at = 1;
constexpr size_t unit_at = 3;
constexpr size_t volume_at = 4;

bool is_letter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool is_digit(char character)
{
    return character >= '0' && character <= '9';
}

uint32_t digit(char character)
{
    return static_cast<uint32_t>(character - '0');
}

char digit_text(uint32_t value)
{
    return static_cast<char>('0' + value % 10);
}

TargetFault image_fault(const std::string &target, LookAtPath look)
{
    const std::string path = image_path(target);
    if (path.empty()) return TargetFault::image_unnamed;
    const PathState state = look(path.c_str());
    if (state == PathState::missing) return TargetFault::image_missing;
    return state == PathState::folder ? TargetFault::image_is_folder : TargetFault::none;
}

struct FaultText {
    TargetFault fault;
    const char *text;
};

constexpr FaultText fault_texts[] = {
    {TargetFault::none, ""},
    {TargetFault::empty, "The target is empty. Give an image file, a floppy drive or a GPIB drive."},
    {TargetFault::too_long, "The target is too long: it may have 259 characters."},
    {TargetFault::gpib_form, "A GPIB drive is written 7AAUV: with two digits for the address, then one for the unit "
                             "and one for the volume."},
    {TargetFault::gpib_address, "The GPIB address, the two digits behind the 7, may be at most 32."},
    {TargetFault::gpib_unit, "The GPIB unit, behind the address, must be a digit from 0 to 9."},
    {TargetFault::gpib_volume, "The GPIB volume, behind the unit, must be a digit from 0 to 7."},
    {TargetFault::image_unnamed, "There is no file name ahead of the colon."},
    {TargetFault::image_missing, "There is no such image file."},
    {TargetFault::image_is_folder, "This is a folder. Choose an image file in it."},
};
}

std::string plain_target(const std::string &typed)
{
    constexpr const char *blanks = " \t\r\n";
    const size_t first = typed.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    const std::string text = typed.substr(first, typed.find_last_not_of(blanks) - first + 1);
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

TargetKind target_kind(const std::string &target)
{
    if (target.size() >= 2 && target[0] >= '0' && digit(target[0]) < floppy_drives && target[1] == ':') {
        return TargetKind::floppy;
    }
    const bool gpib = !target.empty() && target[0] == '7' && target.find(':') != std::string::npos;
    return gpib ? TargetKind::gpib : TargetKind::image;
}

std::string image_path(const std::string &target)
{
    const bool drive = target.size() >= 2 && is_letter(target[0]) && target[1] == ':';
    return target.substr(0, target.find(':', drive ? 2 : 0));
}

TargetFault read_gpib(const std::string &target, GpibDrive *ret_drive)
{
    GpibDrive drive;
    if (target == "7:") {
        drive.address = bus_address;
        *ret_drive = drive;
        return TargetFault::none;
    }
    const size_t colon = target.find(':');
    if (target[0] != '7' || colon == std::string::npos || colon < unit_at || colon > volume_at + 1) {
        return TargetFault::gpib_form;
    }
    if (!is_digit(target[address_at]) || !is_digit(target[address_at + 1])) return TargetFault::gpib_form;
    drive.address = digit(target[address_at]) * 10 + digit(target[address_at + 1]);
    if (drive.address > highest_address) return TargetFault::gpib_address;
    if (colon > unit_at) {
        if (!is_digit(target[unit_at])) return TargetFault::gpib_unit;
        drive.unit = digit(target[unit_at]);
    }
    if (colon > volume_at) {
        if (!is_digit(target[volume_at]) || digit(target[volume_at]) > highest_volume) return TargetFault::gpib_volume;
        drive.volume = digit(target[volume_at]);
    }
    *ret_drive = drive;
    return TargetFault::none;
}

TargetFault target_fault(const std::string &target, LookAtPath look)
{
    if (target.empty()) return TargetFault::empty;
    if (target.size() >= target_size) return TargetFault::too_long;
    GpibDrive ignored;
    switch (target_kind(target)) {
    case TargetKind::floppy: return TargetFault::none;
    case TargetKind::gpib: return read_gpib(target, &ignored);
    case TargetKind::image: break;
    }
    return image_fault(target, look);
}

const char *fault_text(TargetFault fault)
{
    for (const FaultText &row : fault_texts) {
        if (row.fault == fault) return row.text;
    }
    return "";
}

std::string compose_gpib(const GpibDrive &drive)
{
    if (drive.address == bus_address) return "7:";
    return {'7',
            digit_text(drive.address / 10),
            digit_text(drive.address),
            digit_text(drive.unit),
            digit_text(drive.volume),
            ':'};
}

std::string compose_floppy(uint32_t drive)
{
    return {digit_text(drive), ':'};
}
