#include "viewport/playback/ReadAhead.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

/// A frame that knows how many of its kind there are.
struct Frame {
    explicit Frame(std::size_t number) : number(number) { ++alive; }
    Frame(Frame&& other) noexcept : number(other.number) { ++alive; }
    Frame& operator=(Frame&& other) noexcept = default;
    ~Frame() { --alive; }

    std::size_t number;
    static std::atomic<int> alive;
};

std::atomic<int> Frame::alive{0};

/// Loads frames of one byte, notes which, and can be held up.
class Loader {
public:
    ReadAhead<Frame>::Source source() {
        return {[this](std::size_t number, Progress const& progress) { return load(number, progress); },
                [](Frame const&) { return std::uint64_t(1); }};
    }

    Result<Frame> load(std::size_t number, Progress const& progress) {
        {
            std::lock_guard<std::mutex> const lock(mutex);
            begun.push_back(number);
        }
        changed.notify_all();
        std::unique_lock<std::mutex> lock(mutex);
        while (number == heldUp) {
            lock.unlock();
            if (progress) {
                progress(1, 2);
            }
            std::this_thread::yield();
            lock.lock();
        }
        if (number == 13) {
            return Fault{"file", "unlucky"};
        }
        if (number == 14) {
            throw std::runtime_error("thrown");
        }
        return Frame(number);
    }

    void holdUp(std::optional<std::size_t> const& number) {
        std::lock_guard<std::mutex> const lock(mutex);
        heldUp = number;
    }

    /// Waits until so many loads have begun.
    std::vector<std::size_t> waitFor(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return begun.size() >= count; });
        return begun;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::size_t> begun;
    std::optional<std::size_t> heldUp;
};

template <class Condition>
void waitUntil(Condition const& condition) {
    while (!condition()) {
        std::this_thread::yield();
    }
}

}  // namespace

TEST(ReadAhead, theFirstFrameWantedComesFirstAndTheOthersFollowInTheirOrder) {
    Loader loader;
    ReadAhead<Frame> reader(loader.source(), 100);
    reader.want({5, 4, 9});
    EXPECT_EQ(reader.wait()->value().number, 5U);
    EXPECT_FALSE(reader.wait()) << "it is given once";
    EXPECT_THAT(loader.waitFor(3), ElementsAre(5, 4, 9));
    waitUntil([&] { return reader.heldBytes() == 2; });
    reader.want({4, 9, 8});
    EXPECT_EQ(reader.part(), 1);
    EXPECT_EQ(reader.take()->value().number, 4U) << "read before it was wanted";
    EXPECT_THAT(loader.waitFor(4), ElementsAre(5, 4, 9, 8)) << "nothing is read twice";
}

TEST(ReadAhead, takingNeverWaits) {
    Loader loader;
    loader.holdUp(1);
    ReadAhead<Frame> reader(loader.source(), 100);
    EXPECT_FALSE(reader.take()) << "nothing is wanted";
    EXPECT_FALSE(reader.wait());
    reader.want({1});
    loader.waitFor(1);
    EXPECT_FALSE(reader.take());
    waitUntil([&] { return reader.part() == 0.5; });
    loader.holdUp(std::nullopt);
    EXPECT_EQ(reader.wait()->value().number, 1U);
}

TEST(ReadAhead, memoryBoundsWhatIsReadAhead) {
    Loader loader;
    {
        ReadAhead<Frame> reader(loader.source(), 3);
        reader.want({0, 1, 2, 3, 4, 5, 6, 7});
        waitUntil([&] { return reader.heldBytes() == 3; });
        EXPECT_EQ(reader.wait()->value().number, 0U);
        EXPECT_THAT(loader.waitFor(4), ElementsAre(0, 1, 2, 3)) << "one more has room then";
        waitUntil([&] { return reader.heldBytes() == 3; });
        reader.want({7, 1});
        EXPECT_EQ(reader.wait()->value().number, 7U) << "the wanted one is read in any case";
        EXPECT_EQ(reader.heldBytes(), 1U) << "what is not wanted is dropped";
        EXPECT_EQ(Frame::alive, 1);
    }
    EXPECT_EQ(Frame::alive, 0);
    ReadAhead<Frame> narrow(loader.source(), 0);
    narrow.want({3, 4});
    EXPECT_EQ(narrow.wait()->value().number, 3U);
}

TEST(ReadAhead, aFrameThatIsWantedNoLongerIsGivenUp) {
    Loader loader;
    loader.holdUp(1);
    ReadAhead<Frame> reader(loader.source(), 100);
    reader.want({1, 2});
    loader.waitFor(1);
    reader.want({2, 1});
    EXPECT_EQ(reader.wait()->value().number, 2U);
    EXPECT_THAT(loader.waitFor(3), ElementsAre(1, 2, 1)) << "it is begun again once there is time";
}

TEST(ReadAhead, theEndGivesUpWhatIsBeingRead) {
    Loader loader;
    loader.holdUp(1);
    {
        ReadAhead<Frame> reader(loader.source(), 100);
        reader.want({1});
        loader.waitFor(1);
    }
    EXPECT_EQ(Frame::alive, 0);
    ReadAhead<Frame> const unused(loader.source(), 100);
}

TEST(ReadAhead, faultsAndExceptionsAreValues) {
    Loader loader;
    ReadAhead<Frame> reader(loader.source(), 100);
    reader.want({13, 14, 15});
    EXPECT_EQ(reader.wait()->fault().message, "unlucky");
    reader.want({14, 15});
    EXPECT_EQ(reader.wait()->fault().message, "thrown");
    reader.want({15});
    EXPECT_EQ(reader.wait()->value().number, 15U);
}

TEST(ReadAhead, aFrameThatWasTakenIsReadAgainWhereItIsWantedAgain) {
    Loader loader;
    ReadAhead<Frame> reader(loader.source(), 100);
    for (int i = 0; i < 2; ++i) {
        reader.want({6});
        EXPECT_EQ(reader.wait()->value().number, 6U);
    }
    EXPECT_THAT(loader.waitFor(2), ElementsAre(6, 6));
}

TEST(ReadAhead, theCallerIsToldThatItsFrameIsThere) {
    Loader loader;
    std::atomic<int> calls{0};
    ReadAhead<Frame>::Source source = loader.source();
    source.notify = [&] { ++calls; };
    ReadAhead<Frame> reader(source, 100);
    reader.want({1, 2, 3});
    waitUntil([&] { return calls == 1; });
    EXPECT_EQ(reader.take()->value().number, 1U);
    waitUntil([&] { return reader.heldBytes() == 2; });
    EXPECT_EQ(calls, 1);
}

TEST(ReadAhead, aSourceForTheCallerIsReadWhenItIsTaken) {
    Loader loader;
    ReadAhead<Frame>::Source source = loader.source();
    std::thread::id readOn;
    source.load = [&](std::size_t number, Progress const&) {
        readOn = std::this_thread::get_id();
        return Result<Frame>(Frame(number));
    };
    source.isForCaller = true;
    ReadAhead<Frame> reader(source, 100);
    reader.want({4, 5});
    EXPECT_EQ(reader.take()->value().number, 4U);
    EXPECT_FALSE(reader.take());
    EXPECT_EQ(readOn, std::this_thread::get_id());
}

TEST(ReadAhead, anyOrderOfWishesEndsWithTheLastOne) {
    Loader loader;
    ReadAhead<Frame> reader(loader.source(), 4);
    for (std::size_t i = 0; i < 500; ++i) {
        std::size_t const first = i * 7 % 11;
        reader.want({first, first + 1, first + 2, first});
        if (i % 3 == 0) {
            std::optional<Result<Frame>> const frame = reader.wait();
            ASSERT_TRUE(frame);
            EXPECT_EQ(frame->value().number, first);
        } else if (std::optional<Result<Frame>> const frame = reader.take()) {
            EXPECT_EQ(frame->value().number, first);
        }
    }
}
