// The tables of a volume are written whole or not at all.
#include "console/tables.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/console/changes.h"
#include "tests/support/medium.h"
#include "volume/access.h"
#include "volume/operations.h"

using tests::Bytes;
using tests::TemporaryFile;
using tests::VolumeCase;

namespace
{

// The row of image files, with writes that fail.
struct Writes {
    uint32_t first_failing = 0; // counted from 1, 0: none
    uint32_t last_failing = 0;
    uint32_t count = 0;
};
Writes writes;

const MediumAccess *image_row = nullptr;

int32_t write_or_fail(MediaDescriptor *md, uint32_t record, const uint8_t *buffer)
{
    writes.count++;
    if (writes.count < writes.first_failing || writes.count > writes.last_failing)
        return image_row->write_record(md, record, buffer);
    set_error(303, "record %lu", static_cast<unsigned long>(record));
    return -1;
}

// A volume whose writes may fail, without BETA in its list.
class Changed
{
  public:
    Changed(const TemporaryFile &volume, const Writes &failing) : medium(volume.path())
    {
        image_row = medium_access(medium.md);
        row_ = *image_row;
        row_.write_record = write_or_fail;
        medium->state->access = &row_;
        writes = failing;
        image_delete_file(medium.md, tests::entry_named(medium.md, "BETA"), 0);
    }
    ~Changed()
    {
        medium->state->access = nullptr;
    }
    Changed(const Changed &) = delete;
    Changed &operator=(const Changed &) = delete;

    tests::Medium medium;

  private:
    MediumAccess row_{};
};

TablesEnd remove_with(const TemporaryFile &volume, uint32_t first, uint32_t last)
{
    const Changed changed(volume, {first, last, 0});
    return write_tables_whole(changed.medium.md);
}

}

class TablesOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(TablesOnEach, WithoutAFailureTheyAreWritten)
{
    const TemporaryFile volume(GetParam().image());
    EXPECT_EQ(remove_with(volume, 0, 0), TablesEnd::written);
    EXPECT_EQ(tests::names_on(GetParam().layout, volume), tests::Names({"ALPHA", "GAMMA"}));
}

TEST_P(TablesOnEach, OneFailingWriteLeavesEachByteAsItWas)
{
    for (uint32_t nth = 1;; nth++) {
        ASSERT_LT(nth, 1000U);
        const TemporaryFile volume(GetParam().image());
        const TablesEnd end = remove_with(volume, nth, nth);
        if (writes.count < nth) break;
        EXPECT_EQ(end, TablesEnd::as_before) << nth;
        EXPECT_EQ(global_error, 303U);
        EXPECT_EQ(volume.bytes(), GetParam().image()) << nth;
    }
}

TEST_P(TablesOnEach, MediumThatTakesNoMoreIsTornOrAsItWas)
{
    uint32_t torn = 0;
    for (uint32_t nth = 1;; nth++) {
        ASSERT_LT(nth, 1000U);
        const TemporaryFile volume(GetParam().image());
        const TablesEnd end = remove_with(volume, nth, ~uint32_t{0});
        if (writes.count < nth) break;
        const bool same = volume.bytes() == GetParam().image();
        EXPECT_EQ(end, same ? TablesEnd::as_before : TablesEnd::torn) << nth;
        EXPECT_EQ(global_error, 303U);
        if (!same) torn++;
    }
    EXPECT_GT(torn, 0U);
}

INSTANTIATE_TEST_SUITE_P(, TablesOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Tables, DamageIsTold)
{
    const TemporaryFile volume(tests::disk_of_three());
    const Changed changed(volume, {2, ~uint32_t{0}, 0});
    testing::internal::CaptureStderr();
    EXPECT_FALSE(commit_tables(changed.medium.md, "Nothing was removed."));
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(errors, tests::error_line("directory: File write error - check write protection (record 2)") +
                          "[tarvo] The directory of " + volume.path() + " couldn't be put back: it is damaged.\n");
}
