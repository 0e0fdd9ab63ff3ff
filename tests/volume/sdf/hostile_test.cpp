// SDF volumes whose numbers mean harm: what is read is bounded by the medium, and nothing is written.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/sdf_builder.h"
#include "tests/volume/extract_support.h"
#include "tests/volume/sdf/literal.h"
#include "volume/access.h"
#include "volume/catalogue.h"
#include "volume/state.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr uint16_t whole_tree = OPEN_READ_VOLUME | OPEN_RECURSIVE;
constexpr uint32_t corners[] = {0,          1,          2,          3,          12,         13,
                                0xFF,       0x100,      0xFFFF,     0x10000,    0x1000000,  0x2000000,
                                0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFF00, 0xFFFFFFFE, 0xFFFFFFFF};

SdfNode link(const std::string &name, uint32_t inode)
{
    SdfNode node = sdf_directory(name, {});
    node.inode = inode;
    return node;
}

uint64_t count_entries(const MediaDescriptor *md, uint32_t *ret_deepest)
{
    uint64_t count = 0;
    *ret_deepest = 0;
    std::vector<const FileInfo *> heads = {md->root};
    while (!heads.empty()) {
        const FileInfo *info = heads.back();
        heads.pop_back();
        for (; info != nullptr; info = info->next) {
            ++count;
            *ret_deepest = std::max(*ret_deepest, info->level);
            if (info->child != nullptr) heads.push_back(info->child);
        }
    }
    return count;
}

// Opens, lists, copies the files at the top out, closes. Reads and memory are bounded, the image stays.
void expect_borne(const Bytes &image, const std::string &what)
{
    const OutputCapture output;
    const Scratch host;
    const TemporaryFile file(image);
    HeapFaults heap;
    FileFaults files;
    {
        forget_error();
        const Medium medium(file.path(), whole_tree);
        if (!medium) {
            EXPECT_NE(global_error, 0u) << what;
        } else {
            print_media_info(medium.md);
            print_list_header(medium.md);
            EXPECT_LE(heap.bytes, 1024 * 1024 + 16 * image.size()) << what;
            EXPECT_LE(files.bytes_read, 512 * 1024 + 4 * image.size()) << what;
        }
    }
    EXPECT_EQ(heap.releases, heap.allocations) << what;
    EXPECT_EQ(file.bytes(), image) << what;
}

void expect_fields_borne(size_t position, const std::string &what)
{
    for (const uint32_t value : corners) {
        Bytes image = literal_sdf();
        set_dword_at(image, position, value);
        expect_borne(image, what + " " + std::to_string(value));
    }
}

// Twelve directories at the top; each holds so many slots without a name and ten entries for the next of them.
Bytes chain_of_shared_directories(uint32_t empty)
{
    constexpr uint32_t levels = 12;
    SdfVolume volume;
    for (uint32_t level = 0; level < levels; ++level) {
        std::vector<SdfNode> children(empty, sdf_file(std::string(16, '\0'), {}));
        children.insert(children.end(), 10, link("X", 1));
        volume.files.push_back(sdf_directory("L" + std::to_string(level), children));
    }
    SdfImage image = sdf_image(volume);
    set_dword_at(image.bytes, image.inode_at("L11") + 76, 0); // the last one is empty
    for (uint32_t level = 0; level + 1 < levels; ++level) {
        const uint32_t below = image.inodes.at("L" + std::to_string(level + 1));
        const size_t place = image.content_at("L" + std::to_string(level));
        for (size_t entry = empty; entry < empty + 10; ++entry) {
            set_dword_at(image.bytes, place + entry * 24 + 20, below);
        }
    }
    return image.bytes;
}

// The outcome of opening with one double word replaced.
struct Changed {
    Changed(size_t position, uint32_t value) : open(image_with(position, value), whole_tree), md(open.md) {}

    static Bytes image_with(size_t position, uint32_t value)
    {
        forget_error();
        Bytes image = literal_sdf();
        set_dword_at(image, position, value);
        return image;
    }

    OpenVolume open;
    MediaDescriptor *md;
};

constexpr size_t root_at = literal_table + 128;

}

TEST(HostileSdf, EachNumberOfTheHeader)
{
    for (size_t field = 28; field < 52; field += 4) expect_fields_borne(field, "header " + std::to_string(field));
}

TEST(HostileSdf, EachNumberOfTheInodes)
{
    for (const size_t inode : {literal_table, root_at, literal_tail, literal_tail + 128}) {
        for (const size_t field : {4U, 28U, 36U, 40U, 44U, 48U, 52U, 72U, 76U, 104U, 108U, 112U}) {
            expect_fields_borne(inode + field, "inode at " + std::to_string(inode) + "+" + std::to_string(field));
        }
    }
}

TEST(HostileSdf, EachNumberOfTheEntries)
{
    expect_fields_borne(literal_root + 20, "inode of ALPHA");
    expect_fields_borne(literal_root + 44, "inode of DIR");
}

TEST(HostileSdf, ImageCutAnywhere)
{
    const Bytes whole = sdf_image(five_levels()).bytes;
    for (size_t size = 256; size < whole.size(); size += 128) {
        expect_borne(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)),
                     "cut at " + std::to_string(size));
    }
}

TEST(HostileSdf, BytesThatAreAllTheSame)
{
    for (const uint32_t value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU}) {
        Bytes image(64 * record_bytes, static_cast<uint8_t>(value));
        set_word_at(image, 0, 0x0700);
        expect_borne(image, "all " + std::to_string(value));
        set_dword_at(image, 28, 256);
        expect_borne(image, "all with a block size " + std::to_string(value));
    }
}

TEST(HostileSdf, Hazard_E2_TableLargerThanTheMediumIsOutOfMemory)
{
    for (const uint32_t blocks : {13U, 0x01000000U, 0x01000001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        const Changed changed(literal_table + 28, blocks);
        EXPECT_EQ(changed.md, nullptr) << blocks;
        EXPECT_EQ(global_error, 105u) << blocks;
    }
}

TEST(HostileSdf, Hazard_E3_RecordThatTheTableTakesInPartHasRoom)
{
    for (const uint32_t blocks : {0U, 1U}) {
        const Changed changed(literal_table + 28, blocks);
        ASSERT_TRUE(changed.md != nullptr) << blocks;
        EXPECT_EQ(changed.md->inode_count, 2 * blocks);
    }
}

TEST(HostileSdf, Hazard_E5_TableWithoutInodesIsAVolumeWithoutFiles)
{
    const LogCapture log(-1);
    for (const size_t field : {literal_table + 28, literal_table + 36}) { // no blocks; no extents
        const Changed changed(field, 0);
        ASSERT_TRUE(changed.md != nullptr);
        EXPECT_EQ(changed.md->inode_count, 0u);
        EXPECT_EQ(changed.md->root, nullptr);
        EXPECT_EQ(changed.md->dir_start, 0u);
        EXPECT_EQ(changed.md->state->table_result, -1);
    }
}

TEST(HostileSdf, Hazard_E4_TableHasFourExtentsAtMost)
{
    Bytes image = literal_sdf();
    set_word_at(image, literal_table + 38, 0xFFFF);
    set_dword_at(image, literal_table + 28, 12);
    const OpenVolume open(image, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->inode_count, 6u); // the third and the fourth extent have no length
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ALPHA", "DIR"}));
}

TEST(HostileSdf, Hazard_E6_FreeMapEndsWithTheTable)
{
    const Changed changed(48, 0xFFFFFFFE);
    ASSERT_TRUE(changed.md != nullptr);
    uint32_t bits = 0;
    for (size_t byte = 384; byte < 768; ++byte) {
        uint8_t value = changed.md->inode_table[byte];
        for (; value != 0; value = static_cast<uint8_t>(value & (value - 1))) ++bits;
    }
    EXPECT_EQ(changed.md->free_bytes, bits * 256);
    EXPECT_EQ(changed.md->data_size, 0xFFFFFF00u);
}

TEST(HostileSdf, Hazard_E6_LargestBlockOfAllOnesIsAVolumeOfNone)
{
    const Changed changed(48, 0xFFFFFFFF);
    ASSERT_TRUE(changed.md != nullptr);
    EXPECT_EQ(changed.md->free_bytes, 0u);
    EXPECT_EQ(changed.md->data_size, 0u);
    EXPECT_EQ(changed.md->used_bytes, 0u);
}

TEST(HostileSdf, Hazard_E9_EntriesEndWithTheExtentsOfTheirDirectory)
{
    const Changed size(root_at + 76, 0xFFFFFFFF);
    ASSERT_TRUE(size.md != nullptr);
    EXPECT_EQ(names(size.md), (std::vector<std::string>{"ALPHA", "DIR"}));
    const Changed length(root_at + 112, 1);
    ASSERT_TRUE(length.md != nullptr);
    EXPECT_EQ(names(length.md), (std::vector<std::string>{"ALPHA", "DIR"}));
    const Changed longest(root_at + 112, 0xFFFFFFFF);
    ASSERT_TRUE(longest.md != nullptr);
    EXPECT_EQ(longest.md->root, nullptr);
}

TEST(HostileSdf, Hazard_A2_DirectoryBehindTheMediumIsOneCorruptEntry)
{
    for (const uint32_t start : {12U, 0x00FFFFFFU, 0x01000000U, 0xFFFFFFFFU}) {
        const LogCapture log(1);
        const Changed changed(root_at + 40, start);
        ASSERT_TRUE(changed.md != nullptr) << start;
        EXPECT_EQ(changed.md->root, nullptr);
        EXPECT_EQ(changed.md->state->refused_entries, 1u);
        EXPECT_TRUE(contains(log.text(), "directory reaches behind the end of the medium")) << log.text();
    }
}

TEST(HostileSdf, Hazard_E10_DirectoryThatHoldsItselfHas999Levels)
{
    SdfVolume volume;
    volume.files = {sdf_file("FILE", Bytes(10)), link("SELF", 1)};
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->state->table_result, -1);
    EXPECT_EQ(error_text(), "Max. directory level exceeded (maximum nesting level is 999)");
    uint32_t deepest = 0;
    EXPECT_EQ(count_entries(open.md, &deepest), 2 * 999u);
    EXPECT_EQ(deepest, 999u);
}

TEST(HostileSdf, Hazard_D20_Level999IsReadAndLevel1000IsNot)
{
    // 998 directories in one another below the root, each in a block of its own, and one more.
    for (const uint32_t depth : {998U, 999U}) {
        SdfNode inner = sdf_directory("D", {});
        for (uint32_t level = 1; level < depth; ++level) inner = sdf_directory("D", {inner});
        SdfVolume volume;
        volume.files = {inner};
        const OpenVolume open(sdf_image(volume).bytes, whole_tree);
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(open.md->state->table_result, depth == 998 ? 0 : -1);
        uint32_t deepest = 0;
        EXPECT_EQ(count_entries(open.md, &deepest), depth);
        EXPECT_EQ(deepest, depth);
    }
}

TEST(HostileSdf, Hazard_E11_SharedChildrenEndInAMillionEntries)
{
    const TemporaryFile file(chain_of_shared_directories(0));
    HeapFaults heap;
    {
        const Medium medium(file.path(), whole_tree);
        ASSERT_TRUE(medium);
        EXPECT_EQ(medium->state->table_result, -1);
        EXPECT_EQ(error_text(), "Out of memory");
        uint32_t deepest = 0;
        EXPECT_EQ(count_entries(medium.md, &deepest), 1'000'000u);
    }
    EXPECT_EQ(heap.releases, heap.allocations);
}

TEST(HostileSdf, Hazard_E11_SlotsThatAreRefusedCountToo)
{
    const TemporaryFile file(chain_of_shared_directories(90));
    const Medium medium(file.path(), whole_tree | OPEN_REPAIR);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->state->table_result, -1);
    EXPECT_EQ(error_text(), "Out of memory");
    uint32_t deepest = 0;
    EXPECT_LT(count_entries(medium.md, &deepest), 110'000u);
}

TEST(HostileSdf, Hazard_E12_EntriesAreReadWhereverTheyCrossARecord)
{
    // Directories that begin at each of the places in a record where an entry may be cut in two.
    SdfVolume volume = sdf_volume_with_files(64);
    SdfNode directory = sdf_directory("D", volume.files);
    for (uint32_t length = 1; length <= 5; ++length) {
        directory.pieces = {length};
        volume.files = {directory};
        const OpenVolume open(sdf_image(volume).bytes, whole_tree);
        ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
        uint32_t deepest = 0;
        EXPECT_EQ(count_entries(open.md, &deepest), 65u);
        EXPECT_EQ(open.md->state->refused_entries, 0u);
    }
}

TEST(HostileSdf, Hazard_E18_PathSearchOnAnEmptyVolume)
{
    SdfVolume volume;
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    const OutputCapture output;
    EXPECT_EQ(get_file_table(open.md, "A/B", nullptr, 0, 0, 1, 0, 0, 1), 0);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(open.md->cursor, nullptr);
    EXPECT_EQ(output.text(), "");
}

TEST(HostileSdf, Hazard_E13_DaysThatAreNoneAreBorne)
{
    for (const uint32_t day : corners) {
        Bytes image = literal_sdf();
        set_dword_at(image, 20, day);
        set_dword_at(image, literal_tail + 104, day);
        const OpenVolume open(image, whole_tree);
        ASSERT_TRUE(open.md != nullptr) << day;
        EXPECT_EQ(names(open.md).size(), 2u);
    }
}

TEST(HostileSdf, Hazard_H12_FileThatClaimsFourGigabytesEndsBehindTheImage)
{
    const Changed changed(literal_tail + 76, 0xFFFFFFFF);
    ASSERT_TRUE(changed.md != nullptr && changed.md->root != nullptr);
    const Scratch host;
    HostDisk disk(1 << 20);
    forget_error();
    EXPECT_EQ(extract_file(changed.md, changed.md->root, order_for(host.path("out"))).result, -1);
    EXPECT_EQ(global_error, 303u); // the host was full first
}

TEST(HostileSdf, ExtentsAnywhereEndInAnError)
{
    for (const uint32_t length : {0x00FFFFFFU, 0x01000000U, 0xFFFFFFFFU}) {
        Bytes image = literal_sdf();
        set_word_at(image, literal_tail + 38, 4);
        for (const size_t extent : {44U, 52U, 60U, 68U}) set_dword_at(image, literal_tail + extent, length);
        const OpenVolume open(image, whole_tree);
        ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
        const Scratch host;
        forget_error();
        EXPECT_EQ(extract_file(open.md, open.md->root, order_for(host.path("out"))).result, -1) << length;
        EXPECT_EQ(global_error, 302u) << length; // at the last of so many records that are missing
    }
}
