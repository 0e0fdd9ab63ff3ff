// Entries come from the engine's heap, so that the engine may release them.
#include "tests/volume/dir_ops_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base/memory.h"
#include "tests/support/capture.h"

namespace tests
{

namespace
{

FileInfo *find_below(FileInfo *list, const std::string &name)
{
    for (FileInfo *info = list; info != nullptr; info = info->next) {
        if (name == info->name) return info;
        FileInfo *below = find_below(info->child, name);
        if (below != nullptr) return below;
    }
    return nullptr;
}

}

int32_t dir_ops_printing(MediaDescriptor *md, const DirOrder &order)
{
    std::vector<const char *> filespec;
    if (order.filespec) {
        for (const std::string &text : *order.filespec) filespec.push_back(text.c_str());
    }
    filespec.push_back(nullptr);
    const char *path = order.dest_path ? order.dest_path->c_str() : nullptr;
    const char *file = order.dest_file ? order.dest_file->c_str() : nullptr;
    forget_error();
    return image_dir_ops(md, order.filespec ? filespec.data() : nullptr, path, file, order.info, order.attributes,
                         order.command, order.confirm, order.start_directory, order.level, order.recursive ? 1 : 0);
}

int32_t dir_ops(MediaDescriptor *md, const DirOrder &order)
{
    const OutputCapture output;
    return dir_ops_printing(md, order);
}

std::string printed_by(MediaDescriptor *md, const DirOrder &order, int32_t wanted_result)
{
    const OutputCapture output;
    EXPECT_EQ(dir_ops_printing(md, order), wanted_result) << error_text();
    return output.text();
}

FileInfo new_file(const std::string &name, const std::string &type, uint32_t bytes)
{
    FileInfo info{};
    std::memcpy(info.name, name.data(), std::min(name.size(), sizeof info.name - 1));
    set_type_text(info, type);
    info.size = bytes;
    info.record_len = 128;
    info.records = (bytes + 255) / 256;
    return info;
}

TreeMedium::TreeMedium(const std::vector<Node> &nodes) : hand(Bytes(100 * record_bytes)), md(&hand.md)
{
    md->format = FORMAT_LIF;
    md->records = 100;
    md->dir_start = 2;
    md->dir_size = 2;
    md->dir_entry_size = 32;
    md->file_area_start = 4;
    md->data_size = 96 * record_bytes;
    image_ = hand.file.bytes();
    md->root = build(nodes, nullptr, 1);
    hand.file.replace(image_);
}

FileInfo *TreeMedium::build(const std::vector<Node> &nodes, FileInfo *parent, uint32_t level)
{
    FileInfo *head = nullptr;
    FileInfo *last = nullptr;
    for (const Node &node : nodes) {
        auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
        *info = named(node.name, node.directory ? "DIR" : "SDATA");
        info->type = node.directory ? 3 : 0xE0D0;
        info->level = level;
        info->parent = parent;
        info->prev = last;
        (last == nullptr ? head : last->next) = info;
        last = info;
        info->is_directory = node.directory ? 1 : 0;
        info->location = next_record_;
        info->records = 1;
        info->size = record_bytes;
        if (node.directory) {
            info->child = build(node.children, info, level + 1);
        } else {
            std::memset(image_.data() + size_t{next_record_++} * record_bytes, node.fill, record_bytes);
        }
    }
    return head;
}

FileInfo *TreeMedium::find(const std::string &name) const
{
    return find_below(md->root, name);
}

std::vector<Node> two_levels()
{
    return {{.name = "A", .fill = 'a'},
            {.name = "D1",
             .directory = true,
             .children = {{.name = "B", .fill = 'b'},
                          {.name = "D2", .directory = true, .children = {{.name = "C", .fill = 'c'}}}}},
            {.name = "E", .fill = 'e'}};
}

std::vector<std::string> list_of(const FileInfo *head)
{
    std::vector<std::string> list;
    for (const FileInfo *info = head; info != nullptr; info = info->next) list.emplace_back(info->name);
    return list;
}

}
