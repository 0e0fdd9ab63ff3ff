// The files of a volume that the words of a command line mean: names, patterns, and paths where there are directories.
#pragma once

#include <string>
#include <vector>

#include "volume/catalogue_inner.h"
#include "volume/media.h"

// A word, looked up on a volume. A path to a directory means all that is in it. Of another path the last part is a
// pattern for the directory ahead of it, and a word that isn't a path is a pattern for the top level. A path that leads
// nowhere is a pattern too, since a name may hold a slash.
struct Choice {
    std::string word;
    const FileInfo *list = nullptr;      // null: the directory is empty
    const FileInfo *directory = nullptr; // that the word itself names, not null for the root
    bool whole = false;                  // all of the list
    std::string pattern;                 // otherwise
};

// One for each word; without words one for the top level.
std::vector<Choice> choices_of(MediaDescriptor *md, const std::vector<std::string> &words);

// Choices of one list, which a walk goes through once, whatever number of patterns it is held against.
struct ChoiceGroup {
    const FileInfo *list;
    const FileInfo *directory;
    std::vector<std::string> patterns; // none: all
};

// In the order of their first words.
std::vector<ChoiceGroup> groups_of(const std::vector<Choice> &choices);

// Calls `visit` for the entries of a group, as visit_selected does.
uint32_t visit_group(const MediaDescriptor *md, const ChoiceGroup &group, bool recursive, EntryVisitor visit,
                     void *context);

// Those of the words that no file matches; purged files and directories don't count as files.
std::vector<std::string> idle_words(const MediaDescriptor *md, const std::vector<Choice> &choices, bool recursive);

// For volumes without directories: the files that a pattern matches, in the order of their entries; without patterns
// all of the volume, those in directories too.
std::vector<const FileInfo *> matching_files(const MediaDescriptor *md, const std::vector<std::string> &patterns);

// Those of the patterns that no file matches.
std::vector<std::string> idle_patterns(const MediaDescriptor *md, const std::vector<std::string> &patterns);

// The name of a file as users read it, in UTF-8: with length of records and type.
std::string visible_name(const MediaDescriptor *md, const FileInfo *info);

// The same behind the names of the directories that hold it, with slashes between them.
std::string visible_path(const MediaDescriptor *md, const FileInfo *info);
