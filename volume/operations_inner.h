// Operations on files below their exported functions: for the faces, which want to know more than the result says.
#pragma once

#include "base/log.h"
#include "volume/operations.h"

struct CopyOrder {
    const char *to_file = nullptr;       // host path from which the new name is made; null keeps the name
    bool overwrite = false;              // a file of that name gives way
    ProgressCallback progress = nullptr; // may be null
    bool only_plan = false;              // the entry is made, in memory, but no record is copied
};

struct Copying {
    int32_t result = -1;       // as that of image_copy_file
    bool whole = false;        // every record is there: the original may go
    FileInfo *entry = nullptr; // in the target's list since; null when none was made
    bool deleted_old = false;  // a file of this name was taken out of the list
};

// As image_copy_file.
Copying copy_file(MediaDescriptor *md, const FileInfo *from_file, MediaDescriptor *dest_md, const CopyOrder &order);

// Main and spare tables of a volume, the main ones first. 0, or -1 with the error set.
int32_t update_tables(MediaDescriptor *md);

// Whether an entry may get this name, as far as the format's rules go: reading would refuse the entry otherwise. False
// with error 212.
bool may_be_called(const MediaDescriptor *md, const FileInfo *entry, const char *name);
