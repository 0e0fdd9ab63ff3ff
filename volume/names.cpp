// Names of files: what a volume can hold, and what a host sees.
#include "volume/names.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/marker.h"
#include "volume/type_text.h"

int32_t pascal_mode = 1;

namespace
{
constexpr uint32_t default_record_len = 128;
constexpr size_t extension_limit = 4;
constexpr size_t marked_name_limit = 9;
constexpr size_t typed_positions = 7; // an extension is looked for among so many last characters

bool is_letter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

// System 45: each blank raises the limit by one.
int32_t check_system45_name(const char *filename, const char **message)
{
    size_t limit = 6;
    size_t position = 0;
    bool blanks = false;
    for (; position < limit && filename[position] != '\0'; position++) {
        char character = filename[position];
        if (character == ' ') {
            limit++;
            blanks = true;
        }
        if (character == '"' || character == ':' || character == '\xFF') {
            *message = "filename contains invalid character(s)";
            return -1;
        }
    }
    if (blanks) {
        *message = "filename contains blanks (ignored)";
    } else if (filename[position] != '\0') {
        *message = "filename too long (truncated)";
    }
    return 0;
}

void check_letter_name(const char *filename, size_t limit, const char **message)
{
    // Kept: only the first character is looked at, and none is refused.  [KeepsNameCheckByFirstCharacter]
    if (!is_letter(filename[0])) {
        *message = "filename should start with a letter";
    } else if (std::strlen(filename) > limit) {
        *message = "filename too long (truncated)";
    }
}

char *append(char *target, const char *text)
{
    size_t length = std::strlen(text);
    std::memcpy(target, text, length);
    return target + length;
}

// A host name being taken apart; text ends at length.
struct HostName {
    char text[FILE_PATH_SIZE];
    size_t length;
};

void cut(HostName *name, size_t length)
{
    name->length = length;
    name->text[length] = '\0';
}

// The last "." among the last positions, or with `record_mark` the last ".&"; npos when there is none.
constexpr size_t npos = ~size_t{0};

size_t find_dot(const HostName *name, bool record_mark)
{
    size_t first = name->length > typed_positions ? name->length - typed_positions : 0;
    for (size_t position = name->length; position-- > first;) {
        if (name->text[position] != '.') continue;
        if (!record_mark || name->text[position + 1] == '&') return position;
    }
    return npos;
}

// Cuts ".&n" off: n bytes make a record of n / 2 words. A number that is none stays in the name.
void take_record_length(HostName *name, size_t dot, FileInfo *info, const char *path)
{
    uint32_t bytes = 0;
    const char *digits = name->text + dot + 2;
    std::from_chars_result result = std::from_chars(digits, name->text + name->length, bytes);
    uint32_t words = bytes / 2;
    if (result.ec != std::errc() || words == 0 || words >= 0x10000) {
        log_file(1, "Invalid block size on file %s (using default)\n", path);
        return;
    }
    info->record_len = words;
    cut(name, dot);
}

void take_type(const MediaDescriptor *md, HostName *name, FileInfo *info, const char *path, const char *system_string)
{
    info->record_len = default_record_len;
    size_t dot = find_dot(name, false);
    if (dot == npos) return;
    char type[typed_positions + 1] = "";
    if (name->text[dot + 1] != '&') {
        std::memcpy(type, name->text + dot + 1, name->length - dot); // with its NUL
        cut(name, dot);
        dot = find_dot(name, true);
    }
    if (dot != npos) take_record_length(name, dot, info, path);
    uint16_t word = 0;
    if (set_filetype(md->format, type, system_string, &word) < 0) {
        log_file(1, "Invalid file type on file %s (using default)\n", path);
        return;
    }
    info->type = word;
    set_type_text(info, type);
}
}

int32_t check_valid_filename(uint32_t format, const char *filename, const char *extension, char *ret_message)
{
    if (filename == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const char *message = "";
    int32_t result = 0;
    if (filename[0] == '\0') {
        message = "empty filename";
        result = -1;
    } else if (format == FORMAT_DISK45 || format == FORMAT_TAPE45) {
        result = check_system45_name(filename, &message);
    } else if (format == FORMAT_LIF || format == FORMAT_SDF) {
        check_letter_name(filename, volume_format(format).name_limit, &message);
    } else {
        message = "unsupported format";
        set_error(203, "");
        result = -1;
    }
    if (message[0] == '\0' && extension != nullptr && std::strlen(extension) > extension_limit) {
        message = "extension too long (truncated)";
    }
    if (ret_message != nullptr) std::memcpy(ret_message, message, std::strlen(message) + 1);
    return result;
}

void decode_filename(const FileInfo *info, uint32_t format, char *ret_filename)
{
    if (info == nullptr || ret_filename == nullptr) {
        set_error(103, "Null pointer");
        return;
    }
    std::memcpy(ret_filename, info->name, sizeof info->name);
    ret_filename[sizeof info->name - 1] = '\0';
    if (pascal_mode == 0 || format != FORMAT_LIF) return;
    int32_t position = marker_position(ret_filename);
    if (position < 0) return;
    char type[type_text_size];
    type_text(info, type);
    if (marker_belongs(info->type, type, ret_filename[position])) ret_filename[position] = '\0';
}

void encode_filename(FileInfo *info, uint32_t format, const char *filename)
{
    if (info == nullptr || filename == nullptr) {
        set_error(103, "Null pointer");
        return;
    }
    size_t length = std::min(std::strlen(filename), sizeof info->name - 1);
    std::memmove(info->name, filename, length);
    info->name[length] = '\0';
    if (pascal_mode == 0 || format != FORMAT_LIF) return;
    char type[type_text_size];
    type_text(info, type);
    char marker = marker_of(type, info->type);
    if (marker == 0) return;
    if (length > marked_name_limit) {
        log_file(1, "filename \"%s\" too long for Pascal types (truncated)\n", filename);
        length = marked_name_limit;
    }
    std::memset(info->name + length, '_', marked_name_limit + 1 - length);
    info->name[length] = marker;
    info->name[marked_name_limit + 1] = '\0';
}

void compose_filename(const MediaDescriptor *md, const FileInfo *info, char *ret_file)
{
    decode_filename(info, md->format, ret_file);
    if (md->use_typed_extensions == 0 || info->is_directory != 0) return;
    char *end = ret_file + std::strlen(ret_file);
    if (info->record_len != default_record_len) {
        end = append(end, ".&");
        end = std::to_chars(end, end + 11, info->record_len * 2).ptr;
    }
    *end++ = '.';
    type_text(info, end);
}

void process_filepath(const MediaDescriptor *md, FileInfo *info, const char *path, const char *system_string,
                      int32_t strip_directory)
{
    if (path == nullptr) return;
    const char *start = path;
    if (strip_directory != 0) {
        for (const char *at = path; *at != '\0'; at++) {
            if (*at == '\\' || *at == ':' || *at == '/') start = at + 1;
        }
    }
    HostName name;
    name.length = std::min(std::strlen(start), sizeof name.text - 1);
    std::memcpy(name.text, start, name.length);
    name.text[name.length] = '\0';
    if (md->use_typed_extensions != 0) take_type(md, &name, info, path, system_string);
    encode_filename(info, md->format, name.text);
    info->name[volume_format(md->format).name_limit] = '\0';
}
