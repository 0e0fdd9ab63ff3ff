// Builds volumes of the Structured Directory Format byte by byte from their layout, without the engine.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/volume_builder.h"

namespace tests
{

constexpr uint16_t sdf_directory_type = 0xE9C3;
constexpr uint16_t sdf_data_type = 0xE9C9;
constexpr uint32_t sdf_inode_bytes = 128;
constexpr uint32_t sdf_entry_bytes = 24;

struct SdfTime {
    uint32_t day;     // Julian
    uint32_t seconds; // of the day
};

constexpr SdfTime some_sdf_time = {2445775, 9 * 3600 + 7 * 60 + 30}; // 15 March 1984, 9:07:30

struct SdfExtent { // blocks
    uint32_t start;
    uint32_t length;
};

struct SdfNode {
    std::string name; // up to 16 bytes, blank-padded; NULs stand as they are
    uint16_t type = sdf_data_type;
    Bytes content{};                 // of a file; that of a directory is made
    std::vector<SdfNode> children{}; // of a directory
    std::vector<uint32_t> pieces{};  // lengths in blocks of all extents but the last; a block lies free between two
    uint32_t record_length = 256;    // bytes; of a directory: 24
    std::optional<uint32_t> size{};  // bytes; none: that of the content
    std::optional<uint32_t> inode{}; // that the entry names; none: the node's own
    uint32_t extent_map = 0xFFFFFFFF;
    SdfTime changed = some_sdf_time;
};

SdfNode sdf_file(const std::string &name, const Bytes &content, uint16_t type = sdf_data_type);
SdfNode sdf_directory(const std::string &name, const std::vector<SdfNode> &children);

struct SdfVolume {
    uint16_t needs_check = 0;
    std::string label = "TESTVOLUME"; // 16 bytes, blank-padded
    std::string password{};           // NUL-padded
    SdfTime created = some_sdf_time;
    SdfTime backed_up = {2445776, 60};
    uint32_t block_size = 256;
    uint32_t boot_blocks = 0; // behind the header
    uint32_t version = 0x00010002;
    std::vector<SdfNode> files{};
    std::vector<uint32_t> table_pieces{}; // as those of a node
    uint32_t free_blocks = 5;             // behind the last file
};

struct SdfImage {
    Bytes bytes;
    std::vector<SdfExtent> table;                       // the attributes table
    std::map<std::string, uint32_t> inodes;             // by path: "DIR/FILE"; the root is ""
    std::map<uint32_t, std::vector<SdfExtent>> extents; // by inode
    uint32_t inode_count;
    uint32_t block_size;

    size_t inode_at(uint32_t inode) const; // byte of the image; the table is in one piece
    size_t inode_at(const std::string &path) const;
    size_t content_at(const std::string &path) const; // of its first extent
};

SdfImage sdf_image(const SdfVolume &volume);

// Entries as they stand in a directory, and an inode.
Bytes sdf_entry(const std::string &name, uint32_t inode);

// FIRST at the top, and five levels: LEVEL1 with DATA and LEVEL2, and so on; the innermost is LEVEL5 with DEEP.
SdfVolume five_levels();

// n files of one record, F000000 onward: at the top, or by the hundred in directories D0000 onward.
SdfVolume sdf_volume_with_files(uint32_t n);
SdfVolume sdf_volume_with_folders(uint32_t n);

}
