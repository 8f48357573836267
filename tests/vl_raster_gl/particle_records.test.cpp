#include "internal/particles/particle_records.h"
#include "internal/fresh_pages.h"
#include "internal/long_loops.h"
#include "internal/particles/even_thinning.h"

#include "foundation/basic/threads.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"
#include "tests/support/thread_limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <sys/mman.h>

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

/// Whether two numbers have the same bits, or neither is one.
bool areSame(float a, float b) {
    std::uint32_t bits[2];
    std::memcpy(&bits[0], &a, sizeof(a));
    std::memcpy(&bits[1], &b, sizeof(b));
    return bits[0] == bits[1] || (std::isnan(a) && std::isnan(b));
}

/// A formula whose numbers all differ.
constexpr RecordFormula FORMULA{RecordColor::CONSTANT,
                                {0.5F, -1, 2},
                                {0.1F, 0.9F, -0.2F},
                                {0.7F, -0.6F, 1.5F},
                                {1.5F, 0.25F, 0.75F},
                                0.5F,
                                2.5F,
                                2};

/// Compares what a writer and the plain one make of the same particles, with every color and placing of the
/// records.
void expectSameBits(RecordWriter const& writer, std::vector<float> const& positions,
                    std::vector<float> const& values, unsigned int const* offsets, std::size_t const& count) {
    RecordFormula formula = FORMULA;
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
                    ASSERT_TRUE(areSame(expected[k], actual[k]))
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

TEST(EvenThinning_test, skippedParticlesAreDecidedAsByTheRule) {
    std::mt19937 random(8);
    std::uniform_real_distribution<float> any(0, 100);
    for (int round = 0; round < 400; ++round) {
        unsigned int const count = round % 100 == 0 ? 2000000 : random() % 3000 + 1;
        float const percent = round % 4 == 0   ? static_cast<float>(random() % 101)
                              : round % 4 == 1 ? any(random)
                              : round % 4 == 2 ? any(random) * 1e-2F
                                               : 99 + any(random) * 1e-2F;
        EvenThinning thinning(count, percent);
        std::vector<bool> const expected = byTheRule(count, percent, thinning.target());
        unsigned int visited = 0;
        unsigned int taken = 0;
        ASSERT_TRUE(thinning.canSkip(count));
        while (visited < count) {
            unsigned int const step =
                std::min(count - visited, static_cast<unsigned int>(random() % (count / 3 + 1)) + 1);
            taken += static_cast<unsigned int>(
                std::count(expected.begin() + visited, expected.begin() + visited + step, true));
            visited += step;
            thinning.skip(step);
            ASSERT_EQ(thinning.target() - thinning.missing(), taken)
                << visited << " of " << count << " particles, " << percent << " percent";
        }
    }
}

TEST(EvenThinning_test, countsBeyondSinglePrecisionAreSkippedOnlyWhereAllAreTaken) {
    EXPECT_FALSE(EvenThinning(1U << 24, 50).canSkip(1U << 24));
    EXPECT_TRUE(EvenThinning(1U << 24, 100).canSkip(1U << 24));
    EXPECT_TRUE(EvenThinning((1U << 24) - 1, 50).canSkip((1U << 24) - 1));
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

// == Many particles ==

/// A system whose chunks are filled, sparse or empty, with numbers of every kind.
class ManyParticles_test : public testing::TestWithParam<int> {
protected:
    static constexpr unsigned int COUNT = 1150001;
    static constexpr unsigned int SCALAR = 2;
    static constexpr unsigned int VECTOR = 1;

    ManyParticles_test() {
        setThreadLimit(GetParam());
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        system.addChannel("mass", ParticleChannel_v2::SCALAR);
        system.addParticles(COUNT);
        std::vector<float> const any = numbers(7 * ParticleSystemChunk_v2::CAPACITY + 5);
        std::mt19937 random(9);
        unsigned int number = 0;
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr;
             chunk = chunk->next(), ++number) {
            auto const fill = [&](void* to, std::size_t floats) {
                std::memcpy(to, any.data() + random() % (any.size() - floats), floats * sizeof(float));
            };
            fill(chunk->channelData(0)->asVectors(), std::size_t{3} * chunk->count());
            fill(chunk->channelData(VECTOR)->asVectors(), std::size_t{3} * chunk->count());
            fill(chunk->channelData(SCALAR)->asFloats(), chunk->count());
            if (number % 9 == 4) {
                _release(*chunk, number % 2 == 0 ? 1 : 3, random);
            }
        }
    }
    ~ManyParticles_test() override { setThreadLimit(0); }

    /// The records of all particles, one by one.
    std::vector<float> everyRecord(RecordFormula const& formula, unsigned int channel) const {
        std::vector<float> records;
        ParticleSystemConstIterator_v2 particle;
        ParticleSystemConstIterator_v2 end;
        end.setEnd(&system);
        for (particle.setBegin(&system); particle != end; ++particle) {
            auto const [channels, index] = *particle;
            float const* const values = channel == SCALAR ? channels[channel]->asFloats() + index
                                                          : &channels[channel]->asVectors()[index].x;
            float record[6];
            plainRecordWriter()(formula, &channels[0]->asVectors()[index].x, values, nullptr, record, 1,
                                false);
            records.insert(records.end(), record, record + 6);
        }
        return records;
    }

    ParticleSystem_v2 system;

private:
    // One particle in `kept` stays; with 1, none.
    static void _release(ParticleSystemChunk_v2& chunk, unsigned int kept, std::mt19937& random) {
        unsigned int const slots = chunk.count();
        for (unsigned int slot = 0; slot < slots; ++slot) {
            if (kept == 1 || random() % kept != 0) {
                chunk.release(slot);
            }
        }
    }
};

TEST_P(ManyParticles_test, recordsAreThoseOfOneParticleAfterTheOther) {
    ASSERT_GT(system.size(), MOST_ON_ONE_THREAD);
    RecordFormula formula = FORMULA;
    unsigned int shift = 0;  // floats, of the first record behind a line of the cache
    for (RecordColor const source : {RecordColor::CONSTANT, RecordColor::LENGTH, RecordColor::SCALAR}) {
        formula.source = source;
        unsigned int const channel = source == RecordColor::SCALAR ? SCALAR : VECTOR;
        std::vector<float> const all = everyRecord(formula, channel);
        for (float const percent : {100.0F, 99.9F, 37.7F, 3.0F, 1e-4F}) {
            EvenThinning const thinning(system.size(), percent);
            std::vector<bool> const taken = byTheRule(system.size(), percent, thinning.target());
            std::vector<float> expected;
            for (std::size_t k = 0; k < taken.size(); ++k) {
                if (taken[k]) {
                    expected.insert(expected.end(), all.begin() + 6 * k, all.begin() + 6 * k + 6);
                }
            }
            ASSERT_EQ(expected.size(), std::size_t{6} * thinning.target());
            std::vector<float> actual(expected.size() + 32, 7.0F);
            shift = (shift + 1) % 16;
            writeParticleRecords(system, channel, formula, thinning, actual.data() + shift);
            std::size_t wrong = 0;
            for (std::size_t k = 0; k < expected.size(); ++k) {
                wrong += areSame(expected[k], actual[k + shift]) ? 0 : 1;
            }
            EXPECT_EQ(wrong, 0U) << percent << " percent, source " << static_cast<int>(source);
            for (std::size_t k = 0; k < actual.size(); ++k) {
                bool const isOutside = k < shift || k >= shift + expected.size();
                ASSERT_TRUE(!isOutside || actual[k] == 7.0F) << "float " << k << " is written";
            }
        }
    }
}

TEST_P(ManyParticles_test, lastParticleIsRepeatedWhereMoreAreWanted) {
    RecordFormula const formula{RecordColor::VECTOR, {}, {}, {}, {}, 0, 1, 1};
    std::vector<float> const all = everyRecord(formula, VECTOR);
    constexpr unsigned int MORE = 21;
    EvenThinning const thinning(system.size() + MORE, 100);
    std::vector<float> actual(6 * std::size_t{thinning.target()});
    writeParticleRecords(system, VECTOR, formula, thinning, actual.data());
    for (std::size_t k = 0; k < all.size(); ++k) {
        ASSERT_TRUE(areSame(actual[k], all[k])) << k;
    }
    for (std::size_t k = all.size(); k < actual.size(); ++k) {
        ASSERT_TRUE(areSame(actual[k], all[all.size() - 6 + k % 6])) << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Threads, ManyParticles_test, testing::ValuesIn(threadLimits()),
                         [](testing::TestParamInfo<int> const& info) { return std::to_string(info.param); });

// == Pages ==

/// New memory of the system, and which of its pages there are.
class NewMemory {
public:
    NewMemory()
        : memory(static_cast<unsigned char*>(
              mmap(nullptr, BYTES, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    ~NewMemory() { munmap(memory, BYTES); }
    NewMemory(NewMemory const&) = delete;
    NewMemory& operator=(NewMemory const&) = delete;

    /// How many pages from the address on, in `bytes`, are there.
    std::size_t pages(std::size_t from, std::size_t bytes) const {
        std::vector<unsigned char> states(bytes / PAGE);
        EXPECT_EQ(mincore(memory + from, bytes, states.data()), 0);
        return static_cast<std::size_t>(std::count_if(states.begin(), states.end(),
                                                      [](unsigned char state) { return (state & 1U) != 0; }));
    }

    static constexpr std::size_t PAGE = 4096;
    static constexpr std::size_t BYTES = 256 * PAGE;

    unsigned char* memory;
};

TEST(fresh_pages_test, newMemoryGetsItsWholePagesAndKeepsItsContents) {
    NewMemory const given;
    given.memory[100 * NewMemory::PAGE + 7] = 3;
    errno = 5;
    takePages(given.memory + NewMemory::PAGE + 1, 200 * NewMemory::PAGE);
    EXPECT_EQ(errno, 5);
    EXPECT_EQ(given.memory[100 * NewMemory::PAGE + 7], 3);
    EXPECT_EQ(std::count(given.memory + 2 * NewMemory::PAGE, given.memory + 100 * NewMemory::PAGE, 0),
              static_cast<std::ptrdiff_t>(98 * NewMemory::PAGE));

    NewMemory const probe;
    bool const isSupported = madvise(probe.memory, NewMemory::PAGE, MADV_POPULATE_WRITE) == 0;
    NewMemory const another;
    takePages(another.memory + NewMemory::PAGE + 1, 200 * NewMemory::PAGE);
    EXPECT_EQ(another.pages(2 * NewMemory::PAGE, 199 * NewMemory::PAGE), isSupported ? 199U : 0U);
    EXPECT_EQ(another.pages(0, 2 * NewMemory::PAGE), 0U) << "bytes before the first belong to others";
    EXPECT_EQ(another.pages(201 * NewMemory::PAGE, 55 * NewMemory::PAGE), 0U);
}

TEST(fresh_pages_test, littleMemoryIsLeftAlone) {
    NewMemory const given;
    takePages(given.memory, 31 * NewMemory::PAGE);
    EXPECT_EQ(given.pages(0, NewMemory::BYTES), 0U);
}

TEST(fresh_pages_test, memoryThatCannotBeWrittenIsLeftAlone) {
    NewMemory const given;
    mprotect(given.memory, NewMemory::BYTES, PROT_READ);
    errno = 5;
    takePages(given.memory, NewMemory::BYTES);
    EXPECT_EQ(errno, 5);
    EXPECT_EQ(given.pages(0, NewMemory::BYTES), 0U);
}

}  // namespace
}  // namespace vellum
