// What of an entry is left when it has gone through the directory.
#pragma once

#include "volume/media.h"

// The entry as it will be read, from the bytes that are written for it. False when nothing is read from them, or a
// purged file.
bool entry_as_stored(MediaDescriptor *md, const FileInfo *info, FileInfo *ret_stored);
