// Characters, lines and formatted text in files.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

namespace
{

using tests::content;
using tests::FileFault;
using tests::FileFaults;
using tests::forget_error;
using tests::Scratch;

constexpr FileHandle void_file = ~FileHandle{0};

class FileText : public testing::Test
{
  protected:
    FileText()
    {
        forget_error();
    }
    ~FileText() override
    {
        file_close(file);
    }

    void open(std::string_view text)
    {
        path = scratch.file("f", text);
        ASSERT_EQ(file_open(&file, path.c_str(), "rb+", 0), 1);
    }

    std::string line(uint32_t size)
    {
        std::string buffer(size + 1, '#');
        const int32_t length = file_readline(file, buffer.data(), size);
        EXPECT_EQ(buffer[size], '#');
        EXPECT_EQ(buffer[static_cast<size_t>(length)], '\0');
        buffer.resize(static_cast<size_t>(length));
        return buffer;
    }

    std::vector<std::string> lines(uint32_t size)
    {
        std::vector<std::string> all;
        for (;;) {
            all.push_back(line(size));
            if (all.back().empty()) break;
        }
        all.pop_back();
        return all;
    }

    const Scratch scratch;
    std::string path;
    FileHandle file = void_file;
};

using Lines = std::vector<std::string>;

TEST_F(FileText, LinesKeepTheirEnds)
{
    open("first\nsecond\r\n\n\rlast");
    EXPECT_EQ(lines(100), (Lines{"first\n", "second\r\n", "\n", "\rlast"}));
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileText, LongLineComesInParts)
{
    open("abcdefgh\nxy\n");
    EXPECT_EQ(lines(4), (Lines{"abc", "def", "gh\n", "xy\n"}));
    file_seek(file, 0);
    EXPECT_EQ(lines(2), (Lines{"a", "b", "c", "d", "e", "f", "g", "h", "\n", "x", "y", "\n"}));
}

TEST_F(FileText, LinesLongerThanWhatIsReadAtOnce)
{
    const std::string one = std::string(511, 'a') + "\n";
    const std::string two = std::string(512, 'b') + "\n";
    const std::string three = std::string(3000, 'c') + "\n";
    open(one + two + three + "end");
    EXPECT_EQ(lines(5000), (Lines{one, two, three, "end"}));
    file_seek(file, 0);
    EXPECT_EQ(line(512), one.substr(0, 511));
    EXPECT_EQ(line(512), "\n");
}

TEST_F(FileText, PositionIsBehindTheLine)
{
    open("first\nsecond\n");
    uint32_t position = 0;
    EXPECT_EQ(line(100), "first\n");
    EXPECT_EQ(file_getposition(file, &position), 0);
    EXPECT_EQ(position, 6u);
    EXPECT_EQ(file_write(file, "S", 1), 1);
    EXPECT_EQ(content(path), "first\nSecond\n");
}

TEST_F(FileText, NulBytesStandInALine)
{
    open(std::string_view("a\0b\nc", 5));
    EXPECT_EQ(line(100), std::string("a\0b\n", 4));
    EXPECT_EQ(line(100), "c");
}

TEST_F(FileText, FileThatCannotGoBackIsReadByteByByte)
{
    static const FileCalls *own;
    own = file_calls;
    FileCalls calls;
    calls.seek = [](PlatformFile, int64_t, SeekFrom) { return int64_t{-1}; };
    calls.read = [](PlatformFile from, void *buffer, uint32_t bytes) {
        EXPECT_EQ(bytes, 1u); // what is read further would be lost
        return own->read(from, buffer, bytes);
    };
    open("first\nsecond\n");
    file_calls = &calls;
    const std::vector<std::string> all = lines(100);
    file_calls = own;
    EXPECT_EQ(all, (Lines{"first\n", "second\n"}));
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileText, Hazard_A7_BuffersOfNoneAndOneByte)
{
    open("abc\n");
    char buffer[2] = {'#', '#'};
    EXPECT_EQ(file_readline(file, buffer, 0), 0);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(file_readline(file, buffer, 1), 0);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], '#');
    EXPECT_EQ(line(100), "abc\n");
}

TEST_F(FileText, ReadFailureEndsTheLine)
{
    open(std::string(600, 'a') + "\n");
    FileFaults faults(FileFault::read, 2);
    EXPECT_EQ(line(1000), std::string(512, 'a'));
    EXPECT_TRUE(faults.reached);
    EXPECT_EQ(global_error, 302u);
}

TEST_F(FileText, NoLineFromTheVoidHandleOrWithoutABuffer)
{
    char buffer[2] = {'#', '#'};
    EXPECT_EQ(file_readline(void_file, buffer, 2), 0);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(global_error, 0u);
    open("abc");
    EXPECT_EQ(file_readline(file, nullptr, 2), 0);
    EXPECT_EQ(global_error, 103u);
}

TEST_F(FileText, WritesCharacters)
{
    open("");
    EXPECT_NE(file_writechar(file, 'a'), 0);
    EXPECT_NE(file_writechar(file, 0), 0);
    EXPECT_NE(file_writechar(file, 0x1ff), 0); // its low byte
    EXPECT_EQ(file_writechar(void_file, 'z'), 'z');
    EXPECT_EQ(file_writechar(void_file, 0), 0);
    EXPECT_EQ(content(path), std::string("a\0\xff", 3));
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileText, KeepsWritecharNeverZero)
{
    open("");
    for (const FileFault fault : {FileFault::write, FileFault::short_write}) {
        FileFaults faults(fault, 1);
        forget_error();
        EXPECT_EQ(file_writechar(file, 'a'), 303);
        EXPECT_TRUE(faults.reached);
        EXPECT_EQ(global_error, 303u);
    }
    EXPECT_EQ(content(path), "");
    EXPECT_EQ(file_writechar(file, 'a'), 1);
}

TEST_F(FileText, PrintsWithoutTheNul)
{
    open("");
    file_printf(file, "%s %05d %.2f %c%%\n", "text", 42, 2.5, 'x');
    file_printf(file, "%s", "");
    EXPECT_EQ(content(path), "text 00042 2.50 x%\n");
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileText, Hazard_A8_LongTextIsWrittenInFull)
{
    for (const size_t length : {1022u, 1023u, 1024u, 1025u, 1100u, 100000u}) {
        open("");
        const std::string text(length, 'p');
        file_printf(file, "%s", text.c_str());
        EXPECT_TRUE(content(path) == text) << length;
        file_close(file);
        file = void_file;
    }
}

TEST_F(FileText, FailingPrintIsError303)
{
    open("");
    for (const FileFault fault : {FileFault::write, FileFault::short_write}) {
        FileFaults faults(fault, 1);
        forget_error();
        file_printf(file, "abc%d", 1);
        EXPECT_TRUE(faults.reached);
        EXPECT_EQ(global_error, 303u);
    }
}

TEST_F(FileText, PrintsNothingIntoTheVoid)
{
    file_printf(void_file, "%s", "abc");
    EXPECT_EQ(global_error, 0u);
    open("");
    void (*const print)(FileHandle, const char *, ...) = file_printf; // which the compiler doesn't look into
    print(file, nullptr);
    EXPECT_EQ(global_error, 103u);
    EXPECT_EQ(content(path), "");
}

} // namespace
