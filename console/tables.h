// The tables of a volume, written whole or not at all.
#pragma once

#include "volume/media.h"

enum class TablesEnd : uint8_t {
    written,
    as_before, // with the reason as the last error
    torn       // likewise; the old tables couldn't be put back
};

// Writes main and spare tables from the lists in memory. When that fails in the midst of it, what stood there before is
// put back.
TablesEnd write_tables_whole(MediaDescriptor *md);

// The same, and reports what went wrong. False then; `nothing` is the sentence for tables that are as before.
bool commit_tables(MediaDescriptor *md, const char *nothing);
