// Names against patterns: "*" at the front, at the end or at both.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/navigate.h"
#include "volume/type_text.h"

int32_t wildcards = 1;

namespace
{
enum Match : int32_t { no_match = 0, name_match = 1, name_by_wildcard = 3, full_match = 4, full_by_wildcard = 5 };

// The name, and name and extension joined; a longer text than a volume can hold is joined as far as it goes.
struct Subject {
    std::string_view name;
    std::string_view full;
};

using TextTest = bool (*)(std::string_view text, std::string_view part);

bool holds(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

bool begins(std::string_view text, std::string_view part)
{
    return text.starts_with(part);
}

bool ends(std::string_view text, std::string_view part)
{
    return text.ends_with(part);
}

Match match_part(const Subject &subject, std::string_view part, TextTest test)
{
    if (test(subject.name, part)) return name_by_wildcard;
    return test(subject.full, part) ? full_by_wildcard : no_match;
}

Match match_pattern(const Subject &subject, std::string_view pattern)
{
    bool front = wildcards != 0 && pattern.starts_with('*');
    bool back = wildcards != 0 && pattern.ends_with('*');
    if (front && back) {
        std::string_view inner = pattern.size() < 2 ? std::string_view() : pattern.substr(1, pattern.size() - 2);
        return match_part(subject, inner, holds);
    }
    if (back) return match_part(subject, pattern.substr(0, pattern.size() - 1), begins);
    if (front) return match_part(subject, pattern.substr(1), ends);
    if (pattern == subject.full) return full_match;
    return pattern == subject.name ? name_match : no_match;
}
}

int32_t match_filespec(const char *const *filespec, const char *filename, const char *extension)
{
    bool everything = filespec == nullptr || filespec[0] == nullptr;
    log_file(3, "match_filespec(filespec=\"%s\", filename=\"%s\", extension=\"%s\")\n",
             log_text(everything ? nullptr : filespec[0]), log_text(filename), log_text(extension));
    if (everything) return name_match;
    if (filename == nullptr) return no_match;
    char joined[2 * FILE_PATH_SIZE];
    Subject subject = {filename, filename};
    if (extension != nullptr) {
        std::string_view type = extension;
        size_t name_length = std::min(subject.name.size(), size_t{FILE_PATH_SIZE});
        size_t type_length = std::min(type.size(), size_t{FILE_PATH_SIZE} - 1);
        std::memcpy(joined, filename, name_length);
        joined[name_length] = '.';
        std::memcpy(joined + name_length + 1, extension, type_length);
        subject.full = {joined, name_length + 1 + type_length};
    }
    for (; *filespec != nullptr; filespec++) {
        Match match = match_pattern(subject, *filespec);
        if (match != no_match) return match;
    }
    return no_match;
}

uint32_t match_count(const MediaDescriptor *md, const char *const *filespec)
{
    log_file(3, "match_count(md=%lu, filespec=\"%s\")\n", log_pointer(md),
             log_text(filespec == nullptr ? nullptr : filespec[0]));
    uint32_t count = 0;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        char type[type_text_size];
        type_text(info, type);
        if (match_filespec(filespec, info->name, type) != 0) count++;
    }
    return count;
}
