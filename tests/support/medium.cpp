// Opens through the engine; walks lists by hand.
#include "tests/support/medium.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "base/memory.h"

namespace tests
{

MediaDescriptor usual_options()
{
    MediaDescriptor options{};
    options.use_type_names = 1;
    options.use_typed_extensions = 1;
    return options;
}

Medium::Medium(const std::string &target, uint16_t flags) : md(nullptr)
{
    const MediaDescriptor options = usual_options();
    md = image_open(target.c_str(), &options, flags);
}

Medium::Medium(const std::string &target, uint16_t flags, const MediaDescriptor *options)
    : md(image_open(target.c_str(), options, flags))
{
}

Medium::~Medium()
{
    image_close(md);
}

OpenVolume::OpenVolume(const LifVolume &volume, uint16_t flags) : OpenVolume(lif_image(volume), flags) {}

OpenVolume::OpenVolume(const Bytes &image, uint16_t flags) : file(image), medium(file.path(), flags), md(medium.md) {}

HandMedium::HandMedium(const Bytes &image) : file(image)
{
    if (file_open(&md.file, file.path(), "rb+", 0) != 1) std::abort(); // without it the test would look at nothing
    md.size = static_cast<uint32_t>(image.size());
    md.use_type_names = 1;
    md.use_typed_extensions = 1;
}

HandMedium::~HandMedium()
{
    while (md.alloc_list != nullptr) {
        AllocEntry *next = md.alloc_list->next;
        my_free(md.alloc_list);
        md.alloc_list = next;
    }
    image_free_directory(&md, nullptr);
    my_free(md.inode_table);
    file_close(md.file);
}

std::string type_text(const FileInfo &info)
{
    const char *bytes = reinterpret_cast<const char *>(&info) + offsetof(FileInfo, type_string);
    std::string text;
    while (text.size() < sizeof info.type_string + sizeof info.system_string && bytes[text.size()] != '\0')
        text.push_back(bytes[text.size()]);
    return text;
}

void set_type_text(FileInfo &info, const std::string &text)
{
    std::memset(info.type_string, 0, sizeof info.type_string);
    std::memcpy(info.type_string, text.data(), std::min(text.size(), sizeof info.type_string - 1));
}

FileInfo named(const std::string &name, const std::string &type)
{
    FileInfo info{};
    std::memcpy(info.name, name.data(), std::min(name.size(), sizeof info.name - 1));
    set_type_text(info, type);
    info.type = 1;
    info.location = 100;
    info.size = 10 * RECORD_SIZE;
    info.records = 10;
    info.record_len = 128;
    info.level = 1;
    return info;
}

FileInfo *entry_named(const MediaDescriptor *md, const std::string &name)
{
    FileInfo *info = md->root;
    while (info != nullptr && name != info->name) info = info->next;
    return info;
}

std::vector<std::string> names(const MediaDescriptor *md)
{
    std::vector<std::string> list;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) list.emplace_back(info->name);
    return list;
}

std::vector<uint32_t> locations(const MediaDescriptor *md)
{
    std::vector<uint32_t> list;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) list.push_back(info->location);
    return list;
}

}
