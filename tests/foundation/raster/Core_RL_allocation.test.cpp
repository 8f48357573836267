#include "tests/foundation/raster/Recording_RL.h"
#include "tests/support/build_facts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>

// Render layers are allocated with malloc and free, so that code of any library may delete them. This file
// replaces the global operators of the test program by operators that watch for one size and one address.

namespace {

std::size_t watchedSize = 0;  // 0 watches nothing
void const* watchedAddress = nullptr;
unsigned int globalNews = 0;     // allocations of the watched size
unsigned int globalDeletes = 0;  // releases of the watched address

// Not inlined: the compiler would warn about the mixture of operators and C functions, which is intended.
[[gnu::noinline]] void* allocate(std::size_t const size) noexcept {
    if (watchedSize != 0 && size == watchedSize) {
        ++globalNews;
    }
    return std::malloc(size != 0 ? size : 1);
}

[[gnu::noinline]] void release(void* const memory) noexcept {
    if (memory != nullptr && memory == watchedAddress) {
        ++globalDeletes;
    }
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    release(memory);
}

namespace vellum {
namespace {

// Its unusual size distinguishes it from all other allocations.
class Layer : public Recording_RL {
public:
    unsigned char ballast[54321] = {};
};

class Core_RL_allocation_test : public testing::Test {
protected:
    void SetUp() override {
        globalNews = 0;
        globalDeletes = 0;
        watchedSize = sizeof(Layer);
    }
    void TearDown() override {
        watchedSize = 0;
        watchedAddress = nullptr;
    }
};

TEST_F(Core_RL_allocation_test, theWatchSeesTheGlobalOperators) {
    watchedSize = 64;
    void* const memory = ::operator new(64);
    EXPECT_EQ(globalNews, 1U);
    watchedAddress = memory;
    ::operator delete(memory);
    EXPECT_EQ(globalDeletes, 1U);
}

TEST_F(Core_RL_allocation_test, layersComeFromMallocAndGoToFree) {
    Core_RL* const layer = new Layer;
    watchedAddress = layer;
    EXPECT_EQ(globalNews, 0U);
    delete layer;
    EXPECT_EQ(globalDeletes, 0U);
}

TEST_F(Core_RL_allocation_test, theSameHoldsForTheOperatorThatDoesNotThrow) {
    Core_RL* const layer = new (std::nothrow) Layer;
    ASSERT_NE(layer, nullptr);
    watchedAddress = layer;
    EXPECT_EQ(globalNews, 0U);
    delete layer;
    EXPECT_EQ(globalDeletes, 0U);
}

TEST_F(Core_RL_allocation_test, memoryMayCrossBetweenTheClassAndTheCLibrary) {
    void* volatile memory = Core_RL::operator new(100);
    std::free(memory);
    memory = std::malloc(100);
    Core_RL::operator delete(memory);
    memory = Core_RL::operator new(100, std::nothrow);
    std::free(memory);
    memory = std::malloc(100);
    Core_RL::operator delete(memory, std::nothrow);
}

TEST_F(Core_RL_allocation_test, aLayerMayBeBuiltInPlace) {
    alignas(Layer) static unsigned char place[sizeof(Layer)];
    auto* const layer = new (place) Layer;
    EXPECT_EQ(static_cast<void*>(layer), static_cast<void*>(place));
    layer->~Layer();
}

TEST_F(Core_RL_allocation_test, impossibleSizesAreRefused) {
    if (isAddressSanitized() || isThreadSanitized()) {
        GTEST_SKIP() << "the sanitizer ends the process where malloc would answer null";
    }
    std::size_t const volatile impossible = SIZE_MAX / 2;
    EXPECT_THROW(Core_RL::operator new(impossible), std::bad_alloc);
    EXPECT_EQ(Core_RL::operator new(impossible, std::nothrow), nullptr);
}

}  // namespace
}  // namespace vellum
