#include "foundation/geometry/array_tools.h"

#include "foundation/geometry/ReleaseEntryComparator_v2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace vellum {
namespace {

struct Case {
    char const* name;
    int count;
    std::function<unsigned char(int, std::mt19937&)> key;
};

class array_tools_test : public testing::TestWithParam<Case> {
protected:
    static std::vector<ParticleEntry_v2> entries() {
        std::mt19937 random(7);
        std::vector<ParticleEntry_v2> result(GetParam().count);
        for (int k = 0; k < GetParam().count; ++k) {
            result[k] = {GetParam().key(k, random), static_cast<unsigned short>(k)};
        }
        return result;
    }

    static std::vector<std::pair<int, int>> sortedPairs(std::vector<ParticleEntry_v2> const& entries) {
        std::vector<std::pair<int, int>> result;
        for (ParticleEntry_v2 const& entry : entries) {
            result.emplace_back(entry.key, entry.slot);
        }
        std::sort(result.begin(), result.end());
        return result;
    }
};

TEST_P(array_tools_test, everyEntryIsThereInTheOrderOfTheKeys) {
    std::vector<ParticleEntry_v2> sorted = entries();
    array_tools::quickSort(sorted.data(), 0, GetParam().count - 1, ReleaseEntryComparator_v2());
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), ReleaseEntryComparator_v2()));
    EXPECT_EQ(sortedPairs(sorted), sortedPairs(entries()));
}

TEST_P(array_tools_test, theNumberOfComparisonsStaysSmall) {
    std::vector<ParticleEntry_v2> sorted = entries();
    unsigned long comparisons = 0;
    array_tools::quickSort(sorted.data(), 0, GetParam().count - 1,
                           [&comparisons](ParticleEntry_v2 const& a, ParticleEntry_v2 const& b) {
                               ++comparisons;
                               return a.key < b.key;
                           });
    EXPECT_LT(comparisons, 60UL * GetParam().count + 60);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, array_tools_test,
    testing::Values(
        Case{"none", 0, [](int, std::mt19937&) { return 0; }},
        Case{"one", 1, [](int, std::mt19937&) { return 5; }},
        Case{"twoInReverse", 2, [](int k, std::mt19937&) { return 1 - k; }},
        Case{"few", 17, [](int k, std::mt19937&) { return 17 - k; }},
        Case{"allLiving", 16384, [](int, std::mt19937&) { return 0; }},
        Case{"lastReleased", 16384, [](int k, std::mt19937&) { return k == 16383 ? 1 : 0; }},
        Case{"firstReleased", 16384, [](int k, std::mt19937&) { return k == 0 ? 1 : 0; }},
        Case{"everyOtherReleased", 16384, [](int k, std::mt19937&) { return k % 2; }},
        Case{"someReleased", 16384, [](int, std::mt19937& random) { return random() % 10 == 0 ? 1 : 0; }},
        Case{"mostReleased", 16383, [](int, std::mt19937& random) { return random() % 10 != 0 ? 1 : 0; }},
        Case{"threeKeys", 5000, [](int, std::mt19937& random) { return random() % 3; }},
        Case{"allKeys", 16384, [](int, std::mt19937& random) { return random() % 256; }},
        Case{"descending", 16384, [](int k, std::mt19937&) { return 255 - k / 64; }},
        Case{"organPipe", 16384, [](int k, std::mt19937&) { return (k < 8192 ? k : 16383 - k) / 33; }}),
    [](testing::TestParamInfo<Case> const& info) { return std::string(info.param.name); });

TEST(array_tools_range_test, onlyTheRangeIsSorted) {
    std::vector<int> values{9, 8, 7, 6, 5, 4};
    array_tools::quickSort(values.data(), 1, 4, std::less<>());
    EXPECT_EQ(values, (std::vector<int>{9, 5, 6, 7, 8, 4}));
}

TEST(array_tools_range_test, anOrderedRangeIsNotTouched) {
    std::vector<ParticleEntry_v2> entries(1000, ParticleEntry_v2{0, 0});
    for (unsigned int k = 0; k < entries.size(); ++k) {
        entries[k].slot = static_cast<unsigned short>(k);
    }
    array_tools::quickSort(entries.data(), 0, 999, ReleaseEntryComparator_v2());
    for (unsigned int k = 0; k < entries.size(); ++k) {
        ASSERT_EQ(entries[k].slot, k);
    }
}

}  // namespace
}  // namespace vellum
