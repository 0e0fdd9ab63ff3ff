// The error slot, and the texts of its numbers: one table for each hundred, indexed by the number less the hundred.
#include "base/error.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "base/file.h"
#include "base/log.h"
#include "platform/platform.h"

constinit uint32_t global_error = 0;
constinit char global_error_info[ERROR_DETAIL_SIZE] = {};

const char *const fdc_error_strings[29] = {
    "No disc in drive",
    "Disc write protected",
    "Disc not formatted",
    "Disc has unknown format",
    "Disc is formatted with invalid interleave",
    "Disc is unreadable",
    "Disc is not initialized",
    "Timeout during controller operation",
    "Disc recalibration failed",
    "Disc seek failed",
    "Disc read failed",
    "Disc write failed",
    "Disc format failed",
    "Disc verify failed",
    "Operation not supported",
    "Bad sector size",
    "Bad sector",
    "Bad track",
    "Cylinder out of range",
    "Head out of range",
    "Sector out of range",
    "Record out of range",
    "Block out of range",
    "Driver error",
    "Controller error",
    "Open failed",
    "Not installed",
    "No floppy drive installed",
    "Index hole not found",
};

namespace
{

constexpr const char *general_texts[] = {
    "OK",
    "", // the detail alone is the message
    "System error",
    "Invalid parameter",
    "Missing parameter",
    "Out of memory",
    "Not initialized",
    "Error in config file",
    "Error in config file",
    "Not supported",
};

constexpr const char *volume_texts[] = {
    "Unknown file type",
    "Unknown system",
    "Unknown access type",
    "Unsupported format",
    "Bad msus specifier",
    "No target specified",
    "Can't copy/move more than one file to another",
    "File not found",
    "Can't copy/move file to itself",
    "Invalid command",
    "Target already exists",
    "No space left on device",
    "Bad filename",
    "Bad directory entry",
    "Not a convertable file or errors in data structure",
    "Unable to read media",
    "Directory full",
    "Max. directory level exceeded",
    "Directory not found",
};

constexpr const char *file_texts[] = {
    "Can't open file",
    "File seek failed",
    "File read error",
    "File write error - check write protection",
    "Can't delete file - check write protection",
    "Error during flush",
    "Can't create temporary file",
    "Can't create file",
    "Flushing file buffers failed",
    "Can't set EOF for file",
    "Can't move file - check protections",
    "Can't get or set file attribute",
    "Can't create directory",
};

constexpr const char *gpib_texts[] = {
    "Device status error",
    "No device error",
    "Read error on device",
    "Write error on device",
    "Bus timeout",
    "Unsupported device",
    "No compatible controller found",
    "Wrong board specified",
    "System error",
    "Device diagnostics error",
    "Verify error",
    "No data found error",
    "End of file error",
    "End of volume error",
    "No disc in drive",
    "Disc blank or unsupported format",
    "End of cylinder",
    "CHS out of range",
    "Device not ready",
    "Medium is write protected",
    "Device busy",
    "Buffer underflow/overflow",
};

constexpr const char *protocol_texts[] = {
    "AMIGO DSJ error",
    "Can't get status info from device",
    "Short read",
    "Short write",
};

constexpr std::span<const char *const> tables[] = {
    general_texts, volume_texts, file_texts, fdc_error_strings, gpib_texts, protocol_texts,
};

static_assert(std::size(general_texts) == 10 && std::size(volume_texts) == 19 && std::size(file_texts) == 13 &&
              std::size(gpib_texts) == 22 && std::size(protocol_texts) == 4);

// Null for a number without a text.
const char *text_of(uint32_t number)
{
    if (number < 100 || number > 699) return nullptr;
    const std::span<const char *const> table = tables[number / 100 - 1];
    return number % 100 < table.size() ? table[number % 100] : nullptr;
}

} // namespace

uint32_t set_error(uint32_t number, const char *format, ...)
{
    // Formatted aside: the old detail may be one of the arguments of the new one.
    char detail[ERROR_DETAIL_SIZE] = "";
    if (format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        if (vsnprintf(detail, sizeof(detail), format, arguments) < 0) detail[0] = '\0';
        va_end(arguments);
    }
    memcpy(global_error_info, detail, sizeof(detail));
    global_error = number;
    return number;
}

void get_error(char *buffer)
{
    if (buffer == nullptr) {
        set_error(103, "NULL pointer");
        return;
    }
    char unnamed[24];
    const char *text = text_of(global_error);
    if (text == nullptr) {
        snprintf(unnamed, sizeof(unnamed), "Error %u", global_error);
        text = unnamed;
    }
    if (global_error_info[0] == '\0')
        snprintf(buffer, ERROR_TEXT_SIZE, "%s", text);
    else if (global_error == 101)
        snprintf(buffer, ERROR_TEXT_SIZE, "%.*s", ERROR_DETAIL_SIZE - 1, global_error_info);
    else
        snprintf(buffer, ERROR_TEXT_SIZE, "%s (%.*s)", text, ERROR_DETAIL_SIZE - 1, global_error_info);
}

void get_win_error(char *buffer, uint32_t size)
{
    if (buffer == nullptr || size == 0) return;
    platform_error_text(platform_last_error(), buffer, size);
}

const char *last_error(void)
{
    static constinit std::array<char, 256> text = {};
    if (platform_last_error() == 0) return "no error";
    get_win_error(text.data(), text.size());
    return text.data();
}

void PrintError(void)
{
    std::array<char, 256> text;
    get_win_error(text.data(), text.size());
    log_file(0, "%s\n", text.data());
}

void print_error(const char *program)
{
    char text[ERROR_TEXT_SIZE];
    get_error(text);
    log_file(0, "%s\n", text);
    const bool shown_by_the_log = logfile != 0 && logfile == Stdout;
    if (!shown_by_the_log) file_printf(Stderr, "[%s] Error: %s\n", program != nullptr ? program : "", text);
}
