// Each operation on a tape with its n-th call of the system failing: the tape stays where it was, or the operation came
// through as if nothing had happened.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "base/file.h"
#include "tape/simh.h"
#include "tape/simh_convert.h"
#include "tape/simh_test.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

constexpr uint32_t most_calls = 300;

const std::string large = some_data(5001);

Bytes variable_image()
{
    return joined({tape_record("ABC"), tape_mark(), half_gap(), gap_words(1), tape_record(large), tape_record("DEFG"),
                   tape_mark(), tape_record("HIJKLMNOP"), end_of_medium()});
}

Bytes fixed_image()
{
    return joined(
        {record_slot("ABCD", 16), mark_slot(16), record_slot("EF", 16), record_slot(some_data(16), 16), end_slot(16)});
}

struct Operation {
    const char *name;
    uint32_t format;
    uint32_t start; // position
    std::function<int32_t(Tape &)> run;
};

std::string buffer_of_reads(20000, '\0');

int32_t read_whole(Tape &tape)
{
    return simh_read_record_forward(tape, buffer_of_reads.data(), 20000, 3, nullptr);
}

int32_t read_whole_back(Tape &tape)
{
    return simh_read_record_reverse(tape, buffer_of_reads.data(), 20000, 3, nullptr);
}

const std::vector<Operation> reading = {
    {"move forward", 1, 16, [](Tape &tape) { return simh_move_forward(tape, 0); }},
    {"move reverse", 1, 22, [](Tape &tape) { return simh_move_reverse(tape); }},
    {"move over a record", 1, 5032, [](Tape &tape) { return simh_move_reverse(tape); }},
    {"position", 1, 16, [](Tape &tape) { return simh_position_tape(tape, 1); }},
    {"position back", 1, 5032, [](Tape &tape) { return simh_position_tape(tape, 0); }},
    {"position at a slot", 2, 64, [](Tape &tape) { return simh_position_tape(tape, 1); }},
    {"position at a slot before", 2, 64, [](Tape &tape) { return simh_position_tape(tape, 0); }},
    {"read", 1, 16, read_whole},
    {"read back", 1, 5032, read_whole_back},
    {"read a slot", 2, 96, read_whole},
    {"read a slot back", 2, 96, read_whole_back},
    {"space records", 1, 16, [](Tape &tape) { return simh_space_records(tape, 2); }},
    {"space records back", 1, 5044, [](Tape &tape) { return simh_space_records(tape, -2); }},
    {"space files", 1, 0, [](Tape &tape) { return simh_space_files(tape, 2); }},
    {"space files back", 1, 5044, [](Tape &tape) { return simh_space_files(tape, -1); }},
    {"set position", 1, 0, [](Tape &tape) { return simh_set_position(tape, 3); }},
    {"set slot", 2, 0, [](Tape &tape) { return simh_set_position(tape, 3); }},
};

// Once the record behind it has been shortened, the same gap shortens it from where it then begins.
constexpr char name_of_cut[] = "gap with a record cut";

const std::vector<Operation> writing = {
    {"record", 1, 12, [](Tape &tape) { return tape.write("xyz"); }},
    {"large record", 1, 12, [](Tape &tape) { return tape.write(some_data(300000)); }},
    {"parts", 1, 12,
     [](Tape &tape) {
         const TapeImage before = tape.image;
         const bool written =
             tape.write("xyz", 1) == 0 && tape.write(some_data(140000), 0) == 0 && tape.write("x", 2) == 0;
         if (written) return 0;
         tape.image = before; // given up
         tape.seek(12);
         return -1;
     }},
    {"slot", 2, 32, [](Tape &tape) { return tape.write("xyz"); }},
    {"gap", 1, 12, [](Tape &tape) { return simh_write_erase_gap(tape, 5030); }},
    {name_of_cut, 1, 26 - 14, [](Tape &tape) { return simh_write_erase_gap(tape, 500); }},
};

struct Fault {
    const char *name;
    FileFault kind;
    bool onward;
};

constexpr Fault read_faults[] = {
    {"seek", FileFault::seek, false},
    {"seeks", FileFault::seek, true},
    {"read", FileFault::read, false},
    {"reads", FileFault::read, true},
    {"short read", FileFault::short_read, false},
};

constexpr Fault write_faults[] = {
    {"seek", FileFault::seek, false},   {"write", FileFault::write, false},
    {"writes", FileFault::write, true}, {"short write", FileFault::short_write, false},
    {"read", FileFault::read, true},
};

// Has the operation tried with its first, second ... call failing, until all of them succeed. How many were made to
// fail.
uint32_t fail_each_call(const Fault &fault, const std::function<bool(uint32_t nth)> &reaches_it)
{
    SCOPED_TRACE(fault.name);
    uint32_t nth = 1;
    while (nth < most_calls && reaches_it(nth)) nth++;
    EXPECT_LT(nth, most_calls);
    return nth - 1;
}

struct Attempt {
    bool reached; // the call that fails
    int32_t result;
};

Attempt attempt(const Fault &fault, uint32_t nth, const std::function<int32_t()> &run)
{
    FileFaults faults(fault.kind, nth, fault.onward);
    const int32_t result = run();
    return {faults.reached, result};
}

Bytes image_for(const Operation &operation)
{
    return operation.format == SIMH_FIXED ? fixed_image() : variable_image();
}

struct OperationTape : Tape {
    explicit OperationTape(const Operation &operation)
        : Tape(image_for(operation), operation.format, operation.format == SIMH_FIXED ? 16 : 0)
    {
        seek(operation.start);
    }
};

bool same_numbers(TapeImage left, TapeImage right)
{
    left.fd = right.fd = 0;
    return memcmp(&left, &right, sizeof left) == 0;
}

// What a failed read has done with the tape; where seeks go on failing it can't be brought back.
void expect_tape_kept(const Operation &operation, const Fault &fault, Tape &tape, int32_t result)
{
    EXPECT_TRUE(result == -1 || result == -5) << result;
    EXPECT_EQ(tape->state, 0u);
    if (fault.kind == FileFault::seek && fault.onward) return;
    const bool passed_something = result == -5 || fault.kind != FileFault::seek;
    if (passed_something)
        EXPECT_LE(tape.position(), std::max(operation.start, 5044u));
    else
        EXPECT_EQ(tape.position(), operation.start);
}

uint32_t fail_reading(const Operation &operation, const Fault &fault)
{
    SCOPED_TRACE(operation.name);
    OperationTape sound(operation);
    const int32_t expected = operation.run(sound);
    return fail_each_call(fault, [&](uint32_t nth) {
        OperationTape tape(operation);
        const Attempt done = attempt(fault, nth, [&] { return operation.run(tape); });
        EXPECT_TRUE(done.reached || done.result == expected);
        if (done.result == expected)
            EXPECT_EQ(tape.position(), sound.position());
        else
            expect_tape_kept(operation, fault, tape, done.result);
        EXPECT_EQ(tape.bytes(), image_for(operation));
        return done.reached;
    });
}

TEST(TapeFaults, OperationsThatReadStayWhereTheyWereOrComeThrough)
{
    for (const Operation &operation : reading) {
        uint32_t failed = 0;
        for (const Fault &fault : read_faults) failed += fail_reading(operation, fault);
        EXPECT_GT(failed, 0u) << operation.name;
    }
}

uint32_t fail_writing(const Operation &operation, const Fault &fault)
{
    SCOPED_TRACE(operation.name);
    OperationTape sound(operation);
    EXPECT_EQ(operation.run(sound), 0);
    return fail_each_call(fault, [&](uint32_t nth) {
        OperationTape tape(operation);
        const TapeImage before = tape.image;
        const Attempt done = attempt(fault, nth, [&] { return operation.run(tape); });
        if (done.result != 0) {
            EXPECT_TRUE(done.reached);
            EXPECT_EQ(done.result, -1);
            EXPECT_EQ(tape.position(), operation.start);
            EXPECT_EQ(tape->state, before.state);
            EXPECT_EQ(tape->num_records, before.num_records);
            const Bytes now = tape.bytes();
            const Bytes was = image_for(operation);
            EXPECT_TRUE(std::equal(was.begin(), was.begin() + operation.start, now.begin()));
            EXPECT_EQ(operation.run(tape), 0);
        }
        EXPECT_TRUE(operation.name == name_of_cut || tape.bytes() == sound.bytes());
        EXPECT_EQ(tape.position(), sound.position());
        EXPECT_TRUE(same_numbers(tape.image, sound.image));
        return done.reached;
    });
}

TEST(TapeFaults, OperationsThatWriteReturnToTheirStartAndCanBeTriedAgain)
{
    for (const Operation &operation : writing) {
        uint32_t failed = 0;
        for (const Fault &fault : write_faults) failed += fail_writing(operation, fault);
        EXPECT_GT(failed, 0u) << operation.name;
    }
}

TEST(TapeFaults, MarksThatCannotBeWrittenLeaveTheTapeAsItWas)
{
    for (const uint32_t format : {1u, 2u}) {
        for (const auto write : {simh_write_tapemark, simh_write_eom}) {
            for (const FileFault kind : {FileFault::write, FileFault::short_write, FileFault::seek}) {
                Tape tape(fixed_image(), format, 16);
                tape.seek(32);
                tape->record_number = format == 2 ? 1 : 0;
                const TapeImage before = tape.image;
                {
                    FileFaults faults(kind, 1);
                    write(tape);
                    EXPECT_TRUE(faults.reached);
                }
                EXPECT_EQ(tape.position(), 32u);
                EXPECT_TRUE(same_numbers(tape.image, before));
            }
        }
    }
}

TEST(TapeFaults, RecordThatCannotBeEndedByAMoveIsGivenUp)
{
    Tape tape({});
    EXPECT_EQ(tape.write("ABC", 1), 0);
    {
        FileFaults faults(FileFault::write, 1);
        EXPECT_EQ(simh_move_reverse(tape), -1);
    }
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.position(), 7u);
    EXPECT_EQ(simh_stop(tape), 0);
}

TEST(TapeFaults, PartThatFailsCanBeTriedAgain)
{
    Tape tape({});
    EXPECT_EQ(tape.write("ABC", 1), 0);
    {
        FileFaults faults(FileFault::short_write, 1);
        EXPECT_EQ(tape.write("DEFG", 0), -1);
        EXPECT_EQ(tape.position(), 7u);
    }
    EXPECT_EQ(tape->record_size, 3u);
    {
        FileFaults faults(FileFault::write, 1);
        EXPECT_EQ(tape.write("DEFG", 2), -1);
    }
    EXPECT_EQ(tape.write("DEFG", 2), 0);
    EXPECT_EQ(tape.bytes(), tape_record("ABCDEFG"));
}

TEST(TapeFaults, FailedReadEndsTheTransfer)
{
    Tape tape(variable_image());
    tape.seek(16);
    EXPECT_EQ(simh_position_tape(tape, 1), 5001);
    std::string buffer(6000, '\0');
    int32_t complete = 5;
    {
        FileFaults faults(FileFault::read, 1);
        EXPECT_EQ(simh_read_record_forward(tape, buffer.data(), 6000, 1, &complete), -1);
        EXPECT_EQ(error_text(), "File read error");
    }
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(complete, 0);
    EXPECT_EQ(tape.position(), 26u);
}

// ---- whole tapes ---------------------------------------------------------------------------------------

struct Conversion {
    const char *name;
    uint32_t from_format;
    std::function<int32_t(Tape &, Tape &)> run;
};

const std::vector<Conversion> conversions = {
    {"to slots", 1, [](Tape &from, Tape &to) { return simh_simh2fixed(from, to, 0); }},
    {"to packed slots", 1, [](Tape &from, Tape &to) { return simh_simh2fixed(from, to, 1); }},
    {"to a file", 1, [](Tape &from, Tape &to) { return simh_simh2hpi(from, to->fd, 16); }},
    {"slots to a file", 2, [](Tape &from, Tape &to) { return simh_fixed2hpi(from, to->fd); }},
    {"from a file", 1, [](Tape &from, Tape &to) { return simh_hpi2simh(from->fd, to); }},
    {"from a file to slots", 1,
     [](Tape &from, Tape &to) {
         to->format = SIMH_FIXED;
         return simh_hpi2simh(from->fd, to);
     }},
};

Bytes make_long_image(uint32_t format)
{
    Bytes image;
    for (uint32_t i = 0; i < 400; i++) {
        const Bytes part = format == SIMH_FIXED ? record_slot(some_data(i % 1000 + 1, i), 1000)
                                                : tape_record(some_data(i % 1000 + 1, i));
        image.insert(image.end(), part.begin(), part.end());
    }
    return image;
}

const Bytes &long_image(uint32_t format)
{
    static const Bytes variable = make_long_image(SIMH_VARIABLE);
    static const Bytes fixed = make_long_image(SIMH_FIXED);
    return format == SIMH_FIXED ? fixed : variable;
}

constexpr Fault conversion_faults[] = {
    {"seek", FileFault::seek, false},
    {"seeks", FileFault::seek, true},
    {"read", FileFault::read, false},
    {"reads", FileFault::read, true},
    {"write", FileFault::write, false},
    {"writes", FileFault::write, true},
    {"short write", FileFault::short_write, false},
};

void fail_conversion(const Conversion &conversion, const Fault &fault)
{
    SCOPED_TRACE(conversion.name);
    const Bytes &image = long_image(conversion.from_format);
    const uint32_t blocksize = conversion.from_format == SIMH_FIXED ? 1000 : 0;
    Tape sound_from(image, conversion.from_format, blocksize);
    Tape sound({}, SIMH_VARIABLE, 1000);
    EXPECT_EQ(conversion.run(sound_from, sound), 0);
    bool failed = false;
    const uint32_t calls = fail_each_call(fault, [&](uint32_t nth) {
        Tape from(image, conversion.from_format, blocksize);
        Tape to({}, SIMH_VARIABLE, 1000);
        const Attempt done = attempt(fault, nth, [&] { return conversion.run(from, to); });
        failed = failed || done.result < 0;
        EXPECT_TRUE(done.result < 0 || to.bytes() == sound.bytes());
        const bool can_rewind = fault.kind != FileFault::seek || done.result == 0;
        EXPECT_TRUE(!can_rewind || (to.position() == 0 && from.position() == 0));
        EXPECT_TRUE(from.bytes() == image);
        return done.reached;
    });
    const bool is_tried_again = fault.kind == FileFault::read && !fault.onward;
    EXPECT_NE(failed, is_tried_again);
    EXPECT_GT(calls, 0u);
}

TEST(TapeFaults, ConversionsFailOrComeThrough)
{
    LogCapture log(2);
    for (const Conversion &conversion : conversions) {
        for (const Fault &fault : conversion_faults) fail_conversion(conversion, fault);
    }
}

constexpr Fault test_faults[] = {
    {"seek", FileFault::seek, false}, {"read", FileFault::read, false},
    {"reads", FileFault::read, true}, {"short read", FileFault::short_read, false},
    {"size", FileFault::size, false},
};

TEST(TapeFaults, TestOfAnImageSaysNoOrComesThrough)
{
    LogCapture log(2);
    for (const int32_t format : {1, 2}) {
        const Bytes &image = long_image(static_cast<uint32_t>(format));
        for (const Fault &fault : test_faults) {
            const uint32_t calls = fail_each_call(fault, [&](uint32_t nth) {
                Tape tape(image);
                TapeImage tested{};
                const Attempt done =
                    attempt(fault, nth, [&] { return simh_test_image(tape->fd, &tested, 1000, 1, 0); });
                EXPECT_TRUE(done.result == format || (done.reached && done.result <= 1)) << done.result;
                EXPECT_TRUE(tape.position() == 0 || fault.kind == FileFault::seek);
                return done.reached;
            });
            EXPECT_GT(calls, 0u);
        }
    }
}

TEST(TapeFaults, TestWhoseSeeksAllFailSaysNo)
{
    LogCapture log(2);
    Tape tape(long_image(1));
    TapeImage tested{};
    const Attempt done =
        attempt({"seeks", FileFault::seek, true}, 1, [&] { return simh_test_image(tape->fd, &tested, 0, 1, 0); });
    EXPECT_TRUE(done.reached);
    EXPECT_EQ(done.result, 0);
}

TEST(TapeFaults, NewTapeThatCannotBeWrittenIsAFailure)
{
    LogCapture log(2);
    for (const Fault &fault :
         {Fault{"write", FileFault::write, false}, {"short write", FileFault::short_write, false}}) {
        const uint32_t calls = fail_each_call(fault, [&](uint32_t nth) {
            Tape tape({}, SIMH_FIXED, 1000);
            const Attempt done = attempt(fault, nth, [&] { return simh_initialize(tape, 500, 1); });
            EXPECT_EQ(done.result, done.reached ? -1 : 0);
            EXPECT_EQ(tape.position(), 0u);
            EXPECT_EQ(tape->num_records, done.reached ? 0u : 501u);
            return done.reached;
        });
        EXPECT_GT(calls, 0u);
    }
}

}
