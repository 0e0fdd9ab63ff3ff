// What a walk over the top-level list finds out for a new file. Who inserts many files, and alone changes the list,
// keeps it from one to the next.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

#include "volume/media.h"

struct ListSurvey {
    FileInfo *last = nullptr;
    uint64_t entries = 0;
    uint64_t end = 0;                           // first record behind every file
    bool made = false;                          // with the names
    std::unordered_set<std::string> names = {}; // that a search finds
};

void survey_list(const MediaDescriptor *md, ListSurvey *ret_survey); // without the names

// What is in the list by a name, as image_find_file tells it; a survey, which may be null, is made where it isn't yet.
FileInfo *find_listed(MediaDescriptor *md, ListSurvey *survey, const char *name);

// An entry has come to stand at the end of the list.
void add_to_survey(const MediaDescriptor *md, ListSurvey *survey, FileInfo *info);
