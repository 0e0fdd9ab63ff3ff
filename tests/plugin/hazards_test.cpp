// Calls of a host that would have met released memory, buffers that end too early, or files under a table.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "base/error.h"
#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/sdf_builder.h"
#include "volume/open.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

LifVolume one_two_three()
{
    LifVolume volume;
    volume.entries = {{.name = "ONE"}, {.name = "TWO"}, {.name = "THREE", .type = 0xE020}};
    return volume;
}

int32_t rename_file(const std::string &from, const std::string &to, bool overwrite)
{
    return FsRenMovFile(host_path(from).c_str(), host_path(to).c_str(), 1, overwrite ? 1 : 0, nullptr);
}

int32_t copy_file(const std::string &from, const std::string &to, bool overwrite)
{
    return FsRenMovFile(host_path(from).c_str(), host_path(to).c_str(), 0, overwrite ? 1 : 0, nullptr);
}

int32_t delete_file(const std::string &name)
{
    return FsDeleteFile(host_path(name).c_str());
}

// A change of any kind is refused with this error, and nothing is written.
void expect_changes_refused(const TemporaryFile &file, const Bytes &before, uint32_t error)
{
    const HostTime time = host_time(1000000000);
    const FileFaults counter;
    EXPECT_EQ(FsSetAttr(host_path("ONE.ASCII").c_str(), 1), 0);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(FsSetTime(host_path("ONE.ASCII").c_str(), &time, &time, &time), 0);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(rename_file("TWO.ASCII", "NEW.ASCII", false), FILE_WRITE_FAILED);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(counter.writes, 0u);
    EXPECT_EQ(file.bytes(), before);
}

}

TEST(PluginHazards, Hazard_J3_RenameOverAFileTakesItsNameAndNothingElse)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    begin_operation();
    EXPECT_EQ(rename_file("ONE.ASCII", "THREE.BAS8x", true), FILE_OK);
    EXPECT_EQ(host.messages, (Names{"filename=THREE"}));
    EXPECT_EQ(listed_names(), (Names{"THREE.ASCII", "TWO.ASCII"}));
    EXPECT_EQ(names_after_reopening(), (Names{"THREE.ASCII", "TWO.ASCII"}));
}

TEST(PluginHazards, Hazard_J3_CopyOverAFileThatFailsLeavesNothingForTheNextWriteToLose)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    begin_operation();
    const uint32_t used_before = plugin.medium->used_bytes;
    {
        const FileFaults fault(FileFault::write, 1);
        EXPECT_EQ(copy_file("ONE.ASCII", "TWO.ASCII", true), FILE_WRITE_FAILED);
        EXPECT_TRUE(fault.reached);
    }
    EXPECT_TRUE(contains(host.messages.back(), "File write error")) << host.messages.back();
    EXPECT_EQ(plugin.medium->used_bytes, used_before);
    EXPECT_EQ(FsSetAttr(host_path("ONE.ASCII").c_str(), 0), 1);
    EXPECT_EQ(names_after_reopening(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
}

TEST(PluginHazards, NamesThatReadingWouldRefuseAreNotGiven)
{
    const Bytes before = lif_image(one_two_three());
    const TemporaryFile file(before);
    const PluginHost host(file.path());
    begin_operation();
    EXPECT_EQ(rename_file("ONE.ASCII", ".ASCII", false), FILE_WRITE_FAILED);
    EXPECT_EQ(rename_file("ONE.ASCII", "          X.ASCII", false), FILE_WRITE_FAILED);
    EXPECT_EQ(copy_file("ONE.ASCII", ".ASCII", false), FILE_WRITE_FAILED);
    EXPECT_TRUE(contains(host.messages.back(), "empty filename")) << host.messages.back();
    EXPECT_EQ(listed_names(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
    EXPECT_EQ(file.bytes(), before);
}

TEST(PluginHazards, Hazard_J4_MoveOntoItselfIsDoneAtOnce)
{
    const Bytes before = lif_image(one_two_three());
    const TemporaryFile file(before);
    const PluginHost host(file.path());
    begin_operation();
    const FileFaults counter;
    EXPECT_EQ(rename_file("TWO.ASCII", "TWO.ASCII", true), FILE_OK);
    EXPECT_EQ(counter.writes, 0u);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(listed_names(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
    EXPECT_EQ(file.bytes(), before);
}

TEST(PluginHazards, Hazard_J4_CopyOntoItselfKeepsTheFile)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    begin_operation();
    EXPECT_EQ(copy_file("TWO.ASCII", "TWO.ASCII", true), FILE_WRITE_FAILED);
    EXPECT_EQ(listed_names(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
}

TEST(PluginHazards, Hazard_J5_HandleOfAClosedMediumIsNone)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    ASSERT_EQ(handle, plugin.medium);
    FsStatusInfo(host_path("").c_str(), 1, 1);
    platform_set_last_error(0);
    EXPECT_EQ(FsFindNext(handle, &record), 0);
    EXPECT_EQ(platform_last_error(), error_aborted);
    platform_set_last_error(0);
    EXPECT_EQ(FsFindClose(handle), 0);
    EXPECT_EQ(platform_last_error(), error_aborted);
    EXPECT_EQ(plugin.medium, nullptr);
}

TEST(PluginHazards, Hazard_J5_HandleOfAnotherMediumIsNone)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    begin_operation();
    MediaDescriptor other = {};
    FindDataA record = {};
    platform_set_last_error(0);
    EXPECT_EQ(FsFindNext(&other, &record), 0);
    EXPECT_EQ(platform_last_error(), error_aborted);
    platform_set_last_error(0);
    EXPECT_EQ(FsFindClose(&other), 0);
    EXPECT_EQ(platform_last_error(), error_aborted);
}

TEST(PluginHazards, Hazard_J6_ListingGoesOnBehindADeletedEntry)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    EXPECT_STREQ(record.name, "ONE.ASCII");
    EXPECT_EQ(delete_file("TWO.ASCII"), 1);
    EXPECT_EQ(FsFindNext(handle, &record), 1);
    EXPECT_STREQ(record.name, "THREE.BAS8x");
    EXPECT_EQ(FsFindNext(handle, &record), 0);
}

TEST(PluginHazards, Hazard_J6_ListingEndsWhenItsLastEntriesAreDeleted)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    EXPECT_EQ(delete_file("TWO.ASCII"), 1);
    EXPECT_EQ(delete_file("THREE.BAS8x"), 1);
    EXPECT_EQ(FsFindNext(handle, &record), 0);
    EXPECT_EQ(delete_file("ONE.ASCII"), 1);
    EXPECT_EQ(FsFindClose(handle), 0);
    EXPECT_EQ(FsFindNext(handle, &record), 0);
}

TEST(PluginHazards, Hazard_J8_RootNameStaysInItsBuffer)
{
    for (const int32_t maxlen : {INT32_MIN, -1, 0}) {
        std::array<char, 8> buffer{};
        buffer.fill('x');
        FsGetDefRootName(buffer.data(), maxlen);
        EXPECT_EQ(std::string(buffer.data(), buffer.size()), "xxxxxxxx") << maxlen;
    }
    for (int32_t maxlen = 1; maxlen <= 8; maxlen++) {
        std::array<char, 8> buffer{};
        buffer.fill('x');
        FsGetDefRootName(buffer.data(), maxlen);
        EXPECT_EQ(std::string(buffer.data()), std::string("TARVO").substr(0, static_cast<size_t>(maxlen) - 1));
        for (size_t i = static_cast<size_t>(maxlen); i < buffer.size(); i++) EXPECT_EQ(buffer[i], 'x') << maxlen;
    }
    FsGetDefRootName(nullptr, 8);
}

TEST(PluginHazards, Hazard_J10_MessagesHoldTheLongestTarget)
{
    const std::string target(FILE_PATH_SIZE - 1, 't');
    const PluginHost host(target);
    begin_operation();
    ASSERT_EQ(host.messages.size(), 2u);
    EXPECT_EQ(host.messages[0], "Could not open " + target);
    EXPECT_EQ(host.messages[1], "Can't open file (Msus \"" + target + "\")");
}

TEST(PluginHazards, Hazard_J10_MessagesHoldTheLongestErrorText)
{
    const PluginHost host;
    const std::string detail(ERROR_DETAIL_SIZE - 1, 'd');
    set_error(300, "%s", detail.c_str());
    plugin_report_error();
    plugin_message("%s", std::string(5000, 'm').c_str());
    ASSERT_EQ(host.messages.size(), 2u);
    EXPECT_EQ(host.messages[0], "Can't open file (" + detail + ")");
    EXPECT_EQ(host.messages[1], std::string(host.messages[1].size(), 'm')) << "cut, and ended";
}

TEST(PluginHazards, Hazard_J10_NamesOfAnyLengthAreBorne)
{
    const TemporaryFile file(lif_image(one_two_three()));
    PluginHost host(file.path());
    const LogCapture log(3);
    begin_operation();
    for (const size_t length : {259u, 260u, 261u, 1100u, 4000u}) {
        std::string name(length, 'N');
        EXPECT_EQ(delete_file(name), 0);
        EXPECT_EQ(FsGetFile(host_path(name).c_str(), name.data(), 0, nullptr), FILE_NOT_FOUND);
        EXPECT_EQ(rename_file("ONE.ASCII", name + ".ASCII", false), FILE_OK);
        EXPECT_EQ(rename_file("NNNNNNNNNN.ASCII", "ONE.ASCII", false), FILE_OK);
    }
    EXPECT_EQ(listed_names(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
}

TEST(PluginHazards, Hazard_D10_DirectoryOverAFileIsNotWritten)
{
    Bytes image = lif_image(one_two_three());
    set_dword_at(image, 16, 4); // reaches into the first two files
    const TemporaryFile file(image);
    const PluginHost host(file.path());
    begin_operation();
    expect_changes_refused(file, image, 213);
    EXPECT_EQ(delete_file("THREE.BAS8x"), 0);
    EXPECT_EQ(file.bytes(), image);
    EXPECT_EQ(names_after_reopening(), (Names{"ONE.ASCII", "TWO.ASCII", "THREE.BAS8x"}));
}

TEST(PluginHazards, Hazard_D10_DirectoryBehindTheEndIsNotWritten)
{
    Bytes image = lif_image(one_two_three());
    set_dword_at(image, 16, 0xFFFFFFFF);
    const TemporaryFile file(image);
    const PluginHost host(file.path());
    begin_operation();
    expect_changes_refused(file, image, 213);
}

TEST(PluginHazards, Hazard_D10_DirectoryOverTheHeaderIsNotWritten)
{
    const Bytes image = lif_image(one_two_three());
    const TemporaryFile file(image);
    const PluginHost host(file.path());
    begin_operation();
    plugin.medium->dir_start = 0;
    expect_changes_refused(file, image, 213);
}

TEST(PluginHazards, Hazard_D11_MoreEntriesThanSlotsAreNotWritten)
{
    LifVolume volume = one_two_three();
    for (int i = 0; i < 8; i++) volume.entries.push_back({.name = "MORE" + std::to_string(i)});
    const Bytes image = lif_image(volume);
    const TemporaryFile file(image);
    const PluginHost host(file.path());
    begin_operation();
    plugin.medium->dir_size = 1;
    expect_changes_refused(file, image, 216);
    EXPECT_EQ(names_after_reopening().size(), 11u);
}

// What couldn't be read would be gone with the next writing of the directory.
TEST(PluginHazards, Hazard_D14_ADirectoryWithEntriesThatAreNoneIsNotRewritten)
{
    LifVolume volume = one_two_three();
    volume.entries[1].start = 0;
    const TemporaryFile file(lif_image(volume));
    const PluginHost host(file.path());
    const Bytes before = file.bytes();
    begin_operation();
    EXPECT_EQ(listed_names(), (Names{"ONE.ASCII", "THREE.BAS8x"}));
    EXPECT_EQ(delete_file("THREE.BAS8x"), 0);
    EXPECT_EQ(host.messages, (Names{"Unable to read media (directory not read whole, nothing is changed)"}));
    expect_changes_refused(file, before, 215);
}

TEST(PluginHazards, Hazard_D14_ADirectoryWhoseReadingFailedHalfwayIsNotRewritten)
{
    const TemporaryFile file(lif_image(lif_volume_with_files(5000)));
    const PluginHost host(file.path());
    const Bytes before = file.bytes();
    {
        const FileFaults fault(FileFault::read, 3, true); // the header, a window of the directory, and no more
        begin_operation();
        EXPECT_TRUE(fault.reached);
    }
    ASSERT_NE(plugin.medium, nullptr);
    const size_t listed = listed_names().size();
    EXPECT_GT(listed, 0u);
    EXPECT_LT(listed, 5000u);
    EXPECT_EQ(delete_file("F000001.ASCII"), 0);
    EXPECT_EQ(global_error, 215u);
    EXPECT_EQ(file.bytes(), before);
}

TEST(PluginHazards, Hazard_J19_AMoveOutOfAnSdfVolumeIsRefusedBeforeAnythingIsCopied)
{
    const TemporaryFile file(sdf_image(five_levels()).bytes);
    const PluginHost host(file.path());
    begin_operation();
    TemporaryFile local(".txt");
    std::string path = local.path();
    EXPECT_EQ(FsGetFile(host_path("FIRST.DATA").c_str(), path.data(), COPY_MOVE, nullptr), FILE_NOT_SUPPORTED);
    EXPECT_EQ(host.messages, (Names{"File delete within SDF file system is currently not supported."}));
    EXPECT_FALSE(local.exists());
}

TEST(PluginHazards, Hazard_J7_AMediumThatWasClosedLeavesNothingToWalkOn)
{
    const TemporaryFile file(lif_image(one_two_three()));
    const PluginHost host(file.path());
    begin_operation();
    MediaDescriptor *md = plugin.medium;
    image_free_directory(md, nullptr);
    EXPECT_EQ(md->root, nullptr);
    EXPECT_EQ(md->cursor, nullptr);
    FindDataA entry;
    platform_set_last_error(0);
    EXPECT_EQ(FsFindNext(md, &entry), 0);
    EXPECT_EQ(platform_last_error(), error_no_more_files);
}

TEST(PluginHazards, Hazard_C2_ANewNameWithoutTypeIsCutToWhatTheVolumeHolds)
{
    const TemporaryFile file(lif_image(one_two_three()));
    PluginHost host(file.path());
    plugin.options &= ~uint32_t{option_typed_extensions};
    begin_operation();
    EXPECT_EQ(rename_file("ONE", std::string(200, 'N'), false), FILE_OK);
    EXPECT_EQ(std::string(plugin.medium->root->name), std::string(10, 'N'));
    plugin.options |= option_typed_extensions;
}
