// The wide file calls, by wide names and by ANSI names.
#include "base/wide.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::content;
using tests::exists;
using tests::Scratch;

constexpr uint32_t access_both = 0xc0000000;
constexpr uint32_t share_all = 3;
constexpr uint32_t create_new = 1;
constexpr uint32_t open_existing = 3;

std::wstring wide(const std::string &path)
{
    return std::filesystem::path(path).make_preferred().wstring();
}

// ---- names ---------------------------------------------------------------------------------------------

TEST(WideNames, UsysAsksOnce)
{
    const int32_t kept = usysychecked;
    usysychecked = 0;
    EXPECT_EQ(usys(), 1);
    EXPECT_EQ(usysychecked, 1);
    usysychecked = 2;
    EXPECT_EQ(usys(), 0);
    EXPECT_EQ(usysychecked, 2);
    usysychecked = kept;
}

TEST(WideNames, CopiesAreTerminatedAtTheLastIndex)
{
    char narrow[8];
    wchar_t broad[8];
    for (int32_t last = 0; last < 7; ++last) {
        memset(narrow, '#', sizeof(narrow));
        wmemset(broad, L'#', 8);
        EXPECT_EQ(walcopy(narrow, L"abcdefgh", last), narrow);
        EXPECT_EQ(awlcopy(broad, "abcdefgh", last), broad);
        const auto length = static_cast<size_t>(last);
        EXPECT_EQ(std::string(narrow), std::string("abcdefgh").substr(0, length));
        EXPECT_EQ(std::wstring(broad), std::wstring(L"abcdefgh").substr(0, length));
        EXPECT_EQ(narrow[length + 1], '#');
        EXPECT_EQ(broad[length + 1], L'#');
    }
    EXPECT_STREQ(walcopy(narrow, L"ab", 7), "ab");
    EXPECT_STREQ(awlcopy(broad, "ab", 7), L"ab");
}

TEST(WideNames, MissingSourceYieldsNull)
{
    char narrow[2] = "#";
    wchar_t broad[2] = L"#";
    EXPECT_EQ(walcopy(narrow, nullptr, 1), nullptr);
    EXPECT_EQ(walcopy(nullptr, L"a", 1), nullptr);
    EXPECT_EQ(awlcopy(broad, nullptr, 1), nullptr);
    EXPECT_EQ(awlcopy(nullptr, "a", 1), nullptr);
    EXPECT_EQ(walcopy(narrow, L"a", -1), narrow);
    EXPECT_EQ(awlcopy(broad, "a", -1), broad);
    EXPECT_STREQ(narrow, "#");
    EXPECT_STREQ(broad, L"#");
}

TEST(WideNames, BoundedCopyAndAppend)
{
    const struct {
        const char *name;
        const wchar_t *start;
        const wchar_t *more;
        size_t size;
        const wchar_t *copied;
        const wchar_t *appended;
        size_t length; // of the appended text, had it all been taken
    } rows[] = {
        {"room for all", L"ab", L"cde", 8, L"cde", L"abcde", 5},
        {"exactly", L"ab", L"cde", 6, L"cde", L"abcde", 5},
        {"one short", L"ab", L"cde", 5, L"cde", L"abcd", 5},
        {"full before", L"ab", L"cde", 3, L"cd", L"ab", 5},
        {"nothing", L"ab", L"", 3, L"", L"ab", 2},
        {"one character", L"", L"cde", 1, L"", L"", 3},
    };
    for (const auto &row : rows) {
        wchar_t text[10];
        wmemset(text, L'#', 10);
        EXPECT_EQ(wcslcpy(text, row.more, row.size), wcslen(row.more)) << row.name;
        EXPECT_STREQ(text, row.copied) << row.name;
        wmemset(text, L'#', 10);
        wmemcpy(text, row.start, wcslen(row.start) + 1);
        EXPECT_EQ(wcslcat(text, row.more, row.size), row.length) << row.name;
        EXPECT_STREQ(text, row.appended) << row.name;
        EXPECT_EQ(text[row.size], L'#') << row.name;
    }
    wchar_t untouched[] = L"###";
    EXPECT_EQ(wcslcpy(untouched, L"ab", 0), 2u);
    EXPECT_EQ(wcslcat(untouched, L"ab", 2), 4u); // no end within two characters
    EXPECT_STREQ(untouched, L"###");
}

std::wstring lengthened(const std::wstring &name, int32_t max_len, int32_t expected)
{
    std::wstring out(static_cast<size_t>(max_len) + 2, L'#');
    EXPECT_EQ(MakeExtraLongNameW(out.data(), name.c_str(), max_len), expected) << name.size();
    EXPECT_EQ(out[static_cast<size_t>(max_len)], L'#') << name.size();
    out.resize(wcslen(out.c_str()));
    return out;
}

TEST(WideNames, LongNamesAreLengthened)
{
    const std::wstring longest_plain = L"C:\\" + std::wstring(256, L'x');
    const std::wstring shortest_long = L"C:\\" + std::wstring(257, L'x');
    const std::wstring plain_share = L"\\\\host\\" + std::wstring(252, L'x');
    const std::wstring long_share = L"\\\\host\\" + std::wstring(253, L'x');
    EXPECT_EQ(lengthened(L"", 1029, 1), L"");
    EXPECT_EQ(lengthened(L"a.lif", 1029, 1), L"a.lif");
    EXPECT_EQ(lengthened(longest_plain, 1029, 1), longest_plain);
    EXPECT_EQ(lengthened(shortest_long, 1029, 1), L"\\\\?\\" + shortest_long);
    EXPECT_EQ(lengthened(plain_share, 1029, 1), plain_share);
    EXPECT_EQ(lengthened(long_share, 1029, 1), L"\\\\?\\UNC" + long_share.substr(1));
    EXPECT_EQ(MakeExtraLongNameW(nullptr, L"a", 10), 0);
    wchar_t out[2] = L"#";
    EXPECT_EQ(MakeExtraLongNameW(out, nullptr, 2), 0);
    EXPECT_EQ(MakeExtraLongNameW(out, L"a", 0), 0);
    EXPECT_STREQ(out, L"#");
}

TEST(WideNames, Hazard_A9_NothingRunsOverWhenTheNameDoesNotFit)
{
    const std::wstring name(300, L'x');
    const std::wstring share = L"\\\\" + std::wstring(298, L'x');
    EXPECT_EQ(lengthened(name, 305, 1), L"\\\\?\\" + name);
    EXPECT_EQ(lengthened(name, 304, 0), (L"\\\\?\\" + name).substr(0, 303)); // no room for the terminator
    EXPECT_EQ(lengthened(name, 303, 0), (L"\\\\?\\" + name).substr(0, 302));
    for (const int32_t size : {304, 305, 306}) lengthened(share, size, 0);
    EXPECT_EQ(lengthened(share, 307, 1), L"\\\\?\\UNC" + share.substr(1));
    EXPECT_EQ(lengthened(name, 2, 0), L"\\");
    EXPECT_EQ(lengthened(name, 1, 0), L"");
}

TEST(WideNames, KeepsRoomForThePrefix)
{
    EXPECT_EQ(lengthened(L"abcd", 8, 1), L"abcd");
    EXPECT_EQ(lengthened(L"abcd", 7, 0), L"abcd"); // it would fit
}

TEST(WideNames, FindRecordsBothWays)
{
    FindDataW broad = {};
    broad.attributes = 0x21;
    broad.creation_time[0] = 1;
    broad.creation_time[1] = 2;
    broad.access_time[0] = 3;
    broad.access_time[1] = 4;
    broad.write_time[0] = 5;
    broad.write_time[1] = 6;
    broad.size_high = 7;
    broad.size_low = 8;
    broad.reserved[0] = 9;
    broad.reserved[1] = 10;
    wcslcpy(broad.name, L"long name.lif", 260);
    wcslcpy(broad.alternate_name, L"LONGNA~1.LIF", 14);
    FindDataA narrow;
    memset(&narrow, '#', sizeof(narrow));
    copyfinddatawa(&narrow, &broad);
    EXPECT_EQ(memcmp(&narrow, &broad, offsetof(FindDataA, name)), 0);
    EXPECT_STREQ(narrow.name, "long name.lif");
    EXPECT_STREQ(narrow.alternate_name, "LONGNA~1.LIF");
    FindDataW again;
    memset(&again, '#', sizeof(again));
    copyfinddataaw(&again, &narrow);
    EXPECT_EQ(memcmp(&again, &broad, offsetof(FindDataW, name)), 0);
    EXPECT_STREQ(again.name, broad.name);
    EXPECT_STREQ(again.alternate_name, broad.alternate_name);
}

TEST(WideNames, FullFieldsOfFindRecordsAreCutAndTerminated)
{
    FindDataW broad = {};
    FindDataA narrow = {};
    wmemset(broad.name, L'n', std::size(broad.name)); // no terminator at all
    wmemset(broad.alternate_name, L'a', std::size(broad.alternate_name));
    copyfinddatawa(&narrow, &broad);
    EXPECT_EQ(std::string(narrow.name), std::string(259, 'n'));
    EXPECT_EQ(std::string(narrow.alternate_name), std::string(13, 'a'));
    memset(narrow.name, 'n', std::size(narrow.name));
    memset(narrow.alternate_name, 'a', std::size(narrow.alternate_name));
    copyfinddataaw(&broad, &narrow);
    EXPECT_EQ(std::wstring(broad.name), std::wstring(259, L'n'));
    EXPECT_EQ(std::wstring(broad.alternate_name), std::wstring(13, L'a'));
}

// ---- file calls, each way ------------------------------------------------------------------------------

class WideCalls : public testing::TestWithParam<int32_t>
{
  protected:
    WideCalls()
    {
        usysychecked = GetParam();
    }
    ~WideCalls() override
    {
        usysychecked = kept;
    }

    std::wstring path(std::string_view name) const
    {
        return wide(scratch.path(name));
    }

    const int32_t kept = usysychecked;
    const Scratch scratch;
};

TEST_P(WideCalls, CopyMoveAndDelete)
{
    scratch.file("a", "abc");
    EXPECT_NE(CopyFileT(path("a").c_str(), path("b").c_str(), 1), 0);
    EXPECT_EQ(CopyFileT(path("a").c_str(), path("b").c_str(), 1), 0);
    EXPECT_NE(CopyFileT(path("a").c_str(), path("b").c_str(), 0), 0);
    EXPECT_EQ(content(scratch.path("b")), "abc");
    EXPECT_NE(MoveFileT(path("b").c_str(), path("c").c_str()), 0);
    EXPECT_FALSE(exists(scratch.path("b")));
    EXPECT_EQ(MoveFileT(path("a").c_str(), path("c").c_str()), 0);
    EXPECT_NE(DeleteFileT(path("c").c_str()), 0);
    EXPECT_EQ(DeleteFileT(path("c").c_str()), 0);
    EXPECT_TRUE(exists(scratch.path("a")));
}

TEST_P(WideCalls, Folders)
{
    EXPECT_NE(CreateDirectoryT(path("d").c_str(), nullptr), 0);
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("d")));
    EXPECT_EQ(CreateDirectoryT(path("d").c_str(), nullptr), 0);
    scratch.file("d/f", "abc");
    EXPECT_EQ(RemoveDirectoryT(path("d").c_str()), 0); // it isn't empty
    EXPECT_NE(DeleteFileT(path("d/f").c_str()), 0);
    EXPECT_NE(RemoveDirectoryT(path("d").c_str()), 0);
    EXPECT_FALSE(exists(scratch.path("d")));
}

TEST_P(WideCalls, Attributes)
{
    const std::string made = scratch.file("f", "abc");
    const auto writable = [&] {
        return (std::filesystem::status(made).permissions() & std::filesystem::perms::owner_write) !=
               std::filesystem::perms::none;
    };
    EXPECT_NE(SetFileAttributesT(path("f").c_str(), 0x21), 0);
    EXPECT_FALSE(writable());
    EXPECT_NE(SetFileAttributesT(path("f").c_str(), 0x20), 0);
    EXPECT_TRUE(writable());
    EXPECT_EQ(SetFileAttributesT(path("none").c_str(), 0x20), 0);
}

TEST_P(WideCalls, CreatedFileIsAHandle)
{
    void *handle = CreateFileT(path("f").c_str(), access_both, share_all, nullptr, create_new, 0x80, nullptr);
    ASSERT_NE(handle, platform_no_handle());
    EXPECT_EQ(platform_write(reinterpret_cast<PlatformFile>(handle), "abc", 3), 3);
    platform_close_handle(handle);
    EXPECT_EQ(content(scratch.path("f")), "abc");
    EXPECT_EQ(CreateFileT(path("f").c_str(), access_both, share_all, nullptr, create_new, 0x80, nullptr),
              platform_no_handle());
    EXPECT_EQ(CreateFileT(path("none").c_str(), access_both, share_all, nullptr, open_existing, 0x80, nullptr),
              platform_no_handle());
}

TEST_P(WideCalls, FindsFilesWithTheirData)
{
    scratch.file("one.lif", "x");
    scratch.file("two.lif", "xy");
    scratch.file("three", "xyz");
    FindDataW data;
    void *handle = FindFirstFileT(path("*.lif").c_str(), &data);
    ASSERT_NE(handle, platform_no_handle());
    std::set<std::pair<std::wstring, uint32_t>> found = {{data.name, data.size_low}};
    while (FindNextFileT(handle, &data) != 0) found.insert({data.name, data.size_low});
    platform_find_close(handle);
    EXPECT_EQ(found, (std::set<std::pair<std::wstring, uint32_t>>{{L"one.lif", 1}, {L"two.lif", 2}}));
    EXPECT_EQ(FindFirstFileT(path("none").c_str(), &data), platform_no_handle());
}

TEST_P(WideCalls, IconsOfAFileWithoutAny)
{
    scratch.file("f", "abc");
    void *large = nullptr;
    void *small = nullptr;
    EXPECT_EQ(ExtractIconExT(path("f").c_str(), 0, &large, &small, 1), 0u);
    EXPECT_EQ(ExtractIconExT(nullptr, 0, &large, &small, 1), 0u);
}

void expect_all_fail(const wchar_t *name, const wchar_t *good)
{
    FindDataW data;
    EXPECT_EQ(CopyFileT(good, name, 0), 0);
    EXPECT_EQ(CopyFileT(name, good, 0), 0);
    EXPECT_EQ(MoveFileT(good, name), 0);
    EXPECT_EQ(MoveFileT(name, good), 0);
    EXPECT_EQ(CreateDirectoryT(name, nullptr), 0);
    EXPECT_EQ(RemoveDirectoryT(name), 0);
    EXPECT_EQ(DeleteFileT(name), 0);
    EXPECT_EQ(SetFileAttributesT(name, 0x20), 0);
    EXPECT_EQ(CreateFileT(name, access_both, share_all, nullptr, create_new, 0, nullptr), platform_no_handle());
    EXPECT_EQ(FindFirstFileT(name, &data), platform_no_handle());
}

TEST_P(WideCalls, MissingAndEndlessNamesFail)
{
    scratch.file("good", "abc");
    const std::wstring good = path("good");
    expect_all_fail(nullptr, good.c_str());
    expect_all_fail(std::wstring(1026, L'x').c_str(), good.c_str());
    expect_all_fail(std::wstring(20000, L'x').c_str(), good.c_str());
    EXPECT_EQ(content(scratch.path("good")), "abc");
}

TEST_P(WideCalls, NameCutTo259BytesIsNotAnotherFilesName)
{
    std::string shorter = scratch.path("");
    while (shorter.size() + 100 < 259) { // folders, as no component may be that long
        shorter += std::string(60, 'd');
        std::filesystem::create_directory(shorter);
        shorter += static_cast<char>(std::filesystem::path::preferred_separator);
    }
    shorter += std::string(259 - shorter.size(), 'f');
    const std::wstring victim = wide(shorter);
    ASSERT_EQ(victim.size(), 259u);
    void *handle = CreateFileT(victim.c_str(), access_both, share_all, nullptr, create_new, 0, nullptr);
    ASSERT_NE(handle, platform_no_handle());
    platform_close_handle(handle);
    EXPECT_EQ(DeleteFileT((victim + L"g").c_str()), 0);
    EXPECT_NE(DeleteFileT(victim.c_str()), 0); // it was still there
}

INSTANTIATE_TEST_SUITE_P(EachWay, WideCalls, testing::Values(1, 2),
                         [](const auto &way) { return way.param == 1 ? "Wide" : "Ansi"; });

TEST(WideLongNames, AllCallsTakeThem)
{
    const Scratch scratch;
    const int32_t kept = usysychecked;
    usysychecked = 1;
    const std::wstring separator(1, static_cast<wchar_t>(std::filesystem::path::preferred_separator));
    const std::wstring outer = wide(scratch.path(std::string(150, 'd')));
    const std::wstring inner = outer + separator + std::wstring(150, L'e');
    const std::wstring file = inner + separator + L"one.lif";
    const std::wstring copy = inner + separator + L"two.lif";
    const std::wstring moved = inner + separator + L"three.lif";
    ASSERT_GT(inner.size(), 300u);
    EXPECT_NE(CreateDirectoryT(outer.c_str(), nullptr), 0);
    EXPECT_NE(CreateDirectoryT(inner.c_str(), nullptr), 0);
    void *handle = CreateFileT(file.c_str(), access_both, share_all, nullptr, create_new, 0x80, nullptr);
    EXPECT_NE(handle, platform_no_handle());
    if (handle != platform_no_handle()) platform_close_handle(handle);
    EXPECT_NE(CopyFileT(file.c_str(), copy.c_str(), 1), 0);
    EXPECT_NE(MoveFileT(copy.c_str(), moved.c_str()), 0);
    EXPECT_NE(SetFileAttributesT(moved.c_str(), 0x20), 0);
    FindDataW data;
    std::set<std::wstring> found;
    handle = FindFirstFileT((inner + separator + L"*.lif").c_str(), &data);
    EXPECT_NE(handle, platform_no_handle());
    if (handle != platform_no_handle()) {
        do found.insert(data.name);
        while (FindNextFileT(handle, &data) != 0);
        platform_find_close(handle);
    }
    EXPECT_EQ(found, (std::set<std::wstring>{L"one.lif", L"three.lif"}));
    EXPECT_NE(DeleteFileT(file.c_str()), 0);
    EXPECT_NE(DeleteFileT(moved.c_str()), 0);
    EXPECT_NE(RemoveDirectoryT(inner.c_str()), 0);
    EXPECT_NE(RemoveDirectoryT(outer.c_str()), 0);
    EXPECT_FALSE(exists(scratch.path(std::string(150, 'd'))));
    usysychecked = kept;
}

} // namespace
