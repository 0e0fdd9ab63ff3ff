#include "base/output.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedConsole;

class Output : public testing::Test
{
  protected:
    Output()
    {
        output_to(0);
        output_failed();
    }

    ~Output() override
    {
        console.failing = false;
        output_to(0);
        output_failed();
    }

    ScriptedConsole console;
};

TEST_F(Output, WaitsForTheFlush)
{
    output_text("abc");
    output_text("");
    output_text("def");
    EXPECT_EQ(console.printed(), "");
    output_flush();
    EXPECT_EQ(console.printed(), "abcdef");
    EXPECT_EQ(console.writes, 1u);
}

TEST_F(Output, KnowsWhetherALineIsOpen)
{
    EXPECT_TRUE(output_at_line_start());
    output_text("line");
    EXPECT_FALSE(output_at_line_start());
    output_flush();
    EXPECT_FALSE(output_at_line_start());
    output_text("\n");
    EXPECT_TRUE(output_at_line_start());
    output_flush();
    EXPECT_TRUE(output_at_line_start());
    output_text("line");
    output_to(0);
    EXPECT_TRUE(output_at_line_start());
}

TEST_F(Output, EmptyFlushWritesNothing)
{
    output_flush();
    output_flush();
    EXPECT_EQ(console.writes, 0u);
}

TEST_F(Output, LongTextLeavesInLargePieces)
{
    std::string text;
    for (int i = 0; i < 50000; ++i) text += std::to_string(i) + " ";
    output_text(text);
    output_flush();
    EXPECT_EQ(console.printed(), text);
    EXPECT_LE(console.writes, text.size() / 65536 + 1);
}

TEST_F(Output, BytesPassAsTheyAre)
{
    using namespace std::string_literals;
    const std::string text = "a\0b\n\xFF%n"s;
    output_text(text);
    output_flush();
    EXPECT_EQ(console.printed(), text);
}

TEST_F(Output, FormattedTextJoinsTheRest)
{
    output_text("x=");
    output_format("%d %s|%5u\n", -7, "text", 42u);
    output_flush();
    EXPECT_EQ(console.printed(), "x=-7 text|   42\n");
}

TEST_F(Output, FormattedTextThatDoesNotFitAnyMoreComesWhole)
{
    const std::string filler(65536 - 10, '.');
    const std::string text(40000, 'x');
    output_text(filler);
    output_format("%s!", text.c_str());
    output_flush();
    EXPECT_EQ(console.printed(), filler + text + "!");
}

TEST_F(Output, FormattedTextThatFillsTheBufferComesWhole)
{
    const std::string filler(65536 - 10, '.');
    output_text(filler);
    output_format("%s", "0123456789");
    output_flush();
    EXPECT_EQ(console.printed(), filler + "0123456789");
}

TEST_F(Output, FormattedTextAboveTheBufferIsCut)
{
    output_format("%s", std::string(100000, 'x').c_str());
    output_flush();
    EXPECT_EQ(console.printed(), std::string(65535, 'x'));
}

TEST_F(Output, ReservedRoomIsThereAtAnyFill)
{
    std::string expected;
    for (const size_t filler : {0u, 1u, 61440u, 61441u, 65535u}) {
        output_text(std::string(filler, '.'));
        memset(output_reserve(4096), 'r', 4096);
        output_advance(4096);
        expected += std::string(filler, '.') + std::string(4096, 'r');
    }
    output_flush();
    EXPECT_EQ(console.printed(), expected);
}

TEST_F(Output, WhatIsPutInPlaceLeavesInWholePieces)
{
    std::string expected;
    for (int i = 0; i < 10000; ++i) {
        const std::string text = std::to_string(i) + std::string(300, '-');
        memcpy(output_reserve(4096), text.data(), text.size());
        output_advance(text.size());
        expected += text;
    }
    EXPECT_EQ(console.writes, expected.size() / 65536);
    EXPECT_EQ(console.printed().size(), console.writes * 65536) << "each of 64 KB";
    output_flush();
    EXPECT_EQ(console.printed(), expected);
    EXPECT_EQ(console.writes, expected.size() / 65536 + 1);
}

TEST_F(Output, OnlyWhatIsAdvancedBecomesText)
{
    memcpy(output_reserve(100), "abcdef", 6);
    output_advance(3);
    output_flush();
    EXPECT_EQ(console.printed(), "abc");
}

TEST_F(Output, GoesElsewhereAndBack)
{
    output_text("one ");
    output_to(Stderr);
    EXPECT_EQ(console.printed(), "one ");
    output_text("two ");
    output_to(0);
    output_text("three");
    output_flush();
    EXPECT_EQ(console.printed(), "one three");
    EXPECT_EQ(console.complaints(), "two ");
}

TEST_F(Output, TheVoidHandleTakesEverything)
{
    output_to(file_void());
    output_text("gone");
    output_flush();
    EXPECT_FALSE(output_failed());
    EXPECT_EQ(console.writes, 0u);
}

TEST_F(Output, ShortWritesAreContinued)
{
    console.most_bytes = 3;
    output_text("abcdefgh");
    output_flush();
    EXPECT_EQ(console.printed(), "abcdefgh");
    EXPECT_EQ(console.writes, 3u);
    EXPECT_FALSE(output_failed());
}

TEST_F(Output, FailedWriteIsRememberedUntilAsked)
{
    console.failing = true;
    output_text("lost");
    output_flush();
    console.failing = false;
    output_text("kept");
    output_flush();
    EXPECT_EQ(console.printed(), "kept");
    EXPECT_TRUE(output_failed());
    EXPECT_FALSE(output_failed());
}

TEST_F(Output, FullDeviceEndsTheFlush)
{
    console.most_bytes = 0;
    output_text("no room");
    output_flush();
    EXPECT_TRUE(output_failed());
    EXPECT_EQ(console.writes, 1u);
}

} // namespace
