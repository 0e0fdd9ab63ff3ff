#include "base/timing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "base/clock_inner.h"
#include "tests/base/scripted_clock.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedClock;
using tests::ScriptedConsole;

// The reference is that of the system's own counter again when the test ends.
class UsecCounter : public testing::Test
{
  protected:
    ~UsecCounter() override
    {
        const ClockCalls own;
        clock_calls = &own;
        reset_usec_counter();
    }

    ScriptedClock clock;
};

TEST(CountsToUsec, LargeCountsDoNotWrap)
{
    EXPECT_EQ(counts_to_usec(1, 1000000), 1u);
    EXPECT_EQ(counts_to_usec(19, 10000000), 1u);
    EXPECT_EQ(counts_to_usec(int64_t{1000000000} * 86400 * 365, 1000000000), uint64_t{86400} * 365 * 1000000);
    EXPECT_EQ(counts_to_usec(-1, 1000000), 0u);
    EXPECT_EQ(counts_to_usec(1, 0), 0u);
    EXPECT_EQ(counts_to_usec(1, -5), 0u);
}

TEST_F(UsecCounter, CountsFromTheReference)
{
    clock.counter = 1234567;
    reset_usec_counter();
    EXPECT_EQ(get_usec_counter(), 0u);
    clock.counter += 12345;
    EXPECT_EQ(get_usec_counter(), 1234u);
    clock.counter += int64_t{10} * 4294967296;
    EXPECT_EQ(get_usec_counter(), 1234u); // the low 32 bits
}

TEST_F(UsecCounter, FailuresAreZeroAndLogged)
{
    ScriptedConsole console;
    console.log_here(1);
    clock.frequency = 0;
    reset_usec_counter();
    EXPECT_EQ(console.logged(), "Warning: QueryPerformanceFrequency() failed.\r\n");
    EXPECT_EQ(get_usec_counter(), 0u);
    clock.frequency = 1000;
    clock.counter_works = false;
    reset_usec_counter();
    EXPECT_EQ(console.logged(),
              "Warning: QueryPerformanceFrequency() failed.\r\nWarning: QueryPerformanceCounter() failed.\r\n");
    EXPECT_EQ(get_usec_counter(), 0u);
}

TEST_F(UsecCounter, NapPollsUntilTheTimeIsUp)
{
    clock.step = 100; // 10 us
    my_nap(95);
    EXPECT_GE(clock.counter, 950);
    EXPECT_LE(clock.readings, 13u);
    EXPECT_TRUE(clock.sleeps.empty());
}

TEST_F(UsecCounter, NapOfZeroReturnsAtOnce)
{
    my_nap(0);
    EXPECT_EQ(clock.readings, 0u);
}

TEST_F(UsecCounter, NapWithoutACounterEnds)
{
    clock.frequency = 0;
    my_nap(2500);
    EXPECT_EQ(clock.sleeps, std::vector<uint32_t>{3});
    clock.frequency = 1000000;
    clock.counter_works = false;
    my_nap(10);
    EXPECT_EQ(clock.sleeps, (std::vector<uint32_t>{3, 1}));
}

TEST_F(UsecCounter, SleepOfZeroIsLeftOut)
{
    my_sleep(0);
    EXPECT_TRUE(clock.sleeps.empty());
    my_sleep(25);
    EXPECT_EQ(clock.sleeps, std::vector<uint32_t>{25});
}

TEST_F(UsecCounter, CalibrationTakesTheReadingItselfOff)
{
    clock.step = 50; // each reading takes 5 us, so the loop seems to take nothing more: one count is taken for it
    EXPECT_EQ(calibrate_nap(), 1);
    EXPECT_EQ(clock.readings, 4u);
    EXPECT_DOUBLE_EQ(nap_loops_per_usec(), 10000 / 0.1);
}

TEST_F(UsecCounter, CalibrationNeedsACounter)
{
    clock.frequency = 0;
    EXPECT_EQ(calibrate_nap(), 0);
    clock.frequency = 1000;
    clock.counter_works = false;
    EXPECT_EQ(calibrate_nap(), 0);
}

TEST(Timing, RealCalibrationFindsLoops)
{
    EXPECT_EQ(calibrate_nap(), 1);
    EXPECT_GT(nap_loops_per_usec(), 0);
}

TEST(Timing, RealNapTakesItsTime)
{
    reset_usec_counter();
    const uint32_t start = get_usec_counter();
    my_nap(3000);
    EXPECT_GE(get_usec_counter() - start, 2999u);
}

TEST(Timing, SystemAndTerminalTypes)
{
    ScriptedConsole console;
    console.log_here(3);
    os_type = 0;
    term_type = 0;
    get_os_type();
    get_term_type();
    EXPECT_EQ(os_type, 3);
    EXPECT_EQ(term_type, 1);
    EXPECT_EQ(console.logged(), "Trace: Terminal is Win32 console\r\n");
}

class Scheduler : public testing::Test
{
  protected:
    Scheduler()
    {
        os_type = 3;
        console.log_here(3);
    }

    ~Scheduler() override
    {
        restore_scheduler();
        get_os_type();
    }

    ScriptedConsole console;
    ScriptedClock clock;
};

TEST_F(Scheduler, PeriodIsBoundedByTheSystem)
{
    tune_scheduler(1);
    tune_scheduler(10);
    tune_scheduler(100);
    EXPECT_EQ(clock.begun, (std::vector<uint32_t>{2, 10, 50}));
    EXPECT_EQ(clock.ended, (std::vector<uint32_t>{2, 10}));
}

TEST_F(Scheduler, IsRestoredOnce)
{
    tune_scheduler(10);
    restore_scheduler();
    restore_scheduler();
    EXPECT_EQ(clock.ended, std::vector<uint32_t>{10});
    EXPECT_EQ(console.logged(), "Trace: Fast scheduling enabled (resolution 10 ms)\r\nTrace: Scheduler restored\r\n");
}

TEST_F(Scheduler, FailuresAreLogged)
{
    clock.caps_work = false;
    tune_scheduler(10);
    clock.caps_work = true;
    clock.begin_works = false;
    tune_scheduler(10);
    restore_scheduler();
    clock.begin_works = true;
    clock.end_works = false;
    tune_scheduler(10);
    restore_scheduler();
    EXPECT_EQ(console.logged(), "Warning: Can't get time device capabilities\r\n"
                                "Warning: timeBeginPeriod() failed with resolution 10\r\n"
                                "Trace: Fast scheduling enabled (resolution 10 ms)\r\n"
                                "Warning: timeEndPeriod() failed\r\n");
    EXPECT_EQ(clock.ended, std::vector<uint32_t>{10});
}

TEST_F(Scheduler, OldSystemsAreLeftAlone)
{
    os_type = 2;
    tune_scheduler(10);
    EXPECT_TRUE(clock.begun.empty());
    EXPECT_EQ(console.logged(), "");
}

constexpr int32_t an_hour = 3600000;

class Timer : public testing::Test
{
  protected:
    ~Timer() override
    {
        destroy_timer();
    }

    // True when the flag came within ten seconds, for which a driver's polling loop would do the same.
    static bool flag_comes()
    {
        reset_usec_counter();
        while (global_timeout == 0 && get_usec_counter() < 10000000) std::this_thread::yield();
        return global_timeout == 1;
    }
};

TEST_F(Timer, ExpiryRaisesTheFlag)
{
    ASSERT_EQ(create_timer(), 0);
    EXPECT_NE(global_timer, 0u);
    EXPECT_EQ(global_timeout_counter, -1);
    reset_usec_counter();
    ASSERT_EQ(set_timer(100), 0);
    while (global_timeout == 0 && get_usec_counter() < 10000000) std::this_thread::yield();
    EXPECT_GE(get_usec_counter(), 95000u);
    EXPECT_EQ(global_timeout, 1);
    EXPECT_EQ(global_timeout_counter, -1);
}

TEST_F(Timer, ExpiresAgainAndAgain)
{
    ASSERT_EQ(create_timer(), 0);
    for (int i = 0; i < 3; ++i) {
        set_timer(2);
        EXPECT_TRUE(flag_comes());
        clear_timer();
        EXPECT_EQ(global_timeout, 0);
    }
}

TEST_F(Timer, NewPeriodWakesTheThreadAtOnce)
{
    ASSERT_EQ(create_timer(), 0);
    set_timer(an_hour);
    EXPECT_EQ(global_timeout_counter, an_hour);
    set_timer(2);
    EXPECT_TRUE(flag_comes());
}

TEST_F(Timer, ClearedTimerLeavesTheFlag)
{
    ASSERT_EQ(create_timer(), 0);
    set_timer(10);
    EXPECT_EQ(clear_timer(), 0);
    EXPECT_EQ(global_timeout_counter, -1);
    my_nap(30000); // past the time that was cleared
    EXPECT_EQ(global_timeout, 0);
}

TEST_F(Timer, NoTimeAtAllIsOverAtOnce)
{
    ASSERT_EQ(create_timer(), 0);
    EXPECT_EQ(set_timer(0), 0);
    EXPECT_EQ(global_timeout, 1);
    set_timer(2); // the thread is still there
    EXPECT_TRUE(flag_comes());
}

TEST_F(Timer, CreatedTwiceIsOneThread)
{
    ScriptedConsole console;
    console.log_here(3);
    ASSERT_EQ(create_timer(), 0);
    const uint64_t first = global_timer;
    set_timer(0);
    EXPECT_EQ(create_timer(), 0);
    EXPECT_EQ(global_timeout, 0);
    EXPECT_EQ(global_timer, first);
    destroy_timer();
    EXPECT_EQ(set_timer(1), -1);
    EXPECT_EQ(console.logged(), "Trace: Creating timer\r\nTrace: Timer started\r\n"
                                "Trace: Creating timer\r\nTrace: Timer already active\r\n"
                                "Trace: Stopping timer\r\nTrace: Timer stopped\r\n");
}

TEST_F(Timer, Hazard_M21_WithoutAThreadNothingIsSet)
{
    global_timeout = 7;
    EXPECT_EQ(set_timer(10), -1);
    EXPECT_EQ(clear_timer(), -1);
    EXPECT_EQ(global_timeout, 7);
    EXPECT_EQ(global_timer, 0u);
}

TEST_F(Timer, Hazard_M21_ThreadThatSleepsWithoutEndIsStopped)
{
    ScriptedConsole console;
    console.log_here(3);
    ASSERT_EQ(create_timer(), 0);
    destroy_timer();
    ASSERT_EQ(create_timer(), 0);
    set_timer(an_hour);
    destroy_timer();
    EXPECT_EQ(global_timer, 0u);
    EXPECT_EQ(global_timeout, 0);
    EXPECT_EQ(global_timeout_counter, -1);
    destroy_timer();
    const std::string log = console.logged();
    EXPECT_NE(log.find("Trace: Timer not running\r\n"), std::string::npos);
}

TEST_F(Timer, DestroyedTimerForgetsItsExpiry)
{
    ASSERT_EQ(create_timer(), 0);
    set_timer(1);
    ASSERT_TRUE(flag_comes());
    destroy_timer();
    EXPECT_EQ(global_timeout, 0);
}

TEST(TimerDeathTest, Hazard_M21_ProgramMayEndWhileTheTimerRuns)
{
    EXPECT_EXIT(
        {
            create_timer();
            set_timer(an_hour);
            std::exit(42);
        },
        testing::ExitedWithCode(42), "");
}

} // namespace
