// Sources and volumes made to do harm: what is refused, and what stays whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/access.h"
#include "volume/insert_inner.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

using Names = std::vector<std::string>;

constexpr uint64_t four_gigabytes = uint64_t{1} << 32;
constexpr uint16_t convert = INSERT_CONVERT | INSERT_FORCE;

// A volume of so many records whose image is a sparse file.
struct SparseVolume {
    explicit SparseVolume(uint32_t records) : file(small_image(records)), medium(extended(records)), md(medium.md) {}

    static Bytes small_image(uint32_t records)
    {
        LifVolume volume;
        volume.tracks = records / 16;
        volume.records = 4;
        return lif_image(volume);
    }
    std::string extended(uint32_t records) const
    {
        file.extend(uint64_t{records} * record_bytes);
        return file.path();
    }

    TemporaryFile file;
    Medium medium;
    MediaDescriptor *md;
};

struct Guarded { // a volume that has to stay as it is
    Guarded() : open(three_files()), image(open.file.bytes()) {}
    void expect_untouched(const std::string &what) const
    {
        EXPECT_TRUE(open.file.bytes() == image) << what;
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"})) << what;
    }
    OpenVolume open;
    Bytes image;
};

}

// ---- types that a directory doesn't show ----------------------------------------------------------------------------

// One that ends the directory would hide all files behind it, and one that is purged would be gone.
TEST(InsertHazards, TypesThatADirectoryDoesNotShowAreRefused)
{
    const Scratch host;
    const std::string source = host.file("NEW", "some bytes");
    for (const uint16_t type : {uint16_t{0xFFFF}, uint16_t{0}}) {
        const Guarded volume;
        FileInfo info = typed(type, type == 0 ? "PURGE" : "EOD");
        std::strcpy(info.name, "NEW");
        info.size = 256;
        const Added created = create(volume.open.md, info);
        EXPECT_EQ(created.result, -1);
        EXPECT_EQ(created.error, 200u);
        EXPECT_EQ(created.detail, entry_detail("NEW"));
        volume.expect_untouched("create");
    }
    const Guarded volume;
    const Added added = add(volume.open.md, source, 0, typed(0xFFFF, "EOD"));
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 200u);
    volume.expect_untouched("add");
}

TEST(InsertHazards, FileStaysWhereItsSuccessorIsOfATypeThatIsNotShown)
{
    const Scratch host;
    const std::string source = host.file("ONE", "some bytes");
    const Guarded volume;
    const Added added = add(volume.open.md, source, INSERT_OVERWRITE, typed(0xFFFF, "EOD"));
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 200u);
    volume.expect_untouched("overwrite");
}

// ---- the image as its own source -----------------------------------------------------------------------------------

TEST(InsertHazards, Hazard_I13_TheImageIsNotCopiedIntoItself)
{
    for (const uint16_t flags : Words{0, 1, 2, 6, 7, 10}) {
        const Guarded volume;
        const Added added = add(volume.open.md, volume.open.file.path(), flags);
        EXPECT_EQ(added.result, -1) << flags;
        EXPECT_EQ(added.error, 208u) << flags;
        volume.expect_untouched(std::to_string(flags));
    }
}

TEST(InsertHazards, Hazard_I13_TheImageIsKnownUnderAnotherName)
{
    const Guarded volume;
    const Scratch folder;
    std::error_code refused;
    std::filesystem::create_hard_link(volume.open.file.path(), folder.path("LINK"), refused);
    if (!refused) {
        EXPECT_EQ(add(volume.open.md, folder.path("LINK")).error, 208u);
        EXPECT_EQ(add(volume.open.md, folder.path("LINK"), INSERT_OVERWRITE).result, -1);
    }
    std::filesystem::create_symlink(volume.open.file.path(), folder.path("SYMLINK"), refused);
    if (!refused) {
        EXPECT_EQ(add(volume.open.md, folder.path("SYMLINK")).error, 208u);
    }
    const std::filesystem::path path(volume.open.file.path());
    const std::string dotted = (path.parent_path() / "." / path.filename()).string();
    EXPECT_EQ(add(volume.open.md, dotted).error, 208u);
    volume.expect_untouched("another name");
}

TEST(InsertHazards, Hazard_I13_AHandleOfTheImageIsKnownToo)
{
    const Guarded volume;
    FileHandle file = 0;
    ASSERT_EQ(file_open(&file, volume.open.file.path(), "rb", 0), 1);
    InsertSource source{.file = file, .size = volume.image.size()};
    FileInfo info{};
    forget_error();
    EXPECT_EQ(insert_from(volume.open.md, &info, &source, {.name = "NEW"}).result, -1);
    EXPECT_EQ(global_error, 208u);
    file_close(file);
    volume.expect_untouched("a handle");
}

TEST(InsertHazards, Hazard_I13_ACopyOfTheImageIsAnotherFile)
{
    LifVolume volume = three_files();
    volume.records = 100; // of 160
    volume.tracks = 20;
    const OpenVolume open(volume);
    const TemporaryFile copy(open.file.bytes());
    const Added added = add(open.md, copy.path());
    EXPECT_EQ(added.result, 10) << added.error;
    EXPECT_EQ(added.info.size, 100u * 256u);
}

// ---- sizes ---------------------------------------------------------------------------------------------------------

TEST(InsertHazards, Hazard_I12_SourcesOfFourGigabytesAreRefused)
{
    for (const uint64_t bytes : {four_gigabytes - 1, four_gigabytes, four_gigabytes + 100, 2 * four_gigabytes + 256}) {
        const TemporaryFile source(Bytes{1});
        source.extend(bytes);
        for (const uint16_t flags : Words{0, INSERT_OVERWRITE}) {
            const Guarded volume;
            const Added added = add(volume.open.md, source.path(), flags);
            EXPECT_EQ(added.result, -1) << bytes;
            EXPECT_EQ(added.error, 211u) << bytes;
            volume.expect_untouched(std::to_string(bytes));
        }
    }
}

TEST(InsertHazards, Hazard_I12_AlsoWhereTheyWouldBeConvertedOrHaveAHeader)
{
    const TemporaryFile source(Bytes{1});
    source.extend(four_gigabytes + 100);
    const TemporaryFolder temporary;
    const Guarded volume;
    const Added added = add(volume.open.md, source.path(), convert);
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 211u);
    volume.open.md->use_file_headers = 1;
    EXPECT_EQ(add(volume.open.md, source.path()).error, 211u);
    volume.expect_untouched("4 GiB");
    EXPECT_EQ(temporary.files(), 0u);
}

TEST(InsertHazards, Hazard_D5_65535RecordsAreTheMost)
{
    const SparseVolume volume(0x18000);
    ASSERT_NE(volume.md, nullptr);
    const TemporaryFile source(Bytes{'a'});
    source.extend(uint64_t{65536} * 256);
    EXPECT_EQ(add(volume.md, source.path()).error, 211u);
    EXPECT_EQ(volume.md->root, nullptr);
    source.replace(Bytes{'a'});
    source.extend(uint64_t{65535} * 256 + 1);
    EXPECT_EQ(add(volume.md, source.path()).error, 211u);
    source.replace(Bytes{'b'});
    source.extend(uint64_t{65535} * 256);
    reset_progress();
    const Added added = add(volume.md, source.path(), 0, {}, noting_progress);
    EXPECT_EQ(added.result, 4);
    EXPECT_EQ(added.info.records, 65535u);
    ASSERT_EQ(progress_calls.size(), 65535u);
    EXPECT_TRUE(progress_calls.back() == (ProgressCall{65535u * 256u, 65534, 100}));
    EXPECT_TRUE(progress_calls[32767] == (ProgressCall{32768u * 256u, 32767, 50}));
    const Scratch folder;
    EXPECT_EQ(add(volume.md, folder.file("SMALL", "c")).error, 211u); // the position has 16 bits
    uint8_t record[256];
    EXPECT_EQ(read_record(volume.md, 4, record), 0);
    EXPECT_EQ(record[0], 'b');
    EXPECT_EQ(read_record(volume.md, 3, record), 0);
    EXPECT_EQ(Bytes(record, record + 256), repeated(0, 256));
}

TEST(InsertHazards, Hazard_D6_NothingGoesBehindRecord65535)
{
    LifVolume form;
    form.entries = {{.name = "FAR", .start = 70000, .length = 10}};
    form.tracks = 0x2000;
    form.records = 4;
    const TemporaryFile file(lif_image(form));
    file.extend(uint64_t{70010} * 256);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    const Scratch folder;
    const Added added = add(medium.md, folder.file("NEW", "x"));
    EXPECT_EQ(added.error, 211u);
    EXPECT_EQ(names(medium.md), (Names{"FAR"}));
}

TEST(InsertHazards, Hazard_D8_ADamagedFreeListGivesNoLiveRecords)
{
    const auto disc = disc_with({{0, 20}, {3, 5}, {6, 5}, {50, 10}, {1995, 9}, {100, 12}});
    add_file(disc->md, 45, 8);
    const Bytes before = disc->file.bytes();
    const Scratch folder;
    const Bytes content = numbered(8 * 256);
    const Added added = add(&disc->md, folder.file("NEW", text_of(content)));
    EXPECT_EQ(added.result, 100);
    EXPECT_TRUE(disc->file.bytes() == with_records(before, 100, content));
    EXPECT_EQ(add(&disc->md, folder.file("NEWER", text_of(content))).error, 211u);
}

TEST(InsertHazards, Hazard_I3_ARecordLengthOfZeroIs128)
{
    const Scratch folder;
    const std::string path = folder.file("NEW.&0.BDAT", "0123456789");
    for (const uint32_t format : {1u, 2u, 3u, 4u, 5u, 0u, 77u}) {
        const Guarded volume;
        volume.open.md->format = format;
        for (const uint32_t typed_extensions : {0u, 1u}) {
            volume.open.md->use_typed_extensions = typed_extensions;
            const Added added = add(volume.open.md, path, INSERT_OVERWRITE);
            EXPECT_EQ(added.info.record_len, 128u) << format;
        }
        volume.open.md->format = FORMAT_LIF;
    }
}

// ---- names ---------------------------------------------------------------------------------------------------------

TEST(InsertHazards, Hazard_C1_LongNamesAreCut)
{
    for (const size_t length : {11u, 17u, 250u, 259u, 260u, 300u, 5000u}) {
        const Guarded volume;
        FileInfo info{};
        const Bytes bytes = {'A', '\n'};
        InsertSource source{.bytes = bytes.data(), .size = 2};
        const std::string name(length, 'N');
        EXPECT_EQ(insert_from(volume.open.md, &info, &source, {.name = name.c_str()}).result, 10) << length;
        EXPECT_STREQ(info.name, "NNNNNNNNNN");
        EXPECT_NE(entry_named(volume.open.md, "NNNNNNNNNN"), nullptr);
    }
}

TEST(InsertHazards, Hazard_I11_TheEndingIsCutFromLongPathsToo)
{
    for (const size_t length : {200u, 254u, 255u, 256u, 257u, 258u}) {
        const Guarded volume;
        FileInfo info{};
        const Bytes bytes = {'A', '\n'};
        InsertSource source{.bytes = bytes.data(), .size = 2};
        const std::string name = std::string(length - 4, '/') + "NAME.TXT";
        const InsertOrder order{.name = name.c_str(), .flags = INSERT_CONVERT | INSERT_TXT};
        EXPECT_EQ(insert_from(volume.open.md, &info, &source, order).result, 10) << length;
        EXPECT_STREQ(info.name, "NAME") << length;
        EXPECT_EQ(info.size, 6u) << length;
    }
}

TEST(InsertHazards, TextsOfACallersRecordThatDoNotEnd)
{
    const Guarded volume;
    FileInfo info{};
    info.type = 1;
    std::fill(std::begin(info.name), std::end(info.name), 'N');
    std::fill(std::begin(info.type_string), std::end(info.type_string), 'T');
    std::fill(std::begin(info.system_string), std::end(info.system_string), 'S');
    const Bytes bytes = {'A'};
    InsertSource source{.bytes = bytes.data(), .size = 1};
    const Insertion insertion = insert_from(volume.open.md, &info, &source, {.name = "NEW"});
    EXPECT_EQ(insertion.result, 10);
    EXPECT_STREQ(entry_named(volume.open.md, "NEW")->name, "NEW");
}

TEST(InsertHazards, PercentSignsAreText)
{
    const Guarded volume;
    FileInfo info{};
    const Bytes bytes = {'A'};
    InsertSource source{.bytes = bytes.data(), .size = 1};
    forget_error();
    const LogCapture log(3);
    EXPECT_EQ(insert_from(volume.open.md, &info, &source, {.name = "TW%s%n"}).result, 10);
    info = {};
    EXPECT_EQ(insert_from(volume.open.md, &info, &source, {.name = "TW%s%n"}).result, -1);
    EXPECT_STREQ(global_error_info, "file \"TW%s%n\"");
    EXPECT_EQ(add(volume.open.md, "no/%s%n%s").detail, "file \"no/%s%n%s\"");
}

// ---- sources that are no files -----------------------------------------------------------------------------------

TEST(InsertHazards, AFolderIsNoSource)
{
    const Guarded volume;
    const Scratch folder;
    const TemporaryFolder temporary;
    for (const uint16_t flags : Words{0, INSERT_OVERWRITE, convert}) {
        const Added added = add(volume.open.md, folder.folder(), flags);
        EXPECT_EQ(added.result, -1) << flags;
        EXPECT_TRUE(added.error == 300 || added.error == 302 || added.error == 211) << added.error;
        EXPECT_TRUE(volume.open.file.bytes() == volume.image) << flags;
    }
    EXPECT_EQ(temporary.files(), 0u);
}

TEST(InsertHazards, ASourceThatHasLessThanItSaidIsFilledUpOrRefused)
{
    const Scratch folder;
    const std::string path = folder.file("NEW", text_of(numbered(300)));
    FileHandle file = 0;
    ASSERT_EQ(file_open(&file, path.c_str(), "rb", 0), 1);
    const Guarded volume;
    InsertSource source{.file = file, .size = 2000};
    FileInfo info{};
    const int32_t result = insert_from(volume.open.md, &info, &source, {.name = "NEW"}).result;
    file_close(file);
    const Bytes after = volume.open.file.bytes();
    EXPECT_TRUE(part_of(after, 0, 2560) == part_of(volume.image, 0, 2560));
    EXPECT_TRUE(part_of(after, 18 * 256, after.size()) == part_of(volume.image, 18 * 256, after.size()));
    if (result >= 0) {
        EXPECT_TRUE(part_of(after, 2560, 8 * 256) == in_records(joined({numbered(300), repeated(0, 1700)})));
    }
}

// ---- an entry that stays -----------------------------------------------------------------------------------------

TEST(InsertHazards, Hazard_I5_AnEntryOfAFailedTransferIsWrittenByTheNextTable)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("NEW", text_of(numbered(1000)));
    {
        const FileFaults faults(FileFault::write, 1);
        EXPECT_EQ(add(open.md, path).result, -1);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"}));
    EXPECT_EQ(add(open.md, folder.file("NEXT", "x")).result, 14); // its room is taken
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    const Medium again(open.file.path());
    EXPECT_EQ(names(again.md), (Names{"ONE", "TWO", "THREE", "NEW", "NEXT"}));
    EXPECT_EQ(entry_named(again.md, "NEW")->size, 1024u);
}

TEST(InsertHazards, AReadOnlyImageKeepsItsBytes)
{
    const OpenVolume open(lif_image(three_files()), OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_NE(open.md, nullptr);
    const Bytes image = open.file.bytes();
    const Scratch folder;
    const Added added = add(open.md, folder.file("NEW", "x"));
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 303u);
    EXPECT_TRUE(open.file.bytes() == image);
}

TEST(InsertHazards, Hazard_A12_NoTemporaryFileIsLeftWhateverFails)
{
    struct Row {
        const char *name;
        uint16_t flags;
        uint32_t directory; // records
        uint32_t records;   // of the volume
        uint32_t error;
    };
    const Row rows[] = {{"TWO", 0, 3, 160, 210},
                        {"TWO", INSERT_OVERWRITE, 3, 10, 211},
                        {"NEW", 0, 0, 160, 216},
                        {"NEW", 0, 3, 10, 211},
                        {".ASCII", 0, 3, 160, 212}};
    const Scratch folder;
    for (const Row &row : rows) {
        const OpenVolume open(three_files());
        open.md->dir_size = row.directory;
        open.md->records = row.records;
        const TemporaryFolder temporary;
        const Added added = add(open.md, folder.file(row.name, "text\n"), static_cast<uint16_t>(row.flags | convert));
        EXPECT_EQ(added.result, -1) << row.error;
        EXPECT_EQ(added.error, row.error);
        EXPECT_EQ(temporary.files(), 0u) << row.error;
        open.md->dir_size = 3;
    }
}

TEST(InsertHazards, Hazard_A12_AMissingTemporaryFolderIsError306)
{
#ifdef _WIN32
    GTEST_SKIP() << "the system falls back to a folder of its own";
#else
    const Guarded volume;
    const Scratch folder;
    const std::string path = folder.file("NEW", "text\n");
    Added added;
    {
        const TemporaryFolder temporary;
        setenv("TMPDIR", folder.path("none").c_str(), 1);
        added = add(volume.open.md, path, convert);
    }
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 306u);
    EXPECT_EQ(added.detail.substr(0, 6), "file \"");
    volume.expect_untouched("no temporary file");
#endif
}

TEST(InsertHazards, AnOldFileIsGoneWhenNoTemporaryFileCanBeMade)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("TWO", "text\n");
    Added added;
    {
        const FileFaults faults(FileFault::open, 2); // behind that of the source
        added = add(open.md, path, INSERT_OVERWRITE | convert);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 306u);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE"}));
}

TEST(InsertHazards, ATextThatWasCutIsNotWhole)
{
    struct Row {
        const char *name;
        std::string text;
        bool whole;
    };
    const Row rows[] = {{"A.TXT75", "1 A\n2 B\n", true},
                        {"A.TXT75", "1 A\n" + std::string(97, 'x') + "\n2 B\n", false},
                        {"A.TEXT", std::string(1021, 'x'), true},
                        {"A.TEXT", std::string(1022, 'x'), false},
                        {"A.ASCII", std::string(60000, 'x'), true}};
    for (const Row &row : rows) {
        const OpenVolume open(roomy_volume(2000));
        const Scratch folder;
        const std::string path = folder.file(row.name, row.text);
        FileInfo info{};
        const Insertion insertion = insert_file(open.md, &info, {.name = path.c_str(), .flags = convert});
        EXPECT_EQ(insertion.result, 10) << row.name;
        EXPECT_EQ(insertion.whole, row.whole) << row.name << " " << row.text.size();
    }
}
