// Patterns against the catalogue of a volume.
#include "console/matches.h"

#include "console/roman8.h"
#include "volume/catalogue_inner.h"
#include "volume/names.h"

namespace
{
void collect(void *context, const MediaDescriptor *, const FileInfo *info)
{
    if (info->deleted == 0 && info->is_directory == 0)
        static_cast<std::vector<const FileInfo *> *>(context)->push_back(info);
}
}

std::vector<const char *> engine_patterns(const std::vector<std::string> &words)
{
    std::vector<const char *> patterns;
    patterns.reserve(words.size() + 1);
    for (const std::string &word : words) patterns.push_back(word.c_str());
    patterns.push_back(nullptr);
    return patterns;
}

std::vector<const FileInfo *> matching_files(const MediaDescriptor *md, const std::vector<std::string> &patterns)
{
    std::vector<const FileInfo *> files;
    visit_matching(md, engine_patterns(patterns).data(), collect, &files);
    return files;
}

std::vector<std::string> idle_patterns(const MediaDescriptor *md, const std::vector<std::string> &patterns)
{
    std::vector<std::string> idle;
    for (const std::string &pattern : patterns) {
        if (matching_files(md, {pattern}).empty()) idle.push_back(pattern);
    }
    return idle;
}

std::string visible_name(const MediaDescriptor *md, const FileInfo *info)
{
    char name[VISIBLE_NAME_SIZE];
    char text[VISIBLE_NAME_SIZE * utf8_bytes];
    compose_filename(md, info, name);
    return {text, roman8_to_utf8(text, name)};
}
