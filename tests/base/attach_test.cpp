#include "base/attach.h"

#include <gtest/gtest.h>

#include "base/clock_inner.h"
#include "base/file.h"
#include "base/log.h"
#include "base/memory.h"
#include "base/memory_inner.h"
#include "base/timing.h"
#include "tests/base/scripted_clock.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedClock;
using tests::ScriptedConsole;

// Begins detached; ends attached, with the log that the other tests have.
class Attach : public testing::Test
{
  protected:
    Attach()
    {
        logfile = 0;
        library_detach();
    }

    ~Attach() override
    {
        library_attach();
        logfile = old_log;
    }

    const FileHandle old_log = logfile;
};

TEST_F(Attach, MakesEverythingReady)
{
    FileVoid = Stdin = Stdout = Stderr = 0;
    os_type = 0;
    ASSERT_EQ(library_attach(), 0);
    EXPECT_EQ(FileVoid, ~uint64_t{0});
    EXPECT_EQ(Stdin, platform_standard_file(StandardFile::input));
    EXPECT_EQ(Stdout, platform_standard_file(StandardFile::output));
    EXPECT_EQ(Stderr, platform_standard_file(StandardFile::error));
    EXPECT_EQ(os_type, 3);
    EXPECT_GT(nap_loops_per_usec(), 0);
    void *block = my_malloc(100);
    EXPECT_NE(block, nullptr);
    my_free(block);
}

TEST_F(Attach, WithoutACounterItComplainsAndCarriesOn)
{
    ScriptedConsole console;
    ScriptedClock clock;
    clock.frequency = 0;
    loglevel = 0;
    EXPECT_EQ(library_attach(), 0);
    EXPECT_EQ(console.complaints(), "[Tarvo] Error: Calibration of short time counter failed\n");
    EXPECT_NE(heap, nullptr);
}

TEST_F(Attach, WithoutAHeapItRefuses)
{
    ScriptedConsole console;
    const HeapCalls *const own = heap_calls;
    HeapCalls calls;
    calls.create = [](size_t) -> void * { return nullptr; };
    heap_calls = &calls;
    const int32_t result = library_attach();
    heap_calls = own;
    EXPECT_EQ(result, 1);
    EXPECT_EQ(console.complaints(), "Unable to allocate memory heap\n");
}

TEST_F(Attach, DetachGivesEverythingBack)
{
    ASSERT_EQ(library_attach(), 0);
    char path[FILE_PATH_SIZE];
    ASSERT_EQ(file_open_temp(&logfile, path, "wb+"), 1);
    ASSERT_EQ(create_timer(), 0);
    library_detach();
    EXPECT_EQ(logfile, 0u);
    EXPECT_EQ(global_timer, 0u);
    EXPECT_EQ(heap, nullptr);
    EXPECT_EQ(file_delete(path), 0);
}

TEST_F(Attach, DetachRestoresTheScheduler)
{
    ScriptedClock clock;
    ASSERT_EQ(library_attach(), 0);
    tune_scheduler(10);
    library_detach();
    EXPECT_EQ(clock.ended, std::vector<uint32_t>{10});
}

TEST_F(Attach, DetachTwiceAndAttachAgain)
{
    ASSERT_EQ(library_attach(), 0);
    library_detach();
    library_detach();
    EXPECT_EQ(heap, nullptr);
    ASSERT_EQ(library_attach(), 0);
    EXPECT_NE(heap, nullptr);
}

} // namespace
