// What no file and no table stands in is free.
#include "console/repair_volume.h"

#include <algorithm>
#include <vector>

#include "base/error.h"
#include "base/memory.h"
#include "console/inspection.h"
#include "volume/access.h"
#include "volume/region.h"

namespace
{
void add_region(std::vector<Region> *regions, uint64_t start, uint64_t length)
{
    if (length != 0) regions->push_back({start, length});
}

std::vector<Region> taken_regions(const MediaDescriptor *md)
{
    std::vector<Region> taken;
    add_region(&taken, md->dir_start, md->dir_size);
    add_region(&taken, md->alloc_start, md->alloc_size);
    add_region(&taken, md->spare_dir_start, md->dir_size);
    add_region(&taken, md->spare_alloc_start, md->alloc_size);
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == 0) add_region(&taken, info->location, records_of_file(md, info));
    }
    std::sort(taken.begin(), taken.end(), [](Region left, Region right) { return left.start < right.start; });
    return taken;
}

void release_list(MediaDescriptor *md)
{
    while (md->alloc_list != nullptr) {
        AllocEntry *next = md->alloc_list->next;
        my_free(md->alloc_list);
        md->alloc_list = next;
    }
}

struct ListEnd {
    AllocEntry **link;
    bool failed = false;
};

void append_run(ListEnd *list, uint64_t start, uint64_t end)
{
    if (list->failed || start >= end) return;
    *list->link = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
    list->failed = *list->link == nullptr;
    if (list->failed) return;
    **list->link = {static_cast<uint32_t>(start), static_cast<uint32_t>(end - start), nullptr};
    list->link = &(*list->link)->next;
}
}

bool rebuild_free_list(MediaDescriptor *md)
{
    const uint64_t last = md->records == 0 ? end_record(md) : md->records;
    const uint64_t area_end = std::min(last, uint64_t{md->file_area_start} + md->data_size / RECORD_SIZE);
    release_list(md);
    ListEnd list = {&md->alloc_list};
    uint64_t reached = md->file_area_start;
    for (const Region &region : taken_regions(md)) {
        append_run(&list, reached, std::min(region.start, area_end));
        reached = std::max(reached, region.start + region.length);
    }
    append_run(&list, reached, area_end);
    if (!list.failed) return true;
    release_list(md);
    set_error(105, "");
    return false;
}
