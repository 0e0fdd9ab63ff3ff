// An entry written as the format does it, and read again.
#include "console/stored_entry.h"

#include "volume/access.h"
#include "volume/entries.h"

bool entry_as_stored(MediaDescriptor *md, const FileInfo *info, FileInfo *ret_stored)
{
    uint8_t bytes[RECORD_SIZE] = {};
    uint32_t size = 0;
    *ret_stored = {};
    set_file_info(md, info, bytes);
    return get_file_info(md, ret_stored, bytes, &size) == 1 && ret_stored->deleted == 0;
}
