// The list of the last targets and its kept form.
#include "dialog/last_targets.h"

#include <gtest/gtest.h>

namespace
{
LastTargets numbered(size_t first, size_t count)
{
    LastTargets targets;
    for (size_t i = 0; i < count; i++) targets.push_back("disc" + std::to_string(first + i) + ".lif");
    return targets;
}

// A text with its NULs, of which C texts show only the first.
template <size_t N> std::string bytes(const char (&text)[N])
{
    return std::string(text, N - 1);
}
}

TEST(LastTargets, TheNewestStandsInFront)
{
    LastTargets targets;
    put_in_front(&targets, "a");
    put_in_front(&targets, "b");
    EXPECT_EQ(targets, (LastTargets{"b", "a"}));
}

TEST(LastTargets, ATargetUsedAgainMovesToTheFront)
{
    LastTargets targets = {"a", "b", "c"};
    put_in_front(&targets, "c");
    EXPECT_EQ(targets, (LastTargets{"c", "a", "b"}));
    put_in_front(&targets, "c");
    EXPECT_EQ(targets, (LastTargets{"c", "a", "b"}));
}

TEST(LastTargets, TheEleventhGoes)
{
    LastTargets targets = numbered(0, 10);
    put_in_front(&targets, "new");
    ASSERT_EQ(targets.size(), 10u);
    EXPECT_EQ(targets.front(), "new");
    EXPECT_EQ(targets.back(), "disc8.lif");
}

TEST(LastTargets, PackedEachHasItsEndAndTheListToo)
{
    EXPECT_EQ(pack_targets({"a", "0:"}), bytes("a\0"
                                               "0:\0\0"));
    EXPECT_EQ(pack_targets({}), bytes("\0"));
}

TEST(LastTargets, WhatIsPackedUnpacks)
{
    for (size_t count = 0; count <= 10; count++) {
        EXPECT_EQ(unpack_targets(pack_targets(numbered(0, count))), numbered(0, count)) << count;
    }
}

TEST(LastTargets, MissingEndsDoNoHarm)
{
    EXPECT_EQ(unpack_targets(""), LastTargets{});
    EXPECT_EQ(unpack_targets("a"), LastTargets{"a"});
    EXPECT_EQ(unpack_targets(bytes("a\0b")), (LastTargets{"a", "b"}));
    EXPECT_EQ(unpack_targets(bytes("a\0b\0")), (LastTargets{"a", "b"}));
}

TEST(LastTargets, WhatIsNoTargetIsPassedOver)
{
    EXPECT_EQ(unpack_targets(bytes("\0\0a\0\0b\0\0")), (LastTargets{"a", "b"}));
    EXPECT_EQ(unpack_targets(bytes("a\0b\0a\0\0")), (LastTargets{"a", "b"}));
    const std::string longest(259, 'x');
    EXPECT_EQ(unpack_targets(longest + "y" + '\0' + longest + '\0'), LastTargets{longest});
}

TEST(LastTargets, AKeptListOfMoreThanTenIsCut)
{
    EXPECT_EQ(unpack_targets(pack_targets(numbered(0, 25))), numbered(0, 10));
}
