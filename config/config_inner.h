// What the reader of the configuration file and the readers of its sections share.
#pragma once

#include <cstdint>
#include <span>

#include "base/file.h"
#include "config/config_file.h"

constexpr uint32_t config_error = 107; // of a line whose words are wrong

// Where the values of [defaults] go.
struct ConfigValues {
    int32_t *loglevel;
    int32_t *board;
    uint32_t *port;
    int32_t *nosleep;
    int32_t *fastschedule;
    char *system;
    int32_t *filesystem;
    int32_t *use_file_headers;
    int32_t *use_type_names;
    int32_t *use_typed_extensions;
    int32_t *use_file_conversion;
};

struct ConfigLine {
    int32_t number;
    std::span<char *const> tokens;

    char *token(size_t index) const // null where the line has ended
    {
        return index < tokens.size() ? tokens[index] : nullptr;
    }
};

bool is_assign(const char *token); // null is none

// A line of each section. False with error 105 or 107.
bool read_media_line(const ConfigValues &values, const ConfigLine &line);
bool read_drive_line(const ConfigValues &values, const ConfigLine &line);
bool read_liftype_line(const ConfigValues &values, const ConfigLine &line);
bool read_default_line(const ConfigValues &values, const ConfigLine &line);

// The line at which the last reading of a file ended.
struct ConfigFault {
    int32_t line = 0;            // 0: at none
    int32_t offset = -1;         // of the fault in it; -1: it is wrong as a whole
    char text[CONFIG_LINE_SIZE]; // without its line end
};

const ConfigFault &config_fault();

// Opens the file tarvo.ini: in the present folder, else beside the library or the program that holds this code.
//   ret_path    its name as it was opened, FILE_PATH_SIZE bytes
//   ret_beside  the second place was looked at
// False when there is none.
bool open_config_file(FileHandle *ret_file, char *ret_path, bool *ret_beside);
