// The grammar of target strings.
#include "volume/target.h"

#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/media.h"

namespace
{
constexpr uint32_t bus_address = 31;
constexpr uint32_t highest_address = 32;
constexpr uint8_t highest_unit = 9;
constexpr uint8_t highest_volume = 7;

struct Target {
    size_t msus_length;
    size_t filespec_start;
    uint32_t access;
    uint32_t address;
    uint32_t unit;
    uint32_t volume;
    uint32_t drive_num;
};

void deliver(uint32_t *ret_value, uint32_t value)
{
    if (ret_value != nullptr) *ret_value = value;
}

uint8_t digit(char character)
{
    return static_cast<uint8_t>(character - '0');
}

bool is_letter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

// The colon that ends the path of an image file; that of a drive letter is passed over.
Target image_target(const char *target)
{
    size_t start = is_letter(target[0]) && target[1] == ':' ? 2 : 0;
    const char *colon = std::strchr(target + start, ':');
    size_t length = std::strlen(target);
    if (colon != nullptr) length = static_cast<size_t>(colon - target);
    return {length, colon == nullptr ? length : length + 1, ACCESS_IMAGE, 0, 0, 0, 0};
}

bool take_target(const char *target, Target *taken)
{
    if (target[0] >= '0' && target[0] <= '3' && target[1] == ':') {
        *taken = {2, 2, ACCESS_FLOPPY, 0, 0, 0, digit(target[0])};
        return true;
    }
    if (target[0] != '7' || std::strchr(target, ':') == nullptr) {
        *taken = image_target(target);
        return true;
    }
    *taken = {0, 0, ACCESS_GPIB, 0, 0, 0, 0};
    int32_t length = parse_gpib_msus(target, &taken->address, &taken->unit, &taken->volume);
    if (length < 1) {
        set_error(204, "\"%s\"", target);
        return false;
    }
    taken->msus_length = static_cast<size_t>(length);
    taken->filespec_start = taken->msus_length;
    return true;
}

void copy_text(char *target, const char *source, size_t length)
{
    if (target == nullptr) return;
    std::memcpy(target, source, length);
    target[length] = '\0';
}
}

int32_t parse_target(const char *target, char *ret_msus, char *ret_filespec, uint32_t *ret_access, uint32_t *ret_addr,
                     uint32_t *ret_unit, uint32_t *ret_volume, uint32_t *ret_drive_num)
{
    log_file(3, "parse_target(target=\"%s\")\n", log_text(target));
    if (target == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    if (target[0] == '\0') {
        set_error(103, "Empty target string");
        return -1;
    }
    Target taken;
    if (!take_target(target, &taken)) return -1;
    size_t filespec_length = std::strlen(target + taken.filespec_start);
    if (taken.msus_length >= FILE_PATH_SIZE || filespec_length >= FILE_PATH_SIZE) {
        set_error(300, "Msus \"%s\"", target);
        return -1;
    }
    copy_text(ret_msus, target, taken.msus_length);
    copy_text(ret_filespec, target + taken.filespec_start, filespec_length);
    deliver(ret_access, taken.access);
    deliver(ret_addr, taken.address);
    deliver(ret_unit, taken.unit);
    deliver(ret_volume, taken.volume);
    deliver(ret_drive_num, taken.drive_num);
    return 0;
}

int32_t parse_gpib_msus(const char *msus, uint32_t *ret_addr, uint32_t *ret_unit, uint32_t *ret_volume)
{
    if (msus == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    if (msus[0] != '7') return -1;
    if (std::strcmp(msus, "7:") == 0) {
        deliver(ret_addr, bus_address);
        deliver(ret_unit, 0);
        deliver(ret_volume, 0);
        return 2;
    }
    size_t length = std::strlen(msus);
    if (length < 3) return -1;
    // Kept: any two characters count as digits.  [KeepsCharactersThatAreNoDigitsModulo256]
    uint8_t address = static_cast<uint8_t>(10 * digit(msus[1]) + digit(msus[2]));
    if (address > highest_address) {
        set_error(204, "target address out of range: %d", address);
        return -1;
    }
    if (length < 4) return -1;
    uint8_t unit = 0;
    uint8_t volume = 0;
    int32_t colon = 3;
    if (msus[colon] != ':') {
        if (length < 5) return -1;
        unit = digit(msus[3]);
        if (unit > highest_unit) {
            set_error(204, "unit out of range: %d", unit);
            return -1;
        }
        colon = 4;
    }
    if (msus[colon] != ':') {
        if (length < 6) return -1;
        volume = digit(msus[4]);
        if (volume > highest_volume) {
            set_error(204, "volume out of range: %d", volume);
            return -1;
        }
        colon = 5;
    }
    if (msus[colon] != ':') return -1;
    deliver(ret_addr, address);
    deliver(ret_unit, unit);
    deliver(ret_volume, volume);
    return colon + 1;
}
