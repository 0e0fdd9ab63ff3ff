// Entries, names and hosts that would do harm: what is read behind an image's end, what is overwritten, what is said to
// be whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/content/outward_support.h"
#include "tests/volume/extract_support.h"
#include "volume/access.h"
#include "volume/names.h"

using namespace tests;

namespace
{

const Bytes one_line = lif_ascii({"a line"});

// An image of 64 records and some bytes, and an entry that may claim whatever it likes.
struct Claim {
    explicit Claim(size_t bytes = 64 * 256) : image(counting(bytes)), medium(image)
    {
        medium.md.format = FORMAT_LIF;
        info = named("CLAIM");
        info.type = 0xE0D0;
    }
    int32_t extract(const std::string &path, uint16_t flags = 0)
    {
        forget_error();
        extraction = extract_file(&medium.md, &info, order_for(path, flags));
        return extraction.result;
    }

    Bytes image;
    HandMedium medium;
    FileInfo info;
    Extraction extraction;
    Scratch host;
};

bool can_link(const std::string &target, const std::string &link)
{
    std::error_code code;
    std::filesystem::create_symlink(target, link, code);
    return !code;
}

size_t size_of(const std::string &path)
{
    return static_cast<size_t>(std::filesystem::file_size(path));
}

}

// ---- behind the image's end

TEST(ExtractHazards, Hazard_A1_WhatATrimmedImageLacksIsZero)
{
    for (const size_t bytes : {size_t{63 * 256 + 1}, size_t{63 * 256 + 255}, size_t{63 * 256}, size_t{62 * 256 + 7}}) {
        Claim claim(bytes);
        claim.info.location = 60;
        claim.info.size = 8 * 256;
        EXPECT_EQ(claim.extract(claim.host.path("out")), 256) << bytes;
        const Bytes there(claim.image.begin() + 60 * 256, claim.image.end());
        EXPECT_EQ(read_file(claim.host.path("out")), filled_to(there, 8 * 256)) << bytes;
    }
}

TEST(ExtractHazards, Hazard_A1_WhatATrimmedImageLacksIsNoText)
{
    const Bytes cut = {0, 2, 'a', 'b', 0, 9, 'c', 'd'};
    OneFile file(cut, 1);
    file.volume.file.replace(front_of(file.volume.file.bytes(), 4 * 256 + 8));
    const Medium medium(file.volume.file.path());
    ASSERT_TRUE(medium);
    const std::string path = file.path("out");
    EXPECT_EQ(image_extract_file(medium.md, medium->root, nullptr, path.c_str(), nullptr, EXTRACT_CONVERT, nullptr),
              256);
    EXPECT_EQ(text_in(path), std::string("ab\r\ncd\0\0\0\0\0\0\0\r\n", 15)) << "the characters that lack are zeros";
}

TEST(ExtractHazards, Hazard_A2_AFileWhollyBehindTheEndIsZeros)
{
    for (const uint32_t location :
         {64u, 65u, 0xFFFFu, 0x00FFFFFFu, 0x01000000u, 0x01000001u, 0x7FFFFFFFu, 0xFFFFFF00u}) {
        Claim claim;
        claim.info.location = location;
        claim.info.size = 700;
        EXPECT_EQ(claim.extract(claim.host.path("out")), 256) << location;
        EXPECT_EQ(read_file(claim.host.path("out")), Bytes(700)) << location;
    }
}

TEST(ExtractHazards, Hazard_A3_RecordsBehindTheLargestNumberAreNotTheFirstOnes)
{
    Claim claim;
    claim.info.location = 0xFFFFFFFF;
    claim.info.size = 1024;
    EXPECT_EQ(claim.extract(claim.host.path("out")), 256);
    EXPECT_EQ(read_file(claim.host.path("out")), Bytes(1024));
}

TEST(ExtractHazards, Hazard_H12_AtMost65535RecordsBehindTheEnd)
{
    Claim claim;
    claim.info.location = 62;
    claim.info.size = (2 + 65535) * 256;
    EXPECT_EQ(claim.extract(claim.host.path("out")), 256);
    EXPECT_TRUE(claim.extraction.whole || !claim.extraction.stopped);
    const Bytes bytes = read_file(claim.host.path("out"));
    ASSERT_EQ(bytes.size(), claim.info.size);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + 512, claim.image.begin() + 62 * 256));
    EXPECT_TRUE(std::all_of(bytes.begin() + 512, bytes.end(), [](uint8_t byte) { return byte == 0; }));
}

TEST(ExtractHazards, Hazard_H12_MoreRecordsBehindTheEndAreAReadError)
{
    for (const uint32_t records : {2u + 65536u, 0x01000000u - 1u}) {
        Claim claim;
        claim.info.location = 62;
        claim.info.size = records * 256;
        EXPECT_EQ(claim.extract(claim.host.path("out")), -1) << records;
        EXPECT_EQ(global_error, 302u);
        EXPECT_FALSE(claim.extraction.whole);
        EXPECT_EQ(size_of(claim.host.path("out")), (2 + 65535) * 256u);
        for (const uint16_t flags : {uint16_t{EXTRACT_CONVERT}, uint16_t{EXTRACT_CONVERT | EXTRACT_FORCE}}) {
            claim.info.type = flags == EXTRACT_CONVERT ? 1 : 0xE0D0;
            EXPECT_EQ(claim.extract(claim.host.path("text" + std::to_string(flags)), flags), -1) << records;
            EXPECT_EQ(global_error, 302u);
        }
    }
}

TEST(ExtractHazards, Hazard_H12_AnEntryOfAVolumeThatClaimsFourGigabytes)
{
    LifVolume volume;
    volume.entries = {{.name = "BOMB", .type = 0xE0D0, .length = 0x00FFFFFF}, {.name = "NEXT", .start = 5}};
    const OpenVolume open(volume);
    FileInfo *bomb = entry_named(open.md, "BOMB");
    if (bomb == nullptr) GTEST_SKIP() << "such an entry isn't listed";
    const Scratch host;
    forget_error();
    EXPECT_EQ(image_extract_file(open.md, bomb, nullptr, host.path("out").c_str(), nullptr, 0, nullptr), -1);
    EXPECT_EQ(global_error, 302u);
    EXPECT_LE(size_of(host.path("out")), 65535u * 256u + open.file.bytes().size());
}

// ---- what is overwritten

TEST(ExtractHazards, Hazard_I13_TheImageIsNoTarget)
{
    OneFile file(one_line, 1);
    const Bytes image = file.volume.file.bytes();
    const std::string path = file.volume.file.path();
    for (const uint16_t flags : {uint16_t{1}, uint16_t{3}, uint16_t{7}}) {
        EXPECT_EQ(extract_to(file, path, flags).result, -1) << flags;
        EXPECT_EQ(global_error, 208u) << flags;
        EXPECT_EQ(file.volume.file.bytes(), image) << flags;
    }
    EXPECT_EQ(extract_to(file, path, 0).result, -1);
    EXPECT_NE(global_error, 0u);
    EXPECT_EQ(file.volume.file.bytes(), image);
}

TEST(ExtractHazards, Hazard_I13_TheImageByAnotherNameIsNoTarget)
{
    OneFile file(one_line, 1);
    const Bytes image = file.volume.file.bytes();
    const std::string path = file.volume.file.path();
    std::error_code code;
    std::filesystem::create_hard_link(path, file.path("hard"), code);
    const bool linked = can_link(path, file.path("soft"));
    if (code && !linked) GTEST_SKIP() << "this system makes no links";
    for (const char *name : {"hard", "soft"}) {
        if (!exists(file.path(name))) continue;
        EXPECT_EQ(extract_to(file, file.path(name), EXTRACT_OVERWRITE).result, -1) << name;
        EXPECT_EQ(global_error, 208u) << name;
        EXPECT_EQ(file.volume.file.bytes(), image) << name;
    }
}

TEST(ExtractHazards, Hazard_I13_AFolderDoesNotTakeThePlaceOfTheImage)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    const Bytes image = file.volume.file.bytes();
    for (const uint16_t flags : {uint16_t{0}, uint16_t{1}}) {
        EXPECT_EQ(extract_to(file, file.volume.file.path(), flags).result, -1) << flags;
        ASSERT_TRUE(std::filesystem::is_regular_file(file.volume.file.path())) << flags;
        EXPECT_EQ(file.volume.file.bytes(), image) << flags;
    }
    EXPECT_EQ(global_error, 208u);
}

TEST(ExtractHazards, Hazard_H14_OnlyAPlainFileGivesWayToAFolder)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    const std::string kept = file.host.file("kept", "kept");
    if (can_link(kept, file.path("link"))) {
        const Extraction extraction = extract_to(file, file.path("link"), EXTRACT_OVERWRITE);
        EXPECT_EQ(content(kept), "kept");
        EXPECT_TRUE(std::filesystem::is_symlink(file.path("link")));
        EXPECT_FALSE(extraction.whole) << "there is no folder of this name";
    }
    for (const char *name : {".", ".."}) {
        const std::string folder = file.host.folder();
        EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), name, nullptr, 1, nullptr), 1) << name;
        EXPECT_EQ(content(kept), "kept");
    }
}

TEST(ExtractHazards, AFolderThatCannotBeMadeIsNotWhole)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    const Extraction extraction = extract_to(file, file.path("missing") + "/out");
    EXPECT_EQ(extraction.result, 1) << "as the making of a folder says it";
    EXPECT_FALSE(extraction.whole);
    EXPECT_FALSE(exists(file.path("missing")));
}

TEST(ExtractHazards, Hazard_H16_ATargetThatAppearsInBetweenIsNotOverwritten)
{
    OneFile file(one_line, 1);
    const std::string path = file.path("out");
    Extraction extraction;
    {
        HostDisk disk;
        disk.before_opening_for_writing = [&](const char *name) {
            if (path == name && !exists(path)) write_file(path, bytes_of("somebody else's"));
        };
        extraction = extract_to(file, path);
    }
    EXPECT_EQ(extraction.result, -1);
    EXPECT_EQ(error_text(), error_with_file(210, path));
    EXPECT_EQ(text_in(path), "somebody else's");
}

TEST(ExtractHazards, Hazard_H16_ALinkThatLeadsElsewhereIsNotFollowedWithoutLeave)
{
    OneFile file(one_line, 1);
    if (!can_link(file.path("elsewhere"), file.path("out"))) GTEST_SKIP() << "this system makes no links";
    EXPECT_EQ(extract_to(file, file.path("out")).result, -1);
    EXPECT_NE(global_error, 0u);
    EXPECT_FALSE(std::filesystem::exists(file.path("elsewhere")));
}

// ---- what is said to be whole

TEST(ExtractHazards, Hazard_H13_ATextCutByAFullDiskIsNotWhole)
{
    const Bytes content = lif_ascii({std::string(300, 'a'), std::string(300, 'b')});
    for (const uint64_t room : {uint64_t{0}, uint64_t{1}, uint64_t{300}, uint64_t{603}, uint64_t{604}}) {
        for (const bool told : {false, true}) {
            OneFile file(content, 1);
            ProgressLog progress;
            Extraction extraction;
            {
                const HostDisk disk(room);
                extraction =
                    extract_to(file, file.path("out"), EXTRACT_CONVERT, told ? ProgressLog::callback : nullptr);
            }
            EXPECT_EQ(extraction.result, 256) << room;
            EXPECT_EQ(extraction.whole, room == 604) << room;
            EXPECT_FALSE(extraction.stopped) << room;
            const std::string wanted = std::string(300, 'a') + "\r\n" + std::string(300, 'b') + "\r\n";
            EXPECT_EQ(text_in(file.path("out")), wanted.substr(0, room)) << room;
        }
    }
}

TEST(ExtractHazards, Hazard_J1_WhatFailedOrWasStoppedIsNotWhole)
{
    OneFile file(counting(1024));
    {
        const HostDisk disk(1000);
        const Extraction extraction = extract_to(file, file.path("full"));
        EXPECT_EQ(extraction.result, -1);
        EXPECT_FALSE(extraction.whole);
    }
    refresh_medium(file.md); // what was read ahead would need no reading
    {
        const FileFaults faults(FileFault::read, 1, true);
        const Extraction extraction = extract_to(file, file.path("unread"));
        EXPECT_EQ(extraction.result, -1);
        EXPECT_FALSE(extraction.whole);
    }
    ProgressLog progress(3);
    const Extraction extraction = extract_to(file, file.path("stopped"), 0, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 256);
    EXPECT_FALSE(extraction.whole) << "though all of it is there";
}

// ---- names and paths

TEST(ExtractHazards, Hazard_H15_ADestinationWithoutACharacterIsNoFolderToMake)
{
    OneFile file(one_line, 1);
    ExtractOrder order;
    order.destination = "";
    order.to_file = "out";
    const std::string path = extraction_path(file.md, &file.info, order);
    EXPECT_TRUE(path == "out" || path == std::string(1, platform_separator()) + "out") << path;
}

TEST(ExtractHazards, Hazard_J13_PathsOfAnyLengthAreWhole)
{
    if (is_windows()) GTEST_SKIP() << "the system's own limit is 260 characters";
    OneFile file(one_line, 1);
    std::string folder = file.host.folder();
    for (int level = 0; level < 8; ++level) {
        folder += "/" + std::string(100, static_cast<char>('a' + level));
        ExtractOrder order;
        order.destination = folder.c_str();
        order.flags = EXTRACT_CONVERT | EXTRACT_TXT | EXTRACT_OVERWRITE;
        EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256) << level;
        EXPECT_EQ(text_in(folder + "/FILE.ASCII.txt"), "a line\r\n");
    }
}

TEST(ExtractHazards, Hazard_H15_ANameLongerThanAnySystemTakesIsAnError)
{
    OneFile file(one_line, 1);
    for (const size_t length : {size_t{300}, size_t{5000}, size_t{70000}}) {
        EXPECT_EQ(extract_to(file, file.path(std::string(length, 'n'))).result, -1) << length;
        EXPECT_NE(global_error, 0u);
    }
}

TEST(ExtractHazards, Hazard_H17_TheLongestNameFitsItsBuffer)
{
    OneFile file(one_line, 1);
    std::fill_n(file.info.name, 16, 'N');
    file.info.name[16] = '\0';
    std::fill_n(file.info.type_string, 6, 'T');
    std::fill_n(file.info.system_string, 5, 'S');
    file.info.system_string[5] = '\0';
    file.info.record_len = 0x7FFFFFFF;
    const std::unique_ptr<char[]> name(new char[VISIBLE_NAME_SIZE]);
    const std::string folder = file.host.folder();
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name.get(), 0, nullptr), 256);
    EXPECT_STREQ(name.get(), "NNNNNNNNNNNNNNNN.&4294967294.TTTTTTSSSSS");
    EXPECT_TRUE(exists(file.path("NNNNNNNNNNNNNNNN.&4294967294.TTTTTTSSSSS")));
}

TEST(ExtractHazards, Hazard_B9_PercentSignsInNamesAreText)
{
    OneFile file(one_line, 1, "%n%s%x%n");
    const std::string folder = file.path("%s%n");
    const LogCapture log(3);
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, nullptr, 0, nullptr), 256);
    EXPECT_TRUE(exists(folder + "/%n%s%x%n.ASCII"));
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, nullptr, 0, nullptr), -1);
    EXPECT_TRUE(contains(error_text(), "%s%n")) << error_text();
    EXPECT_TRUE(contains(log.text(), "%s%n"));
}
