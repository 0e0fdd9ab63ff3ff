// What the files that are copied to a volume are called there, and of what type they are.
#pragma once

#include <cstdint>
#include <string>

#include "console/verbs.h"
#include "volume/media.h"

// What of the command line can't be, whatever the volume is; empty when nothing.
std::string put_usage_fault(const Arguments &arguments);
std::string type_usage_fault(const Arguments &arguments); // of --type, --system and --record alone

const char *default_type(uint32_t format); // of a file for which nothing is said

// Whether the volume knows the type and the system that were asked for. Errors set: 200, 201.
bool type_is_known(const MediaDescriptor *md, const Arguments &arguments);

// Whether a name loses its ending and its file becomes text.
bool has_text_ending(const Arguments &arguments, const std::string &name);

// The host name from which the engine makes name, length of records and type: that of the source or of --as, with what
// --type and --record say put into it.
std::string name_for_engine(const MediaDescriptor *md, const Arguments &arguments, const std::string &source);

// Whether the file shows in the directory: the types of purged files and of the directory's end are none for files.
bool can_be_listed(MediaDescriptor *md, const Arguments &arguments, const std::string &name);

// The name that the engine will look for, and store, in the directory.
std::string stored_name(const MediaDescriptor *md, const Arguments &arguments, const std::string &name);

// An entry as the engine takes it, without its date.
FileInfo new_entry(const Arguments &arguments);
