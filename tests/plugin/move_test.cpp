// Moves out of a medium and onto it: the original goes once all of it stands at the other place, and never before.
#include <gtest/gtest.h>

#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "volume/access.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

bool has(const Names &names, const std::string &name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The records of files that are no longer listed stay as they were.
void expect_records_as_before(const CopyHost &copies)
{
    const Bytes image = copies.image();
    for (const StoredEntry &entry : stored_entries(copies.before)) {
        EXPECT_EQ(stored_content(image, entry), stored_content(copies.before, entry)) << entry.name;
    }
}

constexpr uint32_t records_of_sort = 5;
const std::string new_text(3 * record_bytes, 'n');

}

TEST(MoveOut, FileIsOnTheHostAndNoLongerOnTheMedium)
{
    const CopyHost copies;
    const Bytes content = copies.content("SORTC_____");
    EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_OK);
    EXPECT_EQ(read_file("out"), content);
    Names names = stored_names(copies.before);
    std::erase(names, "SORTC_____");
    EXPECT_EQ(stored_names(copies.image()), names);
    EXPECT_FALSE(has(names_after_reopening(), "SORT.CODE"));
    expect_records_as_before(copies);
    EXPECT_TRUE(copies.host.messages.empty());
}

TEST(MoveOut, ConvertedFileGoesToo)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_file("ITEMS.DATA", "out", COPY_MOVE), FILE_OK);
    EXPECT_EQ(text_of("out.txt"), "Hello\r\n-2\n");
    EXPECT_FALSE(has(stored_names(copies.image()), "ITEMS"));
}

TEST(MoveOut, OverAnExistingFileIsAsked)
{
    const CopyHost copies;
    write_text("out", "other");
    EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_EXISTS);
    EXPECT_EQ(copies.image(), copies.before);
    EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE | COPY_OVERWRITE), FILE_OK);
    EXPECT_FALSE(has(stored_names(copies.image()), "SORTC_____"));
}

TEST(MoveOut, BothTablesAreWrittenTheMainOnesFirst)
{
    const CopyHost copies;
    const LogCapture log(3);
    EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_OK);
    const std::string text = log.text();
    const size_t deleted = text.find("image_delete_file(");
    const size_t main_table = text.find("image_update_file_table(", deleted);
    const size_t spare_table = text.find("use_spare=1", main_table);
    const size_t main_space = text.find("image_update_alloc_table(", spare_table);
    EXPECT_LT(text.find("use_spare=1", main_space), std::string::npos);
}

TEST(MoveOut, SeveralFilesOfOneOperationGoOneByOne)
{
    const CopyHost copies;
    const Names listed = listed_names();
    for (const std::string &name : listed) EXPECT_EQ(get_file(name, name, COPY_MOVE), FILE_OK) << name;
    EXPECT_EQ(stored_names(copies.image()), (Names{"OLD"})) << "what isn't shown isn't moved";
    for (const std::string &name : listed) EXPECT_TRUE(exists(name)) << name;
}

TEST(MoveOut, Hazard_J1_AHostThatStopsAtAnyCallKeepsTheOriginal)
{
    for (uint32_t call = 0; call <= records_of_sort + 1; call++) {
        CopyHost copies;
        copies.host.stop_answer = 1;
        copies.host.calls_before_stop = call;
        EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_OK) << call;
        EXPECT_EQ(copies.image(), copies.before) << call;
        EXPECT_TRUE(has(listed_names(), "SORT.CODE")) << call;
        EXPECT_TRUE(has(names_after_reopening(), "SORT.CODE")) << call;
    }
}

TEST(MoveOut, Hazard_J1_AStopHoldsForOneFileOnly)
{
    CopyHost copies;
    copies.host.stop_answer = 1;
    EXPECT_EQ(get_file("SORT.CODE", "stopped", COPY_MOVE), FILE_OK);
    copies.host.stop_answer = 0;
    EXPECT_EQ(get_file("SORT.CODE", "whole", COPY_MOVE), FILE_OK);
    EXPECT_EQ(read_file("whole").size(), records_of_sort * record_bytes);
    EXPECT_FALSE(has(stored_names(copies.image()), "SORTC_____"));
}

TEST(MoveOut, Hazard_J1_AReadFailureKeepsTheOriginal)
{
    const CopyHost copies;
    refresh_medium(plugin.medium); // what was read ahead would need no reading
    {
        const FileFaults fault(FileFault::read, 1, true);
        EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_READ_FAILED);
    }
    EXPECT_EQ(copies.host.messages, (Names{"File read error"}));
    EXPECT_EQ(copies.image(), copies.before);
    EXPECT_TRUE(has(names_after_reopening(), "SORT.CODE"));
}

TEST(MoveOut, Hazard_J1_AFullDiskKeepsTheOriginal)
{
    for (const FileFault kind : {FileFault::write, FileFault::short_write}) {
        const CopyHost copies;
        {
            const FileFaults fault(kind, 3);
            EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_READ_FAILED);
        }
        EXPECT_EQ(copies.host.messages, (Names{"File write error - check write protection (file \"out\")"}));
        EXPECT_LT(read_file("out").size(), records_of_sort * record_bytes) << "a part stays";
        EXPECT_EQ(copies.image(), copies.before);
        EXPECT_TRUE(has(names_after_reopening(), "SORT.CODE"));
    }
}

TEST(MoveOut, Hazard_H13_ATextThatTheDiskHasOnlyAPartOfKeepsTheOriginal)
{
    for (const FileFault kind : {FileFault::write, FileFault::short_write}) {
        for (uint32_t write = 1; write <= 2; write++) {
            const CopyHost copies;
            plugin.medium->use_file_conversion = 1;
            {
                const FileFaults fault(kind, write);
                EXPECT_EQ(get_file("README.ASCII", "out", COPY_MOVE), FILE_OK) << "as it was asked for";
                EXPECT_TRUE(fault.reached);
            }
            EXPECT_EQ(copies.image(), copies.before);
            EXPECT_TRUE(has(names_after_reopening(), "README.ASCII"));
        }
    }
}

TEST(MoveOut, Hazard_H13_AContentThatIsNotWhatItsTypeSaysKeepsTheOriginal)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_file("WRONG.TXT75", "wrong", COPY_MOVE), FILE_OK);
    EXPECT_EQ(get_file("BADITEMS.DATA", "items", COPY_MOVE), FILE_READ_FAILED);
    EXPECT_EQ(copies.image(), copies.before);
    const Names names = names_after_reopening();
    EXPECT_TRUE(has(names, "WRONG.TXT75"));
    EXPECT_TRUE(has(names, "BADITEMS.DATA"));
}

TEST(MoveOut, Hazard_J1_ADirectoryThatCantBeWrittenIsTold)
{
    const CopyHost copies;
    const Bytes content = copies.content("SORTC_____");
    {
        const FileFaults fault(FileFault::write, records_of_sort + 1, true);
        EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_READ_FAILED);
    }
    EXPECT_EQ(copies.host.messages, (Names{"File write error - check write protection"}));
    EXPECT_EQ(read_file("out"), content);
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(MoveOut, ADirectoryThatWasNotReadWholeIsToldAheadOfAnyCopy)
{
    LifVolume volume = volume_of_kinds();
    volume.entries.push_back({.name = "NOWHERE", .start = 0});
    const CopyHost copies(volume);
    EXPECT_EQ(get_file("SORT.CODE", "out", COPY_MOVE), FILE_READ_FAILED);
    EXPECT_EQ(copies.host.messages, (Names{"Unable to read media (directory not read whole, nothing is changed)"}));
    EXPECT_FALSE(exists("out"));
    EXPECT_EQ(get_file("SORT.CODE", "out"), FILE_OK) << "a copy changes nothing";
    write_text("NEW.PROG", new_text);
    EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_READ_FAILED);
    EXPECT_TRUE(exists("NEW.PROG"));
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(MoveIn, FileIsOnTheMediumAndNoLongerOnTheHost)
{
    const CopyHost copies;
    write_text("NEW.PROG", new_text);
    EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_OK);
    EXPECT_FALSE(exists("NEW.PROG"));
    EXPECT_EQ(copies.content("NEW"), bytes_of(new_text));
    EXPECT_TRUE(has(names_after_reopening(), "NEW.PROG"));
    EXPECT_TRUE(copies.host.messages.empty());
}

TEST(MoveIn, ConvertedFileGoesToo)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    write_text("LETTER.ASCII.txt", "Dear\n");
    EXPECT_EQ(put_file("LETTER.ASCII.txt", COPY_MOVE), FILE_OK);
    EXPECT_FALSE(exists("LETTER.ASCII.txt"));
    EXPECT_EQ(copies.content("LETTER").at(1), 4);
}

TEST(MoveIn, TheTablesAreWrittenBeforeTheLocalFileGoes)
{
    const CopyHost copies;
    write_text("NEW.PROG", new_text);
    const LogCapture log(3);
    EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_OK);
    const std::string text = log.text();
    const size_t last_table = text.rfind("image_update_alloc_table(");
    EXPECT_LT(text.find("file_delete(filename=\"NEW.PROG\")", last_table), std::string::npos);
}

TEST(MoveIn, LocalFileThatCantBeDeletedIsTold)
{
    CopyHost copies;
    write_text("NEW.PROG", new_text);
    copies.host.at_progress = [&copies] {
        if (copies.host.percentages.size() == 5) std::filesystem::remove("NEW.PROG");
    };
    EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_OK);
    ASSERT_EQ(copies.host.messages.size(), 1u);
    EXPECT_TRUE(copies.host.messages[0].starts_with("Can't delete file - check write protection ("));
    EXPECT_EQ(copies.content("NEW"), bytes_of(new_text));
}

TEST(MoveIn, Hazard_J2_AHostThatStopsAtAnyCallKeepsTheLocalFile)
{
    for (uint32_t call = 0; call <= 4; call++) {
        CopyHost copies;
        copies.host.stop_answer = 1;
        copies.host.calls_before_stop = call;
        write_text("NEW.PROG", new_text);
        EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_OK) << call;
        EXPECT_EQ(text_of("NEW.PROG"), new_text) << call;
        EXPECT_TRUE(has(names_after_reopening(), "NEW.PROG")) << call;
    }
}

TEST(MoveIn, Hazard_J2_ANameThatExistsKeepsTheLocalFile)
{
    const CopyHost copies;
    write_text("LAST.ASCII", new_text);
    EXPECT_EQ(put_file("LAST.ASCII", COPY_MOVE), FILE_EXISTS);
    EXPECT_EQ(text_of("LAST.ASCII"), new_text);
    EXPECT_EQ(copies.image(), copies.before);
}

TEST(MoveIn, Hazard_J2_ATextOfWhichSomethingIsCutKeepsTheLocalFile)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string text = "10 " + std::string(200, 'l') + "\n";
    write_text("LINES.TXT75.txt", text);
    EXPECT_EQ(put_file("LINES.TXT75.txt", COPY_MOVE), FILE_OK);
    EXPECT_EQ(text_of("LINES.TXT75.txt"), text);
    EXPECT_TRUE(has(stored_names(copies.image()), "LINES"));
}

TEST(MoveIn, Hazard_J2_AFileCutByItsOwnHeaderKeepsTheLocalFile)
{
    const CopyHost copies;
    plugin.medium->use_file_headers = 1;
    EXPECT_EQ(get_file("SORT.CODE", "HEADED.CODE"), FILE_OK);
    const std::string headed = text_of("HEADED.CODE");
    EXPECT_EQ(put_file("HEADED.CODE", COPY_MOVE), FILE_OK);
    EXPECT_EQ(text_of("HEADED.CODE"), headed);
    EXPECT_EQ(stored_entries(copies.image()).back().length, records_of_sort - 2);
}

TEST(MoveIn, Hazard_J2_ASourceThatCantBeReadKeepsTheLocalFile)
{
    const CopyHost copies;
    write_text("NEW.PROG", new_text);
    {
        const FileFaults fault(FileFault::read, 1, true);
        EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_READ_FAILED);
    }
    EXPECT_EQ(copies.host.messages, (Names{"File read error (file \"NEW.PROG\")"}));
    EXPECT_EQ(text_of("NEW.PROG"), new_text);
    EXPECT_EQ(stored_names(copies.image()), stored_names(copies.before));
}

TEST(MoveIn, Hazard_J2_AWriteThatFailsKeepsTheLocalFile)
{
    const uint32_t data_writes = 3;
    for (const FileFault kind : {FileFault::write, FileFault::short_write}) {
        for (uint32_t write = 1; write <= data_writes + 2; write++) { // two are those of the directory
            const CopyHost copies;
            write_text("NEW.PROG", new_text);
            {
                const FileFaults fault(kind, write, true);
                EXPECT_EQ(put_file("NEW.PROG", COPY_MOVE), FILE_READ_FAILED) << write;
            }
            EXPECT_EQ(copies.host.messages, (Names{"File write error - check write protection"}));
            EXPECT_EQ(text_of("NEW.PROG"), new_text) << write;
        }
    }
}

TEST(MoveIn, Hazard_I5_TheEntryOfAFailedCopyIsWrittenByTheNextOneOfTheOperation)
{
    const CopyHost copies;
    write_text("BROKEN.PROG", new_text);
    write_text("WHOLE.PROG", new_text);
    {
        const FileFaults fault(FileFault::write, 2, true);
        EXPECT_EQ(put_file("BROKEN.PROG", COPY_MOVE), FILE_READ_FAILED);
    }
    EXPECT_EQ(put_file("WHOLE.PROG", COPY_MOVE), FILE_OK);
    EXPECT_TRUE(exists("BROKEN.PROG"));
    EXPECT_FALSE(exists("WHOLE.PROG"));
    EXPECT_EQ(copies.content("WHOLE"), bytes_of(new_text));
    EXPECT_TRUE(has(names_after_reopening(), "BROKEN.PROG"));
}

TEST(MoveIn, Hazard_I5_TheEntryOfAFailedCopyIsGoneWithTheOperation)
{
    const CopyHost copies;
    write_text("BROKEN.PROG", new_text);
    {
        const FileFaults fault(FileFault::write, 2, true);
        EXPECT_EQ(put_file("BROKEN.PROG"), FILE_READ_FAILED);
    }
    EXPECT_FALSE(has(names_after_reopening(), "BROKEN.PROG"));
}
