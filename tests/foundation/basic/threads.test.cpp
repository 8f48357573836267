#include "foundation/basic/threads.h"
#include "tests/support/thread_limits.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace vellum;

namespace {

/// Returns to the first limit at the end of a test.
class threads_test : public testing::Test {
protected:
    void TearDown() override { setThreadLimit(0); }
};

}  // namespace

TEST_F(threads_test, limitIsAtLeastOne) {
    EXPECT_GE(threadLimit(), 1);
    setThreadLimit(3);
    EXPECT_EQ(threadLimit(), 3);
    setThreadLimit(100000);
    EXPECT_EQ(threadLimit(), 1024);
}

TEST_F(threads_test, zeroAndLessReturnToTheFirstLimit) {
    setThreadLimit(0);
    int const first = threadLimit();
    setThreadLimit(first + 1);
    setThreadLimit(-5);
    EXPECT_EQ(threadLimit(), first);
}

TEST_F(threads_test, environmentSetsTheFirstLimitWhereItIsANumber) {
    setThreadLimit(0);
    int const cores = threadLimit();
    setenv("VL_THREADS", "7", 1);
    setThreadLimit(0);
    EXPECT_EQ(threadLimit(), 7);
    for (char const* const word : {"", "0", "-1", "7x", "many", "1025", "99999999999"}) {
        setenv("VL_THREADS", word, 1);
        setThreadLimit(0);
        EXPECT_EQ(threadLimit(), cores) << word;
    }
    unsetenv("VL_THREADS");
}

TEST_F(threads_test, eachElementIsVisitedOnceWhateverTheNumberOfThreads) {
    for (int const threads : threadLimits()) {
        setThreadLimit(threads);
        for (std::size_t const count : {0U, 1U, 9U, 10U, 11U, 1001U}) {
            std::vector<std::atomic<int>> visits(count);
            forRanges(count, 10, [&](std::size_t begin, std::size_t end) {
                EXPECT_EQ(begin % 10, 0U);
                EXPECT_LE(end, count);
                EXPECT_TRUE(end == count || end == begin + 10);
                for (std::size_t i = begin; i < end; ++i) {
                    ++visits[i];
                }
            });
            for (std::atomic<int> const& visit : visits) {
                EXPECT_EQ(visit, 1);
            }
        }
    }
}

TEST_F(threads_test, limitOfOneKeepsRangesOnTheCallingThreadInOrder) {
    setThreadLimit(1);
    std::thread::id const caller = std::this_thread::get_id();
    std::vector<std::size_t> begins;
    forRanges(25, 10, [&](std::size_t begin, std::size_t) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        begins.push_back(begin);
    });
    EXPECT_EQ(begins, (std::vector<std::size_t>{0, 10, 20}));
}

TEST_F(threads_test, rangesMayUseRangesThemselves) {
    setThreadLimit(4);
    std::atomic<int> sum{0};
    forRanges(8, 1, [&](std::size_t, std::size_t) {
        forRanges(8, 1, [&](std::size_t begin, std::size_t) { sum += static_cast<int>(begin); });
    });
    EXPECT_EQ(sum, 8 * 28);
}
