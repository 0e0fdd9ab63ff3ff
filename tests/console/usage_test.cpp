// The command line: verbs, aliases, options, help, version, and what is no command line.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Outcome;
using tests::run;

namespace
{

using Words = std::vector<std::string>;

const Words shown_verbs[] = {{"ls"},     {"info"},   {"get"},  {"put"},          {"cat"},        {"cp"},
                             {"mv"},     {"rm"},     {"mk"},   {"attr"},         {"undelete"},   {"init"},
                             {"check"},  {"repair"}, {"pack"}, {"tape", "test"}, {"tape", "ls"}, {"tape", "convert"},
                             {"config"}, {"help"}};
const Words all_verbs[] = {{"ls"},     {"info"},   {"get"},       {"put"},          {"cat"},        {"cp"},
                           {"mv"},     {"rm"},     {"mk"},        {"attr"},         {"undelete"},   {"init"},
                           {"check"},  {"repair"}, {"pack"},      {"tape", "test"}, {"tape", "ls"}, {"tape", "convert"},
                           {"config"}, {"help"},   {"completion"}};

Words with(Words words, const std::string &last)
{
    words.push_back(last);
    return words;
}

std::string name_of(const Words &verb)
{
    return verb.size() == 1 ? verb[0] : verb[0] + " " + verb[1];
}

// "help VERB"
Words help_of(const Words &verb)
{
    Words words = verb;
    words.insert(words.begin(), "help");
    return words;
}

void expect_usage_error(const std::vector<std::string> &words, const std::string &text)
{
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.code, 64) << text;
    EXPECT_EQ(outcome.output, "") << text;
    EXPECT_EQ(outcome.errors, tests::error_line(text) + "[tarvo]        Try \"tarvo --help\".\n");
}

std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}

TEST(Version, IsPrintedAloneAndBehindEachVerb)
{
    const Outcome alone = run({"--version"});
    EXPECT_EQ(alone.code, 0);
    EXPECT_EQ(alone.output, "tarvo " TARVO_VERSION "\n");
    EXPECT_EQ(alone.errors, "");
    for (const Words &verb : shown_verbs) {
        const Outcome outcome = run(with(verb, "--version"));
        EXPECT_EQ(outcome.code, 0) << name_of(verb);
        EXPECT_EQ(outcome.output, alone.output) << name_of(verb);
    }
    EXPECT_EQ(run({"tape", "--version"}).output, alone.output);
}

TEST(Help, ListsTheVerbs)
{
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(outcome.output.find("\n  ls            list the files of a medium; also called list dir\n"),
              std::string::npos);
    EXPECT_NE(outcome.output.find("\n  info          tell about the volume on a medium\n"), std::string::npos);
    EXPECT_NE(outcome.output.find("\n  get           copy files from a medium\n"), std::string::npos);
    EXPECT_NE(outcome.output.find("\n  put           copy files to a medium\n"), std::string::npos);
    EXPECT_NE(outcome.output.find("\n  cat           print a file of a medium\n"), std::string::npos);
    EXPECT_EQ(outcome.output.find("completion"), std::string::npos) << "hidden verbs stay hidden";
    EXPECT_EQ(run({"-h"}).output, outcome.output);
    EXPECT_EQ(run({"help"}).output, outcome.output);
}

TEST(Help, OfAVerbIsTheSameBehindItAndByTheVerbHelp)
{
    for (const Words &verb : all_verbs) {
        const Outcome behind = run(with(verb, "--help"));
        EXPECT_EQ(behind.code, 0) << name_of(verb);
        EXPECT_EQ(behind.output.rfind("Usage: tarvo " + name_of(verb) + " ", 0), 0U) << behind.output;
        EXPECT_EQ(run(with(verb, "-h")).output, behind.output) << name_of(verb);
        EXPECT_EQ(run(help_of(verb)).output, behind.output) << name_of(verb);
    }
    EXPECT_EQ(run({"help", "dir"}).output, run({"help", "ls"}).output);
}

TEST(Help, OfTheFirstOfTwoWordsListsItsVerbs)
{
    const Outcome outcome = run({"tape", "--help"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output.rfind("Usage: tarvo tape VERB ", 0), 0U);
    for (const char *verb : {"tape test", "tape ls", "tape convert"})
        EXPECT_NE(outcome.output.find(std::string("\n  ") + verb + " "), std::string::npos) << verb;
    EXPECT_EQ(outcome.output.find("\n  get "), std::string::npos);
    EXPECT_EQ(run({"tape", "-h"}).output, outcome.output);
    EXPECT_EQ(run({"help", "tape"}).output, outcome.output);
}

TEST(Help, TellsEachOptionOfAVerb)
{
    const std::string text = run({"help", "ls"}).output;
    for (const char *option :
         {"--purged ", "--json ", "--config FILE\n", "--no-config ", "--log N ", "-h, --help ", "--version "}) {
        EXPECT_NE(text.find(std::string("\n  ") + option), std::string::npos) << option;
    }
    EXPECT_NE(text.find("Usage: tarvo ls [OPTION...] MEDIUM [PATTERN...]\n"), std::string::npos);
}

TEST(Help, TellsEachOptionOfTheVerbsThatCopy)
{
    const std::string get = run({"help", "get"}).output;
    for (const char *option : {"-d, --directory DIR\n", "-o, --output FILE\n", "--text ", "--force-text ", "--txt ",
                               "--header FORM\n", "--overwrite ", "-v, --verbose\n"}) {
        EXPECT_NE(get.find(std::string("\n  ") + option), std::string::npos) << option;
    }
    EXPECT_NE(get.find("Usage: tarvo get [OPTION...] MEDIUM [PATTERN...]\n"), std::string::npos);
    const std::string put = run({"help", "put"}).output;
    for (const char *option :
         {"--as NAME ", "--text ", "--txt ", "--header FORM\n", "--type TYPE ", "--record BYTES\n", "--system NAME\n",
          "--overwrite ", "--backup ", "--damaged ", "--dry-run ", "-v, --verbose\n"}) {
        EXPECT_NE(put.find(std::string("\n  ") + option), std::string::npos) << option;
    }
    EXPECT_NE(put.find("Usage: tarvo put [OPTION...] MEDIUM FILE...\n"), std::string::npos);
    EXPECT_NE(put.find("isn't atomic"), std::string::npos) << "whoever overwrites should know";
    EXPECT_NE(run({"help", "cat"}).output.find("Usage: tarvo cat [OPTION...] MEDIUM NAME\n"), std::string::npos);
}

TEST(Help, OfVerbsThatChangeAMediumHasTheirOptions)
{
    const struct {
        const char *verb;
        const char *usage;
        std::vector<std::string> options;
    } rows[] = {
        {"cp", "MEDIUM NAME... DEST", {"--overwrite ", "--force ", "-i, --interactive\n"}},
        {"mv", "MEDIUM NAME... DEST", {"--overwrite ", "--force ", "-i, --interactive\n"}},
        {"rm", "MEDIUM NAME...", {"--force ", "-i, --interactive\n"}},
        {"mk", "MEDIUM NAME", {"--size BYTES ", "--type TYPE ", "--record BYTES\n", "--system NAME\n"}},
        {"attr",
         "MEDIUM NAME...",
         {"--type TYPE ", "--system NAME\n", "--record BYTES\n", "--date DATE ", "--protect WORD\n", "--hide WORD "}},
        {"undelete", "MEDIUM NAME", {"--type TYPE ", "--system NAME\n", "--at RECORD "}},
    };
    for (const auto &row : rows) {
        const std::string help = run({"help", row.verb}).output;
        const std::string usage = std::string("Usage: tarvo ") + row.verb + " [OPTION...] " + row.usage + "\n";
        EXPECT_NE(help.find(usage), std::string::npos) << help;
        std::vector<std::string> options = row.options;
        for (const char *shared : {"--backup ", "--damaged ", "--dry-run ", "-v, --verbose\n"})
            options.emplace_back(shared);
        for (const std::string &option : options) EXPECT_NE(help.find("\n  " + option), std::string::npos) << option;
    }
}

TEST(Help, TellsEachOptionOfTheVerbsForVolumes)
{
    const std::string init = run({"help", "init"}).output;
    for (const char *option :
         {"--media NAME ", "--format FORMAT\n", "--system NAME\n", "--size N ", "--sectors N ", "--heads N ",
          "--label TEXT ", "--dir N ", "--interleave N\n", "--boot FILE ", "--quick ", "--force ", "--dry-run "}) {
        EXPECT_NE(init.find(std::string("\n  ") + option), std::string::npos) << option;
    }
    EXPECT_NE(init.find("Usage: tarvo init [OPTION...] [MEDIUM]\n"), std::string::npos);
    for (const char *verb : {"repair", "pack"}) {
        const std::string text = run({"help", verb}).output;
        EXPECT_NE(text.find("\n  --backup "), std::string::npos) << verb;
        EXPECT_NE(text.find("\n  --dry-run "), std::string::npos) << verb;
    }
    const std::string pack = run({"help", "pack"}).output;
    EXPECT_NE(pack.find("a part of one would lose that part"), std::string::npos) << "whoever packs should know";
    EXPECT_NE(pack.find("65534"), std::string::npos);
}

TEST(Help, FitsEightyColumnsAndEndsWithExamples)
{
    std::vector<std::vector<std::string>> command_lines = {{"--help"}};
    for (const Words &verb : all_verbs) command_lines.push_back(help_of(verb));
    command_lines.push_back({"help", "tape"});
    for (const std::vector<std::string> &words : command_lines) {
        const std::vector<std::string> lines = lines_of(run(words).output);
        for (const std::string &line : lines) EXPECT_LT(line.size(), 80U) << line;
        auto line = std::find(lines.begin(), lines.end(), "Example:");
        ASSERT_NE(line, lines.end()) << words.back();
        ASSERT_NE(++line, lines.end()) << words.back();
        for (; line != lines.end(); ++line) EXPECT_NE(line->find("tarvo "), std::string::npos) << *line;
    }
}

TEST(Help, GoesBeforeWhatElseIsWrong)
{
    EXPECT_EQ(run({"ls", "--help"}).code, 0) << "although the medium is missing";
    EXPECT_EQ(run({"ls", "--help", "x", "--bogus"}).code, 0);
}

TEST(Usage, WhatIsNoCommandLineEndsWith64)
{
    expect_usage_error({}, "A verb is required");
    expect_usage_error({"frobnicate"}, "There is no verb \"frobnicate\"");
    expect_usage_error({""}, "There is no verb \"\"");
    expect_usage_error({"LS"}, "There is no verb \"LS\"");
    expect_usage_error({"--bogus"}, "There is no verb \"--bogus\"");
    expect_usage_error({"help", "frobnicate"}, "There is no verb \"frobnicate\"");
    expect_usage_error({"tape"}, "tape takes a second word: test, ls or convert");
    expect_usage_error({"tape", "frobnicate", "x"}, "There is no verb \"tape frobnicate\"");
    expect_usage_error({"tape", ""}, "There is no verb \"tape \"");
    expect_usage_error({"completion", "fish"}, "Completion is there for bash only");
}

TEST(Usage, ArgumentsThatAVerbDoesNotTakeEndWith64)
{
    const std::vector<std::string> wrong[] = {
        {"ls"},
        {"info"},
        {"info", "a", "b"},
        {"info", "--purged", "a"},
        {"ls", "--bogus", "a"},
        {"ls", "-x", "a"},
        {"ls", "--json=maybe", "a"},
        {"ls", "--log"},
        {"ls", "--log", "x", "a"},
        {"ls", "--log", "-1", "a"},
        {"ls", "--log", "16", "a"},
        {"ls", "--log", "1", "--log", "2", "a"},
        {"help", "ls", "info"},
        {"completion"},
        {"get"},
        {"get", "--json", "a"},
        {"get", "a", "--header"},
        {"get", "a", "--header", "tape"},
        {"get", "a", "-o"},
        {"get", "a", "-d", "b", "-d", "c"},
        {"get", "--backup", "a"},
        {"put"},
        {"put", "a"},
        {"put", "a", "b", "--raw"},
        {"put", "a", "b", "--force-text"},
        {"put", "a", "b", "-d", "c"},
        {"put", "a", "b", "--type"},
        {"cat"},
        {"cat", "a"},
        {"cat", "a", "b", "c"},
        {"cat", "a", "b", "-v"},
        {"cp"},
        {"cp", "a"},
        {"cp", "a", "b"},
        {"cp", "a", "b", "c", "--size", "1"},
        {"mv", "a", "b"},
        {"mv", "a", "b", "c", "--type", "DATA"},
        {"rm"},
        {"rm", "a"},
        {"rm", "a", "b", "--overwrite"},
        {"mk", "a", "--size", "1"},
        {"mk", "a", "b", "c", "--size", "1"},
        {"mk", "a", "b", "--size", "-1"},
        {"mk", "a", "b", "--size", "2147483648"},
        {"mk", "a", "b", "--size", "1", "--record", "1"},
        {"attr", "a", "--type", "DATA"},
        {"attr", "a", "b", "--date"},
        {"attr", "a", "b", "-i", "--type", "DATA"},
        {"undelete", "a", "--type", "DATA"},
        {"undelete", "a", "b", "c", "--type", "DATA"},
        {"undelete", "a", "b", "--type", "DATA", "--at", "0"},
        {"init", "a", "b"},
        {"init", "a", "--media"},
        {"init", "a", "--format", "sdf"},
        {"init", "a", "--media", "9895", "--system", "85"},
        {"init", "a", "--media", "9895", "--dir", "0"},
        {"init", "a", "--media", "9895", "--interleave", "65536"},
        {"init", "a", "--media", "9895", "--backup"},
        {"check"},
        {"check", "a", "b"},
        {"check", "a", "--dry-run"},
        {"repair"},
        {"repair", "a", "--json"},
        {"pack"},
        {"pack", "a", "--damaged"},
        {"ls", "a", "--config"},
        {"ls", "a", "--no-config=x"},
        {"tape", "test"},
        {"tape", "test", "a", "b"},
        {"tape", "test", "--json", "a"},
        {"tape", "test", "--block", "0", "a"},
        {"tape", "ls"},
        {"tape", "ls", "--xml", "a"},
        {"tape", "convert"},
        {"tape", "convert", "a", "--to", "hpi"},
        {"tape", "convert", "a", "b"},
    };
    for (const std::vector<std::string> &words : wrong) {
        const Outcome outcome = run(words);
        std::string shown;
        for (const std::string &word : words) shown += word + " ";
        EXPECT_EQ(outcome.code, 64) << shown;
        EXPECT_EQ(outcome.output, "") << shown;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << shown << outcome.errors;
    }
}

TEST(Usage, AliasesAreTheVerb)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    for (const char *alias : {"list", "dir"}) {
        const Outcome same = run({alias, volume.path()});
        EXPECT_EQ(same.code, 0) << alias;
        EXPECT_EQ(same.output, outcome.output) << alias;
    }
}

TEST(Usage, OptionsStandAnywhereBehindTheVerb)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const std::string expected = run({"ls", "--json", "--purged", volume.path(), "OLD"}).output;
    EXPECT_NE(expected.find("\"OLD\""), std::string::npos);
    EXPECT_EQ(run({"ls", volume.path(), "--json", "OLD", "--purged"}).output, expected);
    EXPECT_EQ(run({"ls", volume.path(), "OLD", "--purged", "--json"}).output, expected);
    EXPECT_EQ(run({"ls", "--purged", "--json", "--", volume.path(), "OLD"}).output, expected);
}

TEST(LogOption, WritesToStandardErrorOnly)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome quiet = run({"ls", volume.path()});
    EXPECT_EQ(quiet.errors, "");
    const Outcome trace = run({"ls", "--log", "3", volume.path()});
    EXPECT_EQ(trace.code, 0);
    EXPECT_EQ(trace.output, quiet.output);
    EXPECT_NE(trace.errors.find("Trace: image_open(target=\"" + std::string(volume.path()) + "\""), std::string::npos)
        << trace.errors;
    EXPECT_NE(trace.errors.find("Trace: image_close("), std::string::npos);
    const Outcome json = run({"ls", "--log=3", "--json", volume.path()});
    EXPECT_EQ(json.output, run({"ls", "--json", volume.path()}).output);
}

TEST(LogOption, TakesTheLevelsFrom0To15)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const std::string expected = run({"ls", volume.path()}).output;
    for (const char *level : {"0", "7", "8", "15"}) {
        const Outcome outcome = run({"ls", "--log", level, volume.path()});
        EXPECT_EQ(outcome.code, 0) << level;
        EXPECT_EQ(outcome.output, expected) << level;
    }
}

TEST(LogOption, DoesNotRepeatTheErrorLine)
{
    const tests::TemporaryFile missing;
    for (const char *level : {"0", "1", "3", "5"}) {
        const Outcome outcome = run({"ls", "--log", level, missing.path()});
        EXPECT_EQ(outcome.code, 1) << level;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_NE(outcome.errors.find("Can't open file (Msus \""), std::string::npos) << outcome.errors;
    }
}
