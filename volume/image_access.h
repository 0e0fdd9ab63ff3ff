// The row of image files.
#pragma once

#include "volume/access.h"

extern const MediumAccess image_access;
