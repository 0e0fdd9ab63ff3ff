// A copy of an image file ahead of a change.
#pragma once

#include <string>

#include "volume/media.h"

// Copies the image to MEDIUM.bak, or to the first free of MEDIUM.bak2, MEDIUM.bak3 and so on, never over a file. False
// with error 109 for other media, 210 when all names are taken, 307 when the copy can't be made; there is none then.
bool make_backup(const MediaDescriptor *md, std::string *ret_path);
