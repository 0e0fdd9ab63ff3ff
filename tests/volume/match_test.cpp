// Names against patterns.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/catalogue_inner.h"
#include "volume/navigate.h"

using namespace tests;

namespace
{

int32_t match(std::initializer_list<const char *> patterns, const char *name, const char *extension = nullptr)
{
    std::vector<const char *> filespec(patterns);
    filespec.push_back(nullptr);
    return match_filespec(filespec.data(), name, extension);
}

class WithoutWildcards
{
  public:
    WithoutWildcards()
    {
        wildcards = 0;
    }
    ~WithoutWildcards()
    {
        wildcards = 1;
    }
    WithoutWildcards(const WithoutWildcards &) = delete;
    WithoutWildcards &operator=(const WithoutWildcards &) = delete;
};

}

TEST(Match, NoPatternMatchesEverything)
{
    EXPECT_GT(match({}, "NAME"), 0);
}

TEST(Match, Hazard_G10_NoArrayMatchesEverything)
{
    EXPECT_GT(match_filespec(nullptr, "NAME", "DATA"), 0);
    EXPECT_GT(match({}, "", nullptr), 0);
}

TEST(Match, ExactNames)
{
    EXPECT_EQ(match({"abc.DATA"}, "abc", "DATA"), 4);
    EXPECT_EQ(match({"abc"}, "abc", "DATA"), 1);
    EXPECT_EQ(match({"abc"}, "abc"), 4); // without an extension both texts are the same
    EXPECT_EQ(match({"ABC"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"DATA"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"a*c"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"a*c"}, "a*c", "DATA"), 1);
    EXPECT_EQ(match({"a?c"}, "abc", "DATA"), 0);
}

TEST(Match, Substrings)
{
    EXPECT_EQ(match({"*b*"}, "abc", "DATA"), 3);
    EXPECT_EQ(match({"*abc*"}, "abc", "DATA"), 3);
    EXPECT_EQ(match({"*DAT*"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"*c.D*"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"*x*"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"*DAT*"}, "abc"), 0);
}

TEST(Match, Prefixes)
{
    EXPECT_EQ(match({"a*"}, "abc", "DATA"), 3);
    EXPECT_EQ(match({"abc*"}, "abc", "DATA"), 3);
    EXPECT_EQ(match({"abc.D*"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"b*"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"abcd*"}, "abc"), 0);
}

TEST(Match, Suffixes)
{
    EXPECT_EQ(match({"*abc"}, "abc", "DATA"), 3);
    EXPECT_EQ(match({"*abc"}, "xabc", "DATA"), 3);
    EXPECT_EQ(match({"*DATA"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"*.DATA"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"*ab"}, "abc", "DATA"), 0);
}

TEST(Match, Hazard_G2_ASuffixLongerThanTheName)
{
    EXPECT_EQ(match({"*yyyyyyyyyyyyabc"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"*a"}, "", nullptr), 0);
}

TEST(Match, Hazard_G1_OneStarIsTwo)
{
    for (const char *pattern : {"*", "**"}) {
        EXPECT_EQ(match({pattern}, "abc", "DATA"), 3);
        EXPECT_EQ(match({pattern}, "", nullptr), 3);
    }
}

TEST(Match, TheFirstPatternThatFitsDecides)
{
    EXPECT_EQ(match({"x", "*y*", "abc", "a*"}, "abc", "DATA"), 1);
    EXPECT_EQ(match({"z*", "*DATA", "abc"}, "abc", "DATA"), 5);
    EXPECT_EQ(match({"x", "y"}, "abc", "DATA"), 0);
}

TEST(Match, WithoutWildcardsAStarIsACharacter)
{
    const WithoutWildcards off;
    EXPECT_EQ(match({"a*"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"a*"}, "a*", "DATA"), 1);
    EXPECT_EQ(match({"*"}, "abc", "DATA"), 0);
    EXPECT_EQ(match({"*"}, "*"), 4);
}

TEST(Match, Hazard_G9_IsTracedWithItsFirstPattern)
{
    const LogCapture log(3);
    match({"abc", "def"}, "NAME", "DATA");
    match({}, "NAME", nullptr);
    match_filespec(nullptr, "NAME", nullptr);
    EXPECT_TRUE(
        contains(log.text(), "Trace: match_filespec(filespec=\"abc\", filename=\"NAME\", extension=\"DATA\")\n"))
        << log.text();
}

TEST(Match, VisitWithoutPatternsTakesEachEntryAndTracesItAsAnyOther)
{
    FileInfo second = named("SECOND", "TEXT");
    FileInfo first = named("FIRST");
    first.next = &second;
    MediaDescriptor md = {};
    md.root = &first;
    const auto note = [](void *context, const MediaDescriptor *, const FileInfo *info) {
        static_cast<std::vector<std::string> *>(context)->emplace_back(info->name);
    };
    const char *const nothing[] = {nullptr};
    for (const char *const *filespec :
         {static_cast<const char *const *>(nullptr), static_cast<const char *const *>(nothing)}) {
        for (const int32_t level : {0, 3}) {
            const LogCapture log(level);
            std::vector<std::string> visited;
            EXPECT_EQ(visit_matching(&md, filespec, note, &visited), 2u);
            EXPECT_EQ(visited, (std::vector<std::string>{"FIRST", "SECOND"}));
            EXPECT_EQ(log.text(),
                      level < 3
                          ? ""
                          : "Trace: match_filespec(filespec=\"(null)\", filename=\"FIRST\", extension=\"ASCII\")\n"
                            "Trace: match_filespec(filespec=\"(null)\", filename=\"SECOND\", extension=\"TEXT\")\n");
        }
    }
}
