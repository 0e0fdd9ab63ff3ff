// The last error and its words.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "platform/platform.h"

namespace
{

std::string words(uint32_t code)
{
    char text[256];
    const size_t length = platform_error_text(code, text, sizeof(text));
    EXPECT_EQ(length, strlen(text));
    return text;
}

TEST(PlatformSystem, LastErrorIsWhatWasSet)
{
    platform_set_last_error(5);
    EXPECT_EQ(platform_last_error(), 5u);
    platform_set_last_error(0);
    EXPECT_EQ(platform_last_error(), 0u);
}

TEST(PlatformSystem, LastErrorIsTheThreadsOwn)
{
    platform_set_last_error(5);
    std::thread other([] {
        platform_set_last_error(2);
        EXPECT_EQ(platform_last_error(), 2u);
    });
    other.join();
    platform_set_last_error(5);
    EXPECT_EQ(platform_last_error(), 5u);
}

TEST(PlatformSystem, WordsEndInNoStopAndNoLineEnd)
{
    EXPECT_NE(words(2), words(5));
    for (uint32_t code = 0; code < 40; ++code) {
        const std::string text = words(code);
        ASSERT_FALSE(text.empty()) << code;
        EXPECT_EQ(strchr(".\r\n ", text.back()), nullptr) << text;
    }
}

TEST(PlatformSystem, UnknownCodeHasWordsToo)
{
    EXPECT_NE(words(999999).find("999999"), std::string::npos);
    EXPECT_FALSE(words(0xffffffff).empty());
}

TEST(PlatformSystem, CodeOfAProgramStandsInItsFile)
{
    char code[1024] = "";
    char program[1024] = "";
    ASSERT_TRUE(platform_library_path(code, sizeof code));
    ASSERT_TRUE(platform_program_path(program, sizeof program));
    EXPECT_STREQ(code, program);
    EXPECT_FALSE(platform_library_path(code, 2));
}

TEST(PlatformSystem, Hazard_M1_WordsAreCutToTheirRoom)
{
    const std::string whole = words(2);
    for (size_t size = 1; size <= whole.size() + 2; ++size) {
        std::string text(size + 4, '#');
        const size_t length = platform_error_text(2, text.data(), size);
        EXPECT_EQ(length, std::min(whole.size(), size - 1));
        EXPECT_EQ(text.substr(0, length), whole.substr(0, length));
        EXPECT_EQ(text[length], '\0');
        EXPECT_EQ(text.substr(size), "####");
    }
    char untouched = '#';
    EXPECT_EQ(platform_error_text(2, &untouched, 0), 0u);
    EXPECT_EQ(untouched, '#');
}

TEST(PlatformSystem, IsOfTheNewFamilyWithWideCalls)
{
    EXPECT_TRUE(platform_is_nt_family());
    EXPECT_TRUE(platform_has_wide_calls());
}

} // namespace
