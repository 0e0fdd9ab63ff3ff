// Looks over an open volume for what is wrong with it, and changes nothing.
#pragma once

#include "console/findings.h"
#include "volume/media.h"

// Each slot of the directory by itself: entries that can't be read, dates that are none. False with the error of a
// failed read.
bool inspect_entries(MediaDescriptor *md, Findings *findings);

// Names that two files bear.
void inspect_names(const MediaDescriptor *md, Findings *findings);

// Where files, tables and free runs stand: what overlaps, reaches behind the end, or belongs to nobody.
void inspect_places(MediaDescriptor *md, Findings *findings);

// Spare tables against the main ones. False with the error of a failed read.
bool inspect_spares(MediaDescriptor *md, Findings *findings);

// All of these.
bool inspect_volume(MediaDescriptor *md, Findings *findings);

// The records that a file takes, whatever a damaged entry says.
uint64_t records_of_file(const MediaDescriptor *md, const FileInfo *info);
