// Conversion between wide and ANSI names, and the wide calls' own names and handles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::content;
using tests::exists;
using tests::Scratch;

std::string narrow(const std::wstring &source, size_t size = 100)
{
    std::string target(size + 4, '#');
    const int32_t length = platform_wide_to_ansi(target.data(), size, source.c_str());
    EXPECT_EQ(target.substr(size), "####");
    EXPECT_EQ(static_cast<size_t>(length), strlen(target.c_str()));
    target.resize(strlen(target.c_str()));
    return target;
}

std::wstring wide(const std::string &source, size_t size = 100)
{
    std::wstring target(size + 4, L'#');
    const int32_t length = platform_ansi_to_wide(target.data(), size, source.c_str());
    EXPECT_EQ(target.substr(size), L"####");
    EXPECT_EQ(static_cast<size_t>(length), wcslen(target.c_str()));
    target.resize(wcslen(target.c_str()));
    return target;
}

TEST(PlatformWide, PlainTextBothWays)
{
    EXPECT_EQ(narrow(L"Name 9845.lif"), "Name 9845.lif");
    EXPECT_EQ(wide("Name 9845.lif"), L"Name 9845.lif");
    EXPECT_EQ(narrow(L""), "");
    EXPECT_EQ(wide(""), L"");
}

TEST(PlatformWide, TextIsCutToItsRoom)
{
    for (size_t size = 1; size < 9; ++size) {
        EXPECT_EQ(narrow(L"abcdef", size), std::string("abcdef").substr(0, std::min<size_t>(6, size - 1)));
        EXPECT_EQ(wide("abcdef", size), std::wstring(L"abcdef").substr(0, std::min<size_t>(6, size - 1)));
    }
    char byte = '#';
    wchar_t character = L'#';
    EXPECT_EQ(platform_wide_to_ansi(&byte, 0, L"abc"), 0);
    EXPECT_EQ(platform_ansi_to_wide(&character, 0, "abc"), 0);
    EXPECT_EQ(byte, '#');
    EXPECT_EQ(character, L'#');
}

TEST(PlatformWide, LatinLettersComeBack)
{
    EXPECT_EQ(wide(narrow(L"M\u00fcller")), L"M\u00fcller");
}

TEST(PlatformWide, CreateFileByDisposition)
{
    const struct {
        const char *name;
        uint32_t disposition;
        bool on_missing;
        bool on_existing;
        const char *kept;
    } rows[] = {
        {"create new", 1, true, false, "old"},     {"create always", 2, true, true, ""},
        {"open existing", 3, false, true, "old"},  {"open always", 4, true, true, "old"},
        {"truncate existing", 5, false, true, ""}, {"none", 0, false, false, "old"},
        {"beyond", 6, false, false, "old"},
    };
    for (const auto &row : rows) {
        const Scratch scratch;
        const std::string old = scratch.file("old", "old");
        void *made = platform_create_file_a(scratch.path("new").c_str(), 0xc0000000, 3, row.disposition, 0x80);
        EXPECT_EQ(made != platform_no_handle(), row.on_missing) << row.name;
        EXPECT_EQ(exists(scratch.path("new")), row.on_missing) << row.name;
        void *opened = platform_create_file_a(old.c_str(), 0xc0000000, 3, row.disposition, 0x80);
        EXPECT_EQ(opened != platform_no_handle(), row.on_existing) << row.name;
        EXPECT_EQ(content(old), row.kept) << row.name;
        if (made != platform_no_handle()) platform_close_handle(made);
        if (opened != platform_no_handle()) platform_close_handle(opened);
    }
}

TEST(PlatformWide, HandlesAreThoseOfTheOtherFileCalls)
{
    const Scratch scratch;
    void *handle = platform_create_file_a(scratch.path("f").c_str(), 0x40000000, 3, 2, 0x80000000);
    ASSERT_NE(handle, platform_no_handle());
    EXPECT_EQ(platform_write(reinterpret_cast<PlatformFile>(handle), "abc", 3), 3);
    char byte;
    EXPECT_EQ(platform_read(reinterpret_cast<PlatformFile>(handle), &byte, 1), -1); // write access alone
    platform_close_handle(handle);
    EXPECT_EQ(content(scratch.path("f")), "abc");
}

TEST(PlatformWide, CopyOverAndBesideExistingFiles)
{
    const Scratch scratch;
    const std::string from = scratch.file("a", std::string(100000, 'a'));
    const std::string to = scratch.file("b", std::string(200000, 'b'));
    EXPECT_EQ(platform_copy_file_a(from.c_str(), to.c_str(), 1), 0);
    EXPECT_EQ(content(to).size(), 200000u);
    EXPECT_NE(platform_copy_file_a(from.c_str(), to.c_str(), 0), 0);
    EXPECT_EQ(content(to), content(from));
    EXPECT_NE(platform_copy_file_a(from.c_str(), scratch.path("c").c_str(), 1), 0);
    EXPECT_EQ(content(scratch.path("c")), content(from));
    EXPECT_EQ(platform_copy_file_a(scratch.path("none").c_str(), scratch.path("d").c_str(), 0), 0);
    EXPECT_FALSE(exists(scratch.path("d")));
}

TEST(PlatformWide, CopyOfAFileOntoItselfLosesNothing)
{
    const Scratch scratch;
    const std::string path = scratch.file("a", "abc");
    EXPECT_EQ(platform_copy_file_a(path.c_str(), path.c_str(), 0), 0);
    EXPECT_EQ(content(path), "abc");
}

#ifndef _WIN32

TEST(PosixUtf8, CharactersOfEachLength)
{
    const struct {
        const char *name;
        std::wstring wide;
        std::string narrow;
    } rows[] = {
        {"one byte", L"A", "A"},
        {"first of two", L"\u0080", "\xc2\x80"},
        {"last of two", L"\u07ff", "\xdf\xbf"},
        {"first of three", L"\u0800", "\xe0\xa0\x80"},
        {"last of three", L"\uffff", "\xef\xbf\xbf"},
        {"first of four", L"\U00010000", "\xf0\x90\x80\x80"},
        {"last of all", L"\U0010ffff", "\xf4\x8f\xbf\xbf"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(narrow(row.wide), row.narrow) << row.name;
        EXPECT_EQ(wide(row.narrow), row.wide) << row.name;
    }
}

TEST(PosixUtf8, BytesThatAreNoCharacterComeBackAsTheyWere)
{
    const struct {
        const char *name;
        std::string bytes;
        size_t characters;
    } rows[] = {
        {"a later byte alone", "a\x80z", 3},
        {"too long a form", "\xc0\xaf", 2},
        {"too long a form of three", "\xe0\x80\xaf", 3},
        {"a surrogate", "\xed\xa0\x80", 3},
        {"beyond all characters", "\xf4\x90\x80\x80", 4},
        {"no first byte", "\xff\xfe", 2},
        {"cut off", "\xe2\x82", 2},
        {"cut off by another", "\xe2\x41", 2},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(wide(row.bytes).size(), row.characters) << row.name;
        EXPECT_EQ(narrow(wide(row.bytes)), row.bytes) << row.name;
    }
}

TEST(PosixUtf8, WideCharactersThatAreNoneBecomeTheReplacement)
{
    const std::wstring none = {static_cast<wchar_t>(0xd800), static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
    EXPECT_EQ(narrow(none), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(PosixUtf8, NoCharacterIsCutInTwo)
{
    EXPECT_EQ(narrow(L"a\u20acz", 5), "a\xe2\x82\xac");
    EXPECT_EQ(narrow(L"a\u20acz", 4), "a");
    EXPECT_EQ(wide("a\xe2\x82\xacz", 3), L"a\u20ac");
}

TEST(PosixWide, MarkOfLongNamesIsTakenOff)
{
    const Scratch scratch;
    const std::string folder = scratch.path(std::string(200, 'd'));
    const std::string path = folder + "/" + std::string(200, 'f');
    ASSERT_TRUE(platform_create_directory(folder.c_str()));
    void *handle = platform_create_file_w((L"\\\\?\\" + wide(path, 600)).c_str(), 0x40000000, 3, 1, 0);
    EXPECT_NE(handle, platform_no_handle());
    if (handle != platform_no_handle()) platform_close_handle(handle);
    EXPECT_TRUE(exists(path));
    const std::wstring unmarked = L"\\\\?\\short"; // not a lengthened one: a name like any other
    EXPECT_EQ(platform_delete_file_w(unmarked.c_str()), 0);
    EXPECT_NE(platform_delete_file_w(wide(path, 600).c_str()), 0);
    EXPECT_FALSE(exists(path));
}

TEST(PosixWide, NameLongerThanThePathLimitFails)
{
    platform_set_last_error(0);
    EXPECT_EQ(platform_delete_file_w(std::wstring(5000, L'x').c_str()), 0);
    EXPECT_EQ(platform_last_error(), 36u);
    EXPECT_EQ(platform_create_file_w(std::wstring(4096, L'x').c_str(), 0x40000000, 3, 2, 0), platform_no_handle());
    EXPECT_EQ(platform_last_error(), 36u);
}

TEST(PosixWide, ReadOnlyAttributeIsThePermissionToWrite)
{
    namespace fs = std::filesystem;
    const Scratch scratch;
    const std::string path = scratch.file("f", "abc");
    fs::permissions(path, static_cast<fs::perms>(0664));
    EXPECT_NE(platform_set_attributes_a(path.c_str(), 0x21), 0);
    EXPECT_EQ(fs::status(path).permissions(), static_cast<fs::perms>(0444));
    EXPECT_NE(platform_set_attributes_a(path.c_str(), 0x20), 0);
    EXPECT_EQ(fs::status(path).permissions(), static_cast<fs::perms>(0644));
    EXPECT_EQ(platform_set_attributes_a(scratch.path("none").c_str(), 1), 0);
    const fs::perms before = fs::status(scratch.folder()).permissions();
    EXPECT_NE(platform_set_attributes_a(scratch.folder().c_str(), 1), 0);
    EXPECT_EQ(fs::status(scratch.folder()).permissions(), before); // files could no longer be made in it
}

#endif

} // namespace
