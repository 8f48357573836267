#include "viewport/text/numbers.h"

#include "viewport/text/data_numbers.h"

#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <string>

using namespace vellum::viewport;

namespace {

/// Whether the text is read as the nearest double, which the standard library finds.
testing::AssertionResult isNearest(std::string const& text) {
    double expected = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), expected);
    std::optional<double> const number = toDataNumber(text);
    if (!number) {
        return testing::AssertionFailure() << text << " is not a number";
    }
    if (std::memcmp(&*number, &expected, sizeof(double)) != 0) {
        return testing::AssertionFailure() << text << " is read as " << *number;
    }
    return testing::AssertionSuccess();
}

std::string printed(double value, std::chars_format format, int digits) {
    char text[400];
    std::to_chars_result const result = std::to_chars(text, text + sizeof(text), value, format, digits);
    return {text, result.ptr};
}

}  // namespace

TEST(Numbers, realsAreFiniteNumbersWithoutAPlusSign) {
    EXPECT_EQ(toReal("2.5"), 2.5);
    EXPECT_EQ(toReal("-.5e1"), -5.0);
    EXPECT_EQ(toReal("7"), 7.0);
    for (char const* const word : {"", " ", "-", "+1", "1 ", " 1", "1,5", "0x10", "1e", "1e400", "1e-400",
                                   "inf", "-inf", "nan", "1x"}) {
        EXPECT_FALSE(toReal(word).has_value()) << word;
    }
}

TEST(Numbers, integersAreDigitsUpToTheLargestInt) {
    EXPECT_EQ(toInteger("0"), 0);
    EXPECT_EQ(toInteger("007"), 7);
    EXPECT_EQ(toInteger("2147483647"), std::numeric_limits<int>::max());
    for (char const* const word :
         {"", "-", "-0", "-1", "+1", "1 ", " 1", "1.0", "1e2", "0x1", "2147483648"}) {
        EXPECT_FALSE(toInteger(word).has_value()) << word;
    }
}

TEST(Numbers, signedIntegersReachBothEndsOf64Bits) {
    EXPECT_EQ(toSignedInteger("-0"), 0);
    EXPECT_EQ(toSignedInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(toSignedInteger("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    for (char const* const word : {"", "+1", "1.0", "now", "9223372036854775808", "- 1"}) {
        EXPECT_FALSE(toSignedInteger(word).has_value()) << word;
    }
}

TEST(Numbers, countsAreDigitsBelowTwoToThe64th) {
    EXPECT_EQ(toCount("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
    for (char const* const word : {"", "-1", "-0", "+1", "1.0", "18446744073709551616", "1 "}) {
        EXPECT_FALSE(toCount(word).has_value()) << word;
    }
}

TEST(Numbers, theDecimalSeparatorIsNotThatOfTheLocale) {
    for (char const* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "C"}) {
        if (std::setlocale(LC_NUMERIC, name) != nullptr) {
            EXPECT_EQ(toReal("1.5"), 1.5) << name;
            EXPECT_EQ(toDataNumber("1.5"), 1.5) << name;
            EXPECT_EQ(toDataNumber("1234567890123456.5"), 1234567890123456.5) << name;
            EXPECT_FALSE(toReal("1,5").has_value()) << name;
        }
    }
    std::setlocale(LC_NUMERIC, "C");
}

TEST(Numbers, dataNumbersAreTheNearestDoubles) {
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

TEST(Numbers, dataNumbersWithinATextAreTheNearestDoubles) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 100'000; ++i) {
        std::string const before(random() % 12, '0');
        std::string word = (random() % 2 == 0 ? "-" : "") + std::to_string(random() >> random() % 64);
        word.insert(word.size() - random() % word.size(), random() % 5 == 0 ? "" : ".");
        word = word.front() == '-' ? "-" + before + word.substr(1) : before + word;
        bool const isNumber =
            word.find_first_of("0123456789") < 2 && word[word.front() == '-' ? 1 : 0] != '.';
        if (!isNumber) {
            continue;
        }
        word += random() % 4 == 0 ? "e-" + std::to_string(random() % 30) : "";
        std::string const text = word + (random() % 2 == 0 ? " 1234567890 1234567890 12345678" : "\n.5-e7");
        double value = 0;
        char const* const end = takeDataNumber(text.data(), text.data() + text.size(), value);
        double const expected = std::strtod(word.c_str(), nullptr);
        ASSERT_EQ(end, text.data() + word.size()) << text;
        ASSERT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << text << " is read as " << value;
    }
}

TEST(Numbers, dataNumbersOfUnusualShapeAreTheNearestDoubles) {
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
    EXPECT_EQ(toDataNumber("+2.5"), 2.5);
    EXPECT_EQ(toDataNumber("1e400"), HUGE_VAL);
    EXPECT_EQ(toDataNumber("-1e-400"), -0.0);
    EXPECT_TRUE(std::isnan(toDataNumber("nan").value()));
}

TEST(Numbers, exponentsOfFortranAreUnderstood) {
    EXPECT_EQ(toDataNumber("1.5D+03"), 1500);
    EXPECT_EQ(toDataNumber("-2d-1"), -0.2);
    EXPECT_EQ(toDataNumber("0.12345678901234567890D+02"), 12.345678901234567890);
    EXPECT_EQ(toDataNumber("+1D400"), HUGE_VAL);
    EXPECT_EQ(toDataNumber("1D-400"), 0);
    for (char const* const word : {"1D", "1D+", "D5", "1D5D5", "nanD5", "1e5D5"}) {
        EXPECT_FALSE(toDataNumber(word).has_value()) << word;
    }
    EXPECT_FALSE(toReal("1D5").has_value()) << "what a user types";
}

TEST(Numbers, otherWordsAreNotDataNumbers) {
    for (char const* const text :
         {"", "-", "+", ".", "e5", "1e", "1e+", "--1", "+-1", "1.2.3", "1x", "0x10", "1 "}) {
        EXPECT_FALSE(toDataNumber(text).has_value()) << text;
    }
}

TEST(Numbers, aDataNumberEndsWhereOtherTextBegins) {
    std::string const text = "1.5,x";
    double value = 0;
    EXPECT_EQ(takeDataNumber(text.data(), text.data() + text.size(), value), text.data() + 3);
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(takeDataNumber(text.data() + 4, text.data() + text.size(), value), nullptr);
}
