// What get copies, and where on the host each of it goes.
#pragma once

#include <string>
#include <vector>

#include "console/matches.h"
#include "console/verbs.h"

struct GetItem {
    const FileInfo *info;
    const FileInfo *top; // the directory of the volume in whose place stands the host's; null: the top level
};

// The files that the choices mean, none of them purged. With -R directories as well, each ahead of what is in it, where
// the choice means all of one.
std::vector<GetItem> items_of(const MediaDescriptor *md, const std::vector<Choice> &choices, bool recursive);

struct GetPlace {
    std::string name;   // on the volume, with its directories, for messages
    std::string folder; // of the host, empty for the present one
    std::string path;   // in it; made of names none of which leads elsewhere
};

// Computed anew for each use: the paths of a large tree together would be far larger than the tree.
GetPlace place_of(const MediaDescriptor *md, const GetItem &item, const Arguments &arguments, uint16_t flags);
