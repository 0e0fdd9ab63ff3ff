// A new entry at the end of the top-level list, with room for its file.
#pragma once

#include "volume/media.h"
#include "volume/survey.h"

// As image_create_file(md, new_file, 0, 60); survey may be null. The entry in the list, or null with the error set.
FileInfo *create_entry(MediaDescriptor *md, FileInfo *new_file, ListSurvey *survey);
