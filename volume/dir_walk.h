// A command of image_dir_ops on its way over the entries: the walk itself, and what each command does.
#pragma once

#include <string>
#include <vector>

#include "volume/operations_inner.h"

struct Walk {
    MediaDescriptor *md;
    const char *const *filespec;
    const char *dest_path;
    const char *dest_file;
    FileInfo *info;
    uint8_t attributes;
    int32_t command;
    ConfirmCallback confirm;
    FileInfo *start_directory;
    uint32_t start_level; // of the entries that the walk begins with
    bool recursive;
    MediaDescriptor *target = nullptr; // md, or a volume opened for this walk
    std::string host_path = {};
    std::vector<FileInfo *> entered = {}; // directories, the innermost last
    FileInfo *current = nullptr;
    FileInfo *behind = nullptr; // of a deleted entry: the one before it
    bool deleted = false;       // the current entry is gone
    std::string name = {};      // of the current entry, as printed
    bool go_on = true;
    bool at_once = false; // the operation ends here, no table is written
    bool matched = false;
    bool source_changed = false;
    bool target_changed = false;
};

inline bool on_one_volume(const Walk *walk)
{
    return walk->target == walk->md;
}

// The command on an entry that matches. Errors set: 209 for a number that is no command, those of the command.
void carry_out(Walk *walk, FileInfo *entry);

// The commands that don't go over the entries.
void create_file(Walk *walk);
void add_files(Walk *walk);
