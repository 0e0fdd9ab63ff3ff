// Open files, as both systems have them.
#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::content;
using tests::Opened;
using tests::Scratch;

constexpr uint32_t no_such_file = 2; // the number on both systems

bool opens(const std::string &path, bool reading, bool writing, OpenMode mode)
{
    PlatformFile file = 0;
    platform_set_last_error(0);
    if (!platform_open(&file, path.c_str(), reading, writing, mode, false)) return false;
    platform_close(file);
    return true;
}

TEST(PlatformFiles, MissingFileIsTheLastError)
{
    const Scratch scratch;
    EXPECT_FALSE(opens(scratch.path("none"), true, false, OpenMode::existing));
    EXPECT_EQ(platform_last_error(), no_such_file);
    EXPECT_FALSE(opens(scratch.path("none"), true, true, OpenMode::existing));
    EXPECT_FALSE(tests::exists(scratch.path("none")));
    PlatformFile file = 0;
    EXPECT_FALSE(platform_open_alone(&file, scratch.path("none").c_str()));
    EXPECT_EQ(platform_last_error(), no_such_file);
}

TEST(PlatformFiles, FolderIsNoFile)
{
    const Scratch scratch;
    const OpenMode modes[] = {OpenMode::existing, OpenMode::create_always, OpenMode::open_or_create};
    for (const OpenMode mode : modes) {
        EXPECT_FALSE(opens(scratch.folder(), true, false, mode)) << static_cast<int>(mode);
        EXPECT_NE(platform_last_error(), 0u);
        EXPECT_FALSE(opens(scratch.folder(), true, true, mode)) << static_cast<int>(mode);
        EXPECT_NE(platform_last_error(), 0u);
    }
}

TEST(PlatformFiles, EachModeMakesOrEmptiesWhatItSays)
{
    const struct {
        const char *name;
        OpenMode mode;
        const char *kept; // of an existing file
        bool makes;
    } rows[] = {
        {"existing", OpenMode::existing, "old", false},
        {"create always", OpenMode::create_always, "", true},
        {"open or create", OpenMode::open_or_create, "old", true},
    };
    for (const auto &row : rows) {
        const Scratch scratch;
        const std::string old = scratch.file("old", "old");
        EXPECT_TRUE(opens(old, true, true, row.mode)) << row.name;
        EXPECT_EQ(content(old), row.kept) << row.name;
        EXPECT_EQ(opens(scratch.path("new"), true, true, row.mode), row.makes) << row.name;
        EXPECT_EQ(tests::exists(scratch.path("new")), row.makes) << row.name;
    }
}

TEST(PlatformFiles, AccessIsWhatWasAskedFor)
{
    const Scratch scratch;
    const std::string path = scratch.file("f", "abc");
    char byte = 'x';
    PlatformFile file = 0;
    ASSERT_TRUE(platform_open(&file, path.c_str(), true, false, OpenMode::existing, false));
    EXPECT_EQ(platform_write(file, &byte, 1), -1);
    EXPECT_EQ(platform_read(file, &byte, 1), 1);
    platform_close(file);
    ASSERT_TRUE(platform_open(&file, path.c_str(), false, true, OpenMode::existing, false));
    EXPECT_EQ(platform_read(file, &byte, 1), -1);
    EXPECT_EQ(platform_write(file, &byte, 1), 1);
    platform_close(file);
    EXPECT_EQ(content(path), "abc");
}

TEST(PlatformFiles, SharedWithOtherReadersAndWriters)
{
    const Scratch scratch;
    const Opened first(scratch.file("f", "abc"));
    const Opened second(scratch.path("f"));
    ASSERT_TRUE(first.good && second.good);
    EXPECT_EQ(platform_write(first.file, "X", 1), 1);
    char byte = 0;
    EXPECT_EQ(platform_read(second.file, &byte, 1), 1);
    EXPECT_EQ(byte, 'X');
}

TEST(PlatformFiles, ReadsAllUpToTheEnd)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", std::string(100000, 'a')));
    std::string buffer(150000, '\0');
    EXPECT_EQ(platform_read(opened.file, buffer.data(), 150000), 100000);
    EXPECT_EQ(buffer.substr(0, 100000), std::string(100000, 'a'));
    EXPECT_EQ(platform_read(opened.file, buffer.data(), 1), 0);
    EXPECT_EQ(platform_read(opened.file, buffer.data(), 0), 0);
}

TEST(PlatformFiles, WritesAllAndNothing)
{
    const Scratch scratch;
    const Opened opened(scratch.path("f"), true, OpenMode::create_always);
    EXPECT_EQ(platform_write(opened.file, "abcdef", 6), 6);
    EXPECT_EQ(platform_write(opened.file, "", 0), 0);
    EXPECT_EQ(content(scratch.path("f")), "abcdef");
}

TEST(PlatformFiles, SeeksFromStartPresentAndEnd)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", "0123456789"));
    EXPECT_EQ(platform_seek(opened.file, 4, SeekFrom::start), 4);
    EXPECT_EQ(platform_seek(opened.file, 3, SeekFrom::current), 7);
    EXPECT_EQ(platform_seek(opened.file, -1, SeekFrom::end), 9);
    char byte = 0;
    EXPECT_EQ(platform_read(opened.file, &byte, 1), 1);
    EXPECT_EQ(byte, '9');
    EXPECT_EQ(platform_seek(opened.file, 100, SeekFrom::start), 100);
    platform_set_last_error(0);
    EXPECT_EQ(platform_seek(opened.file, -1, SeekFrom::start), -1);
    EXPECT_NE(platform_last_error(), 0u);
    EXPECT_EQ(platform_seek(opened.file, 0, SeekFrom::current), 100);
}

TEST(PlatformFiles, EndIsSetAtThePresentPosition)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", "0123456789"));
    platform_seek(opened.file, 4, SeekFrom::start);
    EXPECT_TRUE(platform_set_end(opened.file));
    EXPECT_EQ(content(scratch.path("f")), "0123");
    platform_seek(opened.file, 6, SeekFrom::start);
    EXPECT_TRUE(platform_set_end(opened.file));
    EXPECT_EQ(content(scratch.path("f")), std::string("0123\0\0", 6));
    EXPECT_TRUE(platform_sync(opened.file));
}

TEST(PlatformFiles, SizeAndPositionsBeyond4GiB)
{
    constexpr int64_t far = 0x140000000;
    const Scratch scratch;
    const Opened opened(scratch.path("f"), true, OpenMode::create_always);
    ASSERT_EQ(platform_seek(opened.file, far, SeekFrom::start), far);
    ASSERT_TRUE(platform_set_end(opened.file));
    uint64_t size = 0;
    EXPECT_TRUE(platform_size(opened.file, &size));
    EXPECT_EQ(size, uint64_t{far});
    EXPECT_EQ(platform_seek(opened.file, 0, SeekFrom::end), far);
}

TEST(PlatformFiles, NoFileAndTheVoidHandleFail)
{
    for (const PlatformFile file : {PlatformFile{0}, platform_void_file}) {
        char byte = 0;
        uint64_t size = 0;
        EXPECT_EQ(platform_read(file, &byte, 1), -1);
        EXPECT_EQ(platform_write(file, &byte, 1), -1);
        EXPECT_EQ(platform_seek(file, 0, SeekFrom::start), -1);
        EXPECT_EQ(platform_seek(file, 0, SeekFrom::current), -1);
        EXPECT_FALSE(platform_set_end(file));
        EXPECT_FALSE(platform_sync(file));
        EXPECT_FALSE(platform_is_terminal(file));
        platform_set_last_error(0);
        EXPECT_FALSE(platform_size(file, &size));
        EXPECT_NE(platform_last_error(), 0u);
    }
}

TEST(PlatformFiles, WritethroughWritesTheSame)
{
    const Scratch scratch;
    const std::string path = scratch.path("f");
    PlatformFile file = 0;
    ASSERT_TRUE(platform_open(&file, path.c_str(), true, true, OpenMode::create_always, true));
    EXPECT_EQ(platform_write(file, "abc", 3), 3);
    platform_close(file);
    EXPECT_EQ(content(path), "abc");
}

TEST(PlatformFiles, AloneIsForWritingAnExistingFile)
{
    const Scratch scratch;
    const std::string path = scratch.file("f", "abc");
    PlatformFile file = 0;
    ASSERT_TRUE(platform_open_alone(&file, path.c_str()));
    EXPECT_EQ(platform_write(file, "X", 1), 1);
#ifdef _WIN32
    EXPECT_FALSE(opens(path, true, false, OpenMode::existing)); // this system knows files that nobody else may have
#endif
    platform_close(file);
    EXPECT_EQ(content(path), "Xbc");
}

TEST(PlatformFiles, StandardFilesAreThreeAndNoTerminalIsAFile)
{
    const PlatformFile input = platform_standard_file(StandardFile::input);
    const PlatformFile output = platform_standard_file(StandardFile::output);
    const PlatformFile error = platform_standard_file(StandardFile::error);
    EXPECT_NE(output, 0u);
    EXPECT_TRUE(input != output && output == platform_standard_file(StandardFile::output));
    EXPECT_EQ(platform_write(error, "", 0), 0);
    const Scratch scratch;
    const Opened opened(scratch.file("f", ""));
    EXPECT_FALSE(platform_is_terminal(opened.file));
}

} // namespace
