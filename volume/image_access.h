// The row of image files.
#pragma once

#include "volume/access.h"

extern const MediumAccess image_access;

// Whether an open file of the host is the image file of a medium.
bool is_image_file(const MediaDescriptor *md, const FileFacts &facts);
