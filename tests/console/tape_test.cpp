// tape test and tape ls, and volumes on tape images.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/program.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

Bytes two_records()
{
    return joined({tape_record("ABC"), tape_mark(), gap_words(1), tape_record("DE"), end_of_medium()});
}

Bytes slots()
{
    return joined({record_slot("ABCD", 8), record_slot("EFGHIJKL", 8), mark_slot(8), end_slot(8)});
}

// The volume as records of 256 bytes, with a mark behind it.
Bytes volume_on_tape(const LifVolume &volume)
{
    const Bytes image = lif_image(volume);
    Bytes tape;
    for (size_t at = 0; at < image.size(); at += 256) {
        const Bytes record = tape_record(
            std::string(image.begin() + static_cast<ptrdiff_t>(at), image.begin() + static_cast<ptrdiff_t>(at + 256)));
        tape.insert(tape.end(), record.begin(), record.end());
    }
    return joined({tape, tape_mark(), end_of_medium()});
}

struct FaultCase {
    const char *name;
    Bytes image;
    const char *words;
};

const FaultCase fault_cases[] = {
    {"empty", {}, "it is empty"},
    {"bad word", joined({tape_record("ABC"), little_word(0x1000000)}), "word that is no length at position 12"},
    {"two lengths", joined({little_word(2), bytes_of("AB"), little_word(3)}), "record with two lengths at position 0"},
    {"cut off", joined({tape_record("AB"), little_word(9), bytes_of("CD")}),
     "record longer than the file at position 10"},
};

}

// ---- test ----------------------------------------------------------------------------------------------

TEST(TapeTestVerb, TellsTheLayout)
{
    const TemporaryFile variable(two_records(), ".tap");
    const Outcome outcome = run({"tape", "test", variable.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, std::string(variable.path()) + ": SIMH magtape image, variable layout\n"
                                                             "Records:        2\n"
                                                             "Longest record: 3 bytes\n"
                                                             "Tape marks:     1\n"
                                                             "Data:           5 bytes\n");
    const TemporaryFile fixed(slots());
    EXPECT_EQ(run({"tape", "test", fixed.path()}).output, std::string(fixed.path()) +
                                                              ": SIMH magtape image, fixed layout\n"
                                                              "Slots:          3\n"
                                                              "Block size:     8 bytes\n");
}

TEST(TapeTestVerb, BlockSizeMayBeSaid)
{
    // The first record has an odd length, from which the size of the slots can't be worked out.
    const TemporaryFile tape(joined({record_slot("ABC", 8), record_slot("DE", 8), end_slot(8)}), ".tap");
    EXPECT_NE(run({"tape", "test", tape.path()}).output.find("variable layout"), std::string::npos);
    EXPECT_NE(run({"tape", "test", "--block", "8", tape.path()}).output.find("Slots:          2\n"), std::string::npos);
    EXPECT_NE(run({"tape", "test", "--block", "12", tape.path()}).output.find("variable layout"), std::string::npos);
}

TEST(TapeTestVerb, FaultsEndWith3)
{
    for (const FaultCase &row : fault_cases) {
        const TemporaryFile tape(row.image, ".tap");
        const Outcome outcome = run({"tape", "test", tape.path()});
        EXPECT_EQ(outcome.code, 3) << row.name;
        EXPECT_EQ(outcome.output, "") << row.name;
        EXPECT_EQ(outcome.errors, error_line(std::string(tape.path()) + ": no SIMH magtape image: " + row.words));
    }
}

TEST(TapeTestVerb, FaultThatOnlyShowsGoingBack)
{
    const TemporaryFile tape(joined({little_word(16), Bytes(16)}), ".tap");
    EXPECT_EQ(run({"tape", "test", tape.path()}).code, 3);
}

TEST(TapeTestVerb, ReportGoesToStandardOutput)
{
    const TemporaryFile tape(two_records(), ".tap");
    const Outcome outcome = run({"tape", "test", "--xml", tape.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "<data-record num=0 pos=0 length=3 />\n"
                              "<tape-mark file=1 pos=12 />\n"
                              "<erase-gap pos=16 size=4 />\n"
                              "<data-record num=1 pos=20 length=2 />\n"
                              "<end-of-medium />\n");
    const TemporaryFile open_end(tape_record("AB"), ".tap");
    EXPECT_EQ(run({"tape", "test", "--xml", open_end.path()}).output, "<data-record num=0 pos=0 length=2 />\n"
                                                                      "<!-- end-of-file reached pos=10 -->\n");
    const TemporaryFile bad(little_word(0x1000000), ".tap");
    const Outcome fault = run({"tape", "test", "--xml", bad.path()});
    EXPECT_EQ(fault.code, 3);
    EXPECT_EQ(fault.output, "<!-- error in SIMH magtape image pos=4 -->\n");
    EXPECT_EQ(error_lines(fault.errors), 1U);
}

TEST(TapeTestVerb, MissingFileEndsWith1)
{
    const TemporaryFile none(".tap");
    for (const char *verb : {"test", "ls"}) {
        const Outcome outcome = run({"tape", verb, none.path()});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.rfind(error_line("Can't open file (file \"" + std::string(none.path()) + "\")"), 0),
                  0U)
            << outcome.errors;
    }
}

TEST(TapeTestVerb, LogOfTheTestIsThere)
{
    const TemporaryFile tape(two_records(), ".tap");
    const Outcome outcome = run({"tape", "test", "--log", "2", tape.path()});
    EXPECT_NE(outcome.errors.find("Info:  Performing reverse check"), std::string::npos) << outcome.errors;
    EXPECT_EQ(outcome.output, run({"tape", "test", tape.path()}).output);
}

// ---- ls ------------------------------------------------------------------------------------------------

TEST(TapeLsVerb, ListsRecordsAndMarks)
{
    const TemporaryFile tape(two_records(), ".tap");
    const Outcome outcome = run({"tape", "ls", tape.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "  Position  What            Length      Record      File\n"
                              "         0  record               3           0         1\n"
                              "        12  tape mark                                  1\n"
                              "        20  record               2           1         2\n"
                              "        30  end of medium\n");
}

TEST(TapeLsVerb, JsonHasTheSame)
{
    const TemporaryFile tape(two_records(), ".tap");
    const rapidjson::Document document = json_of(run({"tape", "ls", "--json", tape.path()}));
    EXPECT_EQ(document["tape"].GetString(), std::string(tape.path()));
    EXPECT_EQ(json_text(document["items"]),
              "[{\"kind\":\"record\",\"position\":0,\"length\":3,\"record\":0,\"file\":1},"
              "{\"kind\":\"tape_mark\",\"position\":12,\"file\":1},"
              "{\"kind\":\"record\",\"position\":20,\"length\":2,\"record\":1,\"file\":2},"
              "{\"kind\":\"end_of_medium\",\"position\":30}]");
}

TEST(TapeLsVerb, EndsAtAFaultWith2)
{
    const TemporaryFile tape(joined({tape_record("ABC"), little_word(0x1000000)}), ".tap");
    const Outcome outcome = run({"tape", "ls", tape.path()});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.output, "  Position  What            Length      Record      File\n"
                              "         0  record               3           0         1\n"
                              "        12  fault\n");
    EXPECT_EQ(outcome.errors,
              error_line(std::string(tape.path()) + ": no SIMH magtape image: word that is no length at position 12"));
    const Outcome json = run({"tape", "ls", "--json", tape.path()});
    EXPECT_EQ(json.code, 2);
    EXPECT_EQ(json_text(json_of(json)["items"][1]),
              "{\"kind\":\"fault\",\"position\":12,\"reason\":\"word that is no length\"}");
    const TemporaryFile plain(Bytes(100, 'x'), ".tap");
    EXPECT_EQ(run({"tape", "ls", plain.path()}).code, 1) << "nothing was listed";
}

TEST(TapeLsVerb, EmptyFileAndSlots)
{
    const TemporaryFile empty(Bytes{}, ".tap");
    EXPECT_EQ(run({"tape", "ls", empty.path()}).output, "  Position  What            Length      Record      File\n"
                                                        "         0  end of file\n");
    const TemporaryFile fixed(slots(), ".tap");
    EXPECT_EQ(run({"tape", "ls", fixed.path()}).output, "  Position  What            Length      Record      File\n"
                                                        "         4  record               4           0         1\n"
                                                        "        28  record               8           1         1\n"
                                                        "        48  tape mark                                  1\n"
                                                        "        72  end of medium\n");
}

TEST(TapeLsVerb, LinesFitEightyColumns)
{
    std::string longest;
    longest.resize(0xFFFFFF, 'x');
    const TemporaryFile tape(joined({tape_record(longest), tape_mark(), tape_record("A")}), ".tap");
    const std::string text = run({"tape", "ls", tape.path()}).output;
    for (size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
        EXPECT_LT(text.find('\n', start) - start, 80U);
}

// ---- a volume on a tape --------------------------------------------------------------------------------

TEST(TapeVolumes, AreListedAndCopiedFrom)
{
    const LifVolume volume = demo_volume();
    const TemporaryFile plain(lif_image(volume));
    const TemporaryFile tape(volume_on_tape(volume), ".tap");
    const Outcome list = run({"ls", tape.path()});
    EXPECT_EQ(list.code, 0);
    EXPECT_EQ(list.errors, "");
    EXPECT_EQ(listed(tape), listed(plain));
    const TemporaryFolder from_tape;
    const TemporaryFolder from_plain;
    EXPECT_EQ(run({"get", tape.path(), "-d", from_tape.path()}).code, 0);
    EXPECT_EQ(run({"get", plain.path(), "-d", from_plain.path()}).code, 0);
    ASSERT_EQ(from_tape.names(), from_plain.names());
    EXPECT_FALSE(from_tape.names().empty());
    for (const std::string &name : from_plain.names()) EXPECT_EQ(from_tape.bytes(name), from_plain.bytes(name)) << name;
    EXPECT_EQ(run({"cat", tape.path(), "NOTES"}).output, run({"cat", plain.path(), "NOTES"}).output);
    EXPECT_EQ(run({"info", tape.path()}).code, 0);
    EXPECT_EQ(tape.bytes(), volume_on_tape(volume));
}

TEST(TapeVolumes, Hazard_B10_EveryChangeIsRefused)
{
    const Sources sources;
    const std::string source = sources.add("F");
    const Bytes looks_like_a_volume = joined({tape_record(std::string(128, '\0')), tape_record(std::string(200, 'x'))});
    for (const Bytes &bytes : {volume_on_tape(one_file()), lif_image(one_file()), looks_like_a_volume}) {
        const TemporaryFile tape(bytes, ".tap");
        for (const Names &options : {Names{}, Names{"--overwrite"}, Names{"--damaged"}, Names{"--dry-run"}}) {
            Names words = {source};
            words.insert(words.end(), options.begin(), options.end());
            const Outcome outcome = put(tape, words);
            EXPECT_EQ(outcome.code, 1);
            EXPECT_EQ(error_lines(outcome.errors), 1U) << outcome.errors;
            EXPECT_EQ(tape.bytes(), bytes);
        }
    }
    const TemporaryFile tape(volume_on_tape(one_file()), ".simh");
    EXPECT_EQ(put(tape, {source}).errors, error_line("Not supported (change of a tape image)"));
}
