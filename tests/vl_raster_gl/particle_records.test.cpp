#include "internal/particles/particle_records.h"
#include "internal/particles/even_thinning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vellum {
namespace {

// == Writers ==

struct WriterCase {
    char const* name;
    RecordWriter writer;
};

class RecordWriters_test : public testing::TestWithParam<WriterCase> {};

/// Numbers of all sizes, and those that are none.
std::vector<float> numbers(std::size_t const& count) {
    std::mt19937 random(11);
    std::vector<float> result(count);
    for (float& number : result) {
        switch (random() % 8) {
        case 0: {
            std::uint32_t const bits = random();  // any number at all
            std::memcpy(&number, &bits, sizeof(number));
            break;
        }
        case 1:
            number = static_cast<float>(static_cast<int>(random() % 9) - 4);
            break;
        default:
            number =
                std::ldexp(static_cast<float>(random() % 2001) - 1000, static_cast<int>(random() % 12) - 10);
        }
    }
    return result;
}

/// Compares what a writer and the plain one make of the same particles, with every color and placing of the records.
void expectSameBits(RecordWriter const& writer, std::vector<float> const& positions,
                    std::vector<float> const& values, unsigned int const* offsets, std::size_t const& count) {
    RecordFormula formula{RecordColor::CONSTANT,
                          {0.5F, -1, 2},
                          {0.1F, 0.9F, -0.2F},
                          {0.7F, -0.6F, 1.5F},
                          {1.5F, 0.25F, 0.75F},
                          0.5F,
                          2.5F,
                          2};
    for (int source = 0; source <= static_cast<int>(RecordColor::TRUNCATED_SCALAR); ++source) {
        formula.source = static_cast<RecordColor>(source);
        for (std::size_t const shift : {0U, 1U, 2U, 4U, 6U}) {
            for (bool const streams : {false, true}) {
                std::vector<float> expected(6 * count + 16, 7.0F);
                std::vector<float> actual = expected;
                plainRecordWriter()(formula, positions.data(), values.data(), offsets,
                                    expected.data() + shift, count, streams);
                writer(formula, positions.data(), values.data(), offsets, actual.data() + shift, count,
                       streams);
                for (std::size_t k = 0; k < expected.size(); ++k) {
                    bool const areBothNone = std::isnan(expected[k]) && std::isnan(actual[k]);
                    ASSERT_TRUE(areBothNone || std::memcmp(&expected[k], &actual[k], sizeof(float)) == 0)
                        << "source " << source << ", " << count << " records, shifted by " << shift
                        << ", float " << k << ": " << actual[k] << " in place of " << expected[k];
                }
            }
        }
    }
}

TEST_P(RecordWriters_test, neighborsGetTheSameBits) {
    if (GetParam().writer == nullptr) {
        GTEST_SKIP() << "this processor does not have the instructions";
    }
    for (std::size_t const count : {0U, 1U, 3U, 4U, 7U, 8U, 9U, 31U, 1000U}) {
        expectSameBits(GetParam().writer, numbers(3 * count), numbers(3 * count + 17), nullptr, count);
    }
}

TEST_P(RecordWriters_test, chosenParticlesGetTheSameBits) {
    if (GetParam().writer == nullptr) {
        GTEST_SKIP() << "this processor does not have the instructions";
    }
    std::mt19937 random(3);
    for (std::size_t const count : {1U, 3U, 4U, 8U, 9U, 31U, 1000U}) {
        for (unsigned int const widest : {1U, 2U, 9U}) {
            std::vector<unsigned int> offsets(1, 2);
            while (offsets.size() < count) {
                bool const hasGap = random() % 10 == 0;
                offsets.push_back(offsets.back() + 1 + (hasGap ? random() % widest : 0));
            }
            // Behind the last vector stands one float more.
            std::size_t const floats = std::size_t{3} * (offsets.back() + 1) + 1;
            expectSameBits(GetParam().writer, numbers(floats), numbers(floats), offsets.data(), count);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, RecordWriters_test,
                         testing::Values(WriterCase{"sse2", sse2RecordWriter()},
                                         WriterCase{"avx", avxRecordWriter()}),
                         [](testing::TestParamInfo<WriterCase> const& info) {
                             return std::string(info.param.name);
                         });

// == Thinning ==

/// What the rule says, asked for every particle.
std::vector<bool> byTheRule(unsigned int const& count, float const& percent, unsigned int const& target) {
    std::vector<bool> result(count, false);
    unsigned int taken = 0;
    for (unsigned int visited = 0; visited < count && taken < target; ++visited) {
        float const p =
            visited == 0 ? 0.0F : static_cast<float>(taken) / static_cast<float>(visited) * 100.0F;
        if (p <= percent) {
            result[visited] = true;
            ++taken;
        }
    }
    return result;
}

/// The same in steps of random size.
std::vector<bool> bySteps(unsigned int const& count, float const& percent, std::mt19937& random) {
    std::vector<bool> result(count, false);
    EvenThinning thinning(count, percent);
    unsigned int visited = 0;
    while (visited < count && !thinning.isComplete()) {
        unsigned int const most = std::min(
            count - visited, random() % 4 == 0 ? 1U : static_cast<unsigned int>(random() % 20000) + 1);
        EvenThinning::Marks marks;
        if (thinning.takesAll()) {
            unsigned int const all = thinning.takeAll(most);
            std::fill_n(result.begin() + visited, all, true);
            visited += all;
            continue;
        }
        unsigned int const decided = thinning.decide(most, marks);
        EXPECT_GT(decided, 0U);
        EXPECT_LE(decided, most);
        for (unsigned int k = 0; k < marks.count; ++k) {
            result[visited + marks.offsets[k]] = true;
        }
        visited += decided;
    }
    return result;
}

TEST(EvenThinning_test, stepsFollowTheRule) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> any(0, 100);
    for (int round = 0; round < 300; ++round) {
        unsigned int const count = round % 50 == 0 ? 2000000 : random() % 5000;
        float const percent = round % 3 == 0   ? static_cast<float>(random() % 101)
                              : round % 3 == 1 ? any(random)
                                               : any(random) * 1e-2F + (round % 2 == 0 ? 0.0F : 99.0F);
        EvenThinning const thinning(count, percent);
        ASSERT_EQ(bySteps(count, percent, random), byTheRule(count, percent, thinning.target()))
            << count << " particles, " << percent << " percent";
    }
}

TEST(EvenThinning_test, countsBeyondSinglePrecisionFollowTheRule) {
    constexpr unsigned int COUNT = (1U << 24) + 100000;
    std::mt19937 random(6);
    for (float const percent : {37.7F, 99.9F}) {
        EvenThinning const thinning(COUNT, percent);
        EXPECT_TRUE(bySteps(COUNT, percent, random) == byTheRule(COUNT, percent, thinning.target()))
            << percent;
    }
}

TEST(EvenThinning_test, targetsAreCutToIntegersAndToWhatThereIs) {
    EXPECT_EQ(EvenThinning(10, 100).target(), 10U);
    EXPECT_EQ(EvenThinning(10, 99.9F).target(), 9U);
    EXPECT_EQ(EvenThinning(10, 33.3F).target(), 3U);
    EXPECT_EQ(EvenThinning(10, 0).target(), 0U);
    EXPECT_EQ(EvenThinning(10, -1).target(), 0U);
    EXPECT_EQ(EvenThinning(10, 1e30F).target(), 10U);
    EXPECT_EQ(EvenThinning(10, std::numeric_limits<float>::infinity()).target(), 10U);
    EXPECT_EQ(EvenThinning(10, std::numeric_limits<float>::quiet_NaN()).target(), 0U);
    EXPECT_EQ(EvenThinning(0, 50).target(), 0U);
}

}  // namespace
}  // namespace vellum
