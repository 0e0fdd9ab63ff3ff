// The files of a volume that patterns mean.
#pragma once

#include <string>
#include <vector>

#include "volume/media.h"

// A list of patterns as the engine takes it, ended by a null pointer.
std::vector<const char *> engine_patterns(const std::vector<std::string> &words);

// The files that match, in the order of the directory; without patterns all. Neither purged ones nor directories.
std::vector<const FileInfo *> matching_files(const MediaDescriptor *md, const std::vector<std::string> &patterns);

// Those of the patterns that no file matches.
std::vector<std::string> idle_patterns(const MediaDescriptor *md, const std::vector<std::string> &patterns);

// The name of a file as users read it, in UTF-8: with length of records and type.
std::string visible_name(const MediaDescriptor *md, const FileInfo *info);
