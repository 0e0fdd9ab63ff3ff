// The layout is written down here a second time on purpose: a test that used the engine's own reader could not see what
// it takes for something else.
#include "tests/support/sdf_builder.h"

#include <algorithm>
#include <cstdlib>

namespace tests
{

namespace
{

constexpr size_t free_map = 384; // byte of the attributes table
constexpr uint32_t table_inode = 0;
constexpr uint32_t root = 1;

void put_text(Bytes &bytes, size_t position, const std::string &text, size_t size, char pad)
{
    for (size_t i = 0; i < size; ++i) bytes[position + i] = static_cast<uint8_t>(i < text.size() ? text[i] : pad);
}

void put_time(Bytes &bytes, size_t position, SdfTime time)
{
    set_dword_at(bytes, position, time.day);
    set_dword_at(bytes, position + 4, time.seconds);
}

// What is to be stored: nodes with their inodes, in the order in which they get their blocks.
struct Item {
    const SdfNode *node;
    uint32_t inode;
    Bytes content;
    std::vector<SdfExtent> extents;
};

class Builder
{
  public:
    explicit Builder(const SdfVolume &volume) : volume_(volume)
    {
        root_ = sdf_directory("", volume.files);
    }

    SdfImage build()
    {
        uint32_t bytes_of_map = 0;
        // The map grows with the volume, and moves the inodes behind it: two rounds are enough for it to fit.
        for (int round = 0; round < 3; ++round) {
            place(bytes_of_map);
            bytes_of_map = next_block_ / 8 + 1;
        }
        write();
        return image_;
    }

  private:
    void place(uint32_t bytes_of_map)
    {
        items_.clear();
        image_ = {};
        image_.block_size = volume_.block_size;
        next_inode_ = static_cast<uint32_t>((free_map + bytes_of_map + sdf_inode_bytes - 1) / sdf_inode_bytes);
        add(root_, root, "");
        next_block_ = 1 + volume_.boot_blocks;
        table_bytes_ = size_t{next_inode_} * sdf_inode_bytes;
        image_.table = allocate(table_bytes_, volume_.table_pieces);
        for (Item &item : items_) {
            item.extents = allocate(item.content.size(), item.node->pieces);
            image_.extents[item.inode] = item.extents;
        }
        used_blocks_ = next_block_;
        next_block_ += volume_.free_blocks;
    }

    void add(const SdfNode &node, uint32_t inode, const std::string &path)
    {
        image_.inodes[path] = inode;
        const size_t index = items_.size();
        items_.push_back({&node, inode, node.content, {}});
        for (const SdfNode &child : node.children) {
            const uint32_t own = next_inode_++;
            const Bytes entry = sdf_entry(child.name, child.inode.value_or(own));
            items_[index].content.insert(items_[index].content.end(), entry.begin(), entry.end());
            add(child, own, path.empty() ? child.name : path + "/" + child.name);
        }
    }

    std::vector<SdfExtent> allocate(size_t bytes, const std::vector<uint32_t> &pieces)
    {
        auto left = static_cast<uint32_t>((bytes + volume_.block_size - 1) / volume_.block_size);
        std::vector<SdfExtent> extents;
        for (const uint32_t length : pieces) {
            extents.push_back({next_block_, length});
            next_block_ += length + 1;
            left -= std::min(left, length);
        }
        extents.push_back({next_block_, std::max(left, 1U)});
        next_block_ += std::max(left, 1U);
        return extents;
    }

    // Bytes into extents, one after the other.
    void store(const Bytes &content, const std::vector<SdfExtent> &extents)
    {
        size_t done = 0;
        for (const SdfExtent &extent : extents) {
            const size_t room = size_t{extent.length} * volume_.block_size;
            const size_t count = std::min(room, content.size() - done);
            std::copy_n(content.begin() + static_cast<ptrdiff_t>(done), count,
                        image_.bytes.begin() + static_cast<ptrdiff_t>(size_t{extent.start} * volume_.block_size));
            done += count;
        }
        if (done != content.size()) std::abort(); // more than there is room for
    }

    void put_inode(Bytes &table, uint32_t inode, const SdfNode &node, const std::vector<SdfExtent> &extents,
                   size_t size)
    {
        if (extents.size() > 4) std::abort();
        const size_t at = size_t{inode} * sdf_inode_bytes;
        uint32_t blocks = 0;
        set_word_at(table, at + 6, node.type);
        set_word_at(table, at + 38, static_cast<uint16_t>(extents.size()));
        for (size_t i = 0; i < extents.size(); ++i) {
            set_dword_at(table, at + 40 + 8 * i, extents[i].start);
            set_dword_at(table, at + 44 + 8 * i, extents[i].length);
            blocks += extents[i].length;
        }
        set_dword_at(table, at + 28, blocks);
        set_dword_at(table, at + 72, node.extent_map);
        set_dword_at(table, at + 76, node.size.value_or(static_cast<uint32_t>(size)));
        put_time(table, at + 104, node.changed);
        set_dword_at(table, at + 112, node.record_length);
    }

    void write()
    {
        image_.bytes.assign(size_t{next_block_} * volume_.block_size, 0);
        Bytes table(table_bytes_);
        const SdfNode table_node = {.name = "", .type = 0, .record_length = sdf_inode_bytes};
        put_inode(table, table_inode, table_node, image_.table, table_bytes_);
        for (const Item &item : items_) {
            put_inode(table, item.inode, *item.node, item.extents, item.content.size());
            store(item.content, item.extents);
        }
        for (uint32_t block = used_blocks_; block < next_block_; ++block)
            table[free_map + block / 8] = static_cast<uint8_t>(table[free_map + block / 8] | 0x80U >> block % 8);
        store(table, image_.table);
        write_header();
        const size_t room = table_blocks() * volume_.block_size;
        image_.inode_count = static_cast<uint32_t>(room / sdf_inode_bytes);
    }

    size_t table_blocks() const
    {
        size_t blocks = 0;
        for (const SdfExtent &extent : image_.table) blocks += extent.length;
        return blocks;
    }

    void write_header()
    {
        Bytes &bytes = image_.bytes;
        set_word_at(bytes, 0, 0x0700);
        set_word_at(bytes, 2, volume_.needs_check);
        put_text(bytes, 4, volume_.label, 16, ' ');
        put_time(bytes, 20, volume_.created);
        set_dword_at(bytes, 28, volume_.block_size);
        set_dword_at(bytes, 32, volume_.boot_blocks == 0 ? 0 : 1);
        set_dword_at(bytes, 36, volume_.boot_blocks);
        set_dword_at(bytes, 40, image_.table[0].start);
        set_dword_at(bytes, 44, volume_.version);
        set_dword_at(bytes, 48, next_block_ - 1);
        put_text(bytes, 52, volume_.password, 16, '\0');
        put_time(bytes, 68, volume_.backed_up);
    }

    const SdfVolume &volume_;
    SdfNode root_;
    SdfImage image_;
    std::vector<Item> items_;
    size_t table_bytes_ = 0;
    uint32_t next_inode_ = 0;
    uint32_t next_block_ = 0;
    uint32_t used_blocks_ = 0;
};

}

SdfNode sdf_file(const std::string &name, const Bytes &content, uint16_t type)
{
    SdfNode node;
    node.name = name;
    node.type = type;
    node.content = content;
    return node;
}

SdfNode sdf_directory(const std::string &name, const std::vector<SdfNode> &children)
{
    SdfNode node;
    node.name = name;
    node.type = sdf_directory_type;
    node.children = children;
    node.record_length = sdf_entry_bytes;
    return node;
}

size_t SdfImage::inode_at(uint32_t inode) const
{
    return size_t{table.at(0).start} * block_size + size_t{inode} * sdf_inode_bytes;
}

size_t SdfImage::inode_at(const std::string &path) const
{
    return inode_at(inodes.at(path));
}

size_t SdfImage::content_at(const std::string &path) const
{
    return size_t{extents.at(inodes.at(path)).at(0).start} * block_size;
}

SdfImage sdf_image(const SdfVolume &volume)
{
    return Builder(volume).build();
}

Bytes sdf_entry(const std::string &name, uint32_t inode)
{
    Bytes entry(sdf_entry_bytes);
    put_text(entry, 0, name, 16, ' ');
    set_dword_at(entry, 20, inode);
    return entry;
}

SdfVolume five_levels()
{
    SdfNode inner = sdf_directory("LEVEL5", {sdf_file("DEEP", Bytes(300, 'd'))});
    for (int level = 4; level >= 1; --level) {
        const auto digit = static_cast<char>('0' + level);
        inner = sdf_directory(std::string("LEVEL") + digit,
                              {sdf_file("DATA", Bytes(100, static_cast<uint8_t>(digit))), inner});
    }
    SdfVolume volume;
    volume.files = {sdf_file("FIRST", Bytes(1000, 'f')), inner};
    return volume;
}

SdfVolume sdf_volume_with_files(uint32_t n)
{
    SdfVolume volume;
    for (uint32_t i = 0; i < n; ++i) {
        const std::string digits = std::to_string(1000000 + i).substr(1);
        volume.files.push_back(sdf_file("F" + digits, Bytes(record_bytes, static_cast<uint8_t>(i))));
    }
    return volume;
}

SdfVolume sdf_volume_with_folders(uint32_t n)
{
    constexpr uint32_t files_in_one = 100;
    const SdfVolume flat = sdf_volume_with_files(n);
    SdfVolume volume;
    for (uint32_t i = 0; i < n; ++i) {
        const std::string digits = std::to_string(10000 + i / files_in_one).substr(1);
        if (i % files_in_one == 0) volume.files.push_back(sdf_directory("D" + digits, {}));
        volume.files.back().children.push_back(flat.files[i]);
    }
    return volume;
}

}
