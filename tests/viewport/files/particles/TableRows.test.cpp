#include "viewport/files/particles/TableRows.h"

#include "viewport/files/particles/ParticleFrames.h"

#include <gmock/gmock.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

/// Whether the text is read as the nearest double, which the standard library finds.
testing::AssertionResult isNearest(std::string const& text) {
    double expected = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), expected);
    std::optional<double> const number = toNumber(text);
    if (!number) {
        return testing::AssertionFailure() << text << " is no number";
    }
    if (std::memcmp(&*number, &expected, sizeof(double)) != 0) {
        return testing::AssertionFailure() << text << " is read as " << *number;
    }
    return testing::AssertionSuccess();
}

std::string printed(double const& value, std::chars_format const& format, int const& digits) {
    char text[400];
    std::to_chars_result const result = std::to_chars(text, text + sizeof(text), value, format, digits);
    return {text, result.ptr};
}

TEST(TableRows_test, numbersAreTheNearestDoubles) {
    std::mt19937_64 random(17);
    for (int round = 0; round < 20000; ++round) {
        double const part = static_cast<double>(random()) / 18446744073709551616.0 - 0.5;
        double const value = part * std::pow(10.0, static_cast<int>(random() % 60) - 30);
        int const digits = static_cast<int>(random() % 19);
        EXPECT_TRUE(isNearest(printed(value, std::chars_format::general, digits)));
        EXPECT_TRUE(isNearest(printed(value, std::chars_format::scientific, digits)));
        EXPECT_TRUE(isNearest(printed(part * 1000, std::chars_format::fixed, digits)));
    }
}

TEST(TableRows_test, numbersOfUnusualShapeAreTheNearestDoubles) {
    for (char const* const text : {"0",
                                   "-0",
                                   "0.0",
                                   "-0.0e5",
                                   "5.",
                                   ".5",
                                   "-.5",
                                   "007",
                                   "1e22",
                                   "1e23",
                                   "1e-22",
                                   "1e-23",
                                   "123456789012345",
                                   "1234567890123456",
                                   "9007199254740993",
                                   "0.000000000000001",
                                   "0.0000000000000001",
                                   "1E+5",
                                   "1e-0005",
                                   "123456789012345e22",
                                   "2.5e0000000001",
                                   "12345678901234567890123",
                                   "4.9e-324",
                                   "1.7976931348623157e308",
                                   "inf",
                                   "-inf"}) {
        EXPECT_TRUE(isNearest(text));
    }
    EXPECT_EQ(toNumber("+2.5"), 2.5);
    EXPECT_EQ(toNumber("1e400"), HUGE_VAL);
    EXPECT_EQ(toNumber("-1e-400"), -0.0);
    EXPECT_TRUE(std::isnan(toNumber("nan").value()));
}

TEST(TableRows_test, otherWordsAreNoNumbers) {
    for (char const* const text :
         {"", "-", "+", ".", "e5", "1e", "1e+", "--1", "+-1", "1.2.3", "1x", "0x10", "1 "}) {
        EXPECT_FALSE(toNumber(text).has_value()) << text;
    }
}

/// The places, from 0, that particles had before they were sorted by these ids.
std::vector<float> order(std::vector<double> const& ids) {
    ParticleFrame frame;
    frame.channels.push_back({"place", {}});
    for (std::size_t i = 0; i < ids.size(); ++i) {
        auto const place = static_cast<float>(i);
        frame.positions.push_back({place, 0, 0});
        frame.channels.front().values.push_back(place);
    }
    frame.sortBy(ids);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(frame.positions[i].x, frame.channels.front().values[i]);
    }
    return frame.channels.front().values;
}

TEST(ParticleFrame_test, idsOfAllKindsAreSorted) {
    EXPECT_THAT(order({}), ElementsAre());
    EXPECT_THAT(order({3, 1, 4, 2}), ElementsAre(1, 3, 0, 2)) << "without gaps";
    EXPECT_THAT(order({7, 5, 9, 2}), ElementsAre(3, 1, 0, 2)) << "with gaps";
    EXPECT_THAT(order({-1, 1e15, -5}), ElementsAre(2, 0, 1)) << "far apart";
    EXPECT_THAT(order({4, 1, 1, 2}), ElementsAre(1, 2, 3, 0)) << "one twice, as many numbers as particles";
    EXPECT_THAT(order({9e15, 1, 9e15, 1}), ElementsAre(1, 3, 0, 2)) << "far apart, and twice";
}

TEST(ParticleFrame_test, manyMixedIdsAreSorted) {
    constexpr unsigned int count = 10007;
    std::vector<double> ids;
    std::vector<float> expected(count);
    for (unsigned int i = 0; i < count; ++i) {
        unsigned int const rank = i * 611 % count;
        ids.push_back(rank + 1);
        expected[rank] = static_cast<float>(i);
    }
    EXPECT_THAT(order(ids), ElementsAreArray(expected));
}

}  // namespace
