// Names that a user gives to files which come to stand on a volume.
#pragma once

#include <string>

#include "volume/media.h"

// Whether a name, with or without its type, may be one on this volume. info: the file's entry, as far as it is known.
// Errors set: 200 what the name ends in is no type there, 212.
bool check_new_name(const MediaDescriptor *md, const FileInfo *info, const std::string &name);

// The stem of a name that ends in the file's own type, and in the length of its records where that is told; otherwise
// the name itself.
std::string without_own_type(const MediaDescriptor *md, const FileInfo *info, const std::string &name);

// Gives an entry another name, with the marker of its type; type and length of records stay. Errors set: 101 the name
// asks for another type or length, 200, 212.
bool rename_entry(const MediaDescriptor *md, FileInfo *info, const std::string &name);
