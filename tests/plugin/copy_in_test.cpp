// Files copied onto a medium: names, types, contents and dates, and what happens to a file of the same name.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/error.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/capture.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

// Of its sixteen slots so many are free.
LifVolume volume_with_slots(uint32_t free_slots)
{
    LifVolume volume;
    for (uint32_t i = free_slots; i < 16; i++) volume.entries.push_back({.name = "F" + std::to_string(i)});
    return volume;
}

// Room for so many records behind the one file.
LifVolume volume_with_room(uint32_t records)
{
    LifVolume volume;
    volume.entries = {{.name = "FIRST", .content = Bytes(record_bytes, 'f')}, {.name = "NEW"}};
    volume.tracks = 1;
    volume.records_per_track = 6 + records;
    return volume;
}

struct NewName {
    const char *local;
    const char *stored;
    uint16_t type;
};

const NewName new_names[] = {
    {"PLAIN", "PLAIN", 0x0001},
    {"LETTER.ASCII", "LETTER", 0x0001},
    {"LETTER.PROG", "LETTER", 0xE990},
    {"TABLE.&512.BDAT", "TABLE", 0xE961},
    {"MEMO.TEXT", "MEMOT_____", 0xEA3E},
    {"MAIN.CODE", "MAINC_____", 0xEA32},
    {"HEX.#E123", "HEX", 0xE123},
    {"note.txt", "note", 0x0001},
    {"LONGNAME12345.PROG", "LONGNAME12", 0xE990},
};

StoredEntry last_entry(const Bytes &image)
{
    return stored_entries(image).back();
}

}

TEST(CopyIn, NewFileGoesBehindTheLast)
{
    const CopyHost copies;
    write_text("NEW.PROG", std::string(300, 'n'));
    EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
    const Bytes image = copies.image();
    const StoredEntry last = stored_entries(copies.before).back();
    const StoredEntry entry = last_entry(image);
    EXPECT_EQ(entry.name, "NEW");
    EXPECT_EQ(entry.type, 0xE990);
    EXPECT_EQ(entry.start, last.start + last.length);
    EXPECT_EQ(entry.length, 2u);
    EXPECT_EQ(stored_content(image, entry), bytes_of(padded(std::string(300, 'n'))));
    EXPECT_TRUE(copies.host.messages.empty());
    EXPECT_EQ(copies.host.percentages, (std::vector<int32_t>{0, 50, 100, 100}));
}

TEST(CopyIn, NothingButTheNewFileChanges)
{
    const CopyHost copies;
    write_text("NEW.PROG", "new");
    EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
    const Bytes image = copies.image();
    for (const StoredEntry &entry : stored_entries(copies.before)) {
        EXPECT_EQ(stored_content(image, entry), stored_content(copies.before, entry)) << entry.name;
    }
    Names names = stored_names(copies.before);
    names.push_back("NEW");
    EXPECT_EQ(stored_names(image), names);
}

TEST(CopyIn, NameAndTypeAreTakenFromTheLocalName)
{
    for (const NewName &name : new_names) {
        const CopyHost copies;
        write_text(name.local, "content");
        EXPECT_EQ(put_file(name.local), FILE_OK) << name.local;
        const StoredEntry entry = last_entry(copies.image());
        EXPECT_EQ(entry.name, name.stored);
        EXPECT_EQ(entry.type, name.type) << name.local;
    }
}

TEST(CopyIn, FoldersOfTheLocalNameAreLeftOut)
{
    const CopyHost copies;
    std::filesystem::create_directories("one" + host_path("two.BDAT"));
    const std::string local = "one" + host_path("two.BDAT") + host_path("DEEP.PROG");
    write_text(local, "content");
    EXPECT_EQ(put_file(local), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).name, "DEEP");
}

TEST(CopyIn, KeepsLocalNameOfACopyIn)
{
    const CopyHost copies;
    write_text("LOCAL.PROG", "content");
    char local[] = "LOCAL.PROG";
    EXPECT_EQ(FsPutFile(local, host_path("REMOTE.ASCII").c_str(), 0), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).name, "LOCAL");
    EXPECT_EQ(last_entry(copies.image()).type, 0xE990);
}

TEST(CopyIn, DateOfTheFileBecomesThatOfTheEntry)
{
    const CopyHost copies;
    write_text("NEW.PROG", "new");
    set_time("NEW.PROG", local_time(1995, 12, 24, 18, 30, 16));
    EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).date, (BcdDate{0x95, 0x12, 0x24, 0x18, 0x30, 0x16}));
}

TEST(CopyIn, EmptyFileHasAnEntryAndNoRecords)
{
    const CopyHost copies;
    write_text("NEW.PROG", "");
    EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).length, 0u);
    EXPECT_EQ(names_after_reopening().back(), "NEW.PROG");
}

TEST(CopyIn, ExistingNameIsLeftWhereNobodyAskedForMore)
{
    const CopyHost copies;
    write_text("SORT.CODE", "other");
    EXPECT_EQ(put_file("SORT.CODE"), FILE_EXISTS);
    EXPECT_TRUE(copies.host.messages.empty());
    EXPECT_EQ(copies.host.percentages, std::vector<int32_t>{0});
    EXPECT_EQ(copies.image(), copies.before);
    write_text("LAST.PROG", "other");
    EXPECT_EQ(put_file("LAST.PROG"), FILE_EXISTS) << "the type does not matter";
}

TEST(CopyIn, ExistingFileGivesWayWhereThatIsAsked)
{
    const CopyHost copies;
    write_text("SORT.CODE", "other");
    EXPECT_EQ(put_file("SORT.CODE", COPY_OVERWRITE), FILE_OK);
    Names names = stored_names(copies.before);
    std::erase(names, "SORTC_____");
    names.emplace_back("SORTC_____");
    EXPECT_EQ(stored_names(copies.image()), names);
    EXPECT_EQ(copies.content("SORTC_____"), bytes_of(padded("other")));
    EXPECT_TRUE(copies.host.messages.empty());
}

TEST(CopyIn, SpaceOfTheLastFileIsUsedByItsSuccessor)
{
    const CopyHost copies;
    const StoredEntry old = stored_entries(copies.before).back();
    write_text("LAST.ASCII", "new");
    EXPECT_EQ(put_file("LAST.ASCII", COPY_OVERWRITE), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).start, old.start);
}

TEST(CopyIn, FullDirectoryTakesNoFile)
{
    for (const uint32_t free_slots : {0u, 1u, 2u}) {
        const CopyHost copies(volume_with_slots(free_slots));
        write_text("NEW.PROG", "new");
        const bool fits = free_slots != 0;
        EXPECT_EQ(put_file("NEW.PROG"), fits ? FILE_OK : FILE_READ_FAILED) << free_slots;
        EXPECT_EQ(copies.host.messages, fits ? Names{} : Names{"Directory full (file \"NEW\")"});
        EXPECT_EQ(names_after_reopening().size(), 16 - free_slots + (fits ? 1 : 0));
    }
}

TEST(CopyIn, FullMediumTakesNoFile)
{
    for (const uint32_t room : {3u, 4u}) {
        const CopyHost copies(volume_with_room(room));
        write_text("BIG.PROG", std::string(3 * record_bytes + 1, 'b'));
        const bool fits = room == 4;
        EXPECT_EQ(put_file("BIG.PROG"), fits ? FILE_OK : FILE_READ_FAILED) << room;
        EXPECT_EQ(copies.host.messages, fits ? Names{} : Names{"No space left on device (file \"BIG\")"});
        EXPECT_EQ(copies.image() == copies.before, !fits);
    }
}

TEST(CopyIn, Hazard_I4_AFileThatGaveWayInVainIsBackAfterTheOperation)
{
    const CopyHost copies(volume_with_room(1));
    write_text("NEW.ASCII", std::string(9 * record_bytes, 'n'));
    EXPECT_EQ(put_file("NEW.ASCII", COPY_OVERWRITE), FILE_READ_FAILED);
    EXPECT_EQ(copies.image(), copies.before);
    EXPECT_EQ(names_after_reopening(), (Names{"FIRST.ASCII", "NEW.ASCII"}));
}

TEST(CopyIn, Hazard_I4_AFileThatGaveWayInVainIsGoneWithTheNextChangeOfTheOperation)
{
    const CopyHost copies(volume_with_room(1));
    write_text("NEW.ASCII", std::string(9 * record_bytes, 'n'));
    EXPECT_EQ(put_file("NEW.ASCII", COPY_OVERWRITE), FILE_READ_FAILED);
    EXPECT_EQ(FsSetAttr(host_path("FIRST.ASCII").c_str(), 0), 1);
    EXPECT_EQ(names_after_reopening(), (Names{"FIRST.ASCII"}));
}

TEST(CopyIn, SourceThatCantBeReadIsTold)
{
    const CopyHost copies;
    std::filesystem::create_directory("FOLDER.PROG");
    for (const std::string local : {"MISSING.PROG", "FOLDER.PROG"}) {
        EXPECT_EQ(put_file(local, COPY_MOVE), FILE_READ_FAILED) << local;
        EXPECT_EQ(copies.host.messages.back(), "Can't open file (file \"" + local + "\")");
    }
    EXPECT_EQ(copies.host.messages.size(), 2u);
    EXPECT_EQ(copies.image(), copies.before);
    EXPECT_TRUE(exists("FOLDER.PROG"));
}

TEST(CopyIn, Hazard_I13_TheImageItselfIsNoSource)
{
    const CopyHost copies;
    EXPECT_EQ(put_file(volume_name, COPY_MOVE), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages, (Names{"Can't copy/move file to itself (file \"volume.lif\")"}));
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(CopyIn, AnyCharacterMayBeginANameThatIsNotEmpty)
{
    const CopyHost copies;
    write_text("1ST.PROG", "content");
    EXPECT_EQ(put_file("1ST.PROG"), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).name, "1ST");
    write_text(".PROG", "content");
    EXPECT_EQ(put_file(".PROG"), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages, (Names{"Bad filename (file \"\": empty filename)"}));
}

TEST(CopyIn, TextWithItsEndingIsConvertedAndLosesIt)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    write_text("LETTER.ASCII.txt", "Dear\r\nreader\n");
    EXPECT_EQ(put_file("LETTER.ASCII.txt"), FILE_OK);
    EXPECT_EQ(copies.content("LETTER"), bytes_of(padded(std::string("\0\4Dear\0\6reader\xFF\xFF", 16))));
    write_text("VALUES.DATA.TXT", "Hello\n");
    EXPECT_EQ(put_file("VALUES.DATA.TXT"), FILE_OK);
    EXPECT_EQ(copies.content("VALUES"), bytes_of(padded(std::string("\0\74\0\5Hello\15\0\76", 12))));
}

TEST(CopyIn, WithoutItsEndingATextGoesAsItIs)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    write_text("LETTER.ASCII", "Dear\n");
    EXPECT_EQ(put_file("LETTER.ASCII"), FILE_OK);
    EXPECT_EQ(copies.content("LETTER"), bytes_of(padded("Dear\n")));
}

TEST(CopyIn, WithoutConversionAnEndingIsPartOfTheName)
{
    const CopyHost copies;
    write_text("LETTER.ASCII.txt", "Dear\n");
    EXPECT_EQ(put_file("LETTER.ASCII.txt"), FILE_OK);
    EXPECT_EQ(last_entry(copies.image()).name, "LETTER.ASC");
    EXPECT_EQ(copies.content("LETTER.ASC"), bytes_of(padded("Dear\n")));
}

TEST(CopyIn, WhatWentOutForTheHostComesBackConverted)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string local = temporary_path("ITEMS.DATA");
    EXPECT_EQ(get_file("ITEMS.DATA", local), FILE_OK);
    write_text(local, text_of(local) + "more\r\n");
    EXPECT_EQ(put_file(local, COPY_OVERWRITE), FILE_OK);
    EXPECT_STREQ(plugin.temporary_name, "");
    EXPECT_EQ(get_file("ITEMS.DATA", "back"), FILE_OK);
    EXPECT_EQ(text_of("back.txt"), "Hello\r\n-2\r\nmore\r\n");
    EXPECT_EQ(put_file(local, COPY_OVERWRITE), FILE_OK) << "once more, as any file";
    EXPECT_EQ(copies.content("ITEMS"), bytes_of(padded("Hello\r\n-2\nmore\r\n")));
}

TEST(CopyIn, TemporaryNameIsKeptUntilItsFileIsBack)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string local = temporary_path("ITEMS.DATA");
    EXPECT_EQ(get_file("ITEMS.DATA", local), FILE_OK);
    EXPECT_EQ(put_file(local), FILE_EXISTS);
    EXPECT_EQ(plugin.temporary_name, local);
    write_text("OTHER.PROG", "other");
    EXPECT_EQ(put_file("OTHER.PROG"), FILE_OK);
    EXPECT_EQ(plugin.temporary_name, local);
    end_operation();
    begin_operation();
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(put_file(local, COPY_OVERWRITE), FILE_OK);
    EXPECT_STREQ(plugin.temporary_name, "");
    EXPECT_EQ(copies.content("ITEMS").at(1), 60) << "a string again";
}

TEST(CopyIn, NoFormOfHeaderThatTheDialogKnowsIsTakenOff)
{
    Bytes headed(3 * record_bytes);
    {
        const CopyHost copies;
        plugin.medium->use_file_headers = 1;
        ASSERT_EQ(get_file("LAST.ASCII", "headed"), FILE_OK);
        headed = read_file("headed");
        ASSERT_EQ(headed.size(), 3u * record_bytes);
    }
    for (const uint32_t bits : {0u, 0x10u, 0x20u, 0x30u}) {
        const CopyHost copies(volume_of_kinds(), bits);
        write_file("HEADED.PROG", headed);
        EXPECT_EQ(put_file("HEADED.PROG"), FILE_OK);
        EXPECT_EQ(copies.content("HEADED"), headed) << bits;
        EXPECT_EQ(last_entry(copies.image()).type, 0xE990) << bits;
    }
}

TEST(CopyIn, BothTablesAreWrittenTheMainOnesFirst)
{
    const CopyHost copies;
    write_text("NEW.PROG", "new");
    const LogCapture log(3);
    EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
    const std::string text = log.text();
    const size_t places[] = {text.find("image_update_file_table("), text.find("use_spare=1", text.find("_file_table(")),
                             text.find("image_update_alloc_table("),
                             text.find("use_spare=1", text.find("_alloc_table("))};
    EXPECT_TRUE(std::is_sorted(std::begin(places), std::end(places)));
    EXPECT_LT(places[3], std::string::npos);
}

TEST(CopyIn, AHostThatStopsHasAnEntryOfFullSizeAndItsFirstRecords)
{
    for (uint32_t call = 0; call <= 4; call++) {
        CopyHost copies;
        copies.host.stop_answer = 1;
        copies.host.calls_before_stop = call;
        write_text("NEW.PROG", std::string(3 * record_bytes, 'n'));
        EXPECT_EQ(put_file("NEW.PROG"), FILE_OK);
        const Bytes content = copies.content("NEW");
        EXPECT_EQ(content.size(), 3u * record_bytes);
        const auto written = static_cast<size_t>(std::count(content.begin(), content.end(), 'n'));
        EXPECT_EQ(written, std::clamp(call, 1u, 3u) * record_bytes) << call;
    }
}

TEST(CopyIn, AnyFileMayBeCopiedOutAndInAgain)
{
    const CopyHost copies;
    for (const std::string &name : listed_names()) {
        ASSERT_EQ(get_file(name, name), FILE_OK) << name;
        ASSERT_EQ(put_file(name, COPY_OVERWRITE), FILE_OK) << name;
    }
    const Bytes image = copies.image();
    for (const StoredEntry &old : stored_entries(copies.before)) {
        if (old.type == 0) continue;
        EXPECT_EQ(copies.content(old.name), stored_content(copies.before, old)) << old.name;
        for (const StoredEntry &entry : stored_entries(image)) {
            if (entry.name != old.name) continue;
            EXPECT_EQ(entry.type, old.type) << old.name;
            EXPECT_EQ(entry.date, old.date) << old.name;
        }
    }
}
