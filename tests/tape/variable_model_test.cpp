// Random operations on a tape of the variable layout against a plain list of what stands on it.
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

constexpr uint32_t most_data = 700;

enum class Kind : uint8_t { record, mark, gap };

struct Item {
    Kind kind;
    std::string data{};
    uint32_t gap = 0; // bytes, even; a half gap stands first where it is no multiple of 4

    uint32_t bytes() const
    {
        if (kind == Kind::gap) return gap;
        return kind == Kind::mark ? 4 : static_cast<uint32_t>(data.size() + data.size() % 2 + 8);
    }
    int32_t length() const
    {
        return static_cast<int32_t>(data.size());
    }
    bool has_half_gap() const
    {
        return kind == Kind::gap && gap % 4 == 2;
    }
};

// The list, ended by an end of medium, and a place between two of its items.
struct Model {
    std::vector<Item> items{};
    size_t place = 0;
    uint32_t record_number = 0;
    uint32_t file_number = 0;

    uint32_t offset() const
    {
        uint32_t sum = 0;
        for (size_t i = 0; i < place; i++) sum += items[i].bytes();
        return sum;
    }
    const Item *before() const
    {
        return place == 0 ? nullptr : &items[place - 1];
    }

    int32_t move_forward()
    {
        size_t next = place;
        while (next < items.size() && items[next].kind == Kind::gap) next++;
        if (next == items.size()) return SIMH_END_OF_MEDIUM;
        place = next;
        if (items[next].kind == Kind::record) return items[next].length();
        place++;
        file_number++;
        return SIMH_TAPE_MARK;
    }
    int32_t move_reverse()
    {
        while (place > 0 && items[place - 1].kind == Kind::gap) place--;
        if (place == 0) return SIMH_BEGIN_OF_TAPE;
        place--;
        if (items[place].kind == Kind::record) return items[place].length();
        file_number--;
        return SIMH_TAPE_MARK;
    }
    int32_t pass(bool forward)
    {
        const int32_t length = forward ? move_forward() : move_reverse();
        if (length < 0) return length;
        if (forward) {
            place++;
            record_number++;
        } else if (record_number > 0) {
            record_number--;
        }
        return length;
    }
    int32_t space_records(int32_t count)
    {
        for (int32_t i = 0; i < std::abs(count); i++) {
            const int32_t result = pass(count > 0);
            if (result < 0) return result;
        }
        return 0;
    }
    int32_t space_files(int32_t count)
    {
        Model moved = *this;
        for (int32_t i = 0; i < std::abs(count); i++) {
            int32_t result = 0;
            while (result >= 0) result = moved.pass(count > 0);
            if (result != SIMH_TAPE_MARK) return result;
        }
        *this = moved;
        return 0;
    }
    int32_t set_position(uint32_t number)
    {
        Model moved = *this;
        while (moved.record_number != number) {
            const int32_t result = moved.pass(number > moved.record_number);
            if (result < 0 && result != SIMH_TAPE_MARK) return result;
        }
        *this = moved;
        return 0;
    }
    void write(const Item &item) // what follows is gone
    {
        items.resize(place);
        items.push_back(item);
        place++;
        if (item.kind == Kind::record) record_number++;
        if (item.kind == Kind::mark) file_number++;
    }
};

// What a gap does to the list: its real size, and what is left of the items under it.
struct Erasure {
    bool is_told = true; // false: would tear a record; nothing is said about the tape then
    bool refused = false;
    bool reaches_the_end = false;
    uint32_t size = 0;
    std::vector<Item> left{};
};

struct Stretch {
    uint32_t size;
    uint32_t distance = 0;
};

// Of a gap under the end of the new one: what isn't covered by whole words.
void erase_gap_item(const Item &item, Stretch *stretch, Erasure *erasure)
{
    uint32_t covered = 0;
    while (covered < item.gap && stretch->distance < stretch->size) {
        const uint32_t unit = covered == 0 && item.has_half_gap() ? 6 : 4;
        covered += unit;
        stretch->distance += unit;
    }
    if (covered < item.gap) erasure->left.push_back({Kind::gap, {}, item.gap - covered});
}

void erase_record(const Item &item, Stretch *stretch, Erasure *erasure)
{
    const uint32_t length = static_cast<uint32_t>(item.data.size());
    if (stretch->distance + item.bytes() <= stretch->size) {
        stretch->distance += item.bytes();
        return;
    }
    const uint32_t covered = stretch->size - stretch->distance;
    erasure->refused = covered > length;
    stretch->distance = stretch->size;
    if (covered == length) stretch->distance += 8;
    if (covered < length) erasure->left.push_back({Kind::record, item.data.substr(covered)});
}

Erasure erase(const Model &model, uint32_t gapsize)
{
    Erasure erasure;
    Stretch stretch = {gapsize + gapsize % 2};
    size_t next = model.place;
    for (; next < model.items.size() && stretch.distance < stretch.size; next++) {
        const Item &item = model.items[next];
        const bool is_record = item.kind == Kind::record;
        const bool is_cut = is_record && stretch.distance + item.bytes() > stretch.size;
        if ((is_record && item.data.size() % 2 != 0) || (is_cut && stretch.distance == 0)) erasure.is_told = false;
        if (item.kind == Kind::gap) erase_gap_item(item, &stretch, &erasure);
        if (item.kind == Kind::mark) stretch.distance += 4;
        if (is_record) erase_record(item, &stretch, &erasure);
    }
    erasure.reaches_the_end = stretch.distance < stretch.size;
    erasure.size = std::max(stretch.distance, stretch.size);
    erasure.left.insert(erasure.left.end(), model.items.begin() + static_cast<ptrdiff_t>(next), model.items.end());
    // A half gap in front of nothing, or behind a gap, can't be read in both directions.
    const bool has_half = erasure.size % 4 == 2;
    const bool behind_gap = model.before() != nullptr && model.before()->kind == Kind::gap;
    const bool ahead_of_half = !erasure.left.empty() && erasure.left.front().has_half_gap();
    if (erasure.size < 4 || (has_half && behind_gap) || ahead_of_half) erasure.is_told = false;
    return erasure;
}

// ---- the same on both sides ----------------------------------------------------------------------------

class Twin
{
  public:
    explicit Twin(uint32_t seed) : random_(seed)
    {
        simh_write_eom(tape_);
    }

    void step()
    {
        static constexpr void (Twin::*actions[])() = {
            &Twin::write_record,  &Twin::write_record, &Twin::write_parts, &Twin::write_mark,
            &Twin::erase_stretch, &Twin::read,         &Twin::read,        &Twin::read_parts,
            &Twin::move,          &Twin::position,     &Twin::space,       &Twin::space_files,
            &Twin::go_to,         &Twin::rewind,       &Twin::go_to_end,   &Twin::go_to_end,
        };
        const uint32_t action = random_.below(std::size(actions));
        SCOPED_TRACE("action " + std::to_string(action));
        (this->*actions[action])();
        expect_end();
    }

    // Everything that is on the tape, and that the engine finds nothing wrong with it.
    void compare_all()
    {
        rewind();
        for (;;) {
            const int32_t length = model_.pass(true);
            if (length < 0) {
                EXPECT_EQ(tape_.read(), std::to_string(length));
                if (length != SIMH_TAPE_MARK) break;
            } else {
                EXPECT_TRUE(tape_.read() == model_.items[model_.place - 1].data);
            }
        }
        LogCapture log(2);
        TapeImage tested{};
        EXPECT_EQ(simh_test_image(tape_->fd, &tested, 0xFFFFFFFF, 1, 0), 1);
        EXPECT_EQ(tested.num_records, 0u); // slots; no size of slots reaches so far
        rewind();
    }

  private:
    void expect(int32_t result, int32_t expected)
    {
        EXPECT_EQ(result, expected);
        EXPECT_EQ(tape_.position(), model_.offset());
        EXPECT_EQ(tape_->record_number, model_.record_number);
        EXPECT_EQ(tape_->file_number, model_.file_number);
        EXPECT_EQ(tape_->state, 0u);
    }

    // The end of the medium stands behind the last item.
    void expect_end()
    {
        Model end = model_;
        end.place = end.items.size();
        const Bytes image = tape_.bytes();
        ASSERT_GE(image.size(), end.offset() + 4);
        const auto at = image.begin() + end.offset();
        EXPECT_EQ(Bytes(at, at + 4), end_of_medium());
    }

    std::string data()
    {
        return some_data(random_.from_to(1, most_data) / (random_.one_in(2) ? 1 : 50) + 1, random_.below(1000));
    }

    void end_tape()
    {
        simh_write_eom(tape_);
        expect(0, 0);
    }

    void write_record()
    {
        const std::string bytes = data();
        model_.write({Kind::record, bytes});
        expect(tape_.write(bytes), 0);
        end_tape();
    }

    // The last part may be left to the end of the medium that follows.
    void write_parts()
    {
        const std::string bytes = data();
        size_t done = 0;
        int32_t part = SIMH_FIRST_PART;
        while (done < bytes.size()) {
            const size_t count = std::min<size_t>(random_.from_to(1, 300), bytes.size() - done);
            const bool ends = done + count == bytes.size() && random_.one_in(2);
            EXPECT_EQ(tape_.write(bytes.substr(done, count), part | (ends ? SIMH_LAST_PART : 0)), 0);
            done += count;
            part = 0;
        }
        model_.write({Kind::record, bytes});
        end_tape();
    }

    void write_mark()
    {
        model_.write({Kind::mark});
        simh_write_tapemark(tape_);
        end_tape();
    }

    void erase_stretch()
    {
        const uint32_t size = random_.from_to(1, random_.one_in(2) ? 20 : 1500);
        const Erasure erasure = erase(model_, size);
        if (!erasure.is_told) return;
        const int32_t result = simh_write_erase_gap(tape_, size);
        if (erasure.refused) {
            expect(result, -1);
            return;
        }
        model_.items.resize(model_.place);
        model_.items.push_back({Kind::gap, {}, erasure.size});
        model_.items.insert(model_.items.end(), erasure.left.begin(), erasure.left.end());
        model_.place++;
        expect(result, 0);
        if (erasure.reaches_the_end) end_tape();
    }

    std::string record_for_reading(bool forward) const // what a read from here on will deliver
    {
        Model ahead = model_;
        const int32_t length = forward ? ahead.move_forward() : ahead.move_reverse();
        if (length < 0) return "";
        const std::string &bytes = ahead.items[ahead.place].data;
        return forward ? bytes : std::string(bytes.rbegin(), bytes.rend());
    }

    void read()
    {
        const bool forward = random_.one_in(2);
        const std::string expected = record_for_reading(forward);
        const uint32_t most = random_.one_in(3) ? random_.from_to(1, most_data) : most_data * 2;
        std::string buffer(most, '#');
        int32_t complete = -1;
        const auto call = forward ? simh_read_record_forward : simh_read_record_reverse;
        const int32_t result = call(tape_, buffer.data(), most, SIMH_WHOLE_RECORD, &complete);
        const int32_t length = model_.pass(forward);
        expect(result, std::min(length, static_cast<int32_t>(most)));
        if (length < 0) return;
        EXPECT_TRUE(buffer.substr(0, static_cast<size_t>(result)) == expected.substr(0, most));
        EXPECT_EQ(complete, length <= static_cast<int32_t>(most));
    }

    void read_parts()
    {
        const bool forward = random_.one_in(2);
        const std::string expected = record_for_reading(forward);
        const auto call = forward ? simh_read_record_forward : simh_read_record_reverse;
        const int32_t length = model_.pass(forward);
        if (length < 0) {
            expect(simh_position_tape(tape_, forward), length);
            return;
        }
        if (random_.one_in(3)) {
            EXPECT_EQ(simh_position_tape(tape_, forward), length);
        }
        std::string got;
        int32_t complete = 0;
        int32_t part = SIMH_FIRST_PART;
        while (complete == 0) {
            std::string buffer(random_.from_to(1, 300), '#');
            const int32_t count = call(tape_, buffer.data(), static_cast<uint32_t>(buffer.size()), part, &complete);
            ASSERT_GE(count, 0);
            got += buffer.substr(0, static_cast<size_t>(count));
            part = 0;
            if (random_.one_in(8)) break; // the rest is left to what comes next
        }
        EXPECT_TRUE(got == expected.substr(0, got.size()));
        EXPECT_EQ(complete, got.size() == expected.size());
        if (random_.one_in(2) || complete == 1) {
            simh_stop(tape_);
            expect(0, 0);
        }
    }

    void move()
    {
        if (random_.one_in(2)) {
            const int32_t expected = model_.move_forward();
            expect(simh_move_forward(tape_, 0), expected);
        } else {
            const int32_t expected = model_.move_reverse();
            expect(simh_move_reverse(tape_), expected);
        }
    }

    void position()
    {
        const bool forward = random_.one_in(2);
        const int32_t expected = model_.pass(forward);
        const int32_t result = simh_position_tape(tape_, forward);
        simh_stop(tape_);
        expect(result, expected);
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
        const uint32_t number = random_.below(static_cast<uint32_t>(model_.items.size()) + 2);
        const int32_t expected = model_.set_position(number);
        expect(simh_set_position(tape_, number), expected);
    }

    void rewind()
    {
        model_.place = 0;
        model_.record_number = model_.file_number = 0;
        simh_rewind(tape_);
        expect(0, 0);
    }

    void go_to_end()
    {
        int32_t expected = 0;
        while (expected != SIMH_END_OF_MEDIUM) {
            expected = model_.space_records(INT32_MAX);
            expect(simh_space_records(tape_, INT32_MAX), expected);
        }
    }

    Tape tape_{Bytes{}};
    Model model_;
    RandomChoice random_;
};

TEST(TapeModel, RandomOperationsOnTheVariableLayout)
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
