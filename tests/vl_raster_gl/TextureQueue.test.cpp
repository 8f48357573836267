#include "Core_RL_GL.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

// The queue of textures that wait for deletion, without any GL: the layer under test notes the names that it
// is asked to delete.

namespace {

/// While set, this thread gets no memory for arrays.
thread_local bool outOfMemory = false;

}  // namespace

// The arrays of this program, those of the library among them. All forms are replaced together, so that what
// one of them allocates comes back to its kin.
void* operator new[](std::size_t size) {
    void* const memory = outOfMemory ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace vellum {
namespace {

constexpr unsigned int NO_TEXTURE = 0xFFFFFFFF;

/// Notes the deleted names, and gives access to the queue.
class QueueLayer : public Core_RL_GL {
public:
    void unLoadTextureColor(unsigned int const& texture) override {
        if (texture == nameToFailAt) {
            throw std::runtime_error("not deleted");
        }
        deleted.push_back(texture);
    }

    void queue(unsigned int texture) { queueUnloadTextureColor(texture); }

    unsigned int queueSize() const { return textureUnloadQueue.size(); }
    unsigned int queueCapacity() const { return textureUnloadQueue.capacity(); }
    bool isLocked() const { return textureQueueLock.load() != 0; }

    std::vector<unsigned int> deleted;
    unsigned int nameToFailAt = NO_TEXTURE;
};

using Names = std::vector<unsigned int>;

TEST(TextureQueue_test, queuedNamesAreDeletedInOrder) {
    QueueLayer layer;
    for (unsigned int const name : {7U, 3U, 9U}) {
        layer.queue(name);
    }
    EXPECT_EQ(layer.deleted, Names{}) << "nothing is deleted before destroy_RL";
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, (Names{7, 3, 9}));
}

TEST(TextureQueue_test, queueingTakesNameFromItsOwner) {
    QueueLayer layer;
    unsigned int texture = 7;
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(texture, NO_TEXTURE);
}

TEST(TextureQueue_test, variableQueuedTwiceQueuesItsNameOnce) {
    QueueLayer layer;
    unsigned int texture = 7;
    layer.queueUnloadTextureColor(texture);
    layer.queueUnloadTextureColor(texture);
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{7});
}

TEST(TextureQueue_test, noTextureIsNotQueued) {
    QueueLayer layer;
    unsigned int texture = NO_TEXTURE;
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(texture, NO_TEXTURE);
    EXPECT_EQ(layer.queueSize(), 0U);
    EXPECT_EQ(layer.queueCapacity(), 0U);
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{});
}

TEST(TextureQueue_test, zeroIsValidName) {
    QueueLayer layer;
    layer.queue(0);
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{0});
}

TEST(TextureQueue_test, emptyQueueDeletesNothing) {
    QueueLayer layer;
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{});
    EXPECT_FALSE(layer.isLocked());
}

TEST(TextureQueue_test, drainedQueueIsUsedAgain) {
    QueueLayer layer;
    for (unsigned int name = 1; name <= 5; ++name) {
        layer.queue(name);
    }
    layer.destroy_RL();
    EXPECT_EQ(layer.queueSize(), 0U);
    EXPECT_EQ(layer.queueCapacity(), 8U) << "the storage is kept";

    layer.deleted.clear();
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{}) << "a name is deleted once";

    // The driver may give the same name to a new texture.
    layer.queue(5);
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, Names{5});
}

TEST(TextureQueue_test, queueGrowsByEighthAndFour) {
    QueueLayer layer;
    EXPECT_EQ(layer.queueCapacity(), 0U);
    std::vector<unsigned int> capacities;
    for (unsigned int name = 0; name < 24; ++name) {
        layer.queue(name);
        if (capacities.empty() || capacities.back() != layer.queueCapacity()) {
            capacities.push_back(layer.queueCapacity());
        }
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{4, 8, 13, 18, 24}));
    EXPECT_EQ(layer.queueSize(), 24U);
}

TEST(TextureQueue_test, layerConstructedLastDeletesForAll) {
    QueueLayer first;
    QueueLayer last;
    first.queue(7);
    first.destroy_RL();
    EXPECT_EQ(first.deleted, Names{});
    EXPECT_EQ(last.deleted, Names{7});
    EXPECT_EQ(first.queueSize(), 0U);
}

TEST(TextureQueue_test, failedGrowthLeavesNameQueueAndLock) {
    QueueLayer layer;
    for (unsigned int name = 1; name <= 4; ++name) {
        layer.queue(name);
    }
    unsigned int texture = 5;
    outOfMemory = true;
    bool threw = false;
    try {
        layer.queueUnloadTextureColor(texture);
    } catch (std::bad_alloc const&) {
        threw = true;
    }
    outOfMemory = false;
    EXPECT_TRUE(threw);
    EXPECT_EQ(texture, 5U) << "the name still belongs to its owner";
    EXPECT_FALSE(layer.isLocked());

    layer.queueUnloadTextureColor(texture);
    layer.destroy_RL();
    EXPECT_EQ(layer.deleted, (Names{1, 2, 3, 4, 5}));
}

TEST(TextureQueue_test, failedDeletionReleasesLock) {
    QueueLayer layer;
    layer.queue(1);
    layer.queue(2);
    layer.nameToFailAt = 2;
    EXPECT_THROW(layer.destroy_RL(), std::runtime_error);
    EXPECT_EQ(layer.deleted, Names{1});
    EXPECT_FALSE(layer.isLocked());
}

TEST(TextureQueue_test, namesOfManyThreadsAreDeletedOnceEach) {
    constexpr unsigned int THREADS = 8;
    constexpr unsigned int NAMES = 100000;  // of each thread
    constexpr unsigned int NAMES_BETWEEN_DRAINS = 500;

    QueueLayer layer;
    layer.deleted.reserve(THREADS * NAMES);
    std::atomic<unsigned int> ready{0};
    std::atomic<unsigned int> finished{0};
    std::atomic<unsigned int> drains{0};
    std::atomic<unsigned int> namesKept{0};

    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&, thread] {
            ++ready;
            while (ready != THREADS) {
                std::this_thread::yield();
            }
            for (unsigned int i = 0; i < NAMES; ++i) {
                // However the threads are scheduled, they meet again and again, and so do queueing and
                // draining.
                if (i % NAMES_BETWEEN_DRAINS == 0) {
                    unsigned int const seen = drains;
                    while (drains == seen) {
                        std::this_thread::yield();
                    }
                }
                unsigned int texture = thread * NAMES + i;
                layer.queueUnloadTextureColor(texture);
                if (texture != NO_TEXTURE) {
                    ++namesKept;
                }
            }
            ++finished;
        });
    }
    while (finished != THREADS) {
        layer.destroy_RL();
        ++drains;
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    layer.destroy_RL();

    EXPECT_EQ(namesKept, 0U) << "each owner has lost its name";
    EXPECT_EQ(layer.queueSize(), 0U);
    EXPECT_FALSE(layer.isLocked());
    ASSERT_EQ(layer.deleted.size(), THREADS * NAMES);
    std::vector<unsigned int> nextOfThread(THREADS, 0);
    for (unsigned int const name : layer.deleted) {
        ASSERT_LT(name, THREADS * NAMES) << "a name that was never queued";
        // In the order in which its thread queued it: so none is lost, and none comes twice.
        ASSERT_EQ(name % NAMES, nextOfThread[name / NAMES]++) << "of thread " << name / NAMES;
    }
}

}  // namespace
}  // namespace vellum
