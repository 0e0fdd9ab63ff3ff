// Files copied out of a medium: their bytes, texts and dates, and where they may not go.
#include <gtest/gtest.h>

#include "base/error.h"
#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/capture.h"

using namespace tests;

namespace
{

using Messages = std::vector<std::string>;

struct NamedFile {
    const char *visible;
    const char *stored;
};

const NamedFile all_files[] = {
    {"README.ASCII", "README"},    {"ITEMS.DATA", "ITEMS"},      {"NOTES.TEXT", "NOTEST____"},
    {"LISTING.TXT75", "LISTING"},  {"NUMBERS.DTA8x", "NUMBERS"}, {"SORT.CODE", "SORTC_____"},
    {"BADITEMS.DATA", "BADITEMS"}, {"WRONG.TXT75", "WRONG"},     {"LAST.ASCII", "LAST"},
};

struct TextFile {
    const char *visible;
    std::string text;
};

// What becomes of the contents that are known.
const TextFile all_texts[] = {
    {"README.ASCII", "first line\r\n" + std::string(300, 'x') + "\r\nlast line\r\n"},
    {"ITEMS.DATA", "Hello\r\n-2\n"},
    {"NOTES.TEXT", "A text of the Pascal system,\r\nof two lines.\r\n"},
    {"LISTING.TXT75", "  10 Hi\r\n"},
    {"NUMBERS.DTA8x", "OK\r\n"},
};

constexpr uint32_t headers_by_dialog[] = {0, 0x10, 0x20, 0x30};

}

TEST(CopyOut, BytesAreThoseOfTheMedium)
{
    const CopyHost copies;
    for (const NamedFile &file : all_files) {
        EXPECT_EQ(get_file(file.visible, "out"), FILE_OK) << file.visible;
        EXPECT_EQ(read_file("out"), copies.content(file.stored)) << file.visible;
        std::filesystem::remove("out");
    }
    EXPECT_TRUE(copies.host.messages.empty());
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(CopyOut, EmptyFileBecomesAnEmptyFile)
{
    const CopyHost copies;
    EXPECT_EQ(get_file("EMPTY.ASCII", "out"), FILE_OK);
    EXPECT_EQ(text_of("out"), "");
    EXPECT_EQ(copies.host.percentages, (std::vector<int32_t>{0, 100}));
}

TEST(CopyOut, DateOfTheEntryBecomesThatOfTheFile)
{
    const CopyHost copies;
    EXPECT_EQ(get_file("README.ASCII", "out"), FILE_OK);
    EXPECT_EQ(time_of("out"), local_time(1985, 6, 21, 14, 5, 12));
}

TEST(CopyOut, ConvertedFileBecomesATextWithItsEnding)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    for (const TextFile &file : all_texts) {
        EXPECT_EQ(get_file(file.visible, "out"), FILE_OK) << file.visible;
        EXPECT_EQ(text_of("out.txt"), file.text) << file.visible;
        EXPECT_FALSE(exists("out")) << file.visible;
        std::filesystem::remove("out.txt");
    }
    EXPECT_TRUE(copies.host.messages.empty());
}

TEST(CopyOut, UnknownContentIsCopiedAsItIs)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK);
    EXPECT_EQ(read_file("out"), copies.content("SORTC_____"));
    EXPECT_FALSE(exists("out.txt"));
}

TEST(CopyOut, ForTheHostItselfATextHasNoEnding)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string local = temporary_path("ITEMS.DATA");
    EXPECT_EQ(get_file("ITEMS.DATA", local), FILE_OK);
    EXPECT_EQ(text_of(local), "Hello\r\n-2\n");
    EXPECT_FALSE(exists(local + ".txt"));
    EXPECT_EQ(plugin.temporary_name, local);
}

TEST(CopyOut, BelowTheFolderForTemporaryFilesIsForTheHostItself)
{
#ifdef _WIN32
    GTEST_SKIP() << "hosts are known by the name of their folder here";
#else
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string local = (std::filesystem::current_path() / "out").string();
    EXPECT_EQ(get_file("ITEMS.DATA", local), FILE_OK);
    EXPECT_EQ(text_of(local), "Hello\r\n-2\n");
    EXPECT_EQ(plugin.temporary_name, local);
#endif
}

TEST(CopyOut, ContentThatIsNoneOfItsTypeIsToldWhereItCanBeKnown)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_file("BADITEMS.DATA", "items"), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages,
              (Messages{"Not a convertable file or errors in data structure (file \"items.txt\")"}));
    EXPECT_EQ(text_of("items.txt"), "") << "what was written stays";
    EXPECT_EQ(get_file("WRONG.TXT75", "wrong"), FILE_OK) << "only the log tells of this one";
    EXPECT_EQ(text_of("wrong.txt"), "");
}

TEST(CopyOut, KeepsWordsForExistingTargetOutwardOnly)
{
    const CopyHost copies;
    write_text("LAST.ASCII", "old");
    EXPECT_EQ(get_file("LAST.ASCII", "LAST.ASCII"), FILE_EXISTS);
    EXPECT_EQ(copies.host.messages, (Messages{"Target already exists (file \"LAST.ASCII\")"}));
    EXPECT_EQ(text_of("LAST.ASCII"), "old");
    EXPECT_EQ(put_file("LAST.ASCII"), FILE_EXISTS);
    EXPECT_EQ(copies.host.messages.size(), 1u);
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(CopyOut, ExistingTargetGivesWayWhereThatIsAsked)
{
    const CopyHost copies;
    write_text("out", std::string(5000, 'o'));
    EXPECT_EQ(get_file("LAST.ASCII", "out", COPY_OVERWRITE), FILE_OK);
    EXPECT_EQ(read_file("out"), copies.content("LAST"));
}

TEST(CopyOut, OfATextThatExistsItsOwnNameCounts)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    write_text("out", "another");
    EXPECT_EQ(get_file("ITEMS.DATA", "out"), FILE_OK);
    EXPECT_EQ(text_of("out"), "another");
    EXPECT_EQ(get_file("ITEMS.DATA", "out"), FILE_EXISTS);
    EXPECT_EQ(copies.host.messages, (Messages{"Target already exists (file \"out.txt\")"}));
}

TEST(CopyOut, NoFormOfHeaderThatTheDialogKnowsComesOut)
{
    for (const uint32_t bits : headers_by_dialog) {
        const CopyHost copies(volume_of_kinds(), bits);
        EXPECT_EQ(plugin.medium->use_file_headers, bits >> 2);
        EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK);
        EXPECT_EQ(read_file("out"), copies.content("SORTC_____")) << bits;
    }
}

TEST(CopyOut, HeadersOfAMediumThatHasThemStandAheadOfBytesAlone)
{
    const CopyHost copies;
    plugin.medium->use_file_headers = 2;
    EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK);
    EXPECT_EQ(read_file("out").size(), copies.content("SORTC_____").size() + 32);
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_file("ITEMS.DATA", "text"), FILE_OK);
    EXPECT_EQ(text_of("text.txt"), "Hello\r\n-2\n");
}

TEST(CopyOut, TargetThatCantBeMadeIsTold)
{
    const CopyHost copies;
    std::filesystem::create_directory("folder");
    for (const int32_t flags : {0, int32_t{COPY_OVERWRITE}}) {
        for (const std::string &local : {"missing" + host_path("out"), std::string("folder"), std::string()}) {
            const size_t told = copies.host.messages.size();
            EXPECT_EQ(get_file("LAST.ASCII", local, flags), FILE_READ_FAILED) << local;
            ASSERT_EQ(copies.host.messages.size(), told + 1) << local;
            EXPECT_TRUE(copies.host.messages.back().starts_with("Can't open file (")) << copies.host.messages.back();
        }
    }
}

TEST(CopyOut, Hazard_I13_TheImageItselfIsNoTarget)
{
    const CopyHost copies;
    EXPECT_EQ(get_file("LAST.ASCII", volume_name, COPY_OVERWRITE), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages, (Messages{"Can't copy/move file to itself (file \"volume.lif\")"}));
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(CopyOut, NameWithAFolderIsLookedForInIt)
{
    const CopyHost copies;
    platform_set_last_error(0);
    EXPECT_EQ(get_file("SUB" + host_path("LAST.ASCII"), "out"), FILE_READ_FAILED);
    EXPECT_EQ(platform_last_error(), error_no_more_files);
    EXPECT_TRUE(copies.host.messages.empty());
    EXPECT_TRUE(copies.host.percentages.empty());
    char local[] = "out";
    EXPECT_EQ(FsGetFile("LAST.ASCII", local, 0, nullptr), FILE_OK) << "without the root";
}

TEST(CopyOut, FileThatIsNotShownIsNotFound)
{
    const CopyHost copies;
    for (const char *name : {"", "MISSING.ASCII", "last.ascii", "LAST", "LAST.BDAT", "OLD.PURGE"}) {
        EXPECT_EQ(get_file(name, "out"), FILE_NOT_FOUND) << name;
    }
    EXPECT_TRUE(copies.host.percentages.empty());
    EXPECT_FALSE(exists("out"));
    plugin.medium->show_purged = 1;
    EXPECT_EQ(get_file("OLD.PURGE", "out"), FILE_OK);
    EXPECT_EQ(read_file("out").size(), 2u * record_bytes);
}

TEST(CopyOut, PlainNamesAreFoundWithoutTypes)
{
    const CopyHost copies;
    plugin.medium->use_typed_extensions = 0;
    EXPECT_EQ(get_file("LAST", "out"), FILE_OK);
    EXPECT_EQ(read_file("out"), copies.content("LAST"));
    EXPECT_EQ(get_file("LAST.ASCII", "out"), FILE_NOT_FOUND);
}

TEST(CopyOut, ProgressIsToldBehindEachRecord)
{
    const CopyHost copies;
    EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK);
    EXPECT_EQ(copies.host.percentages, (std::vector<int32_t>{0, 20, 40, 60, 80, 100, 100}));
}

TEST(CopyOut, AHostThatStopsHasWhatCameSoFar)
{
    for (uint32_t call = 0; call <= 7; call++) {
        CopyHost copies;
        copies.host.stop_answer = -1;
        copies.host.calls_before_stop = call;
        EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK) << call;
        // The answer to the call ahead of the first record is not looked at.
        const uint32_t records = call == 0 ? 1 : std::min(call, 5u);
        EXPECT_EQ(read_file("out").size(), records * record_bytes) << call;
        EXPECT_EQ(copies.host.percentages.back(), 100);
        EXPECT_TRUE(copies.host.messages.empty());
    }
}

TEST(CopyOut, AHostWithoutProgressGetsTheSameFile)
{
    const CopyHost copies;
    plugin.progress = nullptr;
    EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK);
    EXPECT_EQ(read_file("out"), copies.content("SORTC_____"));
}

TEST(CopyOut, Hazard_H12_AnEntryLargerThanAnyImageEndsInWords)
{
    LifVolume volume = volume_of_kinds();
    volume.entries.back().length = 0x00FFFFFF;
    const CopyHost copies(volume);
    plugin.progress = nullptr;
    EXPECT_EQ(get_file("LAST.ASCII", "out"), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages, (Messages{"File read error"}));
    EXPECT_LT(std::filesystem::file_size("out"), 70000u * record_bytes);
}
