// Where the spare copy of a table may stand.
#pragma once

#include "volume/region.h"

// The distance to the spare tables comes from the medium. A spare table may be the main one itself, but one that only
// reaches into a main table would destroy it. Errors set: 213.
bool spare_fits(const MediaDescriptor *md, uint32_t main_start, Region spare);
