// Find records that scripts of the host program can't show.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"

using namespace tests;

namespace
{

constexpr uint64_t december_1995 = 819829815; // 24 December 1995, 18:30:15, universal time
constexpr size_t first_date = 2 * record_bytes + 20;

LifVolume volume_with_names(const std::vector<std::string> &names)
{
    LifVolume volume;
    for (const std::string &name : names) volume.entries.push_back({.name = name});
    return volume;
}

// As on a volume with directories.
void put_second_into_first()
{
    FileInfo *folder = plugin.medium->root;
    FileInfo *inner = folder->next;
    folder->is_directory = 1;
    folder->child = inner;
    folder->next = nullptr;
    inner->parent = folder;
    inner->prev = nullptr;
}

void set_zone(const char *zone)
{
#ifndef _WIN32
    setenv("TZ", zone, 1);
    tzset();
#else
    static_cast<void>(zone); // a zone of its own has the process only where the environment tells it
#endif
}

}

TEST(PluginListing, KeepsFirstEntryWithoutAlternateName)
{
    const TemporaryFile file(lif_image(volume_with_names({"ONE", "TWO"})));
    const PluginHost host(file.path());
    for (int listing = 0; listing < 2; listing++) {
        FindDataA record = {};
        void *handle = FsFindFirst(host_path("").c_str(), &record);
        EXPECT_STREQ(record.name, "ONE.ASCII");
        EXPECT_STREQ(record.alternate_name, "");
        EXPECT_EQ(FsFindNext(handle, &record), 1);
        EXPECT_STREQ(record.name, "TWO.ASCII");
        EXPECT_STREQ(record.alternate_name, "TWO.ASCII");
        FsFindClose(handle);
        EXPECT_EQ(FsFindNext(handle, &record), 1);
        EXPECT_STREQ(record.alternate_name, "ONE.ASCII");
    }
}

TEST(PluginListing, KeepsUniversalTimeInDirectory)
{
    const TemporaryFile file(lif_image(volume_with_names({"ONE"})));
    const PluginHost host(file.path());
    const HostTime time = host_time(december_1995);
    const HostTime other = host_time(0);
    set_zone("EST5");
    begin_operation();
    EXPECT_EQ(FsSetTime(host_path("ONE.ASCII").c_str(), &other, &other, &time), 1);
    const Bytes image = file.bytes();
    const Bytes date(image.begin() + first_date, image.begin() + first_date + 6);
    EXPECT_EQ(date, (Bytes{0x95, 0x12, 0x24, 0x18, 0x30, 0x15}));
    FindDataA record = {};
    FsFindFirst(host_path("").c_str(), &record);
#ifndef _WIN32
    const HostTime listed = host_time(december_1995 + 5 * 3600);
    EXPECT_EQ(record.write_time[0], listed.low);
    EXPECT_EQ(record.write_time[1], listed.high);
#endif
    set_zone("UTC");
}

TEST(PluginListing, Hazard_C12_SlashOfANameIsNoSeparatorToTheHost)
{
    const TemporaryFile file(lif_image(volume_with_names({"ONE", "A/B\\C"})));
    const PluginHost host(file.path());
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    EXPECT_EQ(FsFindNext(handle, &record), 1);
#ifdef _WIN32
    EXPECT_STREQ(record.name, "A/B\\C.ASCII");
#else
    EXPECT_STREQ(record.name, "A_B\\C.ASCII");
#endif
    EXPECT_STREQ(record.alternate_name, "A_B_C.ASCII");
}

TEST(PluginListing, DirectoriesAreShownAsSuchAndWithoutExtension)
{
    const TemporaryFile file(lif_image(volume_with_names({"FOLDER", "FILE"})));
    const PluginHost host(file.path());
    begin_operation();
    put_second_into_first();
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    EXPECT_STREQ(record.name, "FOLDER");
    EXPECT_EQ(record.attributes, 0x10u);
    EXPECT_EQ(FsFindNext(handle, &record), 0);
    FsFindFirst(host_path("FOLDER").c_str(), &record);
    EXPECT_STREQ(record.name, "FILE.ASCII");
}

TEST(PluginListing, FilesAreCopiedOutOfTheDirectoryThatIsNamed)
{
    LifVolume volume = volume_with_names({"FOLDER", "FILE"});
    volume.entries[1].content = lif_ascii({"inside"});
    const CopyHost copies(volume);
    put_second_into_first();
    EXPECT_EQ(get_file("FOLDER" + host_path("FILE.ASCII"), "out"), FILE_OK);
    EXPECT_EQ(read_file("out"), copies.content("FILE"));
    EXPECT_EQ(get_file("FILE.ASCII", "out"), FILE_NOT_FOUND);
    EXPECT_EQ(get_file("FOLDER" + host_path("MISSING.ASCII"), "out"), FILE_NOT_FOUND);
    EXPECT_EQ(get_file("OTHER" + host_path("FILE.ASCII"), "out"), FILE_READ_FAILED);
}

TEST(PluginListing, DirectoryBecomesAFolderOfTheHost)
{
    const CopyHost copies(volume_with_names({"FOLDER", "FILE"}));
    put_second_into_first();
    plugin.medium->root->type_string[0] = '\0';
    EXPECT_EQ(get_file("FOLDER", "out"), FILE_OK);
    EXPECT_TRUE(std::filesystem::is_directory("out"));
    EXPECT_TRUE(std::filesystem::is_empty("out"));
}
