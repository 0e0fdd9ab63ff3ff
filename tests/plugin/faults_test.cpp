// What the host sees of writes that fail, and what a failed change leaves on the medium.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "base/error.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

using namespace tests;

namespace
{

constexpr uint32_t file_count = 20; // in three records of the directory
constexpr uint32_t directory_start = 2;
constexpr uint32_t directory_end = 5;
constexpr uint32_t most_writes = 100;

using Names = std::vector<std::string>;

struct Change {
    const char *name;
    std::function<int32_t()> run;
    int32_t done;
    int32_t failed;
    Names touched; // files that may be there or not after a failure
    Names kept;    // of which at least one is there, unless there are none
};

std::vector<Change> changes()
{
    static const HostTime time = host_time(1000000000);
    const std::string third = "F000003.ASCII";
    const std::string tenth = "F000010.ASCII";
    const std::string other = "NEW.ASCII";
    const auto rename = [](const std::string &from, const std::string &to) {
        return FsRenMovFile(host_path(from).c_str(), host_path(to).c_str(), 1, 1, nullptr);
    };
    return {
        {"delete", [=] { return FsDeleteFile(host_path(third).c_str()); }, 1, 0, {third}, {}},
        {"attributes", [=] { return FsSetAttr(host_path(third).c_str(), 3); }, 1, 0, {}, {}},
        {"time", [=] { return FsSetTime(host_path(third).c_str(), &time, &time, &time); }, 1, 0, {}, {}},
        {"rename", [=] { return rename(third, other); }, FILE_OK, FILE_WRITE_FAILED, {third}, {third, other}},
        {"rename over another",
         [=] { return rename(tenth, third); },
         FILE_OK,
         FILE_WRITE_FAILED,
         {third, tenth},
         {third, tenth}},
    };
}

Names all_names()
{
    Names names;
    for (uint32_t i = 0; i < file_count; i++)
        names.push_back(std::string(i < 10 ? "F00000" : "F0000") + std::to_string(i) + ".ASCII");
    return names;
}

bool has(const Names &names, const std::string &name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Header and files; the directory is cut out.
Bytes without_directory(Bytes image)
{
    const auto at = [&image](uint32_t record) {
        return image.begin() + static_cast<std::ptrdiff_t>(record) * record_bytes;
    };
    image.erase(at(directory_start), at(directory_end));
    return image;
}

// One change with its n-th write failing. False when there was no n-th write.
bool fail_write(const Change &change, FileFault fault, uint32_t n, bool onward)
{
    SCOPED_TRACE(std::string(change.name) + ", write " + std::to_string(n));
    const Bytes before = lif_image(lif_volume_with_files(file_count));
    const TemporaryFile file(before);
    PluginHost host(file.path());
    begin_operation();
    bool reached = false;
    {
        FileFaults faults(fault, n, onward);
        const int32_t result = change.run();
        reached = faults.reached;
        EXPECT_EQ(result, reached ? change.failed : change.done);
    }
    const std::string last = host.messages.empty() ? "" : host.messages.back();
    EXPECT_EQ(contains(last, "File write error - check write protection"), reached) << last;
    const Names names = names_after_reopening();
    for (const std::string &name : all_names()) {
        EXPECT_TRUE(has(names, name) || has(change.touched, name)) << name;
    }
    const auto is_there = [&names](const std::string &name) { return has(names, name); };
    EXPECT_TRUE(change.kept.empty() || std::any_of(change.kept.begin(), change.kept.end(), is_there));
    EXPECT_EQ(without_directory(file.bytes()), without_directory(before));
    return reached;
}

void fail_each_write(FileFault fault, bool onward)
{
    for (const Change &change : changes()) {
        uint32_t n = 1;
        while (n < most_writes && fail_write(change, fault, n, onward)) n++;
        EXPECT_EQ(n, directory_end - directory_start + 1) << change.name << ": a write for each record";
    }
}

}

TEST(PluginFaults, FailedWriteIsToldAndLosesNoOtherFile)
{
    fail_each_write(FileFault::write, false);
}

TEST(PluginFaults, FailedWritesFromOneOnAreToldAndLoseNoOtherFile)
{
    fail_each_write(FileFault::write, true);
}

TEST(PluginFaults, ShortWriteIsToldAndLosesNoOtherFile)
{
    fail_each_write(FileFault::short_write, false);
}

TEST(PluginFaults, FirstWriteFailedLeavesTheImageUntouched)
{
    for (const Change &change : changes()) {
        const Bytes before = lif_image(lif_volume_with_files(file_count));
        const TemporaryFile file(before);
        PluginHost host(file.path());
        begin_operation();
        FileFaults faults(FileFault::write, 1);
        EXPECT_EQ(change.run(), change.failed) << change.name;
        EXPECT_EQ(file.bytes(), before) << change.name;
    }
}

TEST(PluginFaults, FailedSeekBeforeAWriteIsToldToo)
{
    for (const Change &change : changes()) {
        const TemporaryFile file(lif_image(lif_volume_with_files(file_count)));
        PluginHost host(file.path());
        begin_operation();
        {
            FileFaults faults(FileFault::seek, 1, true);
            EXPECT_EQ(change.run(), change.failed) << change.name;
        }
        EXPECT_FALSE(host.messages.empty()) << change.name;
        EXPECT_EQ(names_after_reopening(), all_names()) << change.name;
    }
}

TEST(PluginFaults, ListingOfAnImageThatCantBeReadEndsInWordsOrAShorterList)
{
    const TemporaryFile file(lif_image(lif_volume_with_files(file_count)));
    uint32_t n = 1;
    for (bool reached = true; reached && n < most_writes; n++) {
        PluginHost host(file.path());
        FileFaults faults(FileFault::read, n);
        const Names names = listed_names();
        reached = faults.reached;
        const Names all = all_names();
        EXPECT_TRUE(std::equal(names.begin(), names.end(), all.begin())) << "read " << n;
        EXPECT_TRUE(!names.empty() || !host.messages.empty()) << "read " << n;
        EXPECT_TRUE(reached || names == all);
    }
    EXPECT_LT(n, most_writes);
}

TEST(PluginFaults, OutOfMemoryEndsInWordsOrAShorterList)
{
    const TemporaryFile file(lif_image(lif_volume_with_files(file_count)));
    uint32_t n = 1;
    for (bool reached = true; reached && n < most_writes; n++) {
        PluginHost host(file.path());
        HeapFaults faults(n);
        const Names names = listed_names();
        reached = faults.reached;
        const Names all = all_names();
        EXPECT_TRUE(reached || names == all);
        EXPECT_TRUE(std::equal(names.begin(), names.end(), all.begin())) << "allocation " << n;
        EXPECT_TRUE(plugin.medium != nullptr || host.messages.back() == "Out of memory") << "allocation " << n;
        end_operation();
        EXPECT_EQ(faults.releases, faults.allocations - (reached ? 1 : 0));
    }
    EXPECT_LT(n, most_writes);
}
