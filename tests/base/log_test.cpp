#include "base/log.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "base/log_inner.h"
#include "tests/base/scripted_clock.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedClock;
using tests::ScriptedConsole;

// Begins and leaves with an empty line and no reference of the times; the log of the other tests comes back.
class LogFile : public testing::Test
{
  protected:
    LogFile()
    {
        reset();
    }

    ~LogFile() override
    {
        reset();
    }

    static void reset()
    {
        const FileHandle kept = logfile;
        logfile = 0;
        log_close();
        logfile = kept;
    }

    ScriptedConsole console;
};

TEST_F(LogFile, EachLevelHasItsLabel)
{
    console.log_here(3);
    log_file(0, "a\n");
    log_file(1, "b\n");
    log_file(2, "c\n");
    log_file(3, "d\n");
    EXPECT_EQ(console.logged(), "Error: a\r\nWarning: b\r\nInfo:  c\r\nTrace: d\r\n");
}

TEST_F(LogFile, LevelsAboveTheThresholdAreLeftOut)
{
    console.log_here(1);
    log_file(3, "trace\n");
    log_file(2, "info\n");
    EXPECT_EQ(console.logged(), "");
    EXPECT_EQ(console.writes, 0u);
    log_file(1, "warning\n");
    EXPECT_EQ(console.logged(), "Warning: warning\r\n");
}

TEST_F(LogFile, NoFormatAndAnEmptyOneAreNothing)
{
    void (*const log_any)(int32_t, const char *, ...) = log_file; // whose format nobody checks
    console.log_here(1);
    log_any(0, nullptr);
    log_any(0, "");
    log_file(0, "x\n");
    EXPECT_EQ(console.logged(), "Error: x\r\n");
}

TEST_F(LogFile, PartsMakeOneLineWithOneLabel)
{
    console.log_here(3);
    log_file(2, "abc");
    EXPECT_EQ(console.writes, 0u);
    log_file(0, "def\n");
    EXPECT_EQ(console.logged(), "Info:  abcdef\r\n");
    log_file(0, "next\n");
    EXPECT_EQ(console.logged(), "Info:  abcdef\r\nError: next\r\n");
}

TEST_F(LogFile, CarriageReturnIsPutInOnlyWhereItIsMissing)
{
    console.log_here(0);
    log_file(0, "one\r\n");
    log_file(0, "two\r");
    log_file(0, "\n");
    log_file(0, "\n");
    EXPECT_EQ(console.logged(), "Error: one\r\nError: two\r\nError: \r\n");
}

TEST_F(LogFile, ArgumentsAreFormatted)
{
    console.log_here(3);
    log_file(3, "gpib_seek(gpib=%lu, record=%d)\n", 12ul, -3);
    EXPECT_EQ(console.logged(), "Trace: gpib_seek(gpib=12, record=-3)\r\n");
}

TEST_F(LogFile, Hazard_B9_TextOfAMediumIsNoFormat)
{
    console.log_here(0);
    log_file(0, "%s\n", "%n%s label");
    EXPECT_EQ(console.logged(), "Error: %n%s label\r\n");
}

TEST_F(LogFile, Hazard_M6_LongLineIsCutAndEnded)
{
    console.log_here(0);
    log_file(0, "%s\n", std::string(100000, 'x').c_str());
    const std::string expected = "Error: " + std::string(64000 - 7, 'x') + "\r\n";
    EXPECT_EQ(console.logged(), expected);
    log_file(0, "y\n");
    EXPECT_EQ(console.logged(), expected + "Error: y\r\n");
}

TEST_F(LogFile, Hazard_M6_LongLineOfPartsIsCutAndEnded)
{
    console.log_here(0);
    const std::string part(1000, 'x');
    for (int i = 0; i < 63; ++i) log_file(0, "%s", part.c_str());
    EXPECT_EQ(console.logged(), "");
    log_file(0, "%s", part.c_str());
    EXPECT_EQ(console.logged(), "Error: " + std::string(64000 - 7, 'x') + "\r\n");
}

TEST_F(LogFile, Hazard_M6_LineThatJustFitsStaysWhole)
{
    console.log_here(0);
    const std::string text(64000 - 7, 'x');
    log_file(0, "%s\n", text.c_str());
    EXPECT_EQ(console.logged(), "Error: " + text + "\r\n");
}

TEST_F(LogFile, WritingALineDoesNotLogItself)
{
    console.log_here(3); // at which the file layer logs its own writes
    log_file(3, "once\n");
    EXPECT_EQ(console.logged(), "Trace: once\r\n");
}

TEST_F(LogFile, KeepsError303WithoutLogFile)
{
    logfile = 0;
    loglevel = 1;
    set_error(207, "%s", "NAME");
    log_file(1, "a warning\n");
    EXPECT_EQ(global_error, 303u);
}

TEST_F(LogFile, ErrorStaysWhenTheLineIsNotWanted)
{
    logfile = 0;
    loglevel = 1;
    set_error(207, "%s", "NAME");
    log_file(3, "a trace\n");
    EXPECT_EQ(global_error, 207u);
    EXPECT_STREQ(global_error_info, "NAME");
}

TEST_F(LogFile, KeepsSpellingOfTheTimerLine)
{
    ScriptedClock clock;
    clock.frequency = 2500000;
    console.log_here(4);
    log_file(3, "x\n");
    const std::string first = "Logging timer enabled - start_time=10:20:30-456 counter_freqency=2.500000 MHz\n";
    EXPECT_EQ(console.logged(), first + "10:20:30-456:000 Trace: x\r\n");
}

TEST_F(LogFile, TimerLineIsLeftOutBelowLevel3AndComesOnce)
{
    ScriptedClock clock;
    console.log_here(4);
    log_file(2, "x\n");
    log_file(3, "y\n");
    EXPECT_EQ(console.logged(), "10:20:30-456:000 Info:  x\r\n10:20:30-456:000 Trace: y\r\n");
}

TEST_F(LogFile, TimesRunOnFromTheFirstLine)
{
    ScriptedClock clock;
    console.log_here(6);
    log_file(2, "a\n");
    clock.counter += 5441234; // 544.1234 ms at 10 MHz
    log_file(4, "b\n");
    clock.counter += 10;
    log_file(5, "c");
    clock.counter += 10000000;
    log_file(5, "d\n");
    EXPECT_EQ(console.logged(), "10:20:30-456:000 Info:  a\r\n"
                                "10:20:31-000:123 Debug: b\r\n"
                                "10:20:31-000:124 cd\r\n");
}

TEST_F(LogFile, TimesPassMidnight)
{
    ScriptedClock clock;
    clock.local_time = {2024, 12, 2, 31, 23, 59, 59, 990};
    console.log_here(4);
    log_file(2, "a\n");
    clock.counter += 123450;
    log_file(2, "b\n");
    EXPECT_EQ(console.logged(), "23:59:59-990:000 Info:  a\r\n00:00:00-002:345 Info:  b\r\n");
}

TEST_F(LogFile, TimesAreRightAfterDaysOfAFastCounter)
{
    ScriptedClock clock;
    clock.frequency = 1000000000;
    console.log_here(4);
    log_file(2, "a\n");
    clock.counter += int64_t{1000000000} * 86400 * 30 + 1000;
    log_file(2, "b\n");
    EXPECT_EQ(console.logged(), "10:20:30-456:000 Info:  a\r\n10:20:30-456:001 Info:  b\r\n");
}

TEST_F(LogFile, WithoutACounterTheTimeStands)
{
    ScriptedClock clock;
    clock.frequency = 0;
    clock.counter_works = false;
    console.log_here(4);
    log_file(2, "a\n");
    log_file(2, "b\n");
    EXPECT_EQ(console.logged(), "10:20:30-456:000 Info:  a\r\n10:20:30-456:000 Info:  b\r\n");
}

TEST_F(LogFile, AboveLevel7TheDebuggerHasTheLines)
{
    console.log_here(8 + 3);
    log_file(3, "for the debugger\n");
    EXPECT_EQ(console.logged(), "");
    loglevel = 3;
    log_file(3, "for the file\n");
    EXPECT_EQ(console.logged(), "Trace: for the file\r\n");
}

TEST_F(LogFile, OnlyTheLowThreeBitsAreTheThreshold)
{
    console.log_here(8);
    log_file(1, "left");
    console.log_here(1);
    log_file(1, "right\n");
    EXPECT_EQ(console.logged(), "Warning: right\r\n");
}

TEST_F(LogFile, LevelsOutsideTheTableHaveLabelsToo)
{
    console.log_here(3);
    log_file(-7, "a\n");
    EXPECT_NE(console.logged().find("a\r\n"), std::string::npos);
}

TEST_F(LogFile, ClosedLogForgetsFileAndUnfinishedLine)
{
    console.log_here(0);
    log_file(0, "unfinished");
    log_close();
    EXPECT_EQ(logfile, 0u);
    console.log_here(0);
    log_file(0, "new\n");
    EXPECT_EQ(console.logged(), "Error: new\r\n");
}

} // namespace
