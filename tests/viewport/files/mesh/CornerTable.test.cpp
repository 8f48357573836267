#include "viewport/files/mesh/CornerTable.h"

#include <gtest/gtest.h>

using vellum::viewport::CornerTable;

TEST(CornerTable, equalCornersHaveOneNumber) {
    CornerTable table;
    table.reserve(3);
    EXPECT_EQ(table.indexOf({5, 1, 2, 3}), 0U);
    EXPECT_EQ(table.indexOf({0, 1, 2, 3}), 1U);
    EXPECT_EQ(table.indexOf({5, 1, 2, 3}), 0U);
    EXPECT_EQ(table.indexOf({5, CornerTable::NONE, 2, 3}), 2U);
    EXPECT_EQ(table.indexOf({5, 1, CornerTable::NONE, 3}), 3U);
    EXPECT_EQ(table.indexOf({5, 1, 2, CornerTable::NONE}), 4U);
    ASSERT_EQ(table.size(), 5U);
    EXPECT_EQ(table[2].vertex, 5U);
    EXPECT_EQ(table[2].texture, CornerTable::NONE);
    EXPECT_EQ(table[3].normal, CornerTable::NONE);
    EXPECT_EQ(table[4].material, CornerTable::NONE);
}

TEST(CornerTable, manyCornersAtOneVertexAreFoundAgain) {
    constexpr std::uint32_t COUNT = 50'000;
    CornerTable table;
    for (int round = 0; round < 2; ++round) {
        for (std::uint32_t i = 0; i < COUNT; ++i) {
            ASSERT_EQ(table.indexOf({7, i, i / 2, 0}), i);
        }
    }
    EXPECT_EQ(table.size(), COUNT);
}
