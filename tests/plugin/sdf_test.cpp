// A volume with directories in the hands of a host: its folders, its files, and paths that lead nowhere.
#include <gtest/gtest.h>

#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/sdf_builder.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr uint32_t directory_attribute = 0x10;

// "LEVEL1/LEVEL2" as the host writes it.
std::string deep_path(const std::string &path)
{
    std::string text = host_path("");
    for (const char character : path) text += character == '/' ? platform_separator() : character;
    return text;
}

// The names of a folder, directories with a "+" behind them.
Names listing(const std::string &path)
{
    Names names;
    FindDataA record = {};
    void *handle = FsFindFirst(deep_path(path).c_str(), &record);
    EXPECT_EQ(handle, plugin.medium);
    for (bool more = record.name[0] != '\0'; more; more = FsFindNext(handle, &record) == 1) {
        names.push_back(std::string(record.name) + ((record.attributes & directory_attribute) != 0 ? "+" : ""));
    }
    EXPECT_EQ(platform_last_error(), error_no_more_files);
    FsFindClose(handle);
    return names;
}

struct SdfHost {
    explicit SdfHost(const SdfVolume &volume = five_levels())
        : image(sdf_image(volume).bytes), file(image, ".sdf"), host(file.path())
    {
        begin_operation();
    }
    ~SdfHost()
    {
        EXPECT_TRUE(host.messages.empty()) << host.messages[0];
        EXPECT_EQ(file.bytes(), image);
    }
    SdfHost(const SdfHost &) = delete;
    SdfHost &operator=(const SdfHost &) = delete;

    Bytes image;
    TemporaryFile file;
    PluginHost host;
    WorkFolder folder;
};

int32_t get(const std::string &path, const std::string &local)
{
    std::string target = local;
    return FsGetFile(deep_path(path).c_str(), target.data(), 0, nullptr);
}

}

TEST(PluginSdf, EachFolderIsListed)
{
    const SdfHost sdf;
    EXPECT_EQ(listing(""), (Names{"FIRST.DATA", "LEVEL1+"}));
    EXPECT_EQ(listing("LEVEL1"), (Names{"DATA.DATA", "LEVEL2+"}));
    EXPECT_EQ(listing("LEVEL1/LEVEL2/"), (Names{"DATA.DATA", "LEVEL3+"}));
    EXPECT_EQ(listing("LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5"), Names{"DEEP.DATA"});
    EXPECT_EQ(listing(""), (Names{"FIRST.DATA", "LEVEL1+"}));
}

TEST(PluginSdf, PathThatLeadsNowhereIsAnEmptyListing)
{
    const SdfHost sdf;
    for (const char *path : {"LEVEL2", "FIRST.DATA", "LEVEL1/LEVEL3", "LEVEL1/DATA.DATA"}) {
        EXPECT_EQ(listing(path), Names{}) << path;
    }
}

TEST(PluginSdf, EmptyFolderIsAnEmptyListing)
{
    SdfVolume volume;
    volume.files = {sdf_directory("EMPTY", {})};
    const SdfHost sdf(volume);
    EXPECT_EQ(listing("EMPTY"), Names{});
}

TEST(PluginSdf, RecordOfAFolder)
{
    const SdfHost sdf;
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    EXPECT_EQ(record.attributes, 0u);
    EXPECT_EQ(record.size_low, 1000u);
    ASSERT_EQ(FsFindNext(handle, &record), 1);
    EXPECT_STREQ(record.name, "LEVEL1");
    EXPECT_EQ(record.attributes, directory_attribute);
    EXPECT_EQ(record.size_low, 48u);
    EXPECT_STREQ(record.alternate_name, "LEVEL1");
    EXPECT_NE(record.write_time[1], 0u);
}

TEST(PluginSdf, FilesOfFoldersAreCopiedOut)
{
    const SdfHost sdf;
    EXPECT_EQ(get("FIRST.DATA", "first"), FILE_OK);
    EXPECT_EQ(text_of("first"), std::string(1000, 'f'));
    EXPECT_EQ(get("LEVEL1/LEVEL2/DATA.DATA", "second"), FILE_OK);
    EXPECT_EQ(text_of("second"), std::string(100, '2'));
    EXPECT_EQ(get("LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP.DATA", "deep"), FILE_OK);
    EXPECT_EQ(text_of("deep"), std::string(300, 'd'));
    EXPECT_EQ(time_of("deep"), local_time(1984, 3, 15, 9, 7, 30));
}

TEST(PluginSdf, FilesThatAreNotThere)
{
    const SdfHost sdf;
    EXPECT_EQ(get("DEEP.DATA", "out"), FILE_NOT_FOUND);
    EXPECT_EQ(get("LEVEL1/DEEP.DATA", "out"), FILE_NOT_FOUND);
    EXPECT_EQ(get("LEVEL3/DATA.DATA", "out"), FILE_READ_FAILED);
    EXPECT_EQ(platform_last_error(), error_no_more_files);
    EXPECT_FALSE(exists("out"));
}

TEST(PluginSdf, FileOfTheEmptyFolderIsNotThere)
{
    SdfVolume volume;
    volume.files = {sdf_directory("EMPTY", {}), sdf_file("A", Bytes(3))};
    const SdfHost sdf(volume);
    EXPECT_EQ(get("EMPTY/A.DATA", "out"), FILE_NOT_FOUND);
}

TEST(PluginSdf, DataRecordsBecomeText)
{
    SdfVolume volume;
    volume.files = {sdf_file("TEXT", {1, 0, 0, 0, 5, 'H', 'e', 'l', 'l', 'o'})};
    SdfHost sdf(volume);
    end_operation();
    plugin.options |= option_file_conversion;
    begin_operation();
    EXPECT_EQ(get("TEXT.DATA", "out"), FILE_OK);
    EXPECT_EQ(text_of("out.txt"), "Hello\r\n");
}

#ifndef _WIN32
TEST(PluginSdf, Hazard_C12_SlashesOfNamesDoNotReachTheHost)
{
    SdfVolume volume;
    volume.files = {sdf_file("../../x", Bytes(3)), sdf_directory("a/b", {sdf_file("C", Bytes(3))})};
    const SdfHost sdf(volume);
    EXPECT_EQ(listing(""), (Names{".._.._x.DATA", "a_b+"}));
    EXPECT_EQ(listing("a_b"), Names{});
}
#endif
