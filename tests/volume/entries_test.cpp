// Entries of any format: which reader is asked, and what goes with a type.
#include "volume/entries.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"

using namespace tests;

namespace
{

FileInfo completed(uint32_t format, uint16_t type, uint32_t record_len = 0, const char *system = "")
{
    FileInfo info{};
    info.type = type;
    info.record_len = record_len;
    std::strncpy(info.system_string, system, sizeof info.system_string - 1);
    add_file_info(format, &info);
    return info;
}

}

TEST(EntryReading, OtherFormatsAreUnsupported)
{
    for (const uint32_t format : {0u, 5u, 6u, 0xFFFFFFFFu}) {
        MediaDescriptor md = usual_options();
        md.format = format;
        FileInfo info{};
        uint32_t size = 0;
        const std::array<uint8_t, 32> bytes = lif_entry_bytes({.name = "A", .start = 10, .length = 1});
        forget_error();
        EXPECT_EQ(get_file_info(&md, &info, bytes.data(), &size), -1) << format;
        EXPECT_EQ(global_error, 203u) << format;
    }
}

TEST(EntryWriting, OtherFormatsAreLeftAlone)
{
    for (const uint32_t format : {0u, 4u, 5u, 6u}) {
        MediaDescriptor md = usual_options();
        md.format = format;
        const FileInfo info = named("A");
        std::array<uint8_t, 32> bytes;
        bytes.fill(0x5A);
        const std::array<uint8_t, 32> before = bytes;
        set_file_info(&md, &info, bytes.data());
        EXPECT_EQ(bytes, before) << format;
    }
}

TEST(FileInfoDefaults, System45Systems)
{
    const struct {
        uint16_t type;
        const char *text;
    } rows[] = {{0x0800, "9825"}, {0x2800, "9845A"}, {0x4800, "9831"}, {0x6800, "250"},
                {0x8800, "9835"}, {0xC800, "9845"},  {0xA800, "9845"}, {0xE800, "9845"}};
    for (const auto &[type, text] : rows) EXPECT_STREQ(completed(FORMAT_DISK45, type).system_string, text) << type;
    EXPECT_STREQ(completed(FORMAT_DISK45, 0x6800, 0, "OWN").system_string, "OWN");
}

TEST(FileInfoDefaults, SdfSystems)
{
    EXPECT_STREQ(completed(FORMAT_SDF, 0xE020).system_string, "SE80");
    EXPECT_STREQ(completed(FORMAT_SDF, 0xEA32).system_string, "PSCL");
    EXPECT_STREQ(completed(FORMAT_SDF, 0xE9C9, 0, "500").system_string, "500"); // $E980 has its own
}

TEST(FileInfoDefaults, LifSystemFallsBackTo98X6)
{
    EXPECT_STREQ(completed(FORMAT_LIF, 0x0001).system_string, "98X6");
    EXPECT_STREQ(completed(FORMAT_LIF, 0xE848).system_string, "9845");
}

TEST(FileInfoDefaults, RecordLengthZeroIs128)
{
    for (const uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u})
        EXPECT_EQ(completed(format, 0x0001).record_len, 128u) << format;
    EXPECT_EQ(completed(FORMAT_DISK45, 0xC800, 64).record_len, 64u);
    EXPECT_EQ(completed(FORMAT_SDF, 0xE020, 64).record_len, 64u);
}

TEST(FileInfoDefaults, UnknownFormatsHaveRecordsOf256Bytes)
{
    EXPECT_EQ(completed(FORMAT_UNKNOWN, 0x0001, 64).record_len, 128u);
    EXPECT_EQ(completed(FORMAT_HFS, 0x0001, 64).record_len, 128u);
}

TEST(FileInfoDefaults, LifTypesWithoutARecordLengthOfTheirOwnHave128)
{
    EXPECT_EQ(completed(FORMAT_LIF, 0xE020, 64).record_len, 128u);
}
