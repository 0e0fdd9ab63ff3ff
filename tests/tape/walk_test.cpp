// What stands on a tape, item by item, and its data as one stream.
#include "tape/walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "base/memory.h"
#include "tape/data.h"
#include "tape/percent.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

const char *const kind_names[] = {"record", "mark", "end of medium", "end of file", "fault"};

// "record 0:3, mark 12, end of file 16"
std::string items_of(const Tape &tape)
{
    TapeWalk walk;
    begin_walk(&walk, tape.image.fd);
    std::string all;
    for (int steps = 0; steps < 1000; steps++) {
        const TapeItem item = next_item(&walk);
        all += std::string(all.empty() ? "" : ", ") + kind_names[static_cast<size_t>(item.kind)] + " " +
               std::to_string(item.position);
        if (item.kind == TapeItemKind::record) all += ":" + std::to_string(item.length);
        if (item.kind == TapeItemKind::fault) all += std::string(" ") + item.reason;
        if (item.kind >= TapeItemKind::end_of_medium) return all;
    }
    return all + " ...";
}

struct WalkCase {
    const char *name;
    Bytes image;
    const char *items;
};

const WalkCase walk_cases[] = {
    {"nothing", {}, "end of file 0"},
    {"records and marks", joined({tape_record("ABC"), tape_mark(), tape_record("DE"), end_of_medium()}),
     "record 0:3, mark 12, record 16:2, end of medium 26"},
    {"without end", tape_record("AB"), "record 0:2, end of file 10"},
    {"gaps", joined({gap_words(2), tape_record("AB"), half_gap(), gap_words(1), tape_mark()}),
     "record 8:2, mark 24, end of file 28"},
    {"bad word", joined({tape_record("AB"), little_word(0x1000000)}), "record 0:2, fault 10 word that is no length"},
    {"two lengths", joined({little_word(2), bytes_of("AB"), little_word(3)}), "fault 0 record with two lengths"},
    {"longer than the file", joined({little_word(3), bytes_of("ABC")}), "fault 0 record longer than the file"},
    {"without its last word", joined({little_word(2), bytes_of("AB"), {2, 0}}),
     "fault 0 record that ends with the file"},
    {"slots", joined({record_slot("ABC", 8), mark_slot(8), end_slot(8)}), "record 4:3, mark 24, end of medium 48"},
};

TEST(TapeWalk, TellsEachItem)
{
    for (const WalkCase &row : walk_cases) {
        SCOPED_TRACE(row.name);
        const Tape tape(row.image);
        forget_error();
        EXPECT_EQ(items_of(tape), row.items);
        EXPECT_EQ(global_error, 0u);
        EXPECT_EQ(tape.bytes(), row.image);
    }
}

TEST(TapeWalk, FailedReadIsAFaultWithItsError)
{
    const Tape tape(joined({tape_record("AB"), tape_mark()}));
    const FileFaults faults(FileFault::read, 1, true);
    forget_error();
    EXPECT_EQ(items_of(tape), "fault 0 file can't be read");
    EXPECT_EQ(global_error, 302u);
}

TEST(TapeWalk, IsToldOfAndStopped)
{
    const Tape tape(joined({tape_record("ABCDEFGH"), tape_record("IJKLMNOP")}));
    tape_progress = [](void *, uint32_t position, uint32_t percent) {
        EXPECT_EQ(percent, position * 100 / 32);
        return position > 0 ? 1 : 0;
    };
    const std::string items = items_of(tape);
    tape_progress = nullptr;
    EXPECT_EQ(items, "record 0:8, fault 16 walk that was stopped");
    EXPECT_EQ(error_text(), "stopped");
}

// ---- data ----------------------------------------------------------------------------------------------

class Data
{
  public:
    explicit Data(const Tape &tape) : file_(tape.image.fd), found(find_tape_data(&data, file_)) {}
    ~Data()
    {
        my_free(data.places);
    }
    Data(const Data &) = delete;
    Data &operator=(const Data &) = delete;

    std::string read(uint64_t at, uint32_t count) const
    {
        std::string bytes(count, '#');
        const int32_t result = read_tape_data(&data, file_, at, reinterpret_cast<uint8_t *>(bytes.data()), count);
        if (result < 0) return "-1";
        bytes.resize(static_cast<size_t>(result));
        return bytes;
    }

    TapeData data = {};

  private:
    FileHandle file_;

  public:
    int32_t found;
};

TEST(TapeData, IsThatOfAllRecords)
{
    const Tape tape(joined({gap_words(1), tape_record("ABC"), tape_mark(), tape_mark(), tape_record("DE"), half_gap(),
                            gap_words(1), tape_record("FGHI"), end_of_medium(), tape_record("no more")}));
    const Data data(tape);
    ASSERT_EQ(data.found, 1);
    EXPECT_EQ(data.data.bytes, 9u);
    const std::string all = "ABCDEFGHI";
    for (uint32_t at = 0; at <= 10; at++) {
        for (uint32_t count = 1; count <= 10; count++) {
            EXPECT_EQ(data.read(at, count), at < 9 ? all.substr(at, count) : "") << at << " " << count;
        }
    }
}

TEST(TapeData, EndsAtAFault)
{
    const Tape tape(joined({tape_record("ABC"), tape_record("DE"), little_word(9), bytes_of("FGHI")}));
    const Data data(tape);
    ASSERT_EQ(data.found, 1);
    EXPECT_EQ(data.data.bytes, 5u);
    EXPECT_EQ(data.read(0, 9), "ABCDE");
}

TEST(TapeData, TapesWithoutDataAreNone)
{
    for (const Bytes &image : {Bytes{}, Bytes(400), end_of_medium(), gap_words(9), little_word(0x80000080)}) {
        const Tape tape(image);
        forget_error();
        EXPECT_EQ(Data(tape).found, 0);
        EXPECT_EQ(global_error, 0u);
    }
}

TEST(TapeData, IsFoundAtAnyPlaceOfALongTape)
{
    std::string all;
    Bytes image;
    for (uint32_t i = 0; i < 700; i++) {
        const uint32_t length = i % 100 == 7 ? 150001 : 1 + i % 613;
        all += some_data(length, i);
        const Bytes record = tape_record(some_data(length, i));
        image.insert(image.end(), record.begin(), record.end());
        if (i % 5 == 0) image.insert(image.end(), {0, 0, 0, 0});
    }
    const Tape tape(image);
    const Data data(tape);
    ASSERT_EQ(data.found, 1);
    ASSERT_EQ(data.data.bytes, all.size());
    for (uint32_t at = 0; at < all.size(); at += 5003) {
        EXPECT_TRUE(data.read(at, 300) == all.substr(at, 300)) << at;
    }
    for (uint32_t at = 0; at < all.size(); at += tape_data_step) {
        EXPECT_TRUE(data.read(at, tape_data_step) == all.substr(at, tape_data_step)) << at;
    }
    EXPECT_TRUE(data.read(1, static_cast<uint32_t>(all.size())) == all.substr(1));
}

TEST(TapeData, TakesLittleMemory)
{
    Bytes image;
    for (uint32_t i = 0; i < 100000; i++) image.insert(image.end(), {1, 0, 0, 0, 'A', 0, 1, 0, 0, 0});
    const Tape tape(image);
    const HeapFaults memory;
    const Data data(tape);
    EXPECT_EQ(data.data.bytes, 100000u);
    EXPECT_LT(memory.bytes, 1000u);
    EXPECT_EQ(data.read(99999, 5), "A");
}

TEST(TapeData, NthCallThatFailsIsAnErrorOrMakesNoDifference)
{
    Bytes image;
    std::string all;
    for (uint32_t i = 0; i < 300; i++) {
        all += some_data(1000, i);
        const Bytes record = tape_record(some_data(1000, i));
        image.insert(image.end(), record.begin(), record.end());
    }
    const Tape tape(image);
    for (const FileFault fault : {FileFault::read, FileFault::seek}) {
        for (const bool onward : {false, true}) {
            bool reached = true;
            for (uint32_t nth = 1; reached; nth++) {
                const FileFaults faults(fault, nth, onward);
                forget_error();
                const Data data(tape);
                const std::string read = data.found == 1 ? data.read(70000, 200000) : "-1";
                reached = faults.reached;
                if (read == "-1") {
                    EXPECT_NE(global_error, 0u);
                } else {
                    EXPECT_TRUE(read == all.substr(70000, 200000)) << nth;
                }
                ASSERT_LT(nth, 50u);
            }
        }
    }
}

TEST(TapeData, WithoutMemoryThereIsNone)
{
    const Tape tape(tape_record("AB"));
    const HeapFaults faults(1);
    forget_error();
    EXPECT_EQ(Data(tape).found, -1);
    EXPECT_EQ(global_error, 105u);
}

}
