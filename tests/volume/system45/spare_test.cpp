// Where a spare table may stand.
#include "volume/spare.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"

using namespace tests;

TEST(SpareTable, StandsApartFromTheMainTablesOrIsOneOfThem)
{
    MediaDescriptor md{};
    md.dir_start = 10;
    md.dir_size = 20;
    md.alloc_start = 30;
    md.alloc_size = 5;
    const struct {
        uint32_t main_start;
        Region spare;
        bool fits;
    } rows[] = {{10, {10, 20}, true},  {30, {30, 5}, true},  {10, {35, 20}, true},          {10, {11, 20}, false},
                {10, {29, 20}, false}, {10, {30, 5}, false}, {10, {34, 20}, false},         {30, {34, 5}, false},
                {30, {29, 5}, false},  {30, {5, 5}, true},   {30, {6, 5}, false},           {10, {12, 0}, true},
                {10, {0, 100}, false}, {10, {1, 9}, true},   {10, {0xFFFFFFF0, 0x20}, true}};
    for (const auto &[main_start, spare, fits] : rows) {
        forget_error();
        EXPECT_EQ(spare_fits(&md, main_start, spare), fits) << spare.start;
        EXPECT_EQ(global_error, fits ? 0u : 213u) << spare.start;
    }
}

TEST(SpareTable, AMainTableWithoutRecordsIsInNobodysWay)
{
    MediaDescriptor md{};
    md.dir_start = 10;
    md.dir_size = 20;
    md.alloc_start = 45;
    EXPECT_TRUE(spare_fits(&md, 10, {40, 20}));
    md.alloc_size = 1;
    EXPECT_FALSE(spare_fits(&md, 10, {40, 20}));
}
