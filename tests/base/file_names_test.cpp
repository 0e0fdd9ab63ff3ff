// Files by their names, and their times.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

namespace
{

using tests::content;
using tests::exists;
using tests::forget_error;
using tests::Scratch;

constexpr uint32_t no_such_file = 2; // the number on both systems
constexpr TimeRecord some_time = {30, 7, 9, 15, 2, 84, 4, 0, 0};

std::string words(uint32_t code)
{
    platform_set_last_error(code);
    return last_error();
}

class FileNames : public testing::Test
{
  protected:
    FileNames()
    {
        forget_error();
    }

    const Scratch scratch;
};

TEST_F(FileNames, KeepsInvertedResult)
{
    const std::string path = scratch.path("d");
    EXPECT_EQ(file_create_directory(path.c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_EQ(global_error, 312u);
    forget_error();
    EXPECT_EQ(file_create_directory(path.c_str()), 1); // it was there
    EXPECT_EQ(file_create_directory(scratch.path("none/d").c_str()), 1);
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileNames, DeletesOrSaysWhyNot)
{
    EXPECT_EQ(file_delete(scratch.file("f", "abc").c_str()), 0);
    EXPECT_FALSE(exists(scratch.path("f")));
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(file_delete(scratch.path("f").c_str()), -1);
    EXPECT_EQ(global_error, 304u);
    EXPECT_EQ(global_error_info, words(no_such_file));
}

TEST_F(FileNames, MovesButNeverOverAFile)
{
    const std::string from = scratch.file("a", "abc");
    EXPECT_EQ(file_move(from.c_str(), scratch.path("b").c_str()), 0);
    EXPECT_EQ(content(scratch.path("b")), "abc");
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(file_move(from.c_str(), scratch.path("c").c_str()), -1);
    EXPECT_EQ(global_error, 310u);
    EXPECT_EQ(global_error_info, words(no_such_file));
    scratch.file("a", "new");
    forget_error();
    EXPECT_EQ(file_move(from.c_str(), scratch.path("b").c_str()), -1);
    EXPECT_EQ(global_error, 310u);
    EXPECT_EQ(content(scratch.path("b")), "abc");
    EXPECT_EQ(content(from), "new");
}

TEST_F(FileNames, TemporaryFileIsOpenAndEmpty)
{
    FileHandle file = 0;
    char path[FILE_PATH_SIZE];
    ASSERT_EQ(file_open_temp(&file, path, "wb+"), 1);
    EXPECT_EQ(file_getsize(file), 0u);
    EXPECT_EQ(file_write(file, "abc", 3), 3);
    file_close(file);
    EXPECT_EQ(content(path), "abc");
    EXPECT_EQ(file_delete(path), 0);
    ASSERT_EQ(file_get_temp(path), 0);
    EXPECT_TRUE(exists(path));
    EXPECT_EQ(file_delete(path), 0);
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileNames, Hazard_A12_TemporaryFileThatCannotBeOpenedIsDeleted)
{
    FileHandle file = 0;
    char path[FILE_PATH_SIZE];
    tests::FileFaults faults(tests::FileFault::open, 1);
    EXPECT_EQ(file_open_temp(&file, path, "wb+"), 0);
    EXPECT_TRUE(faults.reached);
    EXPECT_EQ(global_error, 300u);
    EXPECT_EQ(global_error_info, words(5)); // the code of the refusal
    EXPECT_FALSE(exists(path));
}

TEST_F(FileNames, ExecutionPathEndsInItsSeparator)
{
    char path[FILE_PATH_SIZE];
    ASSERT_EQ(file_get_execution_path(nullptr, path), 0);
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_TRUE(platform_is_separator(path[strlen(path) - 1]));
    char program[FILE_PATH_SIZE];
    ASSERT_TRUE(platform_program_path(program, sizeof(program)));
    EXPECT_EQ(strncmp(program, path, strlen(path)), 0);
    EXPECT_EQ(strpbrk(program + strlen(path), "/"), nullptr);
}

TEST_F(FileNames, MissingPointersAreError103)
{
    FileHandle file = 0;
    char path[FILE_PATH_SIZE] = "";
    TimeRecord time = some_time;
    const auto missing = [](int32_t result) {
        const uint32_t number = global_error;
        forget_error();
        return std::pair(result, number);
    };
    EXPECT_EQ(missing(file_create_directory(nullptr)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_open_temp(nullptr, path, "wb")), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_open_temp(&file, nullptr, "wb")), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_open_temp(&file, path, nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_delete(nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_move(nullptr, "b")), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_move("a", nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_get_temp(nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_get_execution_path(nullptr, nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_set_time(nullptr, &time)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_set_time("f", nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_get_time(Stdout, nullptr)), std::pair(-1, 103u));
    EXPECT_STREQ(path, "");
}

TEST_F(FileNames, TimeIsSetAndReadBack)
{
    const std::string path = scratch.file("f", "abc");
    ASSERT_EQ(file_set_time(path.c_str(), &some_time), 0);
    FileHandle file = 0;
    ASSERT_EQ(file_open(&file, path.c_str(), "rb", 0), 1);
    TimeRecord read = {};
    EXPECT_EQ(file_get_time(file, &read), 0);
    file_close(file);
    EXPECT_EQ(read.tm_year, 84);
    EXPECT_EQ(read.tm_mon, 2);
    EXPECT_EQ(read.tm_mday, 15);
    EXPECT_EQ(read.tm_wday, 4);
    EXPECT_EQ(read.tm_yday, 0);
    EXPECT_EQ(read.tm_hour, 9);
    EXPECT_EQ(read.tm_min, 7);
    EXPECT_EQ(read.tm_sec, 30);
    EXPECT_TRUE(read.tm_isdst == 0 || read.tm_isdst == 1);
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileNames, DatesThatThereAreNotAreError311)
{
    const std::string path = scratch.file("f", "abc");
    const struct {
        const char *name;
        int32_t TimeRecord::*field;
        int32_t value;
    } rows[] = {
        {"no day", &TimeRecord::tm_mday, 0},       {"month 15 from BCD", &TimeRecord::tm_mon, 15},
        {"month -1", &TimeRecord::tm_mon, -1},     {"an hour that wraps to 9", &TimeRecord::tm_hour, 65536 + 9},
        {"hour -1", &TimeRecord::tm_hour, -1},     {"year beyond an int", &TimeRecord::tm_year, INT32_MAX},
        {"year 1600", &TimeRecord::tm_year, -300}, {"month beyond an int", &TimeRecord::tm_mon, INT32_MAX},
        {"second 60", &TimeRecord::tm_sec, 60},
    };
    const auto before = std::filesystem::last_write_time(path);
    for (const auto &row : rows) {
        TimeRecord time = some_time;
        time.*row.field = row.value;
        forget_error();
        EXPECT_EQ(file_set_time(path.c_str(), &time), -1) << row.name;
        EXPECT_EQ(global_error, 311u) << row.name;
        EXPECT_STRNE(global_error_info, "no error") << row.name;
    }
    EXPECT_EQ(std::filesystem::last_write_time(path), before);
}

TEST_F(FileNames, TimeOfNoFileIsError311)
{
    TimeRecord time = some_time;
    EXPECT_EQ(file_set_time(scratch.path("none").c_str(), &some_time), -1);
    EXPECT_EQ(global_error, 311u);
    EXPECT_EQ(global_error_info, words(no_such_file));
    for (const FileHandle file : {FileHandle{0}, FileVoid}) {
        forget_error();
        EXPECT_EQ(file_get_time(file, &time), -1);
        EXPECT_EQ(global_error, 311u);
    }
}

// Counts what is opened and closed, and lets setting a time fail.
struct CountedCalls {
    static inline int opened;
    static inline int closed;
    static inline PlatformFile last;

    CountedCalls() : own(file_calls)
    {
        opened = closed = 0;
        calls.open_alone = [](PlatformFile *ret_file, const char *path) {
            ++opened;
            const bool good = platform_open_alone(ret_file, path);
            last = *ret_file;
            return good;
        };
        calls.close = [](PlatformFile file) {
            ++closed;
            platform_close(file);
        };
        file_calls = &calls;
    }
    ~CountedCalls()
    {
        file_calls = own;
    }
    CountedCalls(const CountedCalls &) = delete;
    CountedCalls &operator=(const CountedCalls &) = delete;

    const FileCalls *own;
    FileCalls calls;
};

TEST_F(FileNames, KeepsFileOpenWithoutTime)
{
    const std::string path = scratch.file("f", "abc");
    CountedCalls counted;
    EXPECT_EQ(file_set_time(path.c_str(), &some_time), 0);
    EXPECT_EQ(CountedCalls::opened, 1);
    EXPECT_EQ(CountedCalls::closed, 1);
    counted.calls.set_times = [](PlatformFile, int64_t) {
        platform_set_last_error(5);
        return false;
    };
    EXPECT_EQ(file_set_time(path.c_str(), &some_time), -1);
    EXPECT_EQ(global_error, 311u);
    EXPECT_EQ(global_error_info, words(5));
    EXPECT_EQ(CountedCalls::opened, 2);
    EXPECT_EQ(CountedCalls::closed, 1);
    EXPECT_EQ(platform_write(CountedCalls::last, "X", 1), 1); // it is open indeed
    platform_close(CountedCalls::last);
}

TEST_F(FileNames, NoTimeIsSetWithoutADate)
{
    const std::string path = scratch.file("f", "abc");
    const CountedCalls counted;
    TimeRecord none = some_time;
    none.tm_mday = 0;
    EXPECT_EQ(file_set_time(path.c_str(), &none), -1);
    EXPECT_EQ(CountedCalls::opened, 0);
}

} // namespace
