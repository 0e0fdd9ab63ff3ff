// The ends stand in a tree, so that damaged volumes, on which files lie over each other, take no longer than sound
// ones.
#include "volume/waiting_files.h"

#include <algorithm>

#include "base/error.h"
#include "base/memory.h"

namespace
{
bool has_place(const FileInfo *info)
{
    return info->deleted == 0 && info->size != 0;
}
}

WaitingFiles::WaitingFiles(const FileInfo *list)
{
    size_t most = 0;
    for (const FileInfo *info = list; info != nullptr; info = info->next) most += has_place(info) ? size_t{1} : 0;
    if (most == 0) return;
    starts = static_cast<uint64_t *>(my_malloc(most * sizeof *starts));
    ends = static_cast<uint64_t *>(my_malloc(2 * most * sizeof *ends));
    failed = starts == nullptr || ends == nullptr;
    if (failed) {
        set_error(105, "");
        return;
    }
    for (const FileInfo *info = list; info != nullptr; info = info->next) {
        if (!has_place(info)) continue;
        const Region place = file_region(info);
        starts[count] = place.start;
        ends[most + count] = place.start + place.length;
        count++;
    }
    ends[0] = 0;
    for (size_t i = most - 1; i > 0; i--) ends[i] = std::max(ends[2 * i], ends[2 * i + 1]);
}

WaitingFiles::~WaitingFiles()
{
    my_free(starts);
    my_free(ends);
}

bool WaitingFiles::known() const
{
    return !failed;
}

void WaitingFiles::leave()
{
    if (left < count) left++;
}

// Of the files that begin ahead of its end, does one end behind its start?
bool WaitingFiles::meet(Region region) const
{
    const uint64_t *behind = std::lower_bound(starts + left, starts + count, region.start + region.length);
    size_t from = count + left;
    size_t to = count + static_cast<size_t>(behind - starts);
    for (; from < to; from /= 2, to /= 2) {
        if (from % 2 != 0 && ends[from++] > region.start) return true;
        if (to % 2 != 0 && ends[--to] > region.start) return true;
    }
    return false;
}
