#include "foundation/basic/Array.h"
#include "foundation/basic/VL_String.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace vellum {
namespace {

Array<int> oneToFive() {
    return Array<int>{1, 2, 3, 4, 5};
}

// Counts the live elements of its kind, and throws from an assignment on request.
struct Element {
    static int alive;
    static int assignmentsBeforeThrow;  // negative: never

    int value = 7;

    Element() { ++alive; }
    explicit Element(int const& value) : value(value) { ++alive; }
    Element(Element const& other) : value(other.value) { ++alive; }
    Element& operator=(Element const& other) {
        if (assignmentsBeforeThrow == 0) {
            throw std::runtime_error("assignment");
        }
        --assignmentsBeforeThrow;
        value = other.value;
        return *this;
    }
    ~Element() { --alive; }
};
int Element::alive = 0;
int Element::assignmentsBeforeThrow = -1;

// == Storage ==

TEST(Array_test, isAPointerAndTwo32BitNumbers) {
    EXPECT_EQ(sizeof(Array<double>), sizeof(void*) + 8);
    EXPECT_EQ(sizeof(ArrayCore<double>), sizeof(void*) + 8);
    static_assert(std::is_same_v<decltype(Array<double>().size()), unsigned int>);
    static_assert(std::is_same_v<decltype(Array<double>().capacity()), unsigned int>);
    static_assert(sizeof(unsigned int) == 4);
}

TEST(Array_test, keepsItsMembersInDeclarationOrder) {
    Array<int> array{1, 2, 3};
    array.setSize(2);
    unsigned char const* const bytes = reinterpret_cast<unsigned char const*>(&array);
    EXPECT_EQ(*reinterpret_cast<int* const*>(bytes), array.data());
    EXPECT_EQ(*reinterpret_cast<unsigned int const*>(bytes + sizeof(void*)), 2U);
    EXPECT_EQ(*reinterpret_cast<unsigned int const*>(bytes + sizeof(void*) + 4), 3U);
}

TEST(Array_test, startsWithoutStorage) {
    Array<int> const array;
    EXPECT_EQ(array.data(), nullptr);
    EXPECT_EQ(array.size(), 0U);
    EXPECT_EQ(array.capacity(), 0U);
}

TEST(Array_test, reserveOfTheCapacityKeepsTheContents) {
    Array<int> array = oneToFive();
    int const* const storage = array.data();
    array.reserve(array.capacity(), false);
    EXPECT_EQ(array.data(), storage);
    ASSERT_EQ(array.size(), 5U);
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_EQ(array[i], static_cast<int>(i) + 1);
    }
}

TEST(Array_test, reserveOfZeroReleasesEverything) {
    for (bool const keep : {false, true}) {
        Array<int> array = oneToFive();
        array.reserve(0, keep);
        EXPECT_EQ(array.data(), nullptr);
        EXPECT_EQ(array.size(), 0U);
        EXPECT_EQ(array.capacity(), 0U);
    }
}

TEST(Array_test, aSecondReserveOfZeroDoesNothing) {
    Array<int> array = oneToFive();
    array.reserve(0, true);
    array.reserve(0, true);
    array.reserve(0, false);
    EXPECT_EQ(array.data(), nullptr);
    EXPECT_EQ(array.size(), 0U);
    EXPECT_EQ(array.capacity(), 0U);
}

TEST(Array_test, shrinkingKeepsTheFirstElementsAndTheirNumber) {
    Array<int> array = oneToFive();
    array.reserve(2, true);
    ASSERT_EQ(array.size(), 2U);
    EXPECT_EQ(array.capacity(), 2U);
    EXPECT_EQ(array[0], 1);
    EXPECT_EQ(array[1], 2);
}

TEST(Array_test, growingKeepsAllElements) {
    Array<int> array = oneToFive();
    array.reserve(9, true);
    ASSERT_EQ(array.size(), 5U);
    EXPECT_EQ(array.capacity(), 9U);
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_EQ(array[i], static_cast<int>(i) + 1);
    }
}

TEST(Array_test, deliberatelyKeepsTheSmallerSizeWhenContentsAreNotKept) {
    Array<int> shrunk = oneToFive();
    shrunk.reserve(2, false);
    EXPECT_EQ(shrunk.size(), 2U);
    EXPECT_EQ(shrunk.capacity(), 2U);

    Array<int> grown = oneToFive();
    grown.reserve(9, false);
    EXPECT_EQ(grown.size(), 5U);
    EXPECT_EQ(grown.capacity(), 9U);

    Array<int> fresh;
    fresh.reserve(3, false);
    EXPECT_EQ(fresh.size(), 0U);
    EXPECT_EQ(fresh.capacity(), 3U);
}

TEST(Array_test, classElementsAreAsConstructedWhenContentsAreNotKept) {
    Array<VL_String> array{"one", "two"};
    array.reserve(3, false);
    ASSERT_EQ(array.size(), 2U);
    array.setSize(3);
    for (VL_String const& text : array) {
        EXPECT_EQ(text.size(), 1U);
        EXPECT_STREQ(text.c_str(), "");
    }
}

TEST(Array_test, classElementsAreCopiedWhenContentsAreKept) {
    Array<VL_String> array{"one", "two"};
    array.reserve(3, true);
    ASSERT_EQ(array.size(), 2U);
    EXPECT_STREQ(array[0].c_str(), "one");
    EXPECT_STREQ(array[1].c_str(), "two");
}

TEST(Array_test, reserveMayBeGivenTheArraysOwnContents) {
    Array<unsigned int> array{7U, 2U};
    array.reserve(array[0], true);
    EXPECT_EQ(array.capacity(), 7U);
    EXPECT_EQ(array.size(), 2U);
    EXPECT_EQ(array[1], 2U);
}

// == Appending ==

TEST(Array_test, appendingGrowsByAnEighthAndFour) {
    Array<int> array;
    std::vector<unsigned int> capacities;
    for (int i = 0; i < 32; ++i) {
        array.pushBack(i);
        if (capacities.empty() || capacities.back() != array.capacity()) {
            capacities.push_back(array.capacity());
        }
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{4, 8, 13, 18, 24, 31, 38}));
    ASSERT_EQ(array.size(), 32U);
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(array[static_cast<unsigned int>(i)], i);
    }
}

TEST(Array_test, appendingGrowsFromWhateverTheFullSizeIs) {
    Array<int> array;
    array.reserve(100, false);
    array.setSize(100);
    array.pushBack(1);
    EXPECT_EQ(array.capacity(), 116U);  // 100 + 12 + 4
    EXPECT_EQ(array.size(), 101U);
}

TEST(Array_test, appendingWithinTheCapacityMovesNothing) {
    Array<int> array;
    array.reserve(2, false);
    int const* const storage = array.data();
    array.pushBack(5);
    array.pushBack(6);
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(array.capacity(), 2U);
    array.pushBack(7);
    EXPECT_NE(array.data(), storage);
    EXPECT_EQ(array.back(), 7);
}

TEST(Array_test, anElementOfTheArrayMayBeAppended) {
    Array<VL_String> array{"first", "second", "third"};
    ASSERT_EQ(array.size(), array.capacity());
    array.pushBack(array[0]);  // grows
    array.pushBack(array[1]);  // fits
    ASSERT_EQ(array.size(), 5U);
    EXPECT_STREQ(array[3].c_str(), "first");
    EXPECT_STREQ(array[4].c_str(), "second");
}

TEST(Array_test, clearKeepsTheCapacity) {
    Array<int> array = oneToFive();
    int const* const storage = array.data();
    array.clear();
    EXPECT_EQ(array.size(), 0U);
    EXPECT_EQ(array.capacity(), 5U);
    EXPECT_EQ(array.data(), storage);
}

// == Values ==

TEST(Array_test, elementsFollowEachOtherWithoutGaps) {
    Array<int> array = oneToFive();
    for (unsigned int i = 0; i < array.size(); ++i) {
        EXPECT_EQ(&array[i], array.data() + i);
    }
}

TEST(Array_test, copiesAreIndependent) {
    Array<int> array = oneToFive();
    Array<int> copy(array);
    copy[0] = 100;
    EXPECT_EQ(array[0], 1);
    EXPECT_EQ(copy.size(), 5U);

    Array<int> assigned{9};
    assigned = array;
    assigned[1] = 100;
    EXPECT_EQ(array[1], 2);
    EXPECT_EQ(assigned.size(), 5U);
}

TEST(Array_test, anArrayAssignedToItselfStaysAsItIs) {
    Array<int> array = oneToFive();
    Array<int> const& same = array;
    array = same;
    ASSERT_EQ(array.size(), 5U);
    EXPECT_EQ(array[4], 5);
}

TEST(Array_test, movingTakesTheStorage) {
    Array<int> array = oneToFive();
    int const* const storage = array.data();
    Array<int> const taken(std::move(array));
    EXPECT_EQ(taken.data(), storage);
    EXPECT_EQ(taken.size(), 5U);
}

TEST(Array_test, everyElementIsDestroyedOnce) {
    Element::assignmentsBeforeThrow = -1;
    {
        Array<Element> array;
        for (int i = 0; i < 20; ++i) {
            array.pushBack(Element(i));
        }
        array.reserve(3, true);
        Array<Element> copy(array);
        copy = array;
        EXPECT_EQ(copy[2].value, 2);
    }
    EXPECT_EQ(Element::alive, 0);
}

TEST(Array_test, aFailedGrowthChangesNothing) {
    Element::assignmentsBeforeThrow = -1;
    {
        Array<Element> array;
        array.reserve(2, false);
        array.setSize(2);
        array[0].value = 1;
        array[1].value = 2;
        Element::assignmentsBeforeThrow = 1;
        EXPECT_THROW(array.pushBack(Element(3)), std::runtime_error);
        Element::assignmentsBeforeThrow = -1;
        ASSERT_EQ(array.size(), 2U);
        EXPECT_EQ(array.capacity(), 2U);
        EXPECT_EQ(array[0].value, 1);
        EXPECT_EQ(array[1].value, 2);
    }
    EXPECT_EQ(Element::alive, 0);
}

TEST(Array_test, aSizeThat32BitsCannotCountIsRefused) {
    struct Probe : ArrayCore<int> {
        static unsigned int grown(unsigned int const& size) { return _grownCapacity(size); }
    };
    EXPECT_THROW(Probe::grown(std::numeric_limits<unsigned int>::max()), std::length_error);
    EXPECT_THROW(Probe::grown(3817748706U), std::length_error);
    EXPECT_EQ(Probe::grown(3817748000U), 4294966504U);
}

}  // namespace
}  // namespace vellum
