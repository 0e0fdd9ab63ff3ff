// Image files that are tapes: how they are opened, and a volume on one.
#include "volume/tape_access.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "base/log.h"
#include "tape/simh.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/tape/tape_image.h"
#include "volume/access.h"
#include "volume/extract.h"
#include "volume/state.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr uint16_t by_data = OPEN_READ_VOLUME | OPEN_READ_ONLY | OPEN_TAPE_DATA;

LifVolume two_files()
{
    LifVolume volume;
    volume.entries = {{.name = "ONE", .content = Bytes(300, 'a')}, {.name = "TWO", .content = Bytes(70000, 'b')}};
    volume.tracks = 20;
    return volume;
}

// An image as the records of a tape, each of so many bytes.
Bytes tape_of(const Bytes &image, size_t length)
{
    Bytes tape;
    for (size_t at = 0; at < image.size(); at += length) {
        const size_t count = std::min(length, image.size() - at);
        const Bytes record = tape_record(std::string(image.begin() + static_cast<ptrdiff_t>(at),
                                                     image.begin() + static_cast<ptrdiff_t>(at + count)));
        tape.insert(tape.end(), record.begin(), record.end());
    }
    return joined({tape, tape_mark(), end_of_medium()});
}

Bytes slots_of(const Bytes &image, uint32_t length)
{
    Bytes tape;
    for (size_t at = 0; at < image.size(); at += length) {
        const size_t count = std::min<size_t>(length, image.size() - at);
        const Bytes slot = record_slot(
            std::string(image.begin() + static_cast<ptrdiff_t>(at), image.begin() + static_cast<ptrdiff_t>(at + count)),
            length);
        tape.insert(tape.end(), slot.begin(), slot.end());
    }
    return joined({tape, end_slot(length)});
}

}

// ---- what is a tape ------------------------------------------------------------------------------------

TEST(TapeOpen, ExtensionOrFlagMakesATape)
{
    for (const char *extension : {".tap", ".TAP", ".Tape", ".TAPE", ".simh", ".SIMH"}) {
        const TemporaryFile file(tape_record("AB"), extension);
        const Medium medium(file.path(), 0);
        ASSERT_TRUE(medium) << extension;
        ASSERT_NE(medium->tape, nullptr) << extension;
        EXPECT_EQ(medium->tape->fd, medium->file);
        EXPECT_EQ(medium->tape->runaway_limit, 300u);
        EXPECT_EQ(medium->tape->format, 0u);
        EXPECT_EQ(medium->size, 10u);
    }
    const TemporaryFile file(tape_record("AB"));
    EXPECT_NE(Medium(file.path(), OPEN_SIMH)->tape, nullptr);
    EXPECT_EQ(Medium(file.path(), 0)->tape, nullptr);
}

TEST(TapeOpen, DotAloneIsNoExtension)
{
    EXPECT_TRUE(is_tape_name("a.tap"));
    EXPECT_TRUE(is_tape_name("a.b.Simh"));
    EXPECT_FALSE(is_tape_name(".tap"));
    EXPECT_FALSE(is_tape_name("tap"));
    EXPECT_FALSE(is_tape_name("a.tap.hpi"));
    EXPECT_FALSE(is_tape_name("a.tapes"));
}

TEST(TapeOpen, TapeOfTheMediumIsRead)
{
    const TemporaryFile file(joined({tape_record("ABC"), tape_mark(), end_of_medium()}), ".tap");
    const Medium medium(file.path(), 0);
    ASSERT_TRUE(medium);
    char buffer[8] = "";
    EXPECT_EQ(simh_read_record_forward(medium->tape, buffer, sizeof buffer, SIMH_WHOLE_RECORD, nullptr), 3);
    EXPECT_STREQ(buffer, "ABC");
    EXPECT_EQ(simh_read_record_forward(medium->tape, buffer, sizeof buffer, SIMH_WHOLE_RECORD, nullptr), -4);
    EXPECT_EQ(simh_write_record(medium->tape, "DE", 2, SIMH_WHOLE_RECORD), 0);
    EXPECT_EQ(file.bytes(), joined({tape_record("ABC"), tape_mark(), tape_record("DE")}));
}

TEST(TapeOpen, CheckTestsTheTape)
{
    struct Row {
        Bytes image;
        uint32_t format;
        const char *type;
    };
    const Row rows[] = {
        {tape_record("ABC"), SIMH_VARIABLE, "SIMH magtape image (standard format)"},
        {joined({record_slot("ABCD", 8), record_slot("EF", 8), end_slot(8)}), SIMH_FIXED,
         "SIMH magtape image (fixed block format)"},
        {{}, SIMH_UNKNOWN, "SIMH magtape image (unknown format)"},
    };
    for (const Row &row : rows) {
        const TemporaryFile file(row.image, ".tap");
        const OutputCapture output;
        const LogCapture log(2);
        const Medium medium(file.path(), OPEN_CHECK);
        ASSERT_TRUE(medium);
        ASSERT_NE(medium->tape, nullptr);
        EXPECT_EQ(medium->tape->format, row.format);
        EXPECT_EQ(medium->tape->fd, medium->file);
        const std::string text = output.text();
        EXPECT_EQ(contains(text, "Testing SIMH image..."), !row.image.empty()) << text;
        EXPECT_TRUE(contains(text, std::string("Image type: ") + row.type + "\n")) << text;
    }
}

TEST(TapeOpen, CheckMakesAPlainImageOfWhatIsNoTape)
{
    const TemporaryFile file(lif_image(two_files()), ".tap");
    const OutputCapture output;
    const LogCapture log(2);
    const Medium medium(file.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->tape, nullptr);
    EXPECT_TRUE(contains(log.text(), "Info:  " + std::string(file.path()) +
                                         " not a valid SIMH magtape file, assuming hpi format.\n"))
        << log.text();
    EXPECT_TRUE(contains(output.text(), "Image type: binary image (hpi) format\n"));
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"}));
}

TEST(TapeOpen, WithoutCheckItStaysATapeUnverified)
{
    const TemporaryFile file(lif_image(two_files()), ".tap");
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_NE(medium->tape, nullptr);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"}));
}

TEST(TapeOpen, NewTapeIsEmpty)
{
    const TemporaryFile file(".tap");
    MediaDescriptor options = usual_options();
    options.size = 5000;
    {
        const Medium medium(file.path(), OPEN_CREATE, &options);
        ASSERT_TRUE(medium) << error_text();
        EXPECT_NE(medium->tape, nullptr);
        EXPECT_EQ(medium->size, 0u);
    }
    EXPECT_TRUE(file.exists());
    EXPECT_TRUE(file.bytes().empty());
    const TemporaryFile old(tape_record("AB"), ".simh");
    const Medium emptied(old.path(), OPEN_CREATE | OPEN_EMPTY, &options);
    ASSERT_TRUE(emptied);
    EXPECT_TRUE(old.bytes().empty());
    const TemporaryFile none(".tap");
    forget_error();
    EXPECT_EQ(image_open(none.path(), nullptr, OPEN_CREATE), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (no format specified)");
}

TEST(TapeOpen, MissingFileAndMissingMemoryLeaveNothing)
{
    const TemporaryFile missing(".tap");
    forget_error();
    EXPECT_FALSE(Medium(missing.path(), 0));
    EXPECT_EQ(global_error, 300u);
    const TemporaryFile file(tape_of(lif_image(two_files()), 256), ".tap");
    bool reached = true;
    for (uint32_t nth = 1; reached; nth++) {
        ASSERT_LT(nth, 60u);
        HeapFaults faults(nth);
        forget_error();
        const Medium medium(file.path(), by_data);
        reached = faults.reached;
        EXPECT_TRUE(medium || global_error == 105u) << nth;
    }
}

// ---- a volume on a tape --------------------------------------------------------------------------------

TEST(TapeOpen, Hazard_B10_WithoutTheFlagTheBytesOfTheContainerAreTheMedium)
{
    // A first record of 128 bytes looks like the head of a LIF volume.
    const TemporaryFile file(tape_of(lif_image(two_files()), 128), ".tap");
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->format, uint32_t{FORMAT_LIF});
    EXPECT_EQ(medium->magic, 0x8000u);
    uint8_t record[256];
    EXPECT_EQ(read_record(medium.md, 0, record), 0);
    EXPECT_TRUE(std::equal(record, record + 256, file.bytes().begin()));
    const TemporaryFile other(tape_of(lif_image(two_files()), 256), ".tap");
    forget_error();
    EXPECT_FALSE(Medium(other.path()));
    EXPECT_EQ(global_error, 203u);
}

TEST(TapeVolume, IsReadWhateverItsRecordsAre)
{
    const Bytes image = lif_image(two_files());
    std::vector<Bytes> tapes = {slots_of(image, 1024), slots_of(image, 256)};
    for (const size_t length : {1u, 7u, 128u, 256u, 1000u, 1024u, 65537u, 10000000u})
        tapes.push_back(tape_of(image, length));
    for (const Bytes &tape : tapes) {
        SCOPED_TRACE(tape.size());
        const TemporaryFile file(tape, ".tap");
        const Medium medium(file.path(), by_data);
        ASSERT_TRUE(medium) << error_text();
        EXPECT_EQ(medium->size, image.size());
        EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"}));
        EXPECT_EQ(end_record(medium.md), image.size() / 256);
        uint8_t record[256];
        for (const uint32_t number : {0u, 319u, 2u, 255u, 256u, 320u, 5000u, 1u}) {
            ASSERT_EQ(read_record(medium.md, number, record), 0);
            const size_t at = size_t{number} * 256;
            const Bytes expected = at < image.size() ? Bytes(image.begin() + static_cast<ptrdiff_t>(at),
                                                             image.begin() + static_cast<ptrdiff_t>(at + 256))
                                                     : Bytes(256);
            EXPECT_EQ(Bytes(record, record + 256), expected) << number;
        }
        EXPECT_EQ(file.bytes(), tape);
    }
}

TEST(TapeVolume, FilesComeOutOfIt)
{
    const TemporaryFile file(tape_of(lif_image(two_files()), 256), ".tap");
    const Medium medium(file.path(), by_data);
    ASSERT_TRUE(medium);
    for (const char *name : {"ONE", "TWO"}) {
        const TemporaryFile copy(".out");
        const FileInfo *entry = entry_named(medium.md, name);
        EXPECT_GE(image_extract_file(medium.md, entry, nullptr, copy.path(), nullptr, 0, nullptr), 0) << error_text();
        const Bytes bytes = copy.bytes();
        EXPECT_EQ(bytes.size(), entry->size);
        EXPECT_EQ(bytes[0], name[0] == 'O' ? 'a' : 'b');
        EXPECT_EQ(bytes[299], bytes[0]);
    }
}

TEST(TapeVolume, IsNotWritten)
{
    const Bytes tape = tape_of(lif_image(two_files()), 256);
    const TemporaryFile file(tape, ".tap");
    const Medium medium(file.path(), OPEN_READ_VOLUME | OPEN_TAPE_DATA);
    ASSERT_TRUE(medium);
    forget_error();
    EXPECT_EQ(update_file_table(medium.md, 0), -1);
    EXPECT_EQ(error_text(), "Not supported (change of a tape image)");
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, medium.md, 0, 1, true), 0);
    const uint8_t record[256] = {};
    EXPECT_EQ(write_stream(&stream, record, 1), 0u);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_EQ(file.bytes(), tape);
}

TEST(TapeVolume, TapeThatIsNoneStaysItsBytes)
{
    const TemporaryFile file(lif_image(two_files()), ".tap");
    const Medium medium(file.path(), by_data);
    ASSERT_TRUE(medium);
    EXPECT_NE(medium->tape, nullptr);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"}));
}

TEST(TapeVolume, TapeCutOffIsReadAsFarAsItGoes)
{
    Bytes tape = tape_of(lif_image(two_files()), 256);
    tape.resize(264 * 20 + 100);
    const TemporaryFile file(tape, ".tap");
    const Medium medium(file.path(), by_data);
    ASSERT_TRUE(medium);
    EXPECT_EQ(end_record(medium.md), 20u);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"}));
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, medium.md, 19, 200000, false), 0);
    Bytes records(512 * 256, 0xEE);
    EXPECT_EQ(read_stream(&stream, records.data(), 512), 512);
    EXPECT_EQ(records[256], 0);
    int32_t result = 1;
    for (int i = 0; i < 1000 && result > 0; i++) result = read_stream(&stream, records.data(), 512);
    EXPECT_EQ(result, -1); // no entry has so many records
    EXPECT_EQ(close_stream(&stream), 0);
}

TEST(TapeVolume, NthReadThatFailsIsToldOrMakesNoDifference)
{
    const TemporaryFile file(tape_of(lif_image(two_files()), 256), ".tap");
    for (const FileFault fault : {FileFault::read, FileFault::seek}) {
        bool reached = true;
        for (uint32_t nth = 1; reached; nth++) {
            ASSERT_LT(nth, 60u);
            FileFaults faults(fault, nth);
            forget_error();
            const Medium medium(file.path(), by_data);
            reached = faults.reached;
            if (!medium || medium->state->table_result != 0) {
                EXPECT_NE(global_error, 0u);
            } else {
                EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ONE", "TWO"})) << nth;
            }
        }
    }
}
