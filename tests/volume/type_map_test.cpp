// Types on their way between the formats: every word of every pair.
#include "volume/type_map.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "volume/media.h"

namespace
{

using Pair = std::pair<uint32_t, uint32_t>;
using Words = std::map<uint32_t, uint32_t>;

constexpr uint32_t disk = FORMAT_DISK45;
constexpr uint32_t tape = FORMAT_TAPE45;
constexpr uint32_t lif = FORMAT_LIF;

// Words that change; of the two System 45 formats these are what is left behind the mask.
const std::map<Pair, Words> listed = {
    {{tape, lif}, {{36, 0xE848}, {72, 0xE990}, {76, 0xE998}, {88, 0xE9B0}}},
    {{lif, disk},
     {{0xE848, 0x2400},
      {0xE850, 0xC800},
      {0xE990, 0xC800},
      {0xE858, 0xCC00},
      {0xE998, 0xCC00},
      {0xE870, 0xD800},
      {0xE9B0, 0xD800},
      {0xE9B8, 0xDE00}}},
    {{lif, tape}, {{0xE848, 36}, {0xE850, 72}, {0xE990, 72}, {0xE858, 76}, {0xE998, 76}, {0xE870, 88}, {0xE9B8, 92}}},
    {{disk, lif}, {{0x2400, 0xE848}, {0xC800, 0xE990}, {0xCC00, 0xE998}, {0xD800, 0xE9B0}}},
};

uint32_t mask_of(const Pair &pair)
{
    if (pair == Pair{tape, lif}) return 0x00FF;
    return pair == Pair{disk, lif} ? 0xFF00 : 0xFFFF;
}

uint32_t wanted(const Pair &pair, uint32_t type)
{
    if (pair == Pair{disk, tape}) return (type >> 8) & 127;
    if (pair == Pair{tape, disk}) {
        const uint32_t shifted = (type << 8) & 0xFFFF;
        return shifted >= 9217 ? shifted | 0x8000 : shifted;
    }
    const auto words = listed.find(pair);
    if (words == listed.end()) return type;
    const auto word = words->second.find(type & mask_of(pair));
    return word == words->second.end() ? type : word->second;
}

}

TEST(TypeMap, EveryWordOfEveryPair)
{
    for (uint32_t from = 0; from <= 6; ++from) {
        for (uint32_t to = 0; to <= 6; ++to) {
            for (uint32_t type = 0; type <= 0xFFFF; ++type) {
                ASSERT_EQ(map_type(from, to, static_cast<uint16_t>(type)), wanted({from, to}, type))
                    << from << " to " << to << ": " << type;
            }
        }
    }
}

TEST(TypeMap, DataFileComesBackFromEachWay)
{
    const uint16_t on_disk = map_type(lif, disk, 0xE848);
    const uint16_t on_tape = map_type(disk, tape, on_disk);
    EXPECT_EQ(on_disk, 0x2400);
    EXPECT_EQ(on_tape, 36);
    EXPECT_EQ(map_type(tape, lif, on_tape), 0xE848);
    EXPECT_EQ(map_type(tape, disk, on_tape), 0x2400); // just below the words that name their system
    EXPECT_EQ(map_type(disk, lif, on_disk), 0xE848);
    EXPECT_EQ(map_type(tape, disk, map_type(lif, tape, 0xE990)), 0xC800);
}

TEST(TypeMap, KeepsTypeE9B0OffTapes)
{
    EXPECT_EQ(map_type(lif, disk, 0xE9B0), 0xD800);
    EXPECT_EQ(map_type(lif, tape, 0xE870), 88);
    EXPECT_EQ(map_type(lif, tape, 0xE9B0), 0xE9B0);
    EXPECT_EQ(map_type(tape, lif, 88), 0xE9B0); // so that a program of this type doesn't go back
}

TEST(TypeMap, TwoTypesHaveNoWayBack)
{
    EXPECT_EQ(map_type(lif, disk, 0xE9B8), 0xDE00);
    EXPECT_EQ(map_type(disk, lif, 0xDE00), 0xDE00);
    EXPECT_EQ(map_type(lif, tape, 0xE9B8), 92);
    EXPECT_EQ(map_type(tape, lif, 92), 92);
}
