// What cp and mv are to do, and what is in the way of it.
#pragma once

#include <string>
#include <vector>

#include "console/change.h"
#include "console/destination.h"
#include "console/medium.h"

struct CopyItem {
    ChangeItem file;         // the original
    FileInfo from;           // its entry, by the name that the copy gets where to_file is empty
    std::string to_file;     // from which the engine makes the copy's name, and maybe its type
    std::string stored;      // that name in the directory
    FileInfo *old = nullptr; // has it already, and gives way
    std::string old_name = {};
    bool wanted = true;        // the user hasn't said no
    FileInfo *entry = nullptr; // the copy
};

struct CopyRun {
    const Arguments &arguments;
    bool moving;
    Destination destination = {};
    Reading source = {}; // the medium that the files are on
    Medium other = {};   // another one that they go to; null: they stay on theirs
    std::vector<CopyItem> items = {};
    Tally tally = {};
};

MediaDescriptor *target_of(const CopyRun &run);

// Fills items, with what is in the way of each.
void plan_copies(CopyRun *run, std::vector<ChangeItem> files);
