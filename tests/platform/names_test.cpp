// Files by their names.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::content;
using tests::exists;
using tests::Scratch;

constexpr uint32_t no_such_file = 2; // the number on both systems
constexpr size_t path_size = 260;

TEST(PlatformNames, DeleteTakesAFileAndNoFolder)
{
    const Scratch scratch;
    EXPECT_TRUE(platform_delete(scratch.file("f", "abc").c_str()));
    EXPECT_FALSE(exists(scratch.path("f")));
    EXPECT_FALSE(platform_delete(scratch.path("f").c_str()));
    EXPECT_EQ(platform_last_error(), no_such_file);
    platform_set_last_error(0);
    EXPECT_FALSE(platform_delete(scratch.folder().c_str()));
    EXPECT_NE(platform_last_error(), 0u);
    EXPECT_TRUE(exists(scratch.folder()));
}

TEST(PlatformNames, MoveRenames)
{
    const Scratch scratch;
    EXPECT_TRUE(platform_move(scratch.file("a", "abc").c_str(), scratch.path("b").c_str()));
    EXPECT_FALSE(exists(scratch.path("a")));
    EXPECT_EQ(content(scratch.path("b")), "abc");
}

TEST(PlatformNames, MoveSparesAnExistingFile)
{
    const Scratch scratch;
    const std::string from = scratch.file("a", "abc");
    const std::string to = scratch.file("b", "old");
    platform_set_last_error(0);
    EXPECT_FALSE(platform_move(from.c_str(), to.c_str()));
    EXPECT_NE(platform_last_error(), 0u);
    EXPECT_EQ(content(from), "abc");
    EXPECT_EQ(content(to), "old");
}

TEST(PlatformNames, MoveOfNothingFails)
{
    const Scratch scratch;
    EXPECT_FALSE(platform_move(scratch.path("none").c_str(), scratch.path("b").c_str()));
    EXPECT_EQ(platform_last_error(), no_such_file);
    EXPECT_FALSE(exists(scratch.path("b")));
}

TEST(PlatformNames, ReplaceTakesTheNameOfAnExistingFile)
{
    const Scratch scratch;
    const std::string from = scratch.file("a", "new");
    const std::string to = scratch.file("b", "old one");
    EXPECT_TRUE(platform_replace(from.c_str(), to.c_str()));
    EXPECT_FALSE(exists(from));
    EXPECT_EQ(content(to), "new");
}

TEST(PlatformNames, ReplaceNeedsBothFiles)
{
    const Scratch scratch;
    const std::string there = scratch.file("a", "abc");
    platform_set_last_error(0);
    EXPECT_FALSE(platform_replace(there.c_str(), scratch.path("none").c_str()));
    EXPECT_EQ(platform_last_error(), no_such_file);
    EXPECT_FALSE(exists(scratch.path("none")));
    EXPECT_FALSE(platform_replace(scratch.path("none").c_str(), there.c_str()));
    EXPECT_EQ(content(there), "abc");
}

TEST(PlatformNames, RealPathIsThatOfTheFile)
{
    const Scratch scratch;
    const std::string path = scratch.file("a", "abc");
    char real[path_size] = "";
    ASSERT_TRUE(platform_real_path(path.c_str(), real, sizeof real));
    EXPECT_EQ(content(real), "abc");
    EXPECT_EQ(std::string(real).back(), 'a');
    EXPECT_FALSE(platform_real_path(scratch.path("none").c_str(), real, sizeof real));
    EXPECT_EQ(platform_last_error(), no_such_file);
    EXPECT_FALSE(platform_real_path(path.c_str(), real, 4)) << "it has no room there";
    EXPECT_NE(platform_last_error(), 0u);
}

TEST(PlatformNames, FolderIsMadeOnce)
{
    const Scratch scratch;
    const std::string path = scratch.path("d");
    EXPECT_TRUE(platform_create_directory(path.c_str()));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    platform_set_last_error(0);
    EXPECT_FALSE(platform_create_directory(path.c_str()));
    EXPECT_NE(platform_last_error(), 0u);
    EXPECT_FALSE(platform_create_directory(scratch.path("none/d").c_str()));
    EXPECT_TRUE(platform_move(path.c_str(), scratch.path("e").c_str()));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("e")));
}

TEST(PlatformNames, Hazard_A12_TemporaryFileIsNewAndEmpty)
{
    char first[path_size];
    char second[path_size];
    ASSERT_TRUE(platform_temporary_file(first, sizeof(first)));
    ASSERT_TRUE(platform_temporary_file(second, sizeof(second)));
    EXPECT_STRNE(first, second);
    for (const char *path : {first, second}) {
        EXPECT_EQ(std::filesystem::file_size(path), 0u);
        EXPECT_EQ(std::filesystem::path(path).filename().string().substr(0, 3), "TRV");
        EXPECT_TRUE(std::filesystem::path(path).is_absolute());
        EXPECT_TRUE(platform_delete(path));
    }
}

TEST(PlatformNames, TemporaryFileNeedsRoomForItsName)
{
    char small[4];
    platform_set_last_error(0);
    EXPECT_FALSE(platform_temporary_file(small, sizeof(small)));
    EXPECT_NE(platform_last_error(), 0u);
}

TEST(PlatformNames, ProgramPathIsThisProgram)
{
    char path[path_size];
    ASSERT_TRUE(platform_program_path(path, sizeof(path)));
    EXPECT_TRUE(std::filesystem::path(path).is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
    char exact[path_size];
    const size_t size = strlen(path) + 1;
    EXPECT_TRUE(platform_program_path(exact, size));
    EXPECT_STREQ(exact, path);
    platform_set_last_error(0);
    EXPECT_FALSE(platform_program_path(exact, size - 1));
    EXPECT_NE(platform_last_error(), 0u);
}

TEST(PlatformNames, Separators)
{
    EXPECT_TRUE(platform_is_separator('/'));
    EXPECT_FALSE(platform_is_separator(':'));
    EXPECT_FALSE(platform_is_separator('a'));
    const bool is_windows = std::filesystem::path::preferred_separator == '\\';
    EXPECT_EQ(platform_is_separator('\\'), is_windows);
}

} // namespace
