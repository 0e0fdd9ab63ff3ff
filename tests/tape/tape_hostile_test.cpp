// Any bytes as a tape, and any numbers in its record: every operation ends, stays in its buffers, and what only reads
// changes nothing.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "base/file.h"
#include "tape/simh.h"
#include "tape/simh_convert.h"
#include "tape/simh_test.h"
#include "tests/support/capture.h"
#include "tests/support/random_choice.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

constexpr uint32_t buffer_size = 64;

// One file whose content is exchanged, since making a thousand of them takes its time.
class HostileTape
{
  public:
    void load(const Bytes &image, uint32_t format = SIMH_VARIABLE, uint32_t blocksize = 0)
    {
        image_ = image;
        store();
        simh_reset(tape);
        tape->format = format;
        tape->blocksize = blocksize;
        tape->num_records = 100;
    }
    void store()
    {
        ASSERT_EQ(file_prepare(tape->fd, 0), 1);
        if (image_.empty()) return;
        ASSERT_EQ(file_write(tape->fd, image_.data(), static_cast<uint32_t>(image_.size())), image_.size());
        tape.seek(0);
    }
    void expect_unchanged() const
    {
        EXPECT_EQ(tape.bytes(), image_);
    }

    Tape tape{Bytes{}};

  private:
    Bytes image_;
};

// A move or a read to any result that is described.
void expect_result(int32_t result, bool fixed)
{
    const bool is_slot_length = fixed && result <= INT32_MIN + 0xFFFFFF;
    EXPECT_TRUE(result >= -7 || is_slot_length) << result;
}

int32_t read_some(TapeImage *tape, bool forward, uint32_t most, int32_t part)
{
    std::vector<uint8_t> buffer(buffer_size + 1, 0xA5);
    int32_t complete = 0;
    const auto read = forward ? simh_read_record_forward : simh_read_record_reverse;
    const int32_t result = read(tape, buffer.data(), most, part, &complete);
    EXPECT_LE(result, static_cast<int32_t>(most));
    EXPECT_EQ(buffer[most], 0xA5);
    return result;
}

// Every step goes on over at least 2 bytes, or it is the last one.
void walk(HostileTape &hostile, bool forward, uint32_t size)
{
    const bool fixed = hostile.tape->format == SIMH_FIXED;
    int32_t result = 0;
    uint32_t steps = 0;
    while (result >= 0 || result == SIMH_TAPE_MARK) {
        result = read_some(hostile.tape, forward, buffer_size, SIMH_WHOLE_RECORD);
        expect_result(result, fixed);
        ASSERT_LE(steps++, size + 16);
    }
}

void try_everything_that_reads(HostileTape &hostile, uint32_t size)
{
    Tape &tape = hostile.tape;
    const bool fixed = tape->format == SIMH_FIXED;
    for (uint32_t start = 0; start <= size + 5; start++) {
        for (const bool forward : {false, true}) {
            tape.seek(start);
            walk(hostile, forward, size);
        }
        tape.seek(start);
        expect_result(simh_move_forward(tape, 1), fixed);
        expect_result(simh_move_reverse(tape), fixed);
        expect_result(simh_position_tape(tape, 0), fixed);
        expect_result(simh_position_tape(tape, 1), fixed);
        read_some(tape, true, 3, SIMH_FIRST_PART);
        read_some(tape, false, 3, 0);
        simh_stop(tape);
        tape.seek(start);
        EXPECT_LE(simh_space_records(tape, 100), 0);
        EXPECT_LE(simh_space_files(tape, -100), 0);
        EXPECT_LE(simh_set_position(tape, 7), 0);
    }
    hostile.expect_unchanged();
}

// All images of so many words, and each of them cut by one to three bytes.
std::vector<Bytes> images_of_words(const std::vector<uint32_t> &words, uint32_t count)
{
    std::vector<Bytes> images = {{}};
    for (uint32_t i = 0; i < count; i++) {
        std::vector<Bytes> longer;
        for (const Bytes &image : images) {
            for (const uint32_t word : words) longer.push_back(joined({image, little_word(word)}));
        }
        images = longer;
    }
    return images;
}

const std::vector<uint32_t> telling_words = {0,          1,          4,          0xFFFFFF,   0x1000000,
                                             0x80000004, 0xFFFEFFFF, 0xFFFF0000, 0xFFFFFFFE, 0xFFFFFFFF};

TEST(TapeHostile, SmallFilesOfTellingWords)
{
    LogCapture log(2);
    HostileTape hostile;
    for (const Bytes &words : images_of_words(telling_words, 2)) {
        for (size_t cut = 0; cut < 4; cut++) {
            const Bytes image(words.begin(), words.end() - static_cast<ptrdiff_t>(cut));
            const auto size = static_cast<uint32_t>(image.size());
            hostile.load(image);
            try_everything_that_reads(hostile, size);
            hostile.load(image, SIMH_FIXED, 4);
            try_everything_that_reads(hostile, size);
            if (testing::Test::HasFailure()) return;
        }
    }
}

TEST(TapeHostile, FilesOfNoneToSixteenBytes)
{
    LogCapture log(2);
    RandomChoice random(16);
    HostileTape hostile;
    for (uint32_t round = 0; round < 170; round++) {
        const uint32_t size = round % 17;
        Bytes image = bytes_of(some_data(size, round));
        for (uint8_t &byte : image) byte = random.one_in(2) ? byte : static_cast<uint8_t>(random.one_in(2) ? 0xFF : 0);
        hostile.load(image, round % 2 + 1, round % 8);
        try_everything_that_reads(hostile, size);
    }
}

TEST(TapeHostile, WordsWithAnyBit)
{
    LogCapture log(2);
    for (uint32_t bit = 0; bit < 32; bit++) {
        for (const uint32_t base : {0u, 0xFFFFFFFFu, 0xFFFFFFFEu, 0xFFFEFFFFu, 3u}) {
            const uint32_t word = base ^ (1u << bit);
            Tape tape(joined({tape_record("AB"), little_word(word), tape_record("CD")}));
            const int32_t front = tape.read() == "AB" ? simh_move_forward(tape, 0) : 0;
            const bool is_record = word >= 1 && word <= 0xFFFFFF;
            const bool is_gap = word == 0xFFFFFFFE || word == 0xFFFEFFFF;
            EXPECT_TRUE(is_record ? front == static_cast<int32_t>(word) : front < 0 || is_gap) << word;
            tape.seek(14);
            expect_result(simh_move_reverse(tape), false);
        }
    }
}

// ---- the test of an image ------------------------------------------------------------------------------

TEST(TapeHostile, TestAlwaysDecides)
{
    LogCapture log(2);
    OutputCapture output;
    HostileTape hostile;
    std::set<int32_t> formats;
    for (const Bytes &image : images_of_words(telling_words, 3)) {
        hostile.load(image);
        for (const uint32_t blocksize : {0u, 4u, 0xFFFFFFF0u}) {
            TapeImage tested{};
            const int32_t format = simh_test_image(hostile.tape->fd, &tested, blocksize, 1, 1);
            formats.insert(format);
            ASSERT_TRUE(format >= 0 && format <= 2);
            EXPECT_EQ(hostile.tape.position(), 0u);
        }
        hostile.expect_unchanged();
    }
    EXPECT_EQ(formats.size(), 3u);
}

TEST(TapeHostile, WhatPassesTheTestIsReadToItsEnd)
{
    LogCapture log(2);
    HostileTape hostile;
    uint32_t passed = 0;
    for (const Bytes &image : images_of_words(telling_words, 3)) {
        hostile.load(image);
        TapeImage tested{};
        if (simh_test_image(hostile.tape->fd, &tested, 0xFFFFFFFF, 1, 0) != 1) continue;
        passed++;
        int32_t result = 0;
        while (result >= 0 || result == SIMH_TAPE_MARK) {
            result = read_some(hostile.tape, true, buffer_size, SIMH_WHOLE_RECORD);
        }
        EXPECT_TRUE(result == SIMH_END_OF_MEDIUM || result == SIMH_END_OF_FILE) << result;
    }
    EXPECT_GT(passed, 100u);
}

// ---- writing -------------------------------------------------------------------------------------------

TEST(TapeHostile, WritesOverAnyTapeStayInTheirStretch)
{
    LogCapture log(0);
    HostileTape hostile;
    for (const Bytes &image : images_of_words(telling_words, 2)) {
        hostile.load(image);
        for (const uint32_t size : {2u, 6u, 8u, 12u}) {
            hostile.store();
            simh_rewind(hostile.tape);
            const int32_t result = simh_write_erase_gap(hostile.tape, size);
            EXPECT_TRUE(result == 0 || result == -1);
            const size_t now = hostile.tape.bytes().size();
            EXPECT_GE(now, image.size());
            EXPECT_LE(now, image.size() + size + 8);
        }
        hostile.store();
        EXPECT_EQ(hostile.tape.write("AB"), 0);
        EXPECT_EQ(hostile.tape.bytes().size(), std::max<size_t>(image.size(), 10));
    }
}

// ---- conversions ---------------------------------------------------------------------------------------

TEST(TapeHostile, ConversionsOfAnyTapeEnd)
{
    LogCapture log(0);
    OutputCapture output;
    HostileTape hostile;
    Tape to({});
    for (const Bytes &image : images_of_words(telling_words, 2)) {
        for (const uint32_t blocksize : {1u, 4u, 6u, 4096u}) {
            hostile.load(image, SIMH_FIXED, blocksize);
            to->blocksize = blocksize;
            simh_simh2fixed(hostile.tape, to, 0);
            simh_simh2fixed(hostile.tape, to, 1);
            simh_simh2hpi(hostile.tape, to->fd, blocksize);
            EXPECT_EQ(simh_fixed2hpi(hostile.tape, to->fd), 0);
            EXPECT_EQ(simh_hpi2simh(hostile.tape->fd, to), 0);
            EXPECT_EQ(to.position(), 0u);
            EXPECT_EQ(hostile.tape.position(), 0u);
            hostile.expect_unchanged();
        }
    }
    EXPECT_LE(to.bytes().size(), 100000u);
}

// ---- numbers in the record -----------------------------------------------------------------------------

TEST(TapeHostile, AnyNumbersInTheRecordOfTheTape)
{
    LogCapture log(0);
    RandomChoice random(20);
    const std::vector<uint32_t> numbers = {0, 1, 3, 4, 100, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF0, 0xFFFFFFFE, 0xFFFFFFFF};
    const auto any = [&] { return numbers[random.below(static_cast<uint32_t>(numbers.size()))]; };
    const Bytes image = joined({tape_record("ABC"), tape_mark(), tape_record("DE"), gap_words(3), end_of_medium()});
    HostileTape hostile;
    for (uint32_t round = 0; round < 1000; round++) {
        hostile.load(image);
        TapeImage &tape = hostile.tape.image;
        tape.unit_size = any();
        tape.blocksize = any();
        tape.format = random.below(4);
        tape.record_number = any();
        tape.file_number = any();
        tape.record_start = any();
        tape.record_size = any();
        tape.record_done = any();
        tape.num_records = any();
        tape.runaway_limit = any();
        tape.state = random.below(2) == 0 ? any() : random.from_to(2, 3);
        const bool writes = tape.state == SIMH_WRITING;
        if (writes) tape.blocksize %= 1000; // a slot is written whole
        hostile.tape.seek(random.below(50));
        switch (random.below(8)) {
        case 0: read_some(&tape, true, buffer_size, static_cast<int32_t>(random.below(4))); break;
        case 1: read_some(&tape, false, buffer_size, static_cast<int32_t>(random.below(4))); break;
        case 2: simh_stop(&tape); break;
        case 3: simh_space_files(&tape, static_cast<int32_t>(any())); break;
        case 4: simh_set_position(&tape, any()); break;
        case 5: simh_move_forward(&tape, 0); break;
        case 6: simh_position_tape(&tape, 0); break;
        default: simh_rewind(&tape); break;
        }
        simh_rewind(&tape);
        EXPECT_EQ(tape.state, 0u);
        EXPECT_EQ(hostile.tape.position(), 0u);
        if (!writes) hostile.expect_unchanged();
    }
}

}
