// Free space, counted anew.
#pragma once

#include "volume/media.h"

// Makes the free list of a System 45 disk what files and tables leave of the file area. False with error 105, the list
// is then empty.
bool rebuild_free_list(MediaDescriptor *md);
