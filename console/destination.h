// Where a verb copies or moves files to.
#pragma once

#include <string>

struct Destination {
    std::string medium;   // empty: the one that the files are on
    std::string name;     // there; empty: the files keep their names
    bool guessed = false; // taken for a medium since the host has a file of that name
};

// NAME or :NAME on `medium` itself, OTHER, or OTHER:NAME. What has a colon or a separator of the host's, and what is a
// file of the host, is a medium. Empty, or why it can't be a destination.
std::string find_destination(const std::string &word, const std::string &medium, Destination *ret_destination);
