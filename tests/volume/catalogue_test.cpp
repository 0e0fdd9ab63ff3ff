// What is printed of a volume, to the letter.
#include "volume/catalogue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/catalogue_inner.h"
#include "volume/navigate.h"

using namespace tests;

namespace
{

constexpr TimeRecord third_of_january = {.tm_sec = 6,
                                         .tm_min = 5,
                                         .tm_hour = 4,
                                         .tm_mday = 3,
                                         .tm_mon = 0,
                                         .tm_year = 102,
                                         .tm_wday = 0,
                                         .tm_yday = 0,
                                         .tm_isdst = 0};

MediaDescriptor of_format(uint32_t format)
{
    MediaDescriptor md{};
    md.format = format;
    std::strcpy(md.msus, "disc.lif");
    std::strcpy(md.label, "LABEL ");
    md.date = third_of_january;
    md.backup_date = third_of_january;
    md.magic = 0x8000;
    md.dir_id = 0x1000;
    md.version = 1;
    md.interleave = 7;
    md.size = 270336;
    md.sectors = 16;
    md.heads = 2;
    md.cylinders = 66;
    md.records = 1056;
    md.dir_start = 2;
    md.dir_size = 4;
    md.spare_dir_start = 300;
    md.spare_alloc_start = 304;
    md.file_area_start = 6;
    md.system_tracks = 1;
    md.data_tracks = 65;
    md.block_size = 512;
    md.free_bytes = 5120;
    md.largest_block = 527;
    md.fat_start = 3;
    return md;
}

std::string info_of(const MediaDescriptor &md)
{
    const OutputCapture output;
    print_media_info(&md);
    return output.text();
}

std::string header_of(const MediaDescriptor &md)
{
    const OutputCapture output;
    print_list_header(&md);
    return output.text();
}

std::string line_of(uint32_t format, const FileInfo &info, uint32_t list_level = 0)
{
    const MediaDescriptor md = of_format(format);
    const OutputCapture output;
    print_list_entry(&md, &info, list_level);
    return output.text();
}

FileInfo dated(const std::string &name, const std::string &type = "ASCII")
{
    FileInfo info = named(name, type);
    info.date = third_of_january;
    return info;
}

const char *const geometry_lines = "Sectors per track: 16\n"
                                   "Number of heads or surfaces: 2\n"
                                   "Total number of user accessable tracks: 66\n"
                                   "Total number of user accessable records: 1056\n";
const char *const directory_lines = "System area starts at record #0\n"
                                    "Directory starts at record #2\n"
                                    "Directory size: 4 records\n";
const char *const track_lines = "Total number of system tracks: 1\n"
                                "Total number of usable data tracks: 65\n";

void note_name(void *context, const MediaDescriptor *, const FileInfo *info)
{
    static_cast<std::vector<std::string> *>(context)->emplace_back(info->name);
}

std::vector<std::string> visited(const MediaDescriptor *md, const char *pattern)
{
    const char *filespec[] = {pattern, nullptr};
    std::vector<std::string> names;
    const uint32_t count = visit_matching(md, filespec, note_name, &names);
    EXPECT_EQ(count, names.size());
    return names;
}

}

TEST(MediaInfo, Lif)
{
    EXPECT_EQ(info_of(of_format(FORMAT_LIF)),
              std::string("Image format: Logical Interchange Format (LIF) id=$1000 version=1\n"
                          "Image size: 270336 bytes\n"
                          "Volume label: \"LABEL \"\n"
                          "Creation date & time: 03-Jan-02 04:05\n") +
                  geometry_lines + directory_lines + "File area starts at record #6\n" + track_lines + "\n");
}

TEST(MediaInfo, LifWithoutHeadsAndWithASecondFileSystem)
{
    MediaDescriptor md = of_format(FORMAT_LIF);
    md.heads = 0;
    md.hfs_present = 1;
    md.hfs_record = 32;
    md.date.tm_mday = 0;
    const std::string text = info_of(md);
    EXPECT_FALSE(contains(text, "Number of heads")) << text;
    EXPECT_TRUE(contains(text, "Creation date & time:                \n"))
        << text; // nine and five blanks with one between
    EXPECT_TRUE(contains(text, "Total number of usable data tracks: 65\nHFS volume detected at record #32\n\n"))
        << text;
}

TEST(MediaInfo, System45Disc)
{
    MediaDescriptor md = of_format(FORMAT_DISK45);
    md.magic = 0x0500;
    md.heads = 0;
    md.alloc_start = 6;
    md.alloc_size = 3;
    EXPECT_EQ(info_of(md), std::string("Image format: System 45 native disk format\n"
                                       "System type: HP9835/9845\n"
                                       "Image size: 270336 bytes\n"
                                       "Interleave factor: 7\n"
                                       "Sectors per track: 16\n"
                                       "Total number of user accessable tracks: 66\n"
                                       "Total number of user accessable records: 1056\n") +
                               directory_lines +
                               "Allocation table starts at record #6\n"
                               "Allocation table size: 3 records\n"
                               "Spare directory starts at record #300\n"
                               "Spare allocation table starts at record #304\n"
                               "File area starts at record #6\n" +
                               track_lines + "\n");
}

TEST(MediaInfo, System45Tape)
{
    MediaDescriptor md = of_format(FORMAT_TAPE45);
    md.magic = 0x0500;
    EXPECT_EQ(info_of(md), std::string("Image format: System 45 native DC100 tape format\n"
                                       "System type: HP9835/9845\n"
                                       "Image size: 270336 bytes\n") +
                               geometry_lines + directory_lines +
                               "Spare directory starts at record #300\n"
                               "File area starts at record #6\n" +
                               track_lines + "\n");
}

TEST(MediaInfo, Sdf)
{
    MediaDescriptor md = of_format(FORMAT_SDF);
    md.magic = 0x0700;
    const std::string head = std::string("Image format: Structured Directory Format (SDF) id=$1000 version=1\n"
                                         "System type: HP500\n"
                                         "Image size: 270336 bytes\n"
                                         "Volume label: \"LABEL \"\n"
                                         "Creation date & time: 03-Jan-02 04:05\n"
                                         "Last backup date & time: 03-Jan-02 04:05\n"
                                         "Block size: 512\n"
                                         "Largest block: 527\n") +
                             geometry_lines;
    const std::string tail = std::string("File attributes table starts at block #3\n"
                                         "Root directory starts at record #2\n"
                                         "Root directory size: 4 records\n") +
                             track_lines;
    EXPECT_EQ(info_of(md), head + "File system has no boot area\n" + tail + "Volume is not password protected\n\n");
    md.boot_size = 8;
    md.boot_start = 1;
    md.needs_check = 1;
    std::strcpy(md.password, "pass%n");
    EXPECT_EQ(info_of(md), head + "Boot area of size 8 blocks starts at block #1\n" + tail +
                               "Volume is password protected (password is \"pass%n\")\n"
                               "File system needs check (may be currupted)\n\n");
}

TEST(MediaInfo, HfsAndUnknown)
{
    MediaDescriptor md = of_format(FORMAT_HFS);
    md.hfs_record = 32;
    EXPECT_EQ(info_of(md), "Image format: Hiearchical File System (HFS)\n"
                           "HFS volume at record #32\n"
                           "HFS file system is not yet supported by Tarvo.\n");
    md = of_format(FORMAT_UNKNOWN);
    md.magic = 0x00AB;
    EXPECT_TRUE(
        info_of(md).starts_with("Image format: unknown (ID $00AB)\nImage size: 270336 bytes\nSectors per track: 16\n"))
        << info_of(md);
}

TEST(MediaInfo, SystemTypesByMagic)
{
    const struct {
        uint16_t magic;
        const char *text;
    } rows[] = {{512, "System type: HP9831\n"},
                {1280, "System type: HP9835/9845\n"},
                {1536, "System type: HP250/260\n"},
                {1792, "System type: HP500\n"}};
    for (const auto &[magic, text] : rows) {
        MediaDescriptor md = of_format(FORMAT_DISK45);
        md.magic = magic;
        EXPECT_TRUE(contains(info_of(md), text)) << magic;
    }
    EXPECT_FALSE(contains(info_of(of_format(FORMAT_DISK45)), "System type"));
}

TEST(MediaInfo, LargeNumbersPrintUnsigned)
{
    MediaDescriptor md = of_format(FORMAT_LIF);
    md.size = 0xFFFFFFFF;
    md.data_tracks = 0xFFFFFFFA;
    EXPECT_TRUE(contains(info_of(md), "Image size: 4294967295 bytes\n"));
    EXPECT_TRUE(contains(info_of(md), "Total number of usable data tracks: 4294967290\n"));
}

TEST(MediaInfo, Hazard_B9_ALabelIsNoFormat)
{
    MediaDescriptor md = of_format(FORMAT_LIF);
    std::strcpy(md.label, "%n%s\x07%");
    std::strcpy(md.msus, "%s%n.lif");
    EXPECT_TRUE(contains(info_of(md), "Volume label: \"%n%s\x07%\"\n")) << info_of(md);
    EXPECT_TRUE(header_of(md).starts_with("%s%n.lif\nVOLUME LABEL: %n%s\x07%\nFILE NAME")) << header_of(md);
}

TEST(ListHeader, Lif)
{
    EXPECT_EQ(header_of(of_format(FORMAT_LIF)), "disc.lif\n"
                                                "VOLUME LABEL: LABEL \n"
                                                "FILE NAME PRO TYPE  REC/FILE BYTE/REC   ADDRESS     DATE     TIME\n"
                                                "\n");
}

TEST(ListHeader, System45)
{
    MediaDescriptor md = of_format(FORMAT_DISK45);
    const std::string head = "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n";
    EXPECT_EQ(header_of(md), head + "?7           65\n\n");
    md.data_tracks = 148;
    EXPECT_EQ(header_of(md), head + "H7           148\n\n");
    md.data_tracks = 1458;
    EXPECT_EQ(header_of(md), head + "M7           1458\n\n");
    md.format = FORMAT_TAPE45;
    md.data_tracks = 2;
    EXPECT_EQ(header_of(md), head + "T15          2\n\n");
}

TEST(ListHeader, Sdf)
{
    EXPECT_EQ(header_of(of_format(FORMAT_SDF)),
              "disc.lif\n"
              "LABEL: LABEL \n"
              "FORMAT: SDF\n"
              "AVAILABLE SPACE: 10\n"
              "                           SYS  FILE   NUMBER   RECORD     MODIFIED    PUB OPEN\n"
              "FILE NAME             LEV TYPE  TYPE  RECORDS   LENGTH DATE       TIME ACC STAT\n"
              "===================== === ==== ===== ======== ======== =============== === ====\n");
}

TEST(ListHeader, SdfWithoutABlockSize)
{
    MediaDescriptor md = of_format(FORMAT_SDF);
    md.block_size = 0;
    EXPECT_TRUE(contains(header_of(md), "AVAILABLE SPACE: "));
}

TEST(ListLine, Lif)
{
    EXPECT_EQ(line_of(FORMAT_LIF, dated("ABC")),
              "ABC           ASCII       10      256       100     3-Jan-02  4:05\n");
    FileInfo info = dated("ABCDEFGHIJ", "PROG");
    info.attributes = 6;
    info.records = 12345678;
    info.record_len = 65535;
    info.location = 123456789;
    EXPECT_EQ(line_of(FORMAT_LIF, info), "ABCDEFGHIJ *  PROG  12345678   131070 123456789     3-Jan-02  4:05\n");
}

TEST(ListLine, LifHidesPascalMarkers)
{
    FileInfo info = dated("ABCC______", "CODE");
    info.type = 0xEA32;
    EXPECT_EQ(line_of(FORMAT_LIF, info).substr(0, 20), "ABC           CODE  ");
}

TEST(ListLine, KeepsBdatAddressBehindItsHeader)
{
    FileInfo info = dated("DATA", "BDAT");
    info.type = 0xE961;
    EXPECT_EQ(line_of(FORMAT_LIF, info), "DATA          BDAT        10      256       101     3-Jan-02  4:05\n");
}

TEST(ListLine, WithoutADateItIsBlank)
{
    FileInfo info = dated("ABC");
    info.date.tm_mday = 0;
    EXPECT_EQ(line_of(FORMAT_LIF, info), "ABC           ASCII       10      256       100                   \n");
}

TEST(ListLine, Hazard_G7_OctoberPrintsThoughItsMonthIs15)
{
    FileInfo info = dated("ABC");
    info.date.tm_mon = 15;
    EXPECT_TRUE(contains(line_of(FORMAT_LIF, info), " 3-Oct-02  4:05\n")) << line_of(FORMAT_LIF, info);
    for (const int32_t month : {12, 164, -1, 1000000}) {
        info.date.tm_mon = month;
        EXPECT_TRUE(contains(line_of(FORMAT_LIF, info), " 3-\?\?\?-02  4:05\n")) << month;
    }
}

TEST(ListLine, Hazard_G8_DateFieldsOfAnySize)
{
    FileInfo info = dated("ABC");
    info.date.tm_hour = 165;
    info.date.tm_min = 165;
    info.date.tm_year = 265;
    EXPECT_TRUE(contains(line_of(FORMAT_LIF, info), " 3-Jan-65 165:165\n")) << line_of(FORMAT_LIF, info);
}

TEST(ListLine, TypeTextThatRunsOnIntoTheSystemText)
{
    LifVolume volume;
    volume.entries = {{.name = "ABC", .type = 0xE205}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(line_of(FORMAT_LIF, *open.md->root),
              "ABC           BIN71_98X6        1      256         4    15-Mar-84  9:07\n");
}

TEST(ListLine, System45)
{
    FileInfo info = dated("ABC", "DATA");
    EXPECT_EQ(line_of(FORMAT_DISK45, info), "ABC       DATA     10      256        100\n");
    info.attributes = 6;
    EXPECT_EQ(line_of(FORMAT_TAPE45, info), "ABC     * DATA     10      256        100\n");
}

TEST(ListLine, Sdf)
{
    FileInfo info = dated("ABC", "DATA");
    std::strcpy(info.system_string, "500");
    EXPECT_EQ(line_of(FORMAT_SDF, info),
              "ABC                     1 500  DATA        10      256 03-Jan-02 04:05 MRW\n");
    info.attributes = 7;
    EXPECT_TRUE(line_of(FORMAT_SDF, info).ends_with(" 04:05    \n"));
    info.attributes = ATTRIBUTE_HIDDEN;
    EXPECT_TRUE(line_of(FORMAT_SDF, info).ends_with(" M W\n"));
    info.attributes = ATTRIBUTE_READ_ONLY;
    EXPECT_TRUE(line_of(FORMAT_SDF, info).ends_with(" MR \n"));
    info.attributes = ATTRIBUTE_SYSTEM;
    EXPECT_TRUE(line_of(FORMAT_SDF, info).ends_with("  RW\n"));
}

TEST(ListLine, SdfNamesAreShiftedByTheirLevel)
{
    FileInfo info = dated("ABC", "DATA");
    info.level = 3;
    EXPECT_EQ(line_of(FORMAT_SDF, info, 3).substr(0, 25), "//ABC                   3");
    EXPECT_EQ(line_of(FORMAT_SDF, info, 0).substr(0, 25), "ABC                     3");
    info.level = 9;
    EXPECT_EQ(line_of(FORMAT_SDF, info, 9).substr(0, 25), "/////ABC                9");
    FileInfo longest = dated("ABCDEFGHIJKLMNOP", "DATA");
    longest.level = 999;
    EXPECT_EQ(line_of(FORMAT_SDF, longest, 999).substr(0, 25), "/////ABCDEFGHIJKLMNOP 999");
}

TEST(ListLine, UnknownFormatsPrintNothing)
{
    EXPECT_EQ(line_of(FORMAT_UNKNOWN, dated("ABC")), "");
}

TEST(Visiting, MatchingEntriesInListOrder)
{
    LifVolume volume;
    volume.entries = {{.name = "B1"},
                      {.name = "A1", .type = 0xE020},
                      {.name = "B2", .type = 0},
                      {.name = "BC________", .type = 0xEA32}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(visited(open.md, nullptr), (std::vector<std::string>{"B1", "A1", "BC________"}));
    EXPECT_EQ(visited(open.md, "B*"), (std::vector<std::string>{"B1", "BC________"}));
    EXPECT_EQ(visited(open.md, "B"), (std::vector<std::string>{"BC________"})); // by its printable name
    EXPECT_EQ(visited(open.md, "*BAS8x"), (std::vector<std::string>{"A1"}));
    EXPECT_EQ(visited(open.md, "X"), std::vector<std::string>{});
    open.md->show_purged = 1;
    EXPECT_EQ(visited(open.md, "B2"), (std::vector<std::string>{"B2"}));
}

// A catalogue shows and matches names without their markers, the count goes by the names in the directory.
TEST(Catalogue, MatchesAMarkedNameAsItIsShownAndCountsItAsItIsStored)
{
    LifVolume volume;
    volume.entries = {{.name = "F*0?C_____", .type = 0xEA32}, {.name = "PLAIN"}};
    const MediaDescriptor options = usual_options();
    const TemporaryFile file(lif_image(volume));
    const Medium medium(file.path(), OPEN_READ_VOLUME, &options);
    ASSERT_TRUE(medium);
    const char *const filespec[] = {"F*0?", nullptr};
    const auto ignore = [](void *, const MediaDescriptor *, const FileInfo *) {};
    EXPECT_EQ(visit_matching(medium.md, filespec, ignore, nullptr), 1u);
    EXPECT_EQ(match_count(medium.md, filespec), 0u);
    EXPECT_EQ(match_count(medium.md, nullptr), 2u);
}
