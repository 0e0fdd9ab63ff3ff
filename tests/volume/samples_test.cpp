// Volumes of real machines. They are not part of the project; TARVO_SAMPLES names the folder that has them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/convert.h"
#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/table.h"

using namespace tests;

namespace
{

std::string sample(const char *name)
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    return folder == nullptr ? std::string() : (std::filesystem::path(folder) / name).string();
}

bool missing(const std::string &path)
{
    std::error_code ignored;
    return path.empty() || !std::filesystem::exists(path, ignored);
}

struct Row {
    const char *name;
    const char *type;
    uint32_t location;
    uint32_t size;
    const char *date;
    const char *time;
    uint32_t deleted = 0;
};

void expect_row(const FileInfo &info, const Row &row)
{
    char date[32] = "";
    char time[32] = "";
    get_datetime_strings(&info.date, date, time, 1);
    EXPECT_STREQ(info.name, row.name);
    EXPECT_EQ(type_text(info), row.type) << row.name;
    EXPECT_EQ(info.location, row.location) << row.name;
    EXPECT_EQ(info.size, row.size) << row.name;
    EXPECT_EQ(info.records, row.size / 256) << row.name;
    EXPECT_EQ(info.record_len, 128u) << row.name;
    EXPECT_STREQ(date, row.date) << row.name;
    EXPECT_STREQ(time, row.time) << row.name;
    EXPECT_EQ(info.deleted != 0, row.deleted != 0) << row.name;
}

template <size_t n> void expect_rows(const MediaDescriptor *md, const Row (&rows)[n])
{
    const FileInfo *info = md->root;
    for (const Row &row : rows) {
        ASSERT_NE(info, nullptr) << row.name;
        expect_row(*info, row);
        info = info->next;
    }
    EXPECT_EQ(info, nullptr);
}

constexpr const char *no_date = "         ";
constexpr const char *no_time = "     ";

}

TEST(Samples, Hp85)
{
    const std::string path = sample("hp85.lif");
    if (missing(path)) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_CHECK | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_STREQ(medium->label, "AMIGO0");
    EXPECT_EQ(medium->size, 286720u);
    EXPECT_EQ(medium->records, 1120u);
    EXPECT_EQ(medium->sectors, 0u);
    EXPECT_EQ(medium->dir_size, 32u);
    EXPECT_EQ(medium->data_size, 286720u - 34u * 256u);
    EXPECT_EQ(medium->used_bytes, 249u * 256u);
    expect_rows(medium.md, {Row{"GETSAVE", "BIN", 34, 2048, no_date, no_time},
                            {"GPIB-T", "BAS8x", 42, 1536, no_date, no_time},
                            {"RWTESTB", "BAS8x", 48, 512, no_date, no_time},
                            {"TREK85B", "BAS8x", 50, 28160, no_date, no_time},
                            {"CIRCLE", "DTA8x", 160, 256, "11-Apr-20", "05:00"},
                            {"DRIVES", "DTA8x", 161, 512, "01-Mar-20", "20:16"},
                            {"GPIB-TA", "DTA8x", 163, 1792, "02-Mar-20", "02:11"},
                            {"HELLO", "DTA8x", 170, 512, "01-Mar-20", "20:16"},
                            {"RWTEST", "DTA8x", 172, 768, "02-Mar-20", "02:04"},
                            {"TREK85A", "DTA8x", 175, 27648, "01-Jul-17", "20:49"}});
}

TEST(Samples, TextsInAnImageShorterThanItsHeaderSays)
{
    const std::string path = sample("text.lif");
    if (missing(path)) GTEST_SKIP() << "text.lif is not in the folder that TARVO_SAMPLES names";
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_CHECK | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_STREQ(medium->label, "TEXTS ");
    EXPECT_EQ(medium->records, 77u * 2u * 16u);
    EXPECT_EQ(medium->data_tracks, 153u);
    expect_rows(medium.md, {Row{"NOTES", "ASCII", 10, 512, "21-Nov-26", "08:19"},
                            {"GONE", "PURGE", 12, 13312, "21-Nov-26", "08:19", 1},
                            {"LONG", "ASCII", 64, 13312, "21-Nov-26", "08:19"},
                            {"PROG75", "TXT75", 116, 768, "21-Nov-26", "08:19"}});
}

TEST(Samples, ARewriteOfAnUnchangedListChangesNoFile)
{
    const std::string path = sample("hp85.lif");
    if (missing(path)) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    const Medium medium(copy.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(update_file_table(medium.md, 0), 0);
    const Bytes after = copy.bytes();
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + 512, after.begin()));
    EXPECT_TRUE(std::equal(before.begin() + 34 * 256, before.end(), after.begin() + 34 * 256));
    const Medium again(copy.path());
    ASSERT_TRUE(again);
    EXPECT_EQ(names(again.md), names(medium.md));
}
