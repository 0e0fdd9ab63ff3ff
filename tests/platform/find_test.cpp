// Finding files by a pattern.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::Scratch;
using Names = std::set<std::string>;

Names found(const std::string &pattern)
{
    Names names;
    FindDataA data;
    void *handle = platform_find_first_a(pattern.c_str(), &data);
    if (handle == platform_no_handle()) return names;
    do {
        names.insert(data.name);
    } while (platform_find_next_a(handle, &data) != 0);
    EXPECT_NE(platform_last_error(), 0u);
    platform_find_close(handle);
    return names;
}

TEST(PlatformFind, PatternsInTheLastComponent)
{
    const Scratch scratch;
    for (const char *name : {"one.lif", "two.lif", "three", "a[1].txt"}) scratch.file(name, "x");
    const struct {
        const char *pattern;
        Names names;
    } rows[] = {
        {"*", {".", "..", "one.lif", "two.lif", "three", "a[1].txt"}},
        {"*.*", {".", "..", "one.lif", "two.lif", "three", "a[1].txt"}},
        {"*.lif", {"one.lif", "two.lif"}},
        {"t*", {"two.lif", "three"}},
        {"?hree", {"three"}},
        {"one.lif", {"one.lif"}},
        {"a[1].txt", {"a[1].txt"}},
        {"a[1]*", {"a[1].txt"}},
        {"none*", {}},
        {"", {}},
    };
    for (const auto &row : rows) EXPECT_EQ(found(scratch.path(row.pattern)), row.names) << row.pattern;
}

TEST(PlatformFind, NothingFoundIsTheLastError)
{
    const Scratch scratch;
    FindDataA data;
    platform_set_last_error(0);
    EXPECT_EQ(platform_find_first_a(scratch.path("none").c_str(), &data), platform_no_handle());
    EXPECT_EQ(platform_last_error(), 2u); // no such file, on both systems
    platform_set_last_error(0);
    EXPECT_EQ(platform_find_first_a(scratch.path("none/*").c_str(), &data), platform_no_handle());
    EXPECT_NE(platform_last_error(), 0u);
    EXPECT_EQ(platform_find_first_a("", &data), platform_no_handle());
}

TEST(PlatformFind, DataOfAFileAndAFolder)
{
    const Scratch scratch;
    const std::string path = scratch.file("f.lif", std::string(1234, 'x'));
    const SystemTime local = {1984, 3, 4, 15, 9, 7, 30, 0};
    int64_t time = 0;
    {
        const tests::Opened opened(path);
        ASSERT_TRUE(platform_file_time(&local, &time) && platform_set_times(opened.file, time));
    }
    FindDataA data;
    void *handle = platform_find_first_a(path.c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    platform_find_close(handle);
    EXPECT_EQ(data.attributes & 0x11u, 0u);
    EXPECT_EQ(data.size_high, 0u);
    EXPECT_EQ(data.size_low, 1234u);
    EXPECT_EQ(int64_t{data.write_time[1]} << 32 | data.write_time[0], time);
    EXPECT_STREQ(data.name, "f.lif");
    std::filesystem::create_directory(scratch.path("d"));
    handle = platform_find_first_a(scratch.path("d").c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    platform_find_close(handle);
    EXPECT_EQ(data.attributes & 0x10u, 0x10u);
}

TEST(PlatformFind, WideFindsTheSame)
{
    const Scratch scratch;
    scratch.file("one", "x");
    scratch.file("two", "x");
    FindDataW data;
    void *handle = platform_find_first_w(std::filesystem::path(scratch.path("*o*")).wstring().c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    std::set<std::wstring> names = {data.name};
    while (platform_find_next_w(handle, &data) != 0) names.insert(data.name);
    platform_find_close(handle);
    EXPECT_EQ(names, (std::set<std::wstring>{L"one", L"two"}));
    EXPECT_EQ(data.size_low, 1u);
}

#ifndef _WIN32

uint32_t attributes_of(const std::string &path)
{
    FindDataA data;
    void *handle = platform_find_first_a(path.c_str(), &data);
    EXPECT_NE(handle, platform_no_handle());
    platform_find_close(handle);
    return data.attributes;
}

TEST(PosixFind, AttributesOfNamesAndPermissions)
{
    const Scratch scratch;
    EXPECT_EQ(attributes_of(scratch.file("f", "")), 0x20u);
    EXPECT_EQ(attributes_of(scratch.file(".f", "")), 0x22u);
    std::filesystem::permissions(scratch.path("f"), std::filesystem::perms::owner_read);
    EXPECT_EQ(attributes_of(scratch.path("f")), 0x21u);
    EXPECT_EQ(attributes_of(scratch.path(".")), 0x10u);
}

TEST(PosixFind, DanglingLinkIsFoundAsItself)
{
    const Scratch scratch;
    std::filesystem::create_symlink("none", scratch.path("link"));
    EXPECT_EQ(found(scratch.path("l*")), Names{"link"});
}

TEST(PosixFind, NameThatIsNoUtf8OpensAsItWasFound)
{
    const Scratch scratch;
    scratch.file("n\xe4me", "x");
    FindDataW data;
    void *handle = platform_find_first_w(std::filesystem::path(scratch.path("n*")).wstring().c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    platform_find_close(handle);
    const std::wstring path = std::filesystem::path(scratch.folder()).wstring() + L"/" + data.name;
    EXPECT_NE(platform_delete_file_w(path.c_str()), 0);
    EXPECT_EQ(found(scratch.path("n*")), Names{});
}

TEST(PosixFind, RootAndPresentFolder)
{
    EXPECT_TRUE(found("/tm*").contains("tmp"));
    EXPECT_TRUE(found("*").contains("."));
    EXPECT_EQ(found("/"), Names{});
}

TEST(PosixFind, SizeBeyond4GiB)
{
    const Scratch scratch;
    std::filesystem::resize_file(scratch.file("f", ""), 0x140000005);
    FindDataA data;
    void *handle = platform_find_first_a(scratch.path("f").c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    platform_find_close(handle);
    EXPECT_EQ(data.size_high, 1u);
    EXPECT_EQ(data.size_low, 0x40000005u);
}

#endif

} // namespace
