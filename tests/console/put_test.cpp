// Files to a volume: bytes, text, headers, dates, standard input. Images are compared byte for byte with such as are
// made by hand.
#include <string>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::bytes_of;
using tests::error_line;
using tests::expect_good;
using tests::expect_usage_error;
using tests::image_with;
using tests::lif_ascii;
using tests::LifEntry;
using tests::LifVolume;
using tests::listed;
using tests::Names;
using tests::one_file;
using tests::Outcome;
using tests::put;
using tests::run;
using tests::source_date;
using tests::Sources;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::volume_of;

TEST(Put, CopiesAFileBehindTheOthers)
{
    const LifVolume contents = one_file();
    const TemporaryFile volume(tests::lif_image(contents));
    const Sources sources;
    const Bytes content(600, 0xC3);
    expect_good(put(volume, {sources.add("CODE.BIN", content)}));
    EXPECT_EQ(volume.bytes(),
              image_with(contents, {.name = "CODE", .type = 0xE971, .date = source_date, .content = content}));
}

TEST(Put, CopiesSeveralFilesInTheirOrder)
{
    LifVolume contents = one_file();
    const TemporaryFile volume(tests::lif_image(contents));
    const Sources sources;
    expect_good(put(volume, {sources.add("B.BIN", Bytes(10, 'b')), sources.add("A.BIN", Bytes(257, 'a')),
                             sources.add("C.BIN", Bytes(256, 'c'))}));
    contents.entries.push_back({.name = "B", .type = 0xE971, .date = source_date, .content = Bytes(10, 'b')});
    contents.entries.push_back({.name = "A", .type = 0xE971, .date = source_date, .content = Bytes(257, 'a')});
    contents.entries.push_back({.name = "C", .type = 0xE971, .date = source_date, .content = Bytes(256, 'c')});
    EXPECT_EQ(volume.bytes(), tests::lif_image(contents));
}

TEST(Put, GivesBackWhatGetHasTaken)
{
    const TemporaryFile from(tests::lif_image(tests::demo_volume()));
    const TemporaryFile to(tests::lif_image(LifVolume{}));
    const TemporaryFolder folder;
    ASSERT_EQ(run({"get", from.path(), "-d", folder.path()}).code, 0);
    Names words;
    for (const std::string &name : folder.names()) words.push_back(folder.path(name));
    expect_good(put(to, words));
    EXPECT_EQ(listed(to), "NODATE.BAS8x NOTES.TEXT README.ASCII RESULTS.&512.BDAT SECRET.BDAT SORT.CODE");
    const TemporaryFolder again;
    ASSERT_EQ(run({"get", to.path(), "-d", again.path()}).code, 0);
    ASSERT_EQ(again.names(), folder.names());
    for (const std::string &name : folder.names()) {
        EXPECT_EQ(again.bytes(name), folder.bytes(name)) << name;
        if (name == "NODATE.BAS8x") continue;
        EXPECT_EQ(tests::written_at(again.path(name)), tests::written_at(folder.path(name))) << name;
    }
}

TEST(Put, TextBecomesWhatTheTypeHolds)
{
    const LifVolume contents = one_file();
    const Bytes ascii = lif_ascii({"some text", "more"});
    const std::string text = "some text\r\nmore\n";
    struct Case {
        const char *file;
        Names options;
        LifEntry entry;
    };
    const Case cases[] = {
        {"N", {}, {.name = "N", .content = bytes_of(text)}},
        {"N", {"--text"}, {.name = "N", .content = ascii}},
        {"N.ASCII", {"--text"}, {.name = "N", .content = ascii}},
        {"N.BIN", {"--text"}, {.name = "N", .type = 0xE971, .content = bytes_of(text)}},
        {"N", {"--txt"}, {.name = "N", .content = bytes_of(text)}},
        {"N.txt", {"--txt"}, {.name = "N", .content = ascii}},
        {"N.TXT", {"--txt"}, {.name = "N", .content = ascii}},
        {"N.ASCII.txt", {"--txt"}, {.name = "N", .content = ascii}},
        {"N.BIN.txt", {"--txt"}, {.name = "N", .type = 0xE971, .content = bytes_of(text)}},
        {"N.BIN.txt", {"--txt", "--type", "ASCII"}, {.name = "N", .content = ascii}},
        {"N.txt", {"--txt", "--type", "ASCII"}, {.name = "N", .content = ascii}},
        {"X.txt", {"--txt", "--as", "N.TXT"}, {.name = "N", .content = ascii}},
        {"X.txt", {"--txt", "--as", "N"}, {.name = "N", .content = bytes_of(text)}},
        {"N.txt", {"--txt", "--text"}, {.name = "N", .content = ascii}},
        {"N", {"--txt", "--text"}, {.name = "N", .content = ascii}},
    };
    for (const Case &row : cases) {
        const TemporaryFile volume(tests::lif_image(contents));
        const Sources sources;
        Names words = row.options;
        words.push_back(sources.add(row.file, text));
        expect_good(put(volume, words));
        LifEntry entry = row.entry;
        entry.date = source_date;
        EXPECT_EQ(volume.bytes(), image_with(contents, entry))
            << row.file << " " << (row.options.empty() ? "" : row.options[0]);
    }
}

TEST(Put, TextComesBackAsItWas)
{
    const Sources sources;
    const std::string text = "first line\r\n  second\r\nthird, a longer one\r\n";
    const std::string source = sources.add("N", text);
    for (const char *type : {"ASCII", "DATA", "TEXT"}) {
        const TemporaryFile volume(tests::lif_image(LifVolume{}));
        expect_good(put(volume, {source, "--text", "--type", type}));
        EXPECT_EQ(run({"cat", volume.path(), "N"}).output, text) << type;
    }
}

TEST(Put, TextThatDoesNotFitIsCutAndTold)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    const std::string source = sources.add("N.TXT75", "10 " + std::string(200, 'x') + "\n");
    const Outcome plan = put(volume, {source, "--text", "--dry-run"});
    EXPECT_EQ(plan.code, 2);
    EXPECT_TRUE(plan.output.ends_with(", not all of it\n")) << plan.output;
    EXPECT_EQ(listed(volume), "");
    const Outcome outcome = put(volume, {source, "--text"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_NE(outcome.errors.find("exceeds max. line length for TEXT files in line 1 (truncated)."), std::string::npos)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] Warning: " + source + ": not all of it was copied\n"), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(listed(volume), "N.TXT75");
}

TEST(Put, HeadersAreTakenOff)
{
    const TemporaryFile from(
        tests::lif_image(volume_of({{.name = "CODE", .type = 0xE971, .content = Bytes(1024, 7)}})));
    const Sources sources;
    const std::string source = sources.folder.path("CODE");
    ASSERT_EQ(run({"get", from.path(), "CODE", "-o", source, "--header", "hpcalc"}).code, 0);
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    expect_good(put(volume, {source, "--header", "hpcalc"}));
    EXPECT_EQ(volume.bytes(), from.bytes()) << "with its date and type";
    const TemporaryFile plain(tests::lif_image(LifVolume{}));
    expect_good(put(plain, {source, "--header=none"}));
    EXPECT_EQ(run({"cat", "--raw", plain.path(), "CODE"}).output.size(), 1280U) << "behind its header";
    const TemporaryFile other(tests::lif_image(LifVolume{}));
    expect_good(put(other, {source, "--header", "hpbasic"}));
    EXPECT_EQ(other.bytes(), plain.bytes()) << "a header of another form is content";
    EXPECT_EQ(put(other, {source, "--header", "lif"}).code, 64);
}

TEST(Put, FileBehindABasicHeaderIsCutAndTold)
{
    const TemporaryFile from(
        tests::lif_image(volume_of({{.name = "CODE", .type = 0xE971, .content = Bytes(1024, 7)}})));
    const Sources sources;
    const std::string source = sources.folder.path("CODE");
    ASSERT_EQ(run({"get", from.path(), "CODE", "-o", source, "--header", "hpbasic"}).code, 0);
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Outcome outcome = put(volume, {source, "--header", "hpbasic"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, "[tarvo] Warning: " + source + ": not all of it was copied\n");
    EXPECT_EQ(bytes_of(run({"cat", volume.path(), "CODE"}).output), Bytes(512, 7));
}

TEST(Put, StandardInputMayBeAPipe)
{
    const LifVolume contents = one_file();
    for (const char *around :
         {"printf 'some text\\n' | %", "{ sleep 0.1; printf some; sleep 0.1; printf ' text\\n'; } | %"}) {
        const TemporaryFile volume(tests::lif_image(contents));
        expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "N.BIN"}, around));
        const Bytes image = volume.bytes();
        EXPECT_EQ(listed(volume), "FIRST.ASCII N.BIN");
        EXPECT_EQ(run({"cat", volume.path(), "N"}).output.substr(0, 11), std::string("some text\n\0", 11));
        EXPECT_EQ(image.size(), tests::lif_image(contents).size());
    }
    const TemporaryFile volume(tests::lif_image(contents));
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "N", "--text"}, "printf 'some text\\n' | %"));
    EXPECT_EQ(run({"cat", volume.path(), "N"}).output, "some text\r\n");
}

TEST(Put, StandardInputMayBeAFile)
{
    const Sources sources;
    const std::string source = sources.add("x", std::string(70000, 'a') + "b");
    LifVolume contents;
    contents.tracks = 100;
    const TemporaryFile volume(tests::lif_image(contents));
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "N.BIN"}, "% <'" + source + "'"));
    EXPECT_EQ(run({"cat", volume.path(), "N"}).output.substr(0, 70001), std::string(70000, 'a') + "b");
    if (!tests::runs_natively()) return;
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "REST.BIN"},
                                    "{ head -c 69999 >/dev/null; %\n} <'" + source + "'"));
    EXPECT_EQ(run({"cat", volume.path(), "REST"}).output.substr(0, 3), std::string("ab\0", 3))
        << "from where it stands";
}

TEST(Put, EmptyStandardInputMakesAnEmptyFile)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "EMPTY.BIN"}, "% </dev/null"));
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "TEXT", "--text"}, ": | %"));
    EXPECT_EQ(listed(volume), "EMPTY.BIN TEXT.ASCII");
    EXPECT_EQ(run({"cat", volume.path(), "EMPTY"}).output, "");
    EXPECT_EQ(run({"cat", volume.path(), "TEXT"}).output, "");
}

TEST(Put, StandardInputIsReadUpToWhatAVolumeHolds)
{
    LifVolume contents;
    contents.tracks = 5000; // of which the image has only the first records
    contents.records = 20;
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome =
        tests::run_in_shell({"put", volume.path(), "-", "--as", "N.BIN"}, "head -c 16776961 /dev/zero | %");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("standard input: No space left on device (it is longer than 16776960 bytes)"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(contents));
    expect_good(tests::run_in_shell({"put", volume.path(), "-", "--as", "N.BIN"}, "head -c 16776960 /dev/zero | %"));
}

TEST(Put, StandardInputNeedsANameAndStandsAlone)
{
    const Sources sources;
    const std::string source = sources.add("F");
    expect_usage_error({"-"}, "Standard input needs a name, --as NAME");
    expect_usage_error({"-", source}, "Standard input is copied alone");
    expect_usage_error({"-", "-", "--as", "X"}, "Standard input is copied alone");
    EXPECT_EQ(run({"put", "x.lif"}).code, 64) << "no file at all";
}

TEST(Put, PipeByItsNameIsReadLikeStandardInput)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "there are no such pipes here";
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    const std::string pipe = sources.folder.path("PIPE.BIN");
    expect_good(tests::run_in_shell({"put", volume.path(), pipe},
                                    "mkfifo '" + pipe + "'; { printf abc >'" + pipe + "' & } ; %"));
    EXPECT_EQ(run({"cat", volume.path(), "PIPE"}).output.substr(0, 4), std::string("abc\0", 4));
}

TEST(Put, VerboseNamesEachFileOnStandardError)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    const std::string a = sources.add("A.txt");
    const std::string b = sources.add("B.BDAT");
    const Outcome outcome = put(volume, {a, b, "--txt", "--verbose"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, a + " -> A.ASCII\n" + b + " -> B.BDAT\n");
}

TEST(Put, LargeFilesArriveWhole)
{
    LifVolume contents;
    contents.tracks = 5000; // of which the image has only the first records
    contents.records = 20;
    const TemporaryFile volume(tests::lif_image(contents));
    const Sources sources;
    Bytes content(3 * 1024 * 1024);
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<uint8_t>(i * 7 + (i >> 8));
    expect_good(put(volume, {sources.add("LARGE.BIN", content)}));
    EXPECT_EQ(bytes_of(run({"cat", volume.path(), "LARGE"}).output), content);
}
