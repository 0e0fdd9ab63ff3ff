// Checks of places on a medium.
#include "volume/region.h"

#include "base/error.h"
#include "volume/access.h"

bool overlap(Region left, Region right)
{
    return left.start < right.start + right.length && right.start < left.start + left.length;
}

Region file_region(const FileInfo *info)
{
    return {info->location, (uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE};
}

const FileInfo *live_file_in(const MediaDescriptor *md, Region region)
{
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == 0 && overlap(file_region(info), region)) return info;
    }
    return nullptr;
}

bool table_fits(MediaDescriptor *md, Region region)
{
    if (region.length == 0) return true;
    if (region.start == 0) {
        set_error(213, "table over the system record");
        return false;
    }
    if (region.start + region.length > end_record(md)) {
        set_error(213, "table behind the end of the medium");
        return false;
    }
    const FileInfo *info = live_file_in(md, region);
    if (info == nullptr) return true;
    set_error(213, "table over file \"%s\"", info->name);
    return false;
}
