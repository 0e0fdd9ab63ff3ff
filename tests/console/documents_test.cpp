// What is installed beside the program says what the program says.
#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::run;

namespace
{

const char *const verbs[] = {"ls",   "info",      "get",     "put",          "cat",    "cp",    "mv",
                             "rm",   "mk",        "attr",    "undelete",     "init",   "check", "repair",
                             "pack", "tape test", "tape ls", "tape convert", "config", "help"};

// All words of a text that begin with two hyphens.
std::set<std::string> long_options(const std::string &text)
{
    std::set<std::string> options;
    for (size_t start = text.find("--"); start != std::string::npos; start = text.find("--", start + 2)) {
        const size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", start);
        options.insert(text.substr(start, end - start));
    }
    return options;
}

std::vector<std::string> help_of(const std::string &verb)
{
    std::vector<std::string> words = {"help"};
    std::istringstream in(verb);
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// What bash offers for a command line, whose last word is being written.
std::string completions(const std::string &words)
{
    const tests::TemporaryFile output(".out");
    const std::string script = "source \"" + tests::documents() + "tarvo.bash\"; COMP_WORDS=(" + words +
                               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _tarvo; echo \"${COMPREPLY[*]}\"";
    const std::string command = "bash -c '" + script + "' >'" + output.path() + "' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << words;
    return tests::file_text(output.path());
}

}

TEST(Completion, InstalledFileIsWhatTheProgramPrints)
{
    const tests::Outcome outcome = run({"completion", "bash"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, tests::file_text(tests::documents() + "tarvo.bash"));
}

TEST(Completion, OffersVerbsThenOptions)
{
    EXPECT_EQ(completions("tarvo l"), "ls list\n");
    EXPECT_EQ(completions("tarvo --v"), "--version\n");
    EXPECT_EQ(completions("tarvo ls --p"), "--purged\n");
    EXPECT_EQ(completions("tarvo dir --j"), "--json\n");
    EXPECT_EQ(completions("tarvo info --p"), "\n") << "purged files are none of its business";
    EXPECT_EQ(completions("tarvo info x.lif --h"), "--help\n");
    EXPECT_EQ(completions("tarvo help inf"), "info\n");
    EXPECT_EQ(completions("tarvo get x.lif --fo"), "--force-text\n");
    EXPECT_EQ(completions("tarvo get x.lif --header hp"), "hpbasic hpcalc\n");
    EXPECT_EQ(completions("tarvo put x.lif --header n"), "none\n");
    EXPECT_EQ(completions("tarvo put x.lif --d"), "--damaged --dry-run\n");
    EXPECT_EQ(completions("tarvo put x.lif --header none h"), "\n") << "then a file";
    EXPECT_EQ(completions("tarvo cat x.lif --r"), "--raw\n");
    EXPECT_EQ(completions("tarvo m"), "mv mk\n");
    EXPECT_EQ(completions("tarvo cp x.lif --o"), "--overwrite\n");
    EXPECT_EQ(completions("tarvo rm x.lif --i"), "--interactive\n");
    EXPECT_EQ(completions("tarvo mk x.lif --s"), "--size --system\n");
    EXPECT_EQ(completions("tarvo attr x.lif --protect o"), "on off\n");
    EXPECT_EQ(completions("tarvo attr x.lif --hide of"), "off\n");
    EXPECT_EQ(completions("tarvo undelete x.lif --a"), "--at\n");
    EXPECT_EQ(completions("tarvo init x.hpi --system 98"), "9845 9831 9825\n");
    EXPECT_EQ(completions("tarvo init x.hpi --format t"), "tape45\n");
    EXPECT_EQ(completions("tarvo check x.hpi --j"), "--json\n");
    EXPECT_EQ(completions("tarvo repair x.hpi --b"), "--backup\n");
    EXPECT_EQ(completions("tarvo pack x.hpi --d"), "--dry-run\n");
    EXPECT_EQ(completions("tarvo config c"), "check\n");
    EXPECT_EQ(completions("tarvo config check x"), "\n") << "then a file";
    EXPECT_EQ(completions("tarvo ls --no"), "--no-config\n");
    EXPECT_EQ(completions("tarvo ta"), "tape\n");
    EXPECT_EQ(completions("tarvo tape c"), "convert\n");
    EXPECT_EQ(completions("tarvo tape --h"), "--help\n");
    EXPECT_EQ(completions("tarvo tape test --x"), "--xml\n");
    EXPECT_EQ(completions("tarvo tape ls --"), "--json --config --no-config --log --help --version\n");
    EXPECT_EQ(completions("tarvo tape convert a.tap b --to f"), "fixed\n");
    EXPECT_EQ(completions("tarvo tape bogus --j"), "\n");
    EXPECT_EQ(completions("tarvo ls x"), "\n") << "then the shell offers files";
    EXPECT_EQ(completions("tarvo bogus --p"), "\n");
}

TEST(ManualPage, NamesEachVerbAndOption)
{
    std::string page = tests::file_text(tests::documents() + "tarvo.1");
    for (size_t at = page.find("\\-"); at != std::string::npos; at = page.find("\\-", at)) page.erase(at, 1);
    for (const char *verb : verbs) {
        EXPECT_NE(page.find(std::string("\n.B tarvo ") + verb + "\n"), std::string::npos) << verb;
        for (const std::string &option : long_options(run(help_of(verb)).output)) {
            EXPECT_NE(page.find(option), std::string::npos) << option;
        }
    }
    for (const char *alias : {"list", "dir"})
        EXPECT_NE(page.find(std::string(".B ") + alias), std::string::npos) << alias;
    EXPECT_NE(page.find("tarvo " TARVO_VERSION), std::string::npos);
}

TEST(ManualPage, FitsEightyColumns)
{
    if (std::system("command -v man >/dev/null && command -v col >/dev/null") != 0) {
        GTEST_SKIP() << "there is no man to set the page";
    }
    const tests::TemporaryFile output(".out");
    const std::string command = "MANWIDTH=80 LC_ALL=C man -l '" + tests::documents() + "tarvo.1' 2>&1 | col -bx >'";
    ASSERT_EQ(std::system((command + output.path() + "'").c_str()), 0);
    std::istringstream lines(tests::file_text(output.path()));
    size_t count = 0;
    for (std::string line; std::getline(lines, line); count++) EXPECT_LE(line.size(), 80U) << line;
    EXPECT_GT(count, 200U);
}
