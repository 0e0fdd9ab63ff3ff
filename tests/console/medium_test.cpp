// Opening a medium for a verb, with reads and allocations that fail.
#include "console/medium.h"

#include <string>

#include <gtest/gtest.h>

#include "base/file_inner.h"
#include "tests/console/program.h"
#include "tests/support/faults.h"
#include "tests/support/volume_builder.h"

namespace
{

struct Counts { // of openings that failed, and that brought a directory in part, or whole
    uint32_t failed = 0;
    uint32_t partly = 0;
    uint32_t whole = 0;
};

// Opens a volume as the verbs do; each way in which that can end must have its words, once.
void open_and_count(const char *path, const std::string &words, Counts *counts)
{
    Arguments arguments;
    arguments.medium = path;
    testing::internal::CaptureStderr();
    const Reading reading = open_for_reading(arguments);
    const int code = reading.medium == nullptr ? int{exit_failed} : report_reading(reading, exit_done);
    const std::string errors = testing::internal::GetCapturedStderr();
    if (code == exit_done) {
        EXPECT_EQ(errors, "");
        counts->whole++;
        return;
    }
    EXPECT_EQ(tests::error_lines(errors), 1U) << errors;
    EXPECT_NE(errors.find(words), std::string::npos) << errors;
    if (code == exit_failed) counts->failed++;
    if (code == exit_partly) counts->partly++;
}

// For the life of the object nothing at or behind a position can be read.
class UnreadableFrom
{
  public:
    explicit UnreadableFrom(int64_t position) : old_(file_calls)
    {
        limit = position;
        calls_ = *file_calls;
        calls_.read = read;
        file_calls = &calls_;
    }
    ~UnreadableFrom()
    {
        file_calls = old_;
    }
    UnreadableFrom(const UnreadableFrom &) = delete;
    UnreadableFrom &operator=(const UnreadableFrom &) = delete;

  private:
    static int64_t read(PlatformFile file, void *buffer, uint32_t bytes)
    {
        constexpr uint32_t some_code = 5; // for which every system has words
        if (platform_seek(file, 0, SeekFrom::current) + bytes <= limit) return platform_read(file, buffer, bytes);
        platform_set_last_error(some_code);
        return -1;
    }

    static inline int64_t limit = 0;
    const FileCalls *old_;
    FileCalls calls_;
};

}

TEST(OpenForReading, MediumThatCannotBeReadToItsEndIsToldOnce)
{
    const tests::Bytes image = tests::lif_image(tests::lif_volume_with_files(400)); // a directory of 51 records
    const tests::TemporaryFile volume(image);
    Counts counts;
    for (int64_t position = 0; position < 60 * 256; position += 256) {
        const UnreadableFrom fault(position);
        open_and_count(volume.path(), "File read error", &counts);
    }
    EXPECT_EQ(counts.failed, 40U) << "the records up to those where a second file system may begin";
    EXPECT_EQ(counts.partly, 13U) << "the rest of the directory";
    EXPECT_EQ(counts.whole, 7U) << "files aren't read";
}

TEST(OpenForReading, SingleFailingReadIsToldOnceOrMadeGood)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::lif_volume_with_files(4000)));
    bool reached = true;
    for (uint32_t nth = 1; reached; ++nth) {
        ASSERT_LT(nth, 1000U) << "no end of reading";
        const tests::FileFaults faults(tests::FileFault::read, nth);
        Counts counts;
        open_and_count(volume.path(), "File read error", &counts);
        reached = faults.reached;
        EXPECT_EQ(counts.failed + counts.partly + counts.whole, 1U) << nth;
        EXPECT_TRUE(reached || counts.whole == 1) << nth;
    }
}

TEST(OpenForReading, EachFailingAllocationIsToldOnceAndNothingStaysAllocated)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    Counts counts;
    for (uint32_t nth = 1; counts.whole == 0; ++nth) {
        ASSERT_LT(nth, 1000U) << "no end of allocations";
        const tests::HeapFaults faults(nth);
        open_and_count(volume.path(), "Out of memory", &counts);
        EXPECT_EQ(faults.reached, counts.whole == 0) << nth;
        EXPECT_EQ(faults.releases, faults.allocations - (faults.reached ? 1 : 0)) << nth;
    }
    EXPECT_GT(counts.failed, 0U);
    EXPECT_GT(counts.partly, 0U);
}

TEST(OpenForReading, FailingOpenTellsTheSystemsWords)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const tests::FileFaults faults(tests::FileFault::open, 1);
    Counts counts;
    open_and_count(volume.path(), "Can't open file", &counts);
    EXPECT_EQ(counts.failed, 1U);
}

TEST(OpenForReading, CorruptEntryWithoutWordsOfItsOwnIsPartly)
{
    tests::LifVolume contents;
    contents.entries = {{.name = "BAD", .start = 0}};
    const tests::TemporaryFile volume(tests::lif_image(contents));
    Arguments arguments;
    arguments.medium = volume.path();
    const Reading reading = open_for_reading(arguments);
    ASSERT_NE(reading.medium, nullptr);
    EXPECT_FALSE(reading.whole);
    EXPECT_FALSE(reading.has_words);
    EXPECT_EQ(report_reading(reading, exit_done), exit_partly);
    EXPECT_EQ(report_reading(reading, exit_failed), exit_failed) << "a failure stays one";
}

TEST(OpenForChange, EachFailingReadIsToldOrMadeGood)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::lif_volume_with_files(400)));
    Arguments arguments;
    arguments.medium = volume.path();
    bool reached = true;
    for (uint32_t nth = 1; reached; ++nth) {
        ASSERT_LT(nth, 1000U) << "no end of reading";
        testing::internal::CaptureStderr();
        const tests::FileFaults faults(tests::FileFault::read, nth, true);
        const Medium medium = open_for_change(arguments);
        const std::string errors = testing::internal::GetCapturedStderr();
        reached = faults.reached;
        EXPECT_EQ(medium == nullptr, reached) << nth;
        EXPECT_EQ(tests::error_lines(errors) > 0, reached) << nth << errors;
    }
}

TEST(OpenForChange, TapeContainersAndFormatsThatAreOnlyReadAreRefused)
{
    MediaDescriptor md = {};
    md.format = FORMAT_LIF;
    EXPECT_TRUE(is_changeable(&md));
    md.tape = reinterpret_cast<TapeImage *>(&md); // never looked into
    EXPECT_FALSE(is_changeable(&md));
    EXPECT_EQ(global_error, 109U);
    EXPECT_STREQ(global_error_info, "change of a tape image");
    md.tape = nullptr;
    for (const uint32_t format : {FORMAT_SDF, FORMAT_HFS, FORMAT_UNKNOWN}) {
        md.format = format;
        set_error(0, "");
        EXPECT_FALSE(is_changeable(&md)) << format;
        EXPECT_EQ(global_error, 109U) << format;
    }
}
