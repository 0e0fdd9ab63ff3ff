// Small blocks out of large pieces.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include "platform/posix/pieces.h"

namespace
{

constexpr size_t many = 20000; // of 160 bytes: several pieces

class PiecesOfMemory : public testing::Test
{
  protected:
    ~PiecesOfMemory() override
    {
        pieces_release(&pieces);
    }

    uint8_t *take(size_t units)
    {
        return static_cast<uint8_t *>(pieces_take(&pieces, units));
    }

    std::vector<uint8_t *> take_many(size_t units)
    {
        std::vector<uint8_t *> blocks;
        for (size_t i = 0; i < many; ++i) blocks.push_back(take(units));
        return blocks;
    }

    Pieces pieces = {};
};

bool is_zero(const uint8_t *block, size_t units)
{
    const std::vector<uint8_t> zeros(units * pieces_unit);
    return memcmp(block, zeros.data(), zeros.size()) == 0;
}

TEST_F(PiecesOfMemory, BlocksAreZeroAndAlignedAndApart)
{
    std::vector<std::pair<uint8_t *, size_t>> blocks;
    for (size_t i = 0; i < many; ++i) {
        const size_t units = 1 + i % pieces_most_units;
        uint8_t *block = take(units);
        ASSERT_NE(block, nullptr);
        ASSERT_EQ(reinterpret_cast<uintptr_t>(block) % pieces_unit, 0u);
        ASSERT_TRUE(is_zero(block, units)) << i;
        memset(block, static_cast<int>(i % 255 + 1), units * pieces_unit);
        blocks.emplace_back(block, units);
    }
    for (size_t i = 0; i < many; ++i) {
        const auto [block, units] = blocks[i];
        ASSERT_EQ(block[0], i % 255 + 1);
        ASSERT_EQ(block[units * pieces_unit - 1], i % 255 + 1);
    }
}

TEST_F(PiecesOfMemory, BlockThatCameBackGoesOutAgainAsZeros)
{
    take(10);
    uint8_t *block = take(10);
    memset(block, 0xaa, 10 * pieces_unit);
    pieces_give_back(&pieces, block, 10);
    EXPECT_NE(take(9), block) << "of another size";
    EXPECT_EQ(take(10), block);
    EXPECT_TRUE(is_zero(block, 10));
    EXPECT_NE(take(10), block) << "only once";
}

TEST_F(PiecesOfMemory, BlocksThatCameBackInAnyOrderAllGoOutAgain)
{
    std::vector<uint8_t *> blocks = take_many(10);
    const std::set<uint8_t *> known(blocks.begin(), blocks.end());
    ASSERT_EQ(known.size(), many);
    for (size_t i = 1; i < many; i += 2) pieces_give_back(&pieces, blocks[i], 10);
    for (size_t i = many - 2; i > 0; i -= 2) pieces_give_back(&pieces, blocks[i], 10);
    for (size_t i = 1; i < many; ++i) ASSERT_EQ(known.count(take(10)), 1u) << i;
    EXPECT_EQ(known.count(take(10)), 0u);
}

TEST_F(PiecesOfMemory, NothingIsKeptOnceTheLastBlockIsBack)
{
    std::vector<uint8_t *> blocks = take_many(10);
    for (uint8_t *block : blocks) {
        ASSERT_NE(pieces.latest, nullptr);
        pieces_give_back(&pieces, block, 10);
    }
    EXPECT_EQ(pieces.latest, nullptr);
    EXPECT_TRUE(is_zero(take(10), 10)) << "and it begins anew";
}

TEST_F(PiecesOfMemory, ReleasingTakesTheBlocksThatAreOut)
{
    take_many(10);
    pieces_release(&pieces);
    EXPECT_EQ(pieces.latest, nullptr);
    EXPECT_EQ(pieces.blocks_out, 0u);
    pieces_release(&pieces);
    EXPECT_TRUE(is_zero(take(1), 1));
}

} // namespace
#endif
