// The option word and the controls that show it.
#include "dialog/option_word.h"

#include <gtest/gtest.h>

TEST(OptionWord, EachBitHasItsControl)
{
    EXPECT_TRUE(shown_options(0x02).typed_extensions);
    EXPECT_TRUE(shown_options(0x04).file_conversion);
    EXPECT_TRUE(shown_options(0x08).show_purged);
    EXPECT_EQ(shown_options(0x10).headers, FileHeaders::hpbasic);
    EXPECT_EQ(shown_options(0x20).headers, FileHeaders::hpcalc);
}

TEST(OptionWord, BitsOfOthersShowNowhere)
{
    const ShownOptions shown = shown_options(0xFFFFFFC1);
    EXPECT_FALSE(shown.typed_extensions);
    EXPECT_FALSE(shown.file_conversion);
    EXPECT_FALSE(shown.show_purged);
    EXPECT_EQ(shown.headers, FileHeaders::none);
}

TEST(OptionWord, AnUnknownHeaderShowsAsNone)
{
    EXPECT_EQ(shown_options(0x30).headers, FileHeaders::none);
    EXPECT_EQ(changed_word(0x30, shown_options(0x30)), 0u);
}

TEST(OptionWord, OnlyTheDialogsBitsChange)
{
    const ShownOptions nothing;
    EXPECT_EQ(changed_word(0xFFFFFFFF, nothing), 0xFFFFFFC1u);
    ShownOptions all;
    all.typed_extensions = all.file_conversion = all.show_purged = true;
    all.headers = FileHeaders::hpcalc;
    EXPECT_EQ(changed_word(0, all), 0x2Eu);
    EXPECT_EQ(changed_word(0x80000001, all), 0x8000002Fu);
}

TEST(OptionWord, ShownAndTakenBackItIsTheSame)
{
    for (uint32_t word = 0; word < 0x100; word++) {
        if ((word & option_headers_mask) == option_headers_mask) continue;
        EXPECT_EQ(changed_word(word, shown_options(word)), word);
        EXPECT_EQ(changed_word(0xC1, shown_options(word)), 0xC1u | (word & 0x3E));
    }
}
