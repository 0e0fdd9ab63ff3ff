// What is printed of disks and tapes.
#include "volume/catalogue.h"

#include <gtest/gtest.h>

#include <string>

#include "base/output.h"
#include "tests/support/capture.h"
#include "tests/support/system45_builder.h"
#include "volume/catalogue_inner.h"

using namespace tests;

namespace
{

std::string info_of(const MediaDescriptor *md)
{
    const OutputCapture output;
    print_media_info(md);
    return output.text();
}

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, 0);
}

std::string catalogue_of(const MediaDescriptor *md)
{
    const OutputCapture output;
    print_list_header(md);
    visit_matching(md, nullptr, print_line, nullptr);
    output_flush();
    return output.text();
}

}

TEST(System45Catalogue, OfADisk)
{
    DiskVolume volume = three_disk_files();
    volume.tracks = 150;
    volume.data_tracks = 148;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(catalogue_of(open.md), "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
                                     "H7           148\n"
                                     "\n"
                                     "ALPHA     PROG      3      256         60\n"
                                     "BETA      DATA      5      256         63\n"
                                     "GAMMA   * BDAT      4      512         68\n");
}

TEST(System45Catalogue, TheLetterOfADiskGoesByItsDataTracks)
{
    for (const auto &[tracks, letter] : {std::pair<uint16_t, char>{148, 'H'}, {1458, 'M'}, {147, '?'}, {0, '?'}}) {
        DiskVolume volume;
        volume.data_tracks = tracks;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        const std::string line = std::string(1, letter) + "7           " + std::to_string(tracks) + "\n";
        EXPECT_TRUE(contains(catalogue_of(open.md), line)) << tracks;
    }
}

TEST(System45Catalogue, OfATape)
{
    const OpenVolume open(tape45_image(three_tape_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(catalogue_of(open.md), "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
                                     "T15          2\n"
                                     "\n"
                                     "ALPHA     PROG      3      256          5\n"
                                     "BETA      DATA      5      256          8\n"
                                     "GAMMA     BDAT      4      512         13\n");
}

TEST(System45Catalogue, OfTheLargestNumbers)
{
    DiskVolume volume;
    volume.entries = {{.name = "SIXSIX", .start = 0x7FFFFF, .records = 0xFFFF, .words = 0xFFFF}};
    volume.runs = Runs{};
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_TRUE(contains(catalogue_of(open.md), "SIXSIX    PROG  65535   131070     8388607\n"))
        << catalogue_of(open.md);
}

TEST(System45Info, OfADisk)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(info_of(open.md), "Image format: System 45 native disk format\n"
                                "System type: HP9835/9845\n"
                                "Image size: 153600 bytes\n"
                                "Interleave factor: 7\n"
                                "Sectors per track: 30\n"
                                "Total number of user accessable tracks: 20\n"
                                "Total number of user accessable records: 600\n"
                                "System area starts at record #0\n"
                                "Directory starts at record #1\n"
                                "Directory size: 22 records\n"
                                "Allocation table starts at record #23\n"
                                "Allocation table size: 6 records\n"
                                "Spare directory starts at record #31\n"
                                "Spare allocation table starts at record #53\n"
                                "File area starts at record #60\n"
                                "Total number of system tracks: 2\n"
                                "Total number of usable data tracks: 18\n"
                                "\n");
}

TEST(System45Info, SystemsByMagic)
{
    for (const auto &[magic, text] : {std::pair<uint16_t, const char *>{0x0200, "System type: HP9831\n"},
                                      {0x0500, "System type: HP9835/9845\n"},
                                      {0x0600, "System type: HP250/260\n"}}) {
        DiskVolume volume;
        volume.magic = magic;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_TRUE(contains(info_of(open.md), text));
    }
    const OutputCapture output;
    const OpenVolume open(disk45_image(disk_of_9825()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_FALSE(contains(info_of(open.md), "System type"));
}

TEST(System45Info, OfATape)
{
    const OpenVolume open(tape45_image(three_tape_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(info_of(open.md), "Image format: System 45 native DC100 tape format\n"
                                "System type: HP9835/9845\n"
                                "Image size: 218112 bytes\n"
                                "Sectors per track: 426\n"
                                "Number of heads or surfaces: 1\n"
                                "Total number of user accessable tracks: 2\n"
                                "Total number of user accessable records: 852\n"
                                "System area starts at record #0\n"
                                "Directory starts at record #1\n"
                                "Directory size: 2 records\n"
                                "Spare directory starts at record #3\n"
                                "File area starts at record #5\n"
                                "Total number of system tracks: 0\n"
                                "Total number of usable data tracks: 2\n"
                                "\n");
}
