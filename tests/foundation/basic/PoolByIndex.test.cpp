#include "foundation/basic/PoolByIndex.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace vellum {
namespace {

struct Item {
    int value = 11;
};

using Pool = PoolByIndex<Item>;

void acquireMany(Pool& pool, unsigned int const& count) {
    for (unsigned int i = 0; i < count; ++i) {
        ASSERT_EQ(pool.acquire(), i);
    }
}

std::vector<unsigned int> listed(Array<unsigned int> const& array) {
    return {array.begin(), array.end()};
}

// == Pages ==

TEST(PoolByIndex_test, anEmptyPoolHasNoPage) {
    Pool const pool(2);
    EXPECT_EQ(pool.pageCount(), 0U);
    EXPECT_EQ(pool.usedCount(), 0U);
    EXPECT_FALSE(pool.isUsed(0));
    EXPECT_EQ(pool.find(0), nullptr);
}

TEST(PoolByIndex_test, shiftAndMaskBelongTogether) {
    EXPECT_EQ(Pool(0).pageMask(), 0U);
    EXPECT_EQ(Pool(2).pageShift(), 2U);
    EXPECT_EQ(Pool(2).pageMask(), 3U);
    EXPECT_EQ(Pool(8).pageMask(), 255U);
    EXPECT_EQ(Pool(1000).pageShift(), 16U);
    EXPECT_EQ(Pool(1000).pageMask(), 0xFFFFU);
}

TEST(PoolByIndex_test, anIndexSelectsPageAndSlot) {
    Pool pool(2);
    acquireMany(pool, 10);
    for (unsigned int i = 0; i < 10; ++i) {
        pool[i].value = static_cast<int>(i);
    }
    EXPECT_EQ(pool.pageCount(), 3U);
    for (unsigned int page = 0; page < 3; ++page) {
        for (unsigned int slot = 0; slot < 4 && page * 4 + slot < 10; ++slot) {
            // Records of a page are contiguous.
            EXPECT_EQ(&pool[page << 2 | slot], &pool[page << 2] + slot);
            EXPECT_EQ(pool[page << 2 | slot].value, static_cast<int>(4 * page + slot));
        }
    }
}

TEST(PoolByIndex_test, aPageIsAddedOnlyWhenThePagesAreFull) {
    Pool pool(2);
    acquireMany(pool, 4);
    EXPECT_EQ(pool.pageCount(), 1U);
    EXPECT_EQ(pool.pageRecordCount(0), 4U);
    EXPECT_EQ(pool.acquire(), 4U);
    EXPECT_EQ(pool.pageCount(), 2U);
    EXPECT_EQ(pool.pageRecordCount(0), 4U);
    EXPECT_EQ(pool.pageRecordCount(1), 1U);
}

TEST(PoolByIndex_test, recordsStayWhereTheyAreWhenThePoolGrows) {
    Pool pool(1);
    Item* const first = &pool[pool.acquire()];
    first->value = 5;
    for (int i = 0; i < 1000; ++i) {
        pool.acquire();
    }
    EXPECT_EQ(pool.find(0), first);
    EXPECT_EQ(first->value, 5);
}

TEST(PoolByIndex_test, pagesOfASingleRecordWork) {
    Pool pool(0);
    acquireMany(pool, 70);
    EXPECT_EQ(pool.pageCount(), 70U);
    pool[69].value = 3;
    EXPECT_EQ(pool.find(69)->value, 3);
}

// == Bit set ==

TEST(PoolByIndex_test, theBitSetMarksTheRecordsInUse) {
    Pool pool(2);
    acquireMany(pool, 70);  // three words of the bit set
    for (unsigned int const index : {0U, 31U, 32U, 63U, 64U}) {
        EXPECT_TRUE(pool.release_dontSetNotFound(index));
    }
    for (unsigned int i = 0; i < 70; ++i) {
        bool const isReleased = i == 0 || i == 31 || i == 32 || i == 63 || i == 64;
        EXPECT_EQ(pool.isUsed(i), !isReleased) << "index " << i;
        EXPECT_EQ(pool.find(i) != nullptr, !isReleased) << "index " << i;
    }
    for (unsigned int const index : {70U, 95U, 96U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_FALSE(pool.isUsed(index)) << "index " << index;
        EXPECT_EQ(pool.find(index), nullptr);
    }
    EXPECT_EQ(pool.usedCount(), 65U);
}

// == Free list ==

TEST(PoolByIndex_test, releasedIndicesWaitInTheFreeListInTheOrderOfTheirRelease) {
    Pool pool(2);
    acquireMany(pool, 6);
    pool.release_dontSetNotFound(4);
    pool.release_dontSetNotFound(1);
    pool.release_dontSetNotFound(3);
    EXPECT_EQ(listed(pool.freeList()), (std::vector<unsigned int>{4, 1, 3}));
    EXPECT_EQ(pool.usedCount(), 3U);
}

TEST(PoolByIndex_test, theFreeListGrowsLikeAnyArray) {
    Pool pool(2);
    acquireMany(pool, 10);
    EXPECT_EQ(pool.freeList().capacity(), 0U);
    std::vector<unsigned int> capacities;
    for (unsigned int i = 0; i < 9; ++i) {
        pool.release_dontSetNotFound(i);
        capacities.push_back(pool.freeList().capacity());
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{4, 4, 4, 4, 8, 8, 8, 8, 13}));
}

TEST(PoolByIndex_test, releasedIndicesAreHandedOutBeforeNewOnes) {
    Pool pool(2);
    acquireMany(pool, 6);
    pool.release_dontSetNotFound(4);
    pool.release_dontSetNotFound(1);
    std::set<unsigned int> const again{pool.acquire(), pool.acquire()};
    EXPECT_EQ(again, (std::set<unsigned int>{1, 4}));
    EXPECT_EQ(pool.freeList().size(), 0U);
    EXPECT_EQ(pool.acquire(), 6U);
}

TEST(PoolByIndex_test, aReleaseLeavesThePageCountsAlone) {
    Pool pool(2);
    acquireMany(pool, 6);
    pool.release_dontSetNotFound(0);
    pool.release_dontSetNotFound(5);
    EXPECT_EQ(pool.pageRecordCount(0), 4U);
    EXPECT_EQ(pool.pageRecordCount(1), 2U);
    pool.acquire();
    EXPECT_EQ(pool.pageRecordCount(0), 4U);
    EXPECT_EQ(pool.pageRecordCount(1), 2U);
}

TEST(PoolByIndex_test, aRecordHandedOutAgainIsAsConstructed) {
    Pool pool(2);
    acquireMany(pool, 2);
    pool[0].value = 99;
    pool.release_dontSetNotFound(0);
    EXPECT_EQ(pool[pool.acquire()].value, 11);
}

// == Reset ==

TEST(PoolByIndex_test, theLastReleaseResetsThePool) {
    Pool pool(2);
    acquireMany(pool, 10);
    for (unsigned int i = 0; i < 10; ++i) {
        EXPECT_TRUE(pool.release_dontSetNotFound(i));
    }
    EXPECT_EQ(pool.usedCount(), 0U);
    EXPECT_EQ(pool.handedOutCount(), 0U);
    EXPECT_EQ(pool.freeList().size(), 0U) << "the free list is emptied, not filled with the last index";
    for (unsigned int i = 0; i < 10; ++i) {
        EXPECT_FALSE(pool.isUsed(i)) << "index " << i;
    }
}

TEST(PoolByIndex_test, aResetKeepsThePagesButEmptiesTheirCounts) {
    Pool pool(2);
    acquireMany(pool, 10);
    Item const* const first = &pool[0];
    for (unsigned int i = 0; i < 10; ++i) {
        pool.release_dontSetNotFound(i);
    }
    ASSERT_EQ(pool.pageCount(), 3U);
    for (unsigned int page = 0; page < 3; ++page) {
        EXPECT_EQ(pool.pageRecordCount(page), 0U);
    }
    EXPECT_EQ(pool.acquire(), 0U);
    EXPECT_EQ(&pool[0], first);
    EXPECT_EQ(pool.pageRecordCount(0), 1U);
    EXPECT_EQ(pool.pageCount(), 3U);
}

TEST(PoolByIndex_test, afterAResetIndicesStartAgainWithZero) {
    Pool pool(2);
    acquireMany(pool, 10);
    for (unsigned int i = 10; i > 0; --i) {
        pool.release_dontSetNotFound(i - 1);
    }
    acquireMany(pool, 14);
    EXPECT_EQ(pool.pageCount(), 4U);
    EXPECT_EQ(pool.usedCount(), 14U);
    for (unsigned int i = 0; i < 14; ++i) {
        EXPECT_TRUE(pool.isUsed(i));
        EXPECT_EQ(pool[i].value, 11);
    }
}

TEST(PoolByIndex_test, aPoolOfOneRecordResetsAtEveryRelease) {
    Pool pool(2);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(pool.acquire(), 0U);
        EXPECT_TRUE(pool.release_dontSetNotFound(0));
        EXPECT_EQ(pool.freeList().capacity(), 0U);
        EXPECT_EQ(pool.pageRecordCount(0), 0U);
    }
    EXPECT_EQ(pool.pageCount(), 1U);
}

// == Bad indices ==

TEST(PoolByIndex_test, aSecondReleaseDoesNothing) {
    Pool pool(2);
    acquireMany(pool, 3);
    EXPECT_TRUE(pool.release_dontSetNotFound(1));
    EXPECT_FALSE(pool.release_dontSetNotFound(1));
    EXPECT_EQ(pool.usedCount(), 2U);
    EXPECT_EQ(listed(pool.freeList()), (std::vector<unsigned int>{1}));
}

TEST(PoolByIndex_test, releasingAnUnknownIndexDoesNothing) {
    Pool pool(2);
    EXPECT_FALSE(pool.release_dontSetNotFound(0));
    acquireMany(pool, 3);
    for (unsigned int const index : {3U, 31U, 32U, 0xFFFFFFFEU, Pool::NOT_FOUND}) {
        EXPECT_FALSE(pool.release_dontSetNotFound(index)) << "index " << index;
    }
    EXPECT_EQ(pool.usedCount(), 3U);
    EXPECT_EQ(pool.freeList().size(), 0U);
}

TEST(PoolByIndex_test, onlyOneReleaseSetsTheIndexToNotFound) {
    EXPECT_EQ(Pool::NOT_FOUND, 0xFFFFFFFFU);
    Pool pool(2);
    acquireMany(pool, 3);
    unsigned int index = 1;
    pool.release_dontSetNotFound(index);
    EXPECT_EQ(index, 1U);
    EXPECT_FALSE(pool.release(index));
    EXPECT_EQ(index, Pool::NOT_FOUND);
    index = 2;
    EXPECT_TRUE(pool.release(index));
    EXPECT_EQ(index, Pool::NOT_FOUND);
}

TEST(PoolByIndex_test, aLongMixOfUsesNeverHandsOutARecordTwice) {
    Pool pool(3);
    std::set<unsigned int> held;
    unsigned int state = 12345;
    for (int step = 0; step < 20000; ++step) {
        state = state * 1664525U + 1013904223U;
        if ((state >> 16) % 5 < 3 && held.size() < 300) {
            unsigned int const index = pool.acquire();
            ASSERT_TRUE(held.insert(index).second) << "index " << index << " is in use already";
            pool[index].value = static_cast<int>(index);
        } else if (!held.empty()) {
            auto const chosen = held.lower_bound((state >> 8) % 300);
            auto const victim = chosen != held.end() ? chosen : held.begin();
            ASSERT_EQ(pool[*victim].value, static_cast<int>(*victim));
            ASSERT_TRUE(pool.release_dontSetNotFound(*victim));
            held.erase(victim);
        }
        ASSERT_EQ(pool.usedCount(), held.size());
    }
}

}  // namespace
}  // namespace vellum
