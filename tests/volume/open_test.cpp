// Opening and closing media.
#include "volume/open.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "base/log.h"
#include "base/memory.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "volume/access.h"
#include "volume/table.h"

using namespace tests;

namespace
{

LifVolume two_files()
{
    LifVolume volume;
    volume.entries = {{.name = "ONE", .content = Bytes(300, 'a')}, {.name = "TWO", .content = Bytes(300, 'b')}};
    return volume;
}

// A template whose size a new image gets.
MediaDescriptor of_size(uint32_t bytes)
{
    MediaDescriptor options = usual_options();
    options.size = bytes;
    return options;
}

void expect_unsupported(const std::string &target, uint16_t flags, const std::string &kind)
{
    forget_error();
    const Medium medium(target, flags);
    EXPECT_FALSE(medium) << target;
    EXPECT_EQ(global_error, 109u) << target;
    EXPECT_TRUE(contains_ignoring_case(error_text(), kind)) << error_text();
}

}

TEST(ImageOpen, ReadsAVolumeWithItsFiles)
{
    const OpenVolume open(two_files());
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(open.md->access, uint32_t{ACCESS_IMAGE});
    EXPECT_EQ(open.md->tape, nullptr);
    EXPECT_STREQ(open.md->msus, open.file.path());
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ONE", "TWO"}));
    EXPECT_EQ(open.md->cursor, open.md->root);
    EXPECT_EQ(open.md->alloc_list, nullptr);
}

TEST(ImageOpen, WithoutReadingTheVolumeNothingIsKnownOfIt)
{
    const OpenVolume open(two_files(), 0);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->format, uint32_t{FORMAT_UNKNOWN});
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(open.md->size, 160u * 256u);
}

TEST(ImageOpen, CopiesTheOptionsOfTheTemplate)
{
    MediaDescriptor options{};
    options.use_file_conversion = 1;
    options.use_type_names = 2;
    options.use_typed_extensions = 3;
    options.use_file_headers = 2;
    options.show_purged = 4;
    options.cylinders = 77;
    const TemporaryFile file(lif_image(two_files()));
    const Medium medium(file.path(), 0, &options);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->use_file_conversion, 1u);
    EXPECT_EQ(medium->use_type_names, 2u);
    EXPECT_EQ(medium->use_typed_extensions, 3u);
    EXPECT_EQ(medium->use_file_headers, 2u);
    EXPECT_EQ(medium->show_purged, 4u);
    EXPECT_EQ(medium->cylinders, 0u);
}

TEST(ImageOpen, WithoutATemplateAllOptionsAreOff)
{
    const TemporaryFile file(lif_image(two_files()));
    const Medium medium(file.path(), OPEN_READ_VOLUME, nullptr);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->use_type_names, 0u);
    EXPECT_EQ(type_text(*medium->root), "#0001");
}

TEST(ImageOpen, NamesAMissingFile)
{
    const TemporaryFile file;
    forget_error();
    const Medium medium(file.path());
    EXPECT_FALSE(medium);
    EXPECT_EQ(error_text(), "Can't open file (Msus \"" + std::string(file.path()) + "\")");
    EXPECT_FALSE(file.exists());
}

TEST(ImageOpen, PassesOnWhatIsWrongWithTheTarget)
{
    forget_error();
    EXPECT_EQ(image_open("", nullptr, OPEN_READ_VOLUME), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Empty target string)");
    EXPECT_EQ(image_open(nullptr, nullptr, OPEN_READ_VOLUME), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    EXPECT_EQ(image_open("799:", nullptr, OPEN_READ_VOLUME), nullptr);
    EXPECT_EQ(global_error, 204u);
}

TEST(ImageOpen, ANewImageNeedsATemplate)
{
    const TemporaryFile file;
    forget_error();
    const Medium medium(file.path(), OPEN_CREATE, nullptr);
    EXPECT_FALSE(medium);
    EXPECT_EQ(error_text(), "Invalid parameter (no format specified)");
}

TEST(ImageOpen, ANewImageHasWholeRecords)
{
    const struct {
        uint32_t asked, made;
    } cases[] = {{0, 0}, {1, 256}, {256, 256}, {257, 512}, {1000, 1024}, {270336, 270336}};
    for (const auto &[asked, made] : cases) {
        const TemporaryFile file;
        const MediaDescriptor options = of_size(asked);
        const Medium medium(file.path(), OPEN_CREATE, &options);
        ASSERT_TRUE(medium) << error_text();
        EXPECT_EQ(medium->size, made);
        EXPECT_EQ(file.bytes(), Bytes(made)) << asked;
    }
}

TEST(ImageOpen, AnExistingImageIsNotMadeAnew)
{
    const TemporaryFile file(lif_image(two_files()));
    const Bytes before = file.bytes();
    const MediaDescriptor options = of_size(512);
    const Medium medium(file.path(), OPEN_CREATE, &options);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->size, before.size());
    EXPECT_EQ(file.bytes(), before);
}

TEST(ImageOpen, WhereNoFileCanBeMadeIsAnError)
{
    const TemporaryFile file;
    const std::string path = std::string(file.path()) + "/image.lif";
    const MediaDescriptor options = of_size(512);
    forget_error();
    const Medium medium(path, OPEN_CREATE, &options);
    EXPECT_FALSE(medium);
    EXPECT_EQ(error_text(), "Can't create file (Msus \"" + path + "\")");
}

TEST(ImageOpen, Hazard_A6_ASizeThatDoesNotFitIsRefused)
{
    for (const uint32_t size : {0xFFFFFF01u, 0xFFFFFFFFu}) {
        const TemporaryFile file;
        const MediaDescriptor options = of_size(size);
        forget_error();
        const Medium medium(file.path(), OPEN_CREATE, &options);
        EXPECT_FALSE(medium) << size;
        EXPECT_EQ(global_error, 307u) << size;
    }
}

TEST(ImageOpen, EmptiesAnImage)
{
    const TemporaryFile file(lif_image(two_files()));
    const Medium medium(file.path(), OPEN_EMPTY);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->size, 0u);
    EXPECT_TRUE(file.bytes().empty());
}

TEST(ImageOpen, ForReadingOnlyLeavesNoWayToWrite)
{
    const OpenVolume open(two_files(), OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(names(open.md).size(), 2u);
    open.md->root->name[0] = 'X';
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(global_error, 303u);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(ImageOpen, OtherMediaAreNotSupported)
{
    expect_unsupported("0:", OPEN_READ_VOLUME, "floppy");
    expect_unsupported("3:FILE", 0, "floppy");
    expect_unsupported("700:", OPEN_READ_VOLUME, "GPIB");
    expect_unsupported("7:", 0, "GPIB");
}

TEST(ImageOpen, OtherExtensionsArePlainImages)
{
    for (const char *extension : {"", ".hpi", ".tapes", ".tap.hpi", ".si"}) {
        const TemporaryFile file(lif_image(two_files()), extension);
        EXPECT_TRUE(Medium(file.path())) << extension;
    }
}

TEST(ImageOpen, PrintsImageFactsWhenChecking)
{
    const TemporaryFile file(lif_image(two_files()));
    const OutputCapture output;
    const LogCapture log(2);
    const Medium medium(file.path(), OPEN_CHECK);
    ASSERT_TRUE(medium);
    const std::string text = output.text();
    EXPECT_TRUE(contains(text, "-- Image file info --\n")) << text;
    EXPECT_TRUE(contains(text, "File name: " + std::string(file.path()) + "\n")) << text;
    EXPECT_TRUE(contains(text, "Image size: 40960 bytes\n")) << text;
    EXPECT_TRUE(contains(text, "Image type: binary image (hpi) format")) << text;
}

TEST(ImageOpen, PrintsNothingOtherwise)
{
    const TemporaryFile file(lif_image(two_files()));
    const OutputCapture output;
    const Medium quiet(file.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    {
        const LogCapture log(2);
        const Medium unchecked(file.path(), OPEN_READ_VOLUME);
    }
    EXPECT_EQ(output.text(), "");
}

TEST(ImageOpen, ADamagedDirectoryStillOpens)
{
    LifVolume volume = two_files();
    volume.entries.push_back({.name = "BAD", .start = 0});
    volume.entries.push_back({.name = "BEHIND", .start = 100});
    const OpenVolume plain(volume);
    ASSERT_TRUE(plain.md != nullptr);
    EXPECT_EQ(names(plain.md), (std::vector<std::string>{"ONE", "TWO", "BEHIND"}));
    const OpenVolume checked(volume, OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(checked.md != nullptr);
    EXPECT_EQ(names(checked.md), (std::vector<std::string>{"ONE", "TWO"}));
}

TEST(ImageOpen, EveryFailingReadOrSeekIsAnErrorAndLeavesTheImageAsItWas)
{
    for (const bool onward : {false, true}) {
        for (const FileFault kind : {FileFault::open, FileFault::read, FileFault::seek, FileFault::size}) {
            const TemporaryFile file(lif_image(two_files()));
            const Bytes before = file.bytes();
            bool reached = true;
            for (uint32_t n = 1; reached; ++n) {
                ASSERT_LT(n, 100u);
                FileFaults faults(kind, n, onward);
                forget_error();
                const Medium medium(file.path());
                reached = faults.reached;
                const bool whole = medium && names(medium.md).size() == 2;
                EXPECT_TRUE(whole || global_error != 0) << static_cast<int>(kind) << ' ' << n;
                EXPECT_EQ(file.bytes(), before);
            }
            EXPECT_TRUE(Medium(file.path()));
        }
    }
}

TEST(ImageOpen, AReadOfManyRecordsThatFailsIsTriedRecordByRecord)
{
    const TemporaryFile file(lif_image(two_files()));
    FileFaults faults(FileFault::read, 1);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_TRUE(faults.reached);
    EXPECT_EQ(names(medium.md).size(), 2u);
}

TEST(ImageOpen, AMediumThatCannotBeReadIsAReadError)
{
    const TemporaryFile file(lif_image(two_files()));
    FileFaults faults(FileFault::read, 1, true);
    const Medium medium(file.path());
    EXPECT_FALSE(medium);
    EXPECT_EQ(global_error, 302u);
}

TEST(ImageOpen, EveryFailingAllocationIsErrorOutOfMemory)
{
    const TemporaryFile file(lif_image(two_files()));
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 100u);
        HeapFaults faults(n);
        forget_error();
        MediaDescriptor *md = Medium(file.path()).md; // closed again at once
        reached = faults.reached;
        if (reached) {
            EXPECT_EQ(global_error, 105u) << n;
            EXPECT_EQ(faults.releases, faults.allocations - 1) << n;
        } else {
            EXPECT_NE(md, nullptr);
            EXPECT_EQ(faults.releases, faults.allocations);
        }
    }
}

TEST(ImageOpen, AFailureGivesBackEverything)
{
    const TemporaryFile unknown(Bytes(4096));
    const TemporaryFile missing;
    HeapFaults faults;
    for (const std::string &target :
         {std::string(unknown.path()), std::string(missing.path()), std::string("0:"), std::string("700:")})
        EXPECT_FALSE(Medium(target)) << target;
    EXPECT_EQ(faults.releases, faults.allocations);
}

TEST(ImageOpen, Hazard_A1_AShortLastRecordReadsAsIfFollowedByZeros)
{
    LifVolume volume = two_files();
    Bytes image = lif_image(volume);
    image.resize(2 * record_bytes + 40); // the second entry is cut off behind eight bytes of its name
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ONE"}));
}

TEST(ImageOpen, Hazard_A2_AnEndlessDirectoryEndsWithTheImage)
{
    LifVolume volume = two_files();
    volume.end_mark = false;
    Bytes image = lif_image(volume);
    set_dword_at(image, 16, 0xFFFFFFFF);
    FileFaults counter;
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(entry_named(open.md, "ONE"), open.md->root);
    EXPECT_LT(counter.reads, 1000u);
}

TEST(ImageOpen, Hazard_A3_ADirectoryBehind4GiBIsNotTheHeadOfTheImage)
{
    LifVolume volume = two_files();
    volume.entries.clear();
    volume.records_per_track = 0;
    volume.records = 20;
    volume.end_mark = false;
    Bytes image = lif_image(volume);
    const std::array<uint8_t, 32> entry = lif_entry_bytes({.name = "HEAD", .start = 10, .length = 1});
    std::copy(entry.begin(), entry.end(), image.begin() + 64); // an entry in the header's record
    set_dword_at(image, 8, 0x1000000);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root, nullptr);
}

TEST(ImageRecords, Hazard_A3_ARecordBehind4GiBReadsAsZeros)
{
    const OpenVolume open(two_files());
    HandMedium hand(lif_image(two_files()));
    ASSERT_TRUE(open.md != nullptr);
    for (MediaDescriptor *md : {open.md, &hand.md}) {
        for (const uint32_t record : {160u, 0x1000000u, 0x1000002u, 0xFFFFFFFFu}) {
            Bytes buffer(record_bytes, 0xAB);
            EXPECT_EQ(read_record(md, record, buffer.data()), 0);
            EXPECT_EQ(buffer, Bytes(record_bytes)) << record;
        }
        EXPECT_EQ(write_record(md, 0x1000000, Bytes(record_bytes).data()), -1);
        EXPECT_EQ(end_record(md), 160u);
    }
    EXPECT_EQ(open.file.bytes(), lif_image(two_files()));
    EXPECT_EQ(hand.file.bytes(), lif_image(two_files()));
}

TEST(ImageRecords, WhatWasWrittenIsReadBack)
{
    const OpenVolume open(two_files());
    ASSERT_TRUE(open.md != nullptr);
    Bytes buffer(record_bytes, 0xAB);
    EXPECT_EQ(write_record(open.md, 50, buffer.data()), 0);
    Bytes again(record_bytes);
    EXPECT_EQ(read_record(open.md, 50, again.data()), 0);
    EXPECT_EQ(again, buffer);
    EXPECT_EQ(read_record(open.md, 51, again.data()), 0);
    EXPECT_EQ(again, Bytes(record_bytes));
}

TEST(ImageOpen, Hazard_A4_BoundsUseTheTrueSize)
{
#ifdef _WIN32
    GTEST_SKIP() << "needs a file with holes";
#endif
    const TemporaryFile file(lif_image(two_files()));
    file.extend(0x100000000u + 512);
    const Medium medium(file.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->size, 512u);
    EXPECT_EQ(names(medium.md).size(), 2u);
    EXPECT_EQ(update_file_table(medium.md, 0), 0) << error_text();
}

TEST(ImageOpen, Hazard_A5_ARecordAtTheLastPositionIsNotTheEndOfTheFile)
{
    LifVolume volume = two_files();
    volume.directory_start = 0xFFFFFF;
    volume.directory_length = 2;
    volume.records = 10;
    volume.entries.clear();
    Bytes image = lif_image(volume);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(open.file.bytes(), image);
}

TEST(ImageClose, NullIsIgnored)
{
    HeapFaults faults;
    image_close(nullptr);
    EXPECT_EQ(faults.releases, 0u);
}

TEST(ImageClose, WritesNothing)
{
    const TemporaryFile file(lif_image(two_files()));
    const Bytes before = file.bytes();
    {
        const Medium medium(file.path());
        ASSERT_TRUE(medium);
        medium->root->name[0] = 'X';
        medium->label[0] = 'X';
    }
    EXPECT_EQ(file.bytes(), before);
}

TEST(ImageFreeDirectory, EmptiesTheTopLevel)
{
    const OpenVolume open(two_files());
    ASSERT_TRUE(open.md != nullptr);
    HeapFaults faults;
    image_free_directory(open.md, nullptr);
    EXPECT_EQ(faults.releases, 2u);
    EXPECT_EQ(open.md->root, nullptr);
}

TEST(ImageFreeDirectory, Hazard_D20_AnyDepthIsReleased)
{
    constexpr uint32_t depth = 50000;
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    HeapFaults faults;
    FileInfo **link = &open.md->root;
    for (uint32_t i = 0; i < depth; ++i) {
        auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
        ASSERT_NE(info, nullptr);
        info->is_directory = 1;
        *link = info;
        link = &info->child;
    }
    image_free_directory(open.md, nullptr);
    EXPECT_EQ(faults.releases, depth);
    EXPECT_EQ(open.md->root, nullptr);
}

TEST(ImageFreeDirectory, EmptiesOneDirectoryWithAllBelowIt)
{
    const OpenVolume open(two_files());
    const OpenVolume inner(two_files());
    const OpenVolume innermost(two_files());
    ASSERT_TRUE(open.md != nullptr && inner.md != nullptr && innermost.md != nullptr);
    open.md->root->is_directory = 1; // a tree out of three lists
    open.md->root->child = inner.md->root;
    inner.md->root->is_directory = 1;
    inner.md->root->child = innermost.md->root;
    inner.md->root = inner.md->cursor = nullptr;
    innermost.md->root = innermost.md->cursor = nullptr;
    HeapFaults faults;
    image_free_directory(open.md, open.md->root);
    EXPECT_EQ(faults.releases, 4u);
    EXPECT_EQ(open.md->root->child, nullptr);
    EXPECT_EQ(names(open.md).size(), 2u);
}
