// Random operations on a tape of the fixed layout against a plain list of its slots.
#include <gtest/gtest.h>

#include <vector>

#include "base/file.h"
#include "tape/simh.h"
#include "tape/simh_test.h"
#include "tests/support/capture.h"
#include "tests/support/random_choice.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

constexpr uint32_t block_size = 24;
constexpr uint32_t slot_size = block_size + 16;
constexpr uint32_t most_slots = 40;

enum class Kind : uint8_t { record, mark, empty, end };

struct Slot {
    Kind kind;
    std::string data{};

    int32_t length() const
    {
        return static_cast<int32_t>(data.size());
    }
    Bytes bytes() const
    {
        switch (kind) {
        case Kind::record: return record_slot(data, block_size);
        case Kind::mark: return mark_slot(block_size);
        case Kind::empty: return empty_slot(block_size);
        case Kind::end: return end_slot(block_size);
        }
        return {};
    }
};

// Where in its slot the tape stands: at its begin, behind its first word, behind its record.
enum class Where : uint8_t { begin, behind_first_word, behind_record };

struct Model {
    std::vector<Slot> slots{};
    uint32_t slot = 0;
    Where where = Where::begin;
    uint32_t record_number = 0;
    uint32_t file_number = 0;

    uint32_t offset() const
    {
        const uint32_t start = slot * slot_size;
        if (where == Where::begin) return start;
        if (where == Where::behind_first_word) return start + 4;
        const auto length = static_cast<uint32_t>(slots[slot].data.size());
        return start + 12 + length + length % 2;
    }
    bool is_at(uint32_t number, Kind kind) const
    {
        return number < slots.size() && slots[number].kind == kind;
    }
    void stand_at(uint32_t number, Where place = Where::begin)
    {
        slot = number;
        where = place;
    }

    // ---- reads: by slots ---------------------------------------------------------------------------

    int32_t read(bool forward)
    {
        return forward ? read_forward() : read_reverse();
    }
    int32_t read_forward()
    {
        record_number = slot;
        if (slot >= slots.size()) return SIMH_END_OF_FILE;
        const Slot &now = slots[slot];
        if (now.kind == Kind::empty) return SIMH_BAD_SLOT;
        record_number++;
        if (now.kind == Kind::end) return SIMH_END_OF_MEDIUM;
        stand_at(slot + 1);
        if (now.kind == Kind::record) return now.length();
        file_number++;
        return SIMH_TAPE_MARK;
    }
    int32_t read_reverse()
    {
        record_number = slot;
        if (slot == 0) return SIMH_BEGIN_OF_TAPE;
        const Slot &now = slots[slot - 1];
        if (now.kind == Kind::empty) return SIMH_BAD_SLOT;
        if (now.kind == Kind::end) return SIMH_END_OF_MEDIUM;
        record_number--;
        stand_at(slot - 1, now.kind == Kind::record ? Where::behind_first_word : Where::begin);
        if (now.kind == Kind::record) return now.length();
        file_number--;
        return SIMH_TAPE_MARK;
    }

    // ---- moves: by what stands in the file ---------------------------------------------------------

    // The first slot ahead that isn't empty and whose record or mark isn't passed yet.
    uint32_t ahead() const
    {
        const bool in_front_of_record = where == Where::behind_first_word && is_at(slot, Kind::record);
        uint32_t next = where == Where::begin || in_front_of_record ? slot : slot + 1;
        while (is_at(next, Kind::empty)) next++;
        return next;
    }
    int32_t move_forward()
    {
        const uint32_t next = ahead();
        if (next >= slots.size()) return SIMH_END_OF_FILE;
        if (slots[next].kind == Kind::end) return SIMH_END_OF_MEDIUM;
        stand_at(next, Where::behind_first_word);
        if (slots[next].kind == Kind::record) return slots[next].length();
        file_number++;
        return SIMH_TAPE_MARK;
    }
    int32_t move_reverse()
    {
        const bool behind_it =
            where == Where::behind_record || (where == Where::behind_first_word && !is_at(slot, Kind::record));
        uint32_t behind = behind_it ? slot + 1 : slot;
        while (behind > 0 && slots[behind - 1].kind == Kind::empty) behind--;
        if (behind == 0) {
            stand_at(0);
            return SIMH_BEGIN_OF_TAPE;
        }
        const Slot &before = slots[behind - 1];
        stand_at(behind - 1, before.kind == Kind::record ? Where::behind_first_word : Where::begin);
        if (before.kind == Kind::end) return SIMH_END_OF_MEDIUM;
        if (before.kind == Kind::record) return before.length();
        file_number--;
        return SIMH_TAPE_MARK;
    }
    int32_t space_records(int32_t count)
    {
        record_number = slot;
        for (int32_t i = 0; i < std::abs(count); i++) {
            const int32_t result = count > 0 ? move_forward() : move_reverse();
            if (result < 0) return result;
            if (count > 0) {
                where = Where::behind_record;
                record_number++;
            } else if (record_number > 0) {
                record_number--;
            }
        }
        return 0;
    }
    int32_t space_files(int32_t count)
    {
        record_number = slot;
        Model moved = *this;
        for (int32_t i = 0; i < std::abs(count); i++) {
            int32_t result = 0;
            while (result == 0) result = moved.space_records(count > 0 ? 1 : -1);
            if (result != SIMH_TAPE_MARK) return result;
        }
        *this = moved;
        return 0;
    }

    // ---- writes ------------------------------------------------------------------------------------

    void put(const Slot &content)
    {
        if (slot == slots.size())
            slots.push_back(content);
        else
            slots[slot] = content;
        record_number = slot + 1;
        stand_at(slot + 1);
    }
};

class Twin
{
  public:
    explicit Twin(uint32_t seed) : random_(seed)
    {
        if (random_.one_in(2)) return;
        const uint32_t count = random_.below(9);
        LogCapture log(2);
        EXPECT_EQ(simh_initialize(tape_, count, 1), 0);
        model_.slots.assign(count, {Kind::record, std::string(block_size, '\0')});
        model_.slots.push_back({Kind::end});
    }

    void step()
    {
        static constexpr void (Twin::*actions[])() = {
            &Twin::write_record, &Twin::write_record, &Twin::write_record, &Twin::write_mark, &Twin::write_end,
            &Twin::read,         &Twin::read,         &Twin::read_parts,   &Twin::move,       &Twin::space,
            &Twin::space_files,  &Twin::go_to,        &Twin::go_to,        &Twin::rewind,
        };
        const uint32_t action = random_.below(std::size(actions));
        SCOPED_TRACE("action " + std::to_string(action));
        (this->*actions[action])();
    }

    void compare_all()
    {
        Bytes image;
        for (const Slot &slot : model_.slots) image = joined({image, slot.bytes()});
        EXPECT_TRUE(tape_.bytes() == image);
        LogCapture log(2);
        TapeImage tested{};
        EXPECT_EQ(simh_test_image(tape_->fd, &tested, block_size, 0, 0), image.empty() ? 0 : 2);
        tape_.seek(0);
    }

  private:
    void expect(int32_t result, int32_t expected)
    {
        EXPECT_EQ(result, expected);
        EXPECT_EQ(tape_.position(), model_.offset());
        EXPECT_EQ(tape_->record_number, model_.record_number);
        EXPECT_EQ(tape_->file_number, model_.file_number);
        EXPECT_EQ(tape_->num_records, model_.slots.size());
        EXPECT_EQ(tape_->state, 0u);
    }

    void write_record()
    {
        if (model_.slot >= most_slots) return;
        const uint32_t length = random_.below(block_size + 1);
        const std::string data = some_data(length, random_.below(1000));
        model_.put({length == 0 ? Kind::empty : Kind::record, data});
        expect(tape_.write(data), 0);
    }

    void write_mark()
    {
        if (model_.slot >= most_slots) return;
        model_.put({Kind::mark});
        model_.file_number++;
        simh_write_tapemark(tape_);
        expect(0, 0);
    }

    void write_end() // in the last slot only: elsewhere it leaves what stands behind it in the slot
    {
        if (model_.slot != model_.slots.size()) return;
        model_.put({Kind::end});
        simh_write_eom(tape_);
        expect(0, 0);
    }

    std::string record_for_reading(bool forward) const
    {
        Model ahead = model_;
        if (ahead.read(forward) < 0) return "";
        const std::string &data = model_.slots[forward ? model_.slot : model_.slot - 1].data;
        return forward ? data : std::string(data.rbegin(), data.rend());
    }

    void read()
    {
        const bool forward = random_.one_in(2);
        const std::string expected = record_for_reading(forward);
        const uint32_t most = random_.from_to(1, block_size * 2);
        std::string buffer(most, '#');
        int32_t complete = -1;
        const auto call = forward ? simh_read_record_forward : simh_read_record_reverse;
        const int32_t result = call(tape_, buffer.data(), most, SIMH_WHOLE_RECORD, &complete);
        const int32_t length = model_.read(forward);
        expect(result, std::min(length, static_cast<int32_t>(most)));
        if (length < 0) return;
        EXPECT_EQ(buffer.substr(0, static_cast<size_t>(result)), expected.substr(0, most));
        EXPECT_EQ(complete, length <= static_cast<int32_t>(most));
    }

    // The rest may be left to what comes next.
    void read_parts()
    {
        const bool forward = random_.one_in(2);
        const std::string expected = record_for_reading(forward);
        const int32_t length = model_.read(forward);
        const int32_t result = simh_position_tape(tape_, forward);
        EXPECT_EQ(result, length);
        if (length < 0) return;
        std::string got;
        int32_t complete = 0;
        int32_t part = SIMH_FIRST_PART;
        const auto call = forward ? simh_read_record_forward : simh_read_record_reverse;
        while (complete == 0 && !random_.one_in(8)) {
            char buffer[7];
            const int32_t count = call(tape_, buffer, sizeof buffer, part, &complete);
            ASSERT_GE(count, 0);
            got.append(buffer, static_cast<size_t>(count));
            part = 0;
        }
        EXPECT_EQ(got, expected.substr(0, got.size()));
        if (complete == 0) simh_stop(tape_);
        expect(0, 0);
    }

    void move()
    {
        model_.record_number = model_.slot;
        if (random_.one_in(2)) {
            const int32_t expected = model_.move_forward();
            expect(simh_move_forward(tape_, 0), expected);
        } else {
            const int32_t expected = model_.move_reverse();
            expect(simh_move_reverse(tape_), expected);
        }
    }

    void space()
    {
        const int32_t count = static_cast<int32_t>(random_.below(9)) - 4;
        const int32_t expected = model_.space_records(count);
        expect(simh_space_records(tape_, count), expected);
    }

    void space_files()
    {
        const int32_t count = static_cast<int32_t>(random_.below(5)) - 2;
        const int32_t expected = model_.space_files(count);
        expect(simh_space_files(tape_, count), expected);
    }

    void go_to()
    {
        const auto number = random_.one_in(3) ? static_cast<uint32_t>(model_.slots.size())
                                              : random_.below(static_cast<uint32_t>(model_.slots.size()) + 3);
        const bool is_there = number <= model_.slots.size();
        model_.record_number = is_there ? number : model_.slot;
        if (is_there) model_.stand_at(number);
        expect(simh_set_position(tape_, number), is_there ? 0 : -1);
    }

    void rewind()
    {
        model_.stand_at(0);
        model_.record_number = model_.file_number = 0;
        simh_rewind(tape_);
        expect(0, 0);
    }

    Tape tape_{Bytes{}, SIMH_FIXED, block_size};
    Model model_;
    RandomChoice random_;
};

TEST(TapeModel, RandomOperationsOnTheFixedLayout)
{
    for (uint32_t seed = 0; seed * steps_of_a_tape < random_steps(); seed++) {
        SCOPED_TRACE(seed);
        Twin twin(seed);
        for (uint32_t i = 0; i < steps_of_a_tape && !testing::Test::HasFailure(); i++) {
            SCOPED_TRACE(i);
            twin.step();
        }
        twin.compare_all();
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

}
