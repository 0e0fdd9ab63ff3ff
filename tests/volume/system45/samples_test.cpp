// A disk of a real machine. It is not part of the project; TARVO_SAMPLES names the folder that has it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/error.h"
#include "base/output.h"
#include "tests/support/capture.h"
#include "tests/support/system45_builder.h"
#include "volume/allocation.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr const char *is_missing = "hp9845.hpi is not in the folder that TARVO_SAMPLES names";

std::string disk_path()
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    if (folder == nullptr) return {};
    const std::filesystem::path path = std::filesystem::path(folder) / "hp9845.hpi";
    std::error_code ignored;
    return std::filesystem::exists(path, ignored) ? path.string() : std::string();
}

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, 0);
}

}

TEST(Disk45Sample, FieldsAndFiles)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const LogCapture log(1);
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_CHECK | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_EQ(medium->format, uint32_t{FORMAT_DISK45});
    EXPECT_EQ(medium->magic, 0x0500u);
    EXPECT_EQ(medium->sectors, 30u);
    EXPECT_EQ(medium->cylinders, 150u);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"RJE", "CTL$", "PRIME3"}));
    EXPECT_EQ(locations(medium.md), (std::vector<uint32_t>{60, 295, 297}));
    EXPECT_EQ(medium->used_bytes, 241u * 256u);
    EXPECT_EQ(medium->free_bytes, 4199u * 256u);
    EXPECT_EQ(runs_of(*medium.md), (Runs{{301, 4199}}));
    EXPECT_EQ(log.text(), ""); // file table and availability table agree
}

TEST(Disk45Sample, Catalogue)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const OutputCapture output;
    print_list_header(medium.md);
    visit_matching(medium.md, nullptr, print_line, nullptr);
    output_flush();
    EXPECT_EQ(output.text(), "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
                             "H7           148\n"
                             "\n"
                             "RJE       PROG    235      256         60\n"
                             "CTL$      DATA      2      256        295\n"
                             "PRIME3    DATA      4      256        297\n");
}

TEST(Disk45Sample, Summary)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const OutputCapture output;
    print_media_info(medium.md);
    EXPECT_EQ(output.text(), "Image format: System 45 native disk format\n"
                             "System type: HP9835/9845\n"
                             "Image size: 1182720 bytes\n"
                             "Interleave factor: 7\n"
                             "Sectors per track: 30\n"
                             "Total number of user accessable tracks: 150\n"
                             "Total number of user accessable records: 4500\n"
                             "System area starts at record #0\n"
                             "Directory starts at record #1\n"
                             "Directory size: 22 records\n"
                             "Allocation table starts at record #23\n"
                             "Allocation table size: 6 records\n"
                             "Spare directory starts at record #31\n"
                             "Spare allocation table starts at record #53\n"
                             "File area starts at record #60\n"
                             "Total number of system tracks: 2\n"
                             "Total number of usable data tracks: 148\n"
                             "\n");
}

TEST(Disk45Sample, SpareTablesAreEqualToTheMainOnes)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes image = read_file(path);
    EXPECT_EQ(records_of(image, 1, 28), records_of(image, 31, 28));
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium);
    EXPECT_EQ(get_file_table(medium.md, nullptr, nullptr, 0, 1, 0, 1, 0, 0), 0);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"RJE", "CTL$", "PRIME3"}));
    EXPECT_EQ(get_alloc_table(medium.md, 1), 0);
    EXPECT_EQ(runs_of(*medium.md), (Runs{{301, 4199}}));
}

TEST(Disk45Sample, RewritingItsTablesChangesNoByte)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    const Medium medium(copy.path());
    ASSERT_TRUE(medium);
    for (const int32_t use_spare : {0, 1}) {
        EXPECT_EQ(update_file_table(medium.md, use_spare), 0) << error_text();
        EXPECT_EQ(update_alloc_table(medium.md, use_spare), 0) << error_text();
    }
    EXPECT_EQ(copy.bytes(), before);
}
