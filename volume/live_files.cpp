// Where files are. Free runs and files both come from the medium, in any number, so that a question may not cost a walk
// over all files.
#include "volume/live_files.h"

#include <algorithm>

#include "base/error.h"
#include "base/memory.h"

namespace
{
bool takes_records(const FileInfo *info)
{
    return info->deleted == 0 && info->size != 0;
}
}

LiveFiles::LiveFiles(const MediaDescriptor *md)
{
    size_t files = 0;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next)
        files += takes_records(info) ? size_t{1} : 0;
    if (files == 0) return;
    extents = static_cast<Extent *>(my_malloc(files * sizeof(Extent)));
    if (extents == nullptr) {
        set_error(105, "");
        failed = true;
        return;
    }
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (!takes_records(info)) continue;
        Region region = file_region(info);
        extents[count++] = {region.start, region.start + region.length};
    }
    std::sort(extents, extents + count, [](Extent left, Extent right) { return left.start < right.start; });
    for (size_t i = 1; i < count; i++) extents[i].reach = std::max(extents[i].reach, extents[i - 1].reach);
}

LiveFiles::~LiveFiles()
{
    my_free(extents);
}

bool LiveFiles::known() const
{
    return !failed;
}

bool LiveFiles::meet(Region region) const
{
    auto starts_ahead = [](Extent extent, uint64_t end) { return extent.start < end; };
    const Extent *behind = std::lower_bound(extents, extents + count, region.start + region.length, starts_ahead);
    return behind != extents && (behind - 1)->reach > region.start;
}
