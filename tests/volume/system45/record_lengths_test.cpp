// Files whose logical records aren't 256 bytes long: their entries claim whole ones, and the files have them.
#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"
#include "volume/operations_inner.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

int32_t put(const TemporaryFile &image, const std::string &name, const std::string &text)
{
    const Scratch host;
    const std::string source = host.file(name, text);
    const Medium medium(image.path());
    FileInfo info{};
    return dir_ops(medium.md, {.command = COMMAND_ADD, .filespec = Names{source}, .info = &info});
}

int32_t copy(const TemporaryFile &from, const std::string &name, const TemporaryFile &to, const char *new_name)
{
    const Medium source(from.path());
    const Medium target(to.path());
    forget_error();
    const CopyOrder order = {.to_file = new_name};
    const Copying copying = copy_file(source.md, entry_named(source.md, name), target.md, order);
    if (copying.result < 0) return -1;
    return update_tables(target.md);
}

// A disk with one file of three records of 512 bytes, 'x' throughout.
Bytes disk_with_long_records()
{
    DiskVolume volume;
    volume.entries = {{.name = "LONG", .type = 0x2400, .records = 3, .words = 256, .fill = 'x'}};
    return disk45_image(volume);
}

// A LIF volume with a BDAT file: a record of its own ahead of two of data, in logical records of this many words.
Bytes lif_with_bdat(uint8_t words)
{
    LifVolume volume;
    volume.directory_length = 2;
    Bytes content(3 * record_bytes, 'd');
    content[0] = 'h';
    content.back() = 'e';
    volume.entries = {{.name = "B", .type = 0xE961, .content = content}};
    volume.entries[0].implementation = {0x80, 0x01, 0x20, 0x20, 0x00, words};
    return lif_image(volume);
}

}

TEST(RecordLengths, AFileHasTheRoomThatItsEntryClaims)
{
    DiskVolume volume;
    const TemporaryFile image(disk45_image(volume));
    const Runs before = stored_disk(image.bytes()).runs;
    ASSERT_EQ(put(image, "BIG.&1024.DATA", "one of 1024 bytes"), 0) << error_text();
    ASSERT_EQ(put(image, "NEXT.DATA", "behind it"), 0) << error_text();
    const StoredVolume after = stored_disk(image.bytes());
    ASSERT_EQ(after.files.size(), 2u);
    EXPECT_EQ(after.files[0].records, 4u);
    EXPECT_EQ(after.files[1].start, after.files[0].start + 4);
    EXPECT_EQ(after.runs, (Runs{{before[0].first + 5, before[0].second - 5}}));
    Bytes content(1024);
    std::copy_n("one of 1024 bytes", 17, content.begin());
    EXPECT_EQ(content_of(image.bytes(), after.files[0]), content); // zeros, not what was there before
}

TEST(RecordLengths, ADeletedFileGivesBackWhatItHad)
{
    for (const bool reopened : {false, true}) {
        const TemporaryFile image(disk45_image({}));
        const Runs before = stored_disk(image.bytes()).runs;
        const Scratch host;
        const std::string source = host.file("BIG.&1024.DATA", "short");
        auto medium = std::make_unique<Medium>(image.path());
        FileInfo info{};
        ASSERT_EQ(dir_ops(medium->md, {.command = COMMAND_ADD, .filespec = Names{source}, .info = &info}), 0);
        EXPECT_EQ(medium->md->used_bytes, 1024u);
        if (reopened) medium = std::make_unique<Medium>(image.path());
        ASSERT_EQ(dir_ops(medium->md, {.command = COMMAND_DELETE, .filespec = Names{"BIG"}}), 0);
        EXPECT_EQ(stored_disk(image.bytes()).runs, before);
    }
}

TEST(RecordLengths, OnATapeTheNextFileStandsBehindTheWholeLastRecord)
{
    const TemporaryFile image(tape45_image({}));
    ASSERT_EQ(put(image, "BIG.&1024.DATA", "one of 1024 bytes"), 0) << error_text();
    ASSERT_EQ(put(image, "NEXT.DATA", "behind it"), 0) << error_text();
    const StoredVolume after = stored_tape(image.bytes());
    ASSERT_EQ(after.files.size(), 2u);
    EXPECT_EQ(after.files[0].start, 5u);
    EXPECT_EQ(after.files[1].start, 9u);
}

TEST(RecordLengths, MoreLogicalRecordsThanAnEntrySaysAreNoRoom)
{
    const TemporaryFile image(disk45_image({}));
    const Bytes before = image.bytes();
    EXPECT_EQ(put(image, "SHORT.&2.DATA", std::string(2 * 65536, 's')), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(image.bytes(), before);
    EXPECT_EQ(put(image, "SHORT.&2.DATA", std::string(2 * 65535, 's')), 0) << error_text();
    EXPECT_EQ(stored_disk(image.bytes()).files.at(0).count, 65535u);
}

TEST(RecordLengths, ACopyUnderANameWithoutALengthKeepsIt)
{
    const Bytes disk = disk_with_long_records();
    const TemporaryFile from(disk);
    for (const char *name : {"COPY", "COPY.DATA", "COPY.&512.DATA"}) {
        const TemporaryFile to(disk45_image({}));
        ASSERT_EQ(copy(from, "LONG", to, name), 0) << error_text();
        const StoredFile file = stored_disk(to.bytes()).files.at(0);
        EXPECT_EQ(file.words, 256u) << name;
        EXPECT_EQ(file.count, 3u) << name;
        EXPECT_EQ(content_of(to.bytes(), file), Bytes(1536, 'x')) << name;
    }
}

TEST(RecordLengths, ACopyUnderANameWithAnotherLengthHasAsManyRecordsAsThatTakes)
{
    const TemporaryFile from(disk_with_long_records());
    const TemporaryFile to(disk45_image({}));
    ASSERT_EQ(copy(from, "LONG", to, "COPY.&1024.DATA"), 0) << error_text();
    const StoredVolume after = stored_disk(to.bytes());
    const StoredFile file = after.files.at(0);
    EXPECT_EQ(file.words, 512u);
    EXPECT_EQ(file.count, 2u);
    EXPECT_EQ(after.runs.at(0).first, file.start + 8);
    const Bytes content = content_of(to.bytes(), file);
    EXPECT_EQ(Bytes(content.begin(), content.begin() + 1536), Bytes(1536, 'x'));
}

TEST(RecordLengths, ABdatFileIsWholeOnADisk)
{
    for (const uint8_t words : {uint8_t{1}, uint8_t{128}, uint8_t{255}}) {
        const Bytes lif = lif_with_bdat(words);
        const TemporaryFile from(lif);
        const TemporaryFile to(disk45_image({}));
        ASSERT_EQ(copy(from, "B", to, nullptr), 0) << error_text();
        const StoredFile file = stored_disk(to.bytes()).files.at(0);
        EXPECT_EQ(file.words, words);
        EXPECT_GE(file.records, 3u);
        const Bytes content = content_of(to.bytes(), file);
        const StoredVolume stored = stored_lif(lif);
        const Bytes wanted = content_of(lif, stored.files.at(0));
        EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), content.begin())) << unsigned{words};
    }
}

TEST(RecordLengths, ABdatFileOfTooManyShortRecordsIsNoRoom)
{
    LifVolume volume;
    volume.tracks = 1200;
    volume.records_per_track = 1;
    volume.directory_length = 2;
    volume.entries = {{.name = "B", .type = 0xE961, .length = 600}};
    volume.entries[0].implementation = {0x80, 0x01, 0x20, 0x20, 0x00, 0x01};
    const TemporaryFile from(lif_image(volume));
    const TemporaryFile to(disk45_image({}));
    const Bytes before = to.bytes();
    EXPECT_EQ(copy(from, "B", to, nullptr), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(to.bytes(), before);
}
