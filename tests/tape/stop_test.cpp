// Operations on a whole tape that are told of and stopped.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/error.h"
#include "tape/percent.h"
#include "tape/simh_convert.h"
#include "tape/simh_test.h"
#include "tests/support/capture.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

std::vector<uint32_t> told;
uint32_t stop_at; // a percentage from which on the answer is no

int32_t tell(void *, uint32_t, uint32_t percent)
{
    told.push_back(percent);
    return percent >= stop_at ? 1 : 0;
}

class Listener
{
  public:
    explicit Listener(uint32_t percent)
    {
        told.clear();
        stop_at = percent;
        tape_progress = tell;
    }
    ~Listener()
    {
        tape_progress = nullptr;
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
};

struct Operation {
    const char *name;
    std::function<int32_t(Tape &from, Tape &to)> run;
    int32_t done;
    int32_t stopped;
    bool makes_output;
};

const Operation operations[] = {
    {"test",
     [](Tape &from, Tape &) {
         TapeImage tested{};
         return simh_test_image(from->fd, &tested, 8, 1, 0);
     },
     SIMH_FIXED, SIMH_UNKNOWN, false},
    {"to fixed", [](Tape &from, Tape &to) { return simh_simh2fixed(from, to, 0); }, 0, -1, true},
    {"packed", [](Tape &from, Tape &to) { return simh_simh2fixed(from, to, 1); }, 0, -1, true},
    {"to plain", [](Tape &from, Tape &to) { return simh_simh2hpi(from, to->fd, 8); }, 0, -1, true},
    {"fixed to plain", [](Tape &from, Tape &to) { return simh_fixed2hpi(from, to->fd); }, 0, -1, true},
    {"from plain", [](Tape &from, Tape &to) { return simh_hpi2simh(from->fd, to); }, 0, -1, true},
};

Bytes slots()
{
    Bytes image;
    for (uint32_t i = 0; i < 50; i++) {
        const Bytes slot = record_slot(some_data(8, i), 8);
        image.insert(image.end(), slot.begin(), slot.end());
    }
    return image;
}

TEST(TapeStop, EveryPercentageIsToldOnceAndNothingIsPrinted)
{
    for (const Operation &row : operations) {
        SCOPED_TRACE(row.name);
        Tape from(slots(), SIMH_FIXED, 8);
        Tape to({}, SIMH_FIXED, 8);
        const OutputCapture output;
        const Listener listener(1000);
        EXPECT_EQ(row.run(from, to), row.done);
        EXPECT_GE(told.size(), 49u);
        EXPECT_EQ(told.front(), 0u);
        EXPECT_EQ(output.text(), "");
    }
}

TEST(TapeStop, AnswerOtherThanZeroEndsTheOperation)
{
    for (const Operation &row : operations) {
        for (const uint32_t percent : {0u, 1u, 50u, 90u}) {
            SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(percent));
            Tape from(slots(), SIMH_FIXED, 8);
            Tape to({}, SIMH_FIXED, 8);
            forget_error();
            const Listener listener(percent);
            EXPECT_EQ(row.run(from, to), row.stopped);
            EXPECT_EQ(error_text(), "stopped");
            EXPECT_EQ(from.position(), 0u);
            EXPECT_EQ(to.position(), 0u);
            EXPECT_EQ(from.bytes(), slots());
            EXPECT_GE(told.back(), percent);
            if (!row.makes_output) continue;
            const size_t so_far = to.bytes().size();
            tape_progress = nullptr;
            const OutputCapture output;
            EXPECT_EQ(row.run(from, to), 0);
            EXPECT_LT(so_far, to.bytes().size());
        }
    }
}

TEST(TapeStop, LogLevelsDoNotSilenceTheListener)
{
    Tape from(slots(), SIMH_FIXED, 8);
    const LogCapture log(2);
    const Listener listener(1000);
    TapeImage tested{};
    EXPECT_EQ(simh_test_image(from->fd, &tested, 8, 1, 0), SIMH_FIXED);
    EXPECT_GE(told.size(), 50u);
}

}
