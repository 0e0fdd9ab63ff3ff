// Entries of a volume and their places on the host.
#include "console/get_items.h"

#include "platform/platform.h"
#include "volume/extract_inner.h"
#include "volume/names.h"

namespace
{
struct Collection {
    std::vector<GetItem> items;
    const FileInfo *top;
    bool directories;
};

void collect(void *context, const MediaDescriptor *, const FileInfo *info)
{
    auto *collection = static_cast<Collection *>(context);
    if (info->deleted != 0 || (info->is_directory != 0 && !collection->directories)) return;
    collection->items.push_back({info, collection->top});
}

void collect_group(const MediaDescriptor *md, const ChoiceGroup &group, bool recursive, Collection *collection)
{
    const bool named = recursive && group.directory != nullptr;
    collection->directories = recursive && group.patterns.empty();
    collection->top = group.list == nullptr ? nullptr : group.list->parent;
    if (named) {
        collection->top = group.directory->parent;
        collection->items.push_back({group.directory, collection->top});
    }
    visit_group(md, group, recursive, collect, collection);
}

std::string host_name(const MediaDescriptor *md, const FileInfo *info)
{
    char name[VISIBLE_NAME_SIZE];
    compose_filename(md, info, name);
    return safe_host_name(name);
}

std::string joined(const std::string &folder, const std::string &name)
{
    if (folder.empty() || name.empty()) return folder.empty() ? name : folder;
    return platform_is_separator(folder.back()) ? folder + name : folder + platform_separator() + name;
}

// The directories between an entry and the top, each by a name that is safe by itself.
std::string host_folder(const MediaDescriptor *md, const GetItem &item)
{
    std::string folder;
    for (const FileInfo *parent = item.info->parent; parent != item.top; parent = parent->parent) {
        folder = joined(host_name(md, parent), folder);
    }
    return folder;
}
}

std::vector<GetItem> items_of(const MediaDescriptor *md, const std::vector<Choice> &choices, bool recursive)
{
    Collection collection = {};
    for (const ChoiceGroup &group : groups_of(choices)) {
        if (!recursive && group.directory != nullptr && group.patterns.empty()) continue;
        collect_group(md, group, recursive, &collection);
    }
    return collection.items;
}

GetPlace place_of(const MediaDescriptor *md, const GetItem &item, const Arguments &arguments, uint16_t flags)
{
    GetPlace place;
    place.name = visible_path(md, item.info);
    if (!arguments.output.empty()) {
        place.path = arguments.output;
        return place;
    }
    place.folder = joined(arguments.folder, host_folder(md, item));
    ExtractOrder order;
    order.flags = item.info->is_directory != 0 ? uint16_t{0} : flags;
    if (!place.folder.empty()) order.destination = place.folder.c_str();
    place.path = extraction_path(md, item.info, order);
    return place;
}
