// Reads and writes the two text fields of an entry as the one stretch of memory that they are, through the entry's
// own address, so that no text call ever runs over the end of a field.
#include "volume/type_text.h"

#include <cstring>

namespace
{
constexpr size_t type_offset = offsetof(FileInfo, type_string);
constexpr size_t system_offset = offsetof(FileInfo, system_string);
static_assert(system_offset - type_offset == sizeof(FileInfo::type_string), "the system text follows the type text");
static_assert(sizeof(FileInfo::type_string) + sizeof(FileInfo::system_string) == type_text_size);

size_t bounded_length(const char *text, size_t limit)
{
    size_t length = 0;
    while (length < limit && text[length] != '\0') length++;
    return length;
}
}

void type_text(const FileInfo *info, char *text)
{
    const char *bytes = reinterpret_cast<const char *>(info) + type_offset;
    std::memcpy(text, bytes, type_text_size);
    text[type_text_size - 1] = '\0';
}

void set_type_text(FileInfo *info, const char *text)
{
    char *bytes = reinterpret_cast<char *>(info) + type_offset;
    size_t length = bounded_length(text, type_text_size - 1);
    std::memcpy(bytes, text, length);
    bytes[length] = '\0';
}

void set_system_text(FileInfo *info, const char *text)
{
    size_t length = bounded_length(text, sizeof info->system_string - 1);
    std::memcpy(info->system_string, text, length);
    info->system_string[length] = '\0';
}
