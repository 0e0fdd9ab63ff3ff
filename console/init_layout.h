// What a new volume is to look like, from the words of a command line.
#pragma once

#include <string>

#include "console/verbs.h"
#include "volume/media.h"
#include "volume/media_table.h"

// Fills in what image_initialize wants, and the size of an image in bytes. False: *ret_fault says what is wrong with
// the command line, or is empty, and the error is set: 203 for a disk that its computer can't say the size of.
bool lay_out_volume(const Arguments &arguments, MediaDescriptor *ret_layout, std::string *ret_fault);

const MediaTableRow *find_medium(const std::string &name); // of the table in force, whatever the case; null for none

// The computer of a System 45 disk, as --system calls it.
const char *computer_of(const MediaDescriptor &layout);

// A disk whose free space is one run that is too long to be handed out.
bool is_too_large_to_fill(const MediaDescriptor &layout);
