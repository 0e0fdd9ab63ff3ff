// The bar on a terminal: a pseudo-terminal takes the program's standard error.
#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::LifVolume;
using tests::TemporaryFile;
using tests::TemporaryFolder;

namespace
{

// Gathers what is written to a pseudo-terminal.
class Terminal
{
  public:
    Terminal() : control_(posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (control_ < 0 || grantpt(control_) != 0 || unlockpt(control_) != 0) throw std::runtime_error("no terminal");
        path_ = ptsname(control_);
        held_ = open(path_.c_str(), O_RDWR | O_NOCTTY);
        reader_ = std::thread([this] { read_all(); });
    }
    ~Terminal()
    {
        finish();
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    const std::string &path() const
    {
        return path_;
    }
    // Once all who write there have ended.
    const std::string &finish()
    {
        if (!reader_.joinable()) return text_;
        close(held_);
        reader_.join();
        close(control_);
        return text_;
    }

  private:
    void read_all()
    {
        char bytes[4096];
        for (;;) {
            const ssize_t count = read(control_, bytes, sizeof bytes);
            if (count <= 0) return; // the last one has closed it
            text_.append(bytes, static_cast<size_t>(count));
        }
    }

    int control_;
    int held_ = -1;
    std::string path_;
    std::string text_;
    std::thread reader_;
};

// What a line of the terminal shows at last, and the longest that it ever was.
struct Line {
    std::string text;
    size_t width = 0;
    size_t drawings = 0;
};

Line show(const std::string &bytes)
{
    Line line;
    size_t column = 0;
    for (const char byte : bytes) {
        if (byte == '\r') {
            column = 0;
            line.drawings++;
            continue;
        }
        if (column >= line.text.size()) line.text.resize(column + 1, ' ');
        line.text[column++] = byte;
        line.width = std::max(line.width, column);
    }
    line.text.erase(line.text.find_last_not_of(' ') + 1);
    return line;
}

std::string on_terminal(const std::vector<std::string> &words, const std::string &more = "")
{
    Terminal terminal;
    const tests::Outcome outcome = tests::run_in_shell(words, "% 2>" + terminal.path() + more);
    EXPECT_EQ(outcome.code, 0) << terminal.finish();
    return terminal.finish();
}

constexpr size_t large = 2 * 1024 * 1024;

TemporaryFile volume_with(const std::string &name, size_t bytes)
{
    LifVolume contents;
    contents.tracks = 5000;
    contents.records = 20;
    if (!name.empty()) contents.entries = {{.name = name, .type = 0xE971, .content = Bytes(bytes, 'x')}};
    contents.records = static_cast<uint32_t>(bytes / 256 + 20);
    return TemporaryFile(tests::lif_image(contents));
}

// A bar that goes once over its width, or more often.
void expect_bars(const std::string &bytes, const std::string &name, size_t most_passes)
{
    EXPECT_NE(bytes.find("\r" + name), std::string::npos) << bytes;
    EXPECT_NE(bytes.find("[####################                    ]  50%"), std::string::npos) << bytes;
    const Line line = show(bytes);
    EXPECT_EQ(line.text, "") << "it is erased";
    EXPECT_LT(line.width, 80U);
    EXPECT_LE(line.drawings, most_passes * (101U + 2U)) << "once for each percent";
}

void expect_bar(const std::string &bytes, const std::string &name)
{
    EXPECT_NE(bytes.find("[########################################] 100%"), std::string::npos) << bytes;
    expect_bars(bytes, name, 1);
}

}

TEST(ProgressBar, ShowsALongCopyOut)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFile volume = volume_with("LARGE", large);
    const TemporaryFolder folder;
    const std::vector<std::string> words = {"get", volume.path(), "-d", folder.path()};
    expect_bar(on_terminal(words), "LARGE.BIN  ");
    EXPECT_EQ(folder.bytes("LARGE.BIN"), Bytes(large, 'x'));
}

TEST(ProgressBar, ShowsALongCopyIn)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFile volume = volume_with("", 0);
    const TemporaryFolder folder;
    const std::string path = folder.add("LARGE.BIN", Bytes(large, 'x'));
    expect_bar(on_terminal({"put", volume.path(), path}), path.substr(0, 24) + "  [");
    EXPECT_EQ(tests::run({"cat", volume.path(), "LARGE"}).output, std::string(large, 'x'));
}

TEST(ProgressBar, ShowsTestsAndConversionsOfTapes)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFolder folder;
    const std::string plain = folder.add("plain.hpi", Bytes(large, 'x'));
    const std::string tape = folder.path("tape.tap");
    expect_bars(on_terminal({"tape", "convert", plain, tape, "--to", "fixed"}), plain.substr(0, 24) + "  [", 2);
    const std::string name = tape.substr(0, 24) + "  [";
    expect_bars(on_terminal({"tape", "test", tape}), name, 2);
    expect_bars(on_terminal({"tape", "convert", tape, folder.path("back.hpi"), "--to", "hpi"}), name, 2);
    EXPECT_EQ(folder.bytes("back.hpi"), Bytes(large, 'x'));
    expect_bars(on_terminal({"tape", "test", "--xml", tape}, " >/dev/null"), name, 2);
    EXPECT_EQ(on_terminal({"tape", "test", "--xml", tape}, " >&2").find('#'), std::string::npos)
        << "a bar would run through the report";
}

TEST(ProgressBar, NamesCannotMoveTheCursor)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFile volume = volume_with("A\x1B[2J\x07\xD8", large);
    const TemporaryFolder folder;
    const std::string bytes = on_terminal({"get", volume.path(), "-o", folder.path("x")});
    EXPECT_NE(bytes.find("\rA?[2J???.BIN "), std::string::npos) << bytes;
    EXPECT_EQ(bytes.find('\x1B'), std::string::npos);
}

TEST(ProgressBar, ShortCopiesHaveNone)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFile volume = volume_with("SMALL", 1024 * 1024);
    const TemporaryFolder folder;
    EXPECT_EQ(on_terminal({"get", volume.path(), "-d", folder.path()}), "");
}

TEST(ProgressBar, WhatGoesToTheTerminalItselfHasNone)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "this system's terminals are others'";
    const TemporaryFile volume = volume_with("LARGE", large);
    const std::string bytes = on_terminal({"cat", volume.path(), "LARGE"}, " >&2");
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'x'), static_cast<std::ptrdiff_t>(large));
    EXPECT_EQ(bytes.size(), large);
    expect_bar(on_terminal({"cat", volume.path(), "LARGE"}, " >/dev/null"), "LARGE.BIN  ");
}
