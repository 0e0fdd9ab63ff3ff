// Files of the host into a volume, step by step: flags, types, names, dates, records, progress, an old file of the
// name.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/insert_inner.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

using Names = std::vector<std::string>;

const Bytes short_text = {'A', 'B', '\n'};
const Bytes short_records = {0, 2, 'A', 'B', 0xFF, 0xFF}; // as LIF ASCII

Insertion insert_bytes(MediaDescriptor *md, FileInfo *info, const std::string &name, const Bytes &bytes,
                       uint16_t flags = 0)
{
    InsertSource source{.bytes = bytes.data(), .size = bytes.size()};
    forget_error();
    return insert_from(md, info, &source, {.name = name.c_str(), .flags = flags});
}

// The entry that a source of this name gives, on a volume with or without typed extensions.
FileInfo entry_of(const std::string &name, FileInfo info = {}, bool typed_extensions = true)
{
    const OpenVolume open(three_files());
    open.md->use_typed_extensions = typed_extensions ? 1 : 0;
    EXPECT_EQ(insert_bytes(open.md, &info, name, Bytes(600, 'x')).result, 10) << name << ": " << error_text();
    return info;
}

void expect_type(const FileInfo &info, const char *name, uint16_t type, const char *text)
{
    EXPECT_STREQ(info.name, name);
    EXPECT_EQ(info.type, type) << name;
    EXPECT_EQ(type_text(info).substr(0, std::strlen(text)), text) << name;
}

}

TEST(AddFile, ARecordForEach256BytesTheLastFilledWithZeros)
{
    struct Row {
        size_t bytes;
        uint32_t records;
    };
    for (const Row &row : {Row{1, 1}, {255, 1}, {256, 1}, {257, 2}, {512, 2}, {1000, 4}}) {
        const OpenVolume open(three_files());
        Bytes dirty = open.file.bytes();
        std::fill(dirty.begin() + 10 * 256, dirty.end(), uint8_t{0xEE}); // what is there must not show through
        open.file.replace(dirty);
        const Scratch folder;
        const Bytes content = numbered(row.bytes);
        const Added added = add(open.md, folder.file("NEW", text_of(content)));
        EXPECT_EQ(added.result, 10) << row.bytes;
        EXPECT_EQ(added.error, 0u) << row.bytes;
        EXPECT_EQ(added.info.size, row.bytes);
        EXPECT_EQ(added.info.records, row.records) << row.bytes;
        EXPECT_EQ(added.info.record_len, 128u);
        EXPECT_EQ(added.info.location, 10u);
        EXPECT_TRUE(open.file.bytes() == with_records(dirty, 10, content)) << row.bytes; // and nothing else
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"}));
    }
}

TEST(AddFile, ASourceWithoutBytesIsAnEntryWithoutRecords)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    const Scratch folder;
    reset_progress();
    const Added added = add(open.md, folder.file("EMPTY", ""), 0, {}, noting_progress);
    EXPECT_EQ(added.result, 10);
    EXPECT_EQ(added.info.size, 0u);
    EXPECT_EQ(added.info.records, 0u);
    EXPECT_TRUE(progress_calls.empty());
    EXPECT_TRUE(open.file.bytes() == image);
    EXPECT_EQ(names(open.md).back(), "EMPTY");
}

TEST(AddFile, TheTablesAreTheCallersToWrite)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    const Scratch folder;
    const Added added = add(open.md, folder.file("NEW.ASCII", "x"));
    EXPECT_TRUE(part_of(open.file.bytes(), 0, 10 * 256) == part_of(image, 0, 10 * 256));
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    const Medium again(open.file.path());
    const FileInfo *entry = entry_named(again.md, "NEW");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->location, 10u);
    EXPECT_EQ(entry->size, 256u);
    EXPECT_EQ(entry->type, 1u);
    EXPECT_EQ(entry->date.tm_mday, added.info.date.tm_mday);
}

TEST(AddFile, TracesItsArguments)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("NEW", "x");
    std::string text;
    {
        const LogCapture log(3);
        add(open.md, path, 0x0F);
        text = log.text();
    }
    EXPECT_TRUE(contains(text, "Trace: image_add_file(md=")) << text;
    EXPECT_TRUE(contains(text, ", from_filename=\"" + path + "\", flags=F, progress=0)\n")) << text;
    EXPECT_TRUE(contains(text, ", initialize=0, pattern=3C)\n")) << text;
}

TEST(AddFile, ASourceThatIsMissingIsError300)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    const Scratch folder;
    const Added added = add(open.md, folder.path("NONE"), INSERT_OVERWRITE);
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 300u);
    EXPECT_EQ(added.detail, entry_detail(folder.path("NONE")));
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_TRUE(open.file.bytes() == image);
}

TEST(AddFile, NullPointersAreError103)
{
    const OpenVolume open(three_files());
    FileInfo info{};
    forget_error();
    EXPECT_EQ(image_add_file(open.md, &info, nullptr, 0, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_EQ(names(open.md).size(), 3u);
}

TEST(AddFile, TheDateIsThatOfTheSource)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("NEW", "x");
    TimeRecord time{};
    time.tm_sec = 30;
    time.tm_min = 7;
    time.tm_hour = 9;
    time.tm_mday = 15;
    time.tm_mon = 2;
    time.tm_year = 84;
    ASSERT_EQ(file_set_time(path.c_str(), &time), 0);
    FileInfo old{};
    old.date.tm_year = 99;
    const Added added = add(open.md, path, 0, old);
    EXPECT_EQ(added.info.date.tm_year, 84);
    EXPECT_EQ(added.info.date.tm_mon, 2);
    EXPECT_EQ(added.info.date.tm_mday, 15);
    EXPECT_EQ(added.info.date.tm_hour, 9);
    EXPECT_EQ(added.info.date.tm_min, 7);
    EXPECT_EQ(added.info.date.tm_sec, 30);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    const Bytes directory = records_at(open.file, 2, 1);
    EXPECT_EQ(part_of(directory, 3 * 32 + 20, 6), (Bytes{0x84, 0x03, 0x15, 0x09, 0x07, 0x30}));
}

// ---- flags -------------------------------------------------------------------------------------------------------

TEST(AddFile, ConversionNeedsItsBitAndEitherForceOrTheEnding)
{
    const Scratch folder;
    for (const char *ending : {"txt", "TXT", "Txt", "tXT", "text", "tx"}) {
        const std::string path = folder.file(std::string("NOTE.") + ending, "AB\n");
        const bool text_ending = std::string(ending) == "txt" || std::string(ending) == "TXT";
        for (uint16_t flags = 0; flags < 16; ++flags) {
            const OpenVolume open(three_files());
            open.md->use_typed_extensions = 0;
            const Added added = add(open.md, path, flags);
            const bool cut = (flags & 2) != 0 && (flags & 8) != 0 && text_ending;
            const bool converted = cut || ((flags & 2) != 0 && (flags & 4) != 0);
            ASSERT_EQ(added.result, 10) << ending << " " << flags;
            EXPECT_EQ(added.info.name, cut ? std::string("NOTE") : std::string("NOTE.") + ending) << flags;
            EXPECT_EQ(added.info.size, converted ? 6u : 3u) << ending << " " << flags;
            EXPECT_TRUE(records_at(open.file, 10, 1) == in_records(converted ? short_records : short_text));
        }
    }
}

TEST(AddFile, TheEndingIsTheLastOfThePathAndNotAllOfIt)
{
    constexpr uint16_t flags = INSERT_CONVERT | INSERT_TXT;
    struct Row {
        const char *path;
        const char *name;
        bool converted;
    };
    const Row rows[] = {{"A.txt.txt", "A.txt", true}, {"A.txt.B", "A.txt.B", false}, {"dir.txt/A", "A", false},
                        {".txt", ".txt", false},      {"dir/A.txt", "A", true},      {"A.txtx", "A.txtx", false},
                        {"A.xtxt", "A.xtxt", false},  {"Atxt", "Atxt", false}};
    for (const Row &row : rows) {
        const OpenVolume open(three_files());
        open.md->use_typed_extensions = 0;
        FileInfo info{};
        EXPECT_EQ(insert_bytes(open.md, &info, row.path, short_text, flags).result, 10) << row.path;
        EXPECT_STREQ(info.name, row.name);
        EXPECT_EQ(info.size, row.converted ? 6u : 3u) << row.path;
    }
}

TEST(AddFile, TheEndingMayStandBehindATypedExtension)
{
    constexpr uint16_t flags = INSERT_CONVERT | INSERT_TXT;
    const OpenVolume open(three_files());
    FileInfo info{};
    EXPECT_EQ(insert_bytes(open.md, &info, "PLAIN.TXT", short_text, flags).result, 10);
    expect_type(info, "PLAIN", 0x0001, "ASCII");
    EXPECT_EQ(info.size, 6u);
    info = {};
    EXPECT_EQ(insert_bytes(open.md, &info, "PASCAL.TEXT.txt", short_text, flags).result, 11);
    expect_type(info, "PASCALT___", 0xEA3E, "TEXT");
    EXPECT_EQ(info.size, 2048u);
    info = {};
    EXPECT_EQ(insert_bytes(open.md, &info, "DATA.BAS8x.txt", short_text, flags).result, 19);
    expect_type(info, "DATA", 0xE020, "BAS8x"); // which no text can become
    EXPECT_EQ(info.size, 3u);
}

TEST(AddFile, FlagsBeyondTheFourMeanNothing)
{
    const OpenVolume open(three_files());
    FileInfo info{};
    EXPECT_EQ(insert_bytes(open.md, &info, "A.txt", short_text, 0xFFF0).result, 10);
    EXPECT_EQ(info.size, 3u);
}

// ---- types and names ---------------------------------------------------------------------------------------------

TEST(AddFile, WithoutATypeAFileIsAsciiOrData)
{
    expect_type(entry_of("A"), "A", 0x0001, "ASCII");
    FileInfo info{};
    const auto disc = disc_with({{30, 100}});
    EXPECT_EQ(insert_bytes(&disc->md, &info, "A", short_text).result, 30);
    expect_type(info, "A", 0x2400, "DATA");
    info = {};
    const auto hand = tape();
    EXPECT_EQ(insert_bytes(&hand->md, &info, "A", short_text).result, 5);
    expect_type(info, "A", 36, "DATA");
}

TEST(AddFile, AGivenTypeStays)
{
    expect_type(entry_of("A", typed(0xE020, "BAS8x")), "A", 0xE020, "BAS8x");
    expect_type(entry_of("A", typed(0xE020, "")), "A", 0xE020, "");
    expect_type(entry_of("A.UNSET", typed(0xE020, "BAS8x")), "A", 0xE020, "BAS8x");
}

TEST(AddFile, TheExtensionGivesTheType)
{
    expect_type(entry_of("A.BAS8x"), "A", 0xE020, "BAS8x");
    expect_type(entry_of("A.BAS8x", typed(0x0001, "ASCII")), "A", 0xE020, "BAS8x");
    expect_type(entry_of("A.#E123"), "A", 0xE123, "#E123");
    expect_type(entry_of("A.BDAT"), "A", 0xE961, "BDAT");
    expect_type(entry_of("A.BAS8x", {}, false), "A.BAS8x", 0x0001, "ASCII");
}

TEST(AddFile, ASystemTextGoesWithTheExtension)
{
    FileInfo info{};
    std::memcpy(info.system_string, "9845", 5);
    expect_type(entry_of("A.DATA", info), "A", 0xE848, "DATA");
    EXPECT_STREQ(entry_of("A.DATA", info).system_string, "9845");
    EXPECT_STREQ(entry_of("A.BDAT").system_string, "98X6");
}

TEST(AddFile, TheNameIsTheLastComponentOfThePath)
{
    EXPECT_STREQ(entry_of("folder/sub.dir/NAME.ASCII").name, "NAME");
    EXPECT_STREQ(entry_of("C:\\FOLDER\\NAME.ASCII").name, "NAME");
    EXPECT_STREQ(entry_of("C:NAME").name, "NAME");
    EXPECT_STREQ(entry_of("/a.b/NAME").name, "NAME");
    EXPECT_STREQ(entry_of("LONGERTHANTENCHARACTERS").name, "LONGERTHAN");
    EXPECT_STREQ(entry_of("A B").name, "AB"); // blanks are left out of names
}

TEST(AddFile, PascalTypesMarkTheirNames)
{
    expect_type(entry_of("PROG.CODE"), "PROGC_____", 0xEA32, "CODE");
    expect_type(entry_of("NOTES.TEXT"), "NOTEST____", 0xEA3E, "TEXT");
    expect_type(entry_of("LETTER.ASC"), "LETTERA___", 0x0001, "ASC");
    expect_type(entry_of("PROG.CODE", {}, false), "PROG.CODE", 0x0001, "ASCII");
}

TEST(AddFile, ARecordLengthInTheNameCountsRecords)
{
    struct Row {
        const char *name;
        uint32_t length;
        uint32_t records;
        uint8_t implementation[2];
    };
    const Row rows[] = {{"A.&512.BDAT", 256, 2, {1, 0}},
                        {"A.&2.BDAT", 1, 300, {0, 1}},
                        {"A.&100.BDAT", 50, 6, {0, 50}},
                        {"A.BDAT", 128, 3, {0, 128}},
                        {"A.&512.ASCII", 128, 3, {0, 0}}}; // whose records have their length
    for (const Row &row : rows) {
        const FileInfo info = entry_of(row.name); // 600 bytes
        EXPECT_STREQ(info.name, "A") << row.name;
        EXPECT_EQ(info.record_len, row.length) << row.name;
        EXPECT_EQ(info.records, row.records) << row.name;
        EXPECT_EQ(info.lif_impl[4], row.implementation[0]) << row.name;
        EXPECT_EQ(info.lif_impl[5], row.implementation[1]) << row.name;
        EXPECT_EQ(info.size, 600u);
    }
}

TEST(AddFile, LongRecordsDontMakeTheTransferLonger)
{
    const OpenVolume open(three_files());
    Bytes image = open.file.bytes();
    std::fill(image.begin() + 10 * 256, image.end(), uint8_t{0xEE});
    open.file.replace(image);
    FileInfo info{};
    const Bytes content = numbered(600);
    EXPECT_EQ(insert_bytes(open.md, &info, "A.&1024.BDAT", content).result, 10);
    EXPECT_EQ(info.records, 1u);
    EXPECT_TRUE(open.file.bytes() == with_records(image, 10, content));
}

TEST(AddFile, ImplementationBytesOfTheCallerStayButForTheLength)
{
    FileInfo info{};
    const uint8_t given[6] = {0x80, 0x01, 7, 8, 9, 10};
    std::memcpy(info.lif_impl, given, 6);
    info.record_len = 777;
    const FileInfo entry = entry_of("A.ASCII", info);
    EXPECT_EQ(Bytes(entry.lif_impl, entry.lif_impl + 6), (Bytes{0x80, 0x01, 7, 8, 0, 0}));
    EXPECT_EQ(entry.record_len, 128u);
    FileInfo with_length = typed(0xE961, "BDAT");
    with_length.record_len = 777;
    with_length.lif_impl[0] = 0x80;
    with_length.lif_impl[4] = 3;
    EXPECT_EQ(entry_of("A", with_length, false).record_len, 128u);
    const FileInfo untyped = entry_of("A", info, false);
    EXPECT_EQ(Bytes(untyped.lif_impl, untyped.lif_impl + 6), (Bytes{0x80, 0x01, 7, 8, 0, 0}));
    EXPECT_EQ(untyped.record_len, 128u);
}

TEST(AddFile, NamesGoIntoTheHpSet)
{
    EXPECT_STREQ(entry_of("\x9A"
                          "A")
                     .name,
                 "\xDB"
                 "A");
    EXPECT_STREQ(entry_of("A\x80").name, "A\x80");
}

// The character 84 of the host is CC in the HP set, and CC of the host is E1 there.
TEST(AddFile, KeepsNamesTurnedTwice)
{
    EXPECT_STREQ(entry_of("A\x84").name, "A\xE1");
    const OpenVolume open(three_files());
    FileInfo info{};
    EXPECT_EQ(insert_bytes(open.md, &info, "A\x84", short_text).result, 10);
    EXPECT_STREQ(entry_named(open.md, "A\xE1")->name, "A\xE1");
    info = {};
    EXPECT_EQ(insert_bytes(open.md, &info, "A\x84", short_text, INSERT_OVERWRITE).result, -1);
    EXPECT_EQ(global_error, 210u); // the first look is for another name
    EXPECT_EQ(std::string(global_error_info), "file \"A\xE1\"");
}

TEST(AddFile, ANameThatCannotBeIsError212)
{
    const OpenVolume open(three_files());
    FileInfo info{};
    EXPECT_EQ(insert_bytes(open.md, &info, "folder/", short_text).result, -1);
    EXPECT_EQ(global_error, 212u);
    EXPECT_STREQ(global_error_info, "file \"\": empty filename");
    info = {};
    EXPECT_EQ(insert_bytes(open.md, &info, ".ASCII", short_text).result, -1);
    EXPECT_EQ(global_error, 212u);
    EXPECT_EQ(names(open.md).size(), 3u);
}

// ---- an old file of that name ------------------------------------------------------------------------------------

TEST(AddFile, AnOldFileStaysWithoutTheFlag)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    const Scratch folder;
    for (const uint16_t flags : Words{0, 2, 4, 6, 8, 14}) {
        const Added added = add(open.md, folder.file("TWO.ASCII", "new"), flags);
        EXPECT_EQ(added.result, -1) << flags;
        EXPECT_EQ(added.error, 210u) << flags;
        EXPECT_EQ(added.detail, "file \"TWO\"") << flags;
    }
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_TRUE(open.file.bytes() == image);
}

TEST(AddFile, AnOldFileGivesWayWithTheFlag)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    EXPECT_EQ(add(open.md, folder.file("TWO.ASCII", "new"), INSERT_OVERWRITE).result, 10);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE", "TWO"}));
    EXPECT_EQ(entry_named(open.md, "TWO")->size, 3u);
    EXPECT_EQ(add(open.md, folder.file("TWO.ASCII", "newer"), INSERT_OVERWRITE).result, 10); // it was the last one
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE", "TWO"}));
    EXPECT_EQ(text_of(part_of(records_at(open.file, 10, 1), 0, 6)), std::string("newer\0", 6));
}

TEST(AddFile, TheRoomOfAnOldFileIsFreeAgain)
{
    const auto disc = disc_with({{30, 3}});
    FileInfo info{};
    EXPECT_EQ(insert_bytes(&disc->md, &info, "A", numbered(768)).result, 30);
    EXPECT_EQ(runs_of(disc->md), Runs{});
    info = {};
    EXPECT_EQ(insert_bytes(&disc->md, &info, "A", numbered(100), INSERT_OVERWRITE).result, 30);
    EXPECT_EQ(runs_of(disc->md), (Runs{{31, 2}}));
}

TEST(AddFile, APurgedFileOfThatNameIsNoOldOne)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    const OpenVolume open(volume);
    const Scratch folder;
    EXPECT_EQ(add(open.md, folder.file("TWO.ASCII", "new")).result, 10);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "TWO"}));
}

TEST(AddFile, Hazard_I4_AFailureBehindTheDeletionLeavesTheVolumeWithoutTheOldFile)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    FileInfo info{};
    const Insertion insertion = insert_bytes(open.md, &info, "TWO", numbered(151 * 256), INSERT_OVERWRITE);
    EXPECT_EQ(insertion.result, -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_TRUE(insertion.deleted_old);
    EXPECT_EQ(insertion.entry, nullptr);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE"}));
    EXPECT_TRUE(open.file.bytes() == image); // the caller decides whether the medium learns of it
}

TEST(AddFile, AFullDirectoryTakesOneForAnother)
{
    LifVolume volume = lif_volume_with_files(16);
    volume.directory_length = 2;
    volume.records = 40;
    const OpenVolume open(volume);
    FileInfo info{};
    EXPECT_EQ(insert_bytes(open.md, &info, "MORE", short_text).result, -1);
    EXPECT_EQ(global_error, 216u);
    info = {};
    EXPECT_GT(insert_bytes(open.md, &info, "F000003", short_text, INSERT_OVERWRITE).result, 0);
    EXPECT_EQ(names(open.md).size(), 16u);
}
