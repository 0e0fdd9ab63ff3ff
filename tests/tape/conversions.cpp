// Conversions of whole images in memory, with what holds for each of them.
#include "tests/tape/conversions.h"

#include <gtest/gtest.h>

#include "base/file.h"
#include "tape/simh_convert.h"
#include "tests/support/capture.h"

namespace tests
{

Bytes to_slots(const Bytes &image, uint32_t blocksize, int32_t do_pack)
{
    Tape from(image);
    Tape to({}, SIMH_UNKNOWN, blocksize);
    from.seek(static_cast<uint32_t>(image.size()));
    LogCapture log(2);
    EXPECT_EQ(simh_simh2fixed(from, to, do_pack), 0);
    EXPECT_EQ(from.position(), 0u);
    EXPECT_EQ(to.position(), 0u);
    EXPECT_EQ(from->record_number | from->file_number | to->record_number | to->file_number, 0u);
    EXPECT_EQ(to->format, 2u);
    EXPECT_EQ(from.bytes(), image);
    return to.bytes();
}

Bytes to_file(const Bytes &image, uint32_t blocksize)
{
    Tape from(image);
    Tape to({});
    from.seek(static_cast<uint32_t>(image.size()));
    LogCapture log(2);
    EXPECT_EQ(simh_simh2hpi(from, to->fd, blocksize), 0);
    EXPECT_EQ(from.position(), 0u);
    EXPECT_EQ(to.position(), 0u);
    EXPECT_EQ(from.bytes(), image);
    return to.bytes();
}

Bytes slots_to_file(const Bytes &image, uint32_t blocksize)
{
    Tape from(image, SIMH_FIXED, blocksize);
    Tape to({});
    LogCapture log(2);
    EXPECT_EQ(simh_fixed2hpi(from, to->fd), 0);
    EXPECT_EQ(from.position(), 0u);
    EXPECT_EQ(to.position(), 0u);
    return to.bytes();
}

Bytes from_file(const Bytes &content, uint32_t format, uint32_t blocksize)
{
    Tape from(content);
    Tape to({}, format, blocksize);
    LogCapture log(2);
    EXPECT_EQ(simh_hpi2simh(from->fd, to), 0);
    EXPECT_EQ(from.position(), 0u);
    EXPECT_EQ(to.position(), 0u);
    EXPECT_EQ(from.bytes(), content);
    return to.bytes();
}

}
