// A new entry at the end of the top-level list, with room for its file.
#pragma once

#include "volume/media.h"
#include "volume/survey.h"

// Whether the directory will show an entry. One of the type that ends a LIF directory would hide all behind it, which
// the next rewrite loses; one that reads as purged, and isn't meant to, would be gone at once. 0, or -1 with error 200
// or 213.
int32_t check_entry(MediaDescriptor *md, const FileInfo *new_file);

// As image_create_file(md, new_file, 0, 60); survey may be null. The entry in the list, or null with the error set.
FileInfo *create_entry(MediaDescriptor *md, FileInfo *new_file, ListSurvey *survey);
