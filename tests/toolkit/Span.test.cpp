#include "toolkit/Span.h"

#include "foundation/basic/Array.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

/// What a function with a parameter of this type sees.
std::vector<int> seen(Span<int> values) {
    return {values.begin(), values.end()};
}

TEST(Span_test, containersOfEveryKindConvert) {
    std::vector<int> const vector{1, 2, 3};
    std::array<int, 3> const array{1, 2, 3};
    Array<int> const own{1, 2, 3};
    int const plain[] = {1, 2, 3};
    std::vector<int> const expected{1, 2, 3};
    EXPECT_EQ(seen(vector), expected);
    EXPECT_EQ(seen(array), expected);
    EXPECT_EQ(seen(own), expected);
    EXPECT_EQ(seen(plain), expected);
    EXPECT_EQ(seen({plain, 3}), expected);
    EXPECT_EQ(seen({&plain[0], 2}), (std::vector<int>{1, 2}));
}

TEST(Span_test, elementsAreThoseOfTheOwner) {
    std::vector<int> values{1, 2, 3};
    Span<int> const span(values);
    values[1] = 7;
    EXPECT_EQ(span.data(), values.data());
    EXPECT_EQ(span[1], 7);
    EXPECT_EQ(span.size(), 3U);
    EXPECT_EQ(span.end() - span.begin(), 3);
}

TEST(Span_test, emptyContainersAndNullAreEmpty) {
    EXPECT_TRUE(Span<int>().empty());
    EXPECT_TRUE(Span<int>(std::vector<int>{}).empty());
    EXPECT_TRUE(Span<int>(nullptr, 0).empty());
    EXPECT_EQ(Span<int>().begin(), Span<int>().end());
    int const one[] = {1};
    EXPECT_FALSE(Span<int>(one).empty());
}

struct Base {
    int value;
};
struct Derived : Base {
    int more;
};

TEST(Span_test, elementsOfAnotherTypeDoNotConvert) {
    EXPECT_TRUE((std::is_convertible_v<std::vector<int>, Span<int>>));
    EXPECT_FALSE((std::is_convertible_v<std::vector<unsigned int>, Span<int>>));
    EXPECT_FALSE((std::is_convertible_v<std::vector<double>, Span<float>>));
    EXPECT_FALSE((std::is_convertible_v<std::vector<Derived>, Span<Base>>))
        << "a derived element is larger than the step of the span";
}

}  // namespace
