// Files of SDF volumes into files of the host: one extent, several, none, on an image and on a drive.
#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/memory_medium.h"
#include "tests/support/sdf_builder.h"
#include "tests/volume/extract_support.h"
#include "tests/volume/sdf/literal.h"
#include "volume/navigate.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr char map_warning[] = "Inode table file contains extent maps which are currently not supported\n";
constexpr uint16_t whole_tree = OPEN_READ_VOLUME | OPEN_RECURSIVE;

SdfVolume volume_with(const SdfNode &file, uint32_t block_size = 256)
{
    SdfVolume volume;
    volume.block_size = block_size;
    volume.files = {file};
    return volume;
}

SdfNode file_of(size_t bytes, const std::vector<uint32_t> &pieces = {}, uint16_t type = 0xE9D0)
{
    SdfNode file = sdf_file("FILE", counting(bytes), type);
    file.pieces = pieces;
    return file;
}

// An image opened, with a folder of the host.
struct OnImage {
    explicit OnImage(const SdfVolume &volume) : image(sdf_image(volume)), open(image.bytes, whole_tree), md(open.md) {}

    FileInfo *find(const std::string &name = "FILE") const
    {
        return image_find_file(md, md->root, name.c_str(), 1);
    }

    Extraction extract(uint16_t flags = 0, ProgressCallback progress = nullptr) const
    {
        forget_error();
        return extract_file(md, find(), order_for(host.path("out"), flags, progress));
    }

    std::string text() const
    {
        return text_in(host.path("out"));
    }

    SdfImage image;
    OpenVolume open;
    MediaDescriptor *md;
    Scratch host;
};

std::string text_of(const Bytes &bytes)
{
    return {bytes.begin(), bytes.end()};
}

// What stands on the image from a record on.
std::string text_at(const SdfImage &image, uint32_t record, size_t count)
{
    const size_t start = size_t{record} * record_bytes;
    return text_of({image.bytes.begin() + static_cast<ptrdiff_t>(start),
                    image.bytes.begin() + static_cast<ptrdiff_t>(start + count)});
}

}

TEST(SdfExtraction, OneExtent)
{
    for (const size_t size : {1U, 255U, 256U, 257U, 512U, 1000U, 5000U}) {
        const OnImage medium(volume_with(file_of(size)));
        const Extraction done = medium.extract();
        EXPECT_EQ(done.result, 256) << error_text();
        EXPECT_TRUE(done.whole);
        EXPECT_EQ(medium.text(), text_of(counting(size)));
    }
}

TEST(SdfExtraction, EmptyFile)
{
    const OnImage medium(volume_with(file_of(0)));
    const Extraction done = medium.extract();
    EXPECT_EQ(done.result, 0);
    EXPECT_TRUE(done.whole);
    EXPECT_TRUE(exists(medium.host.path("out")));
    EXPECT_EQ(medium.text(), "");
}

TEST(SdfExtraction, HostFileGetsTheDate)
{
    const OnImage medium(volume_with(file_of(10)));
    ASSERT_EQ(medium.extract().result, 256);
    TimeRecord written{};
    FileHandle copy = 0;
    ASSERT_EQ(file_open(&copy, medium.host.path("out").c_str(), "rb", 0), 1);
    EXPECT_EQ(file_get_time(copy, &written), 0);
    file_close(copy);
    EXPECT_EQ((std::vector<int32_t>{written.tm_year, written.tm_mon, written.tm_mday, written.tm_hour}),
              (std::vector<int32_t>{84, 2, 15, 9}));
}

TEST(SdfExtraction, DeepFile)
{
    const OnImage medium(five_levels());
    ASSERT_TRUE(medium.find("DEEP") != nullptr);
    EXPECT_TRUE(extract_file(medium.md, medium.find("DEEP"), order_for(medium.host.path("out"))).whole);
    EXPECT_EQ(medium.text(), std::string(300, 'd'));
}

TEST(SdfExtraction, DirectoryBecomesAFolder)
{
    const OnImage medium(five_levels());
    const FileInfo *level1 = entry_named(medium.md, "LEVEL1");
    ASSERT_TRUE(level1 != nullptr);
    const Extraction done = extract_file(medium.md, level1, order_for(medium.host.path("out")));
    EXPECT_EQ(done.result, 0) << error_text();
    EXPECT_TRUE(done.whole);
    EXPECT_TRUE(platform_is_directory(medium.host.path("out").c_str()));
}

TEST(SdfExtraction, Hazard_E8_InodeNumberOfTheCallerIsChecked)
{
    const OnImage medium(five_levels());
    FileInfo info = *medium.find("FIRST");
    info.inode = medium.md->inode_count + 1;
    forget_error();
    EXPECT_EQ(extract_file(medium.md, &info, order_for(medium.host.path("out"))).result, -1);
    EXPECT_EQ(error_text(), "Bad directory entry (illegal inode number)");
    EXPECT_FALSE(exists(medium.host.path("out")));
}

TEST(SdfExtraction, DataRecordsBecomeText)
{
    SdfNode file = sdf_file("FILE", from_hex("01 00 000004 41424344 01 00 000003 45C746"));
    const OnImage medium(volume_with(file));
    const Extraction done = medium.extract(EXTRACT_CONVERT);
    EXPECT_TRUE(done.whole);
    EXPECT_EQ(medium.text(), "ABCD\r\nEF\r\n");
}

TEST(SdfExtraction, ExtentMapIsAWarning)
{
    SdfNode file = file_of(600);
    file.extent_map = 12;
    const OnImage medium(volume_with(file));
    const LogCapture log(1);
    EXPECT_TRUE(medium.extract().whole);
    EXPECT_TRUE(contains(log.text(), map_warning)) << log.text();
    EXPECT_EQ(medium.text(), text_of(counting(600)));
}

TEST(SdfExtraction, NoExtentsLeaveAnEmptyFileThatIsNotWhole)
{
    const OnImage built(volume_with(file_of(600)));
    Bytes image = built.image.bytes;
    set_word_at(image, built.image.inode_at("FILE") + 38, 0);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    const Extraction done = extract_file(open.md, open.md->root, order_for(built.host.path("out")));
    EXPECT_EQ(done.result, 0);
    EXPECT_FALSE(done.whole);
    EXPECT_EQ(built.text(), "");
}

TEST(SdfExtraction, KeepsImageLocationInRecords)
{
    const OnImage medium(volume_with(file_of(700), 1024));
    const FileInfo *file = medium.find();
    EXPECT_EQ(file->location, medium.image.extents.at(file->inode)[0].start);
    EXPECT_EQ(medium.extract().result, 256);
    EXPECT_EQ(medium.text(), text_at(medium.image, file->location, 700));
    EXPECT_NE(medium.text(), text_of(counting(700)));
}

// ---- several extents ---------------------------------------------------------------------------------------

TEST(SdfExtents, KeepsExtentsOfAnImageReadFromTheFirst)
{
    // One record each: what the last one lacks is counted from the whole, so that it comes out empty.
    const OnImage medium(volume_with(file_of(512, {1})));
    const Extraction done = medium.extract();
    EXPECT_EQ(done.result, 256) << error_text();
    EXPECT_FALSE(done.whole);
    EXPECT_EQ(medium.text(), text_of(counting(256)));
}

TEST(SdfExtents, LaterExtentsAreReadFromTheLocationToo)
{
    // The first extent has no length at all, so that the second one has the whole file.
    const OnImage medium(volume_with(file_of(700, {0})));
    const FileInfo *file = medium.find();
    const std::vector<SdfExtent> extents = medium.image.extents.at(file->inode);
    EXPECT_EQ(file->location, extents[0].start);
    EXPECT_NE(extents[0].start, extents[1].start);
    const Extraction done = medium.extract();
    EXPECT_TRUE(done.whole);
    EXPECT_EQ(medium.text(), text_at(medium.image, extents[0].start, 700));
}

TEST(SdfExtents, Hazard_E15_LengthThatTheRunningTotalMakesNegativeIsNotWritten)
{
    struct Row {
        size_t size;
        std::vector<uint32_t> pieces;
        size_t arrived;
    };
    const Row rows[] = {
        {257, {1}, 256},
        {600, {1}, 2 * 256},  // 344 bytes in the second extent: its first record arrives, its last doesn't
        {1000, {1}, 3 * 256}, // likewise, with two that arrive
        {513, {2}, 2 * 256},
        {1500, {3}, 5 * 256},
        {2000, {3, 1, 2}, 3 * 256}, // the second extent, of one record, already fails
    };
    for (const Row &row : rows) {
        const OnImage medium(volume_with(file_of(row.size, row.pieces)));
        const Extraction done = medium.extract();
        EXPECT_EQ(done.result, -1) << row.size;
        EXPECT_FALSE(done.whole);
        EXPECT_EQ(error_text(), error_with_file(303, medium.host.path("out")));
        EXPECT_EQ(medium.text().size(), row.arrived) << row.size;
    }
}

TEST(SdfExtents, SameOutcomeRecordByRecord)
{
    for (const std::vector<uint32_t> &pieces : {std::vector<uint32_t>{1}, {2}, {3}, {0, 2}, {3, 1, 2}}) {
        const SdfVolume volume = volume_with(file_of(1900, pieces));
        const OnImage together(volume);
        const OnImage alone(volume);
        const ProgressLog progress;
        const Extraction first = together.extract();
        const std::string first_error = error_text().substr(0, 20);
        const Extraction second = alone.extract(0, ProgressLog::callback);
        EXPECT_EQ(first.result, second.result);
        EXPECT_EQ(first.whole, second.whole);
        EXPECT_EQ(first_error, error_text().substr(0, 20));
        EXPECT_EQ(together.text(), alone.text());
    }
}

TEST(SdfExtents, Hazard_E17_ExtentBehindTheEndOfTheFileIsEmpty)
{
    SdfNode file = file_of(300, {2});
    const OnImage built(volume_with(file));
    Bytes image = built.image.bytes;
    set_dword_at(image, built.image.inode_at("FILE") + 76, 100);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    const Extraction done = extract_file(open.md, open.md->root, order_for(built.host.path("out")));
    EXPECT_EQ(done.result, 256);
    EXPECT_FALSE(done.whole); // the first extent went out as far as it goes
    EXPECT_EQ(built.text().size(), 512u);
}

TEST(SdfExtents, Hazard_E16_ProgressOfAFileOfNoSizeThatHasExtents)
{
    SdfNode file = file_of(600, {2});
    file.size = 0;
    const OnImage medium(volume_with(file));
    const ProgressLog progress;
    EXPECT_EQ(medium.extract(0, ProgressLog::callback).result, 256);
    EXPECT_EQ(progress.calls, (ProgressCalls{{256, 0, 0}, {512, 1, 0}}));
}

TEST(SdfExtents, Hazard_E4_FifthExtentIsNone)
{
    SdfNode file = file_of(700, {0, 0, 0});
    const OnImage built(volume_with(file));
    for (const uint32_t count : {5U, 12U, 0xFFFFU}) {
        Bytes image = built.image.bytes;
        set_word_at(image, built.image.inode_at("FILE") + 38, static_cast<uint16_t>(count));
        const OpenVolume open(image);
        ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
        const Scratch host;
        EXPECT_TRUE(extract_file(open.md, open.md->root, order_for(host.path("out"))).whole);
        EXPECT_EQ(text_in(host.path("out")), text_at(built.image, open.md->root->location, 700));
    }
}

// ---- on a drive --------------------------------------------------------------------------------------------

// The streams that are opened for a file on a drive.
TEST(SdfExtents, ADriveReadsEachFromItsOwnStart)
{
    const SdfVolume volume = volume_with(file_of(700, {0}), 1024);
    const SdfImage image = sdf_image(volume);
    MemoryMedium drive(image.bytes);
    ASSERT_EQ(get_media_info(&drive.md), 0);
    ASSERT_EQ(get_file_table(&drive.md, nullptr, nullptr, 0, 0, 0, 0, 0, 1), 0);
    ASSERT_TRUE(drive.md.root != nullptr);
    const Scratch host;
    EXPECT_TRUE(extract_file(&drive.md, drive.md.root, order_for(host.path("out"))).whole) << error_text();
    EXPECT_EQ(text_in(host.path("out")), text_of(counting(700)));
    const uint32_t start = image.extents.at(drive.md.root->inode)[1].start * 4;
    EXPECT_EQ(drive.streams, (std::vector<std::string>{"read " + std::to_string(start) + "+3", "close"}));
}

TEST(SdfExtents, ADriveOpensAStreamForEachThatHasALength)
{
    const SdfImage image = sdf_image(volume_with(file_of(512, {1})));
    MemoryMedium drive(image.bytes);
    ASSERT_EQ(get_media_info(&drive.md), 0);
    ASSERT_EQ(get_file_table(&drive.md, nullptr, nullptr, 0, 0, 0, 0, 0, 1), 0);
    const Scratch host;
    EXPECT_EQ(extract_file(&drive.md, drive.md.root, order_for(host.path("out"))).result, 256);
    const std::vector<SdfExtent> extents = image.extents.at(drive.md.root->inode);
    EXPECT_EQ(drive.streams, (std::vector<std::string>{"read " + std::to_string(extents[0].start) + "+1", "close",
                                                       "read " + std::to_string(extents[1].start) + "+1", "close"}));
    EXPECT_EQ(text_in(host.path("out")), text_of(counting(256)));
}
