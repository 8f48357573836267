#include "foundation/basic/ArrayServer.h"

#include "foundation/basic/large_pages.h"
#include "foundation/geometry/Vector3.h"
#include "tests/support/build_facts.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

namespace vellum {
namespace {

constexpr unsigned int MOST_REFERENCES = 65535;

// The server is shared by the whole process, so every test restores it.
class ArrayServer_test : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(VL_ArrayServer.arrayCount(), 0U);
        ASSERT_EQ(VL_ArrayServer.handleCount(), 0U);
    }
    void TearDown() override {
        EXPECT_EQ(VL_ArrayServer.arrayCount(), 0U) << "an array is left behind";
        EXPECT_EQ(VL_ArrayServer.handleCount(), 0U) << "a handle record is left behind";
    }

    ArrayId makeArray() { return VL_ArrayServer.create(Array<int>{1, 2, 3}); }

    unsigned int references(ArrayId const& id) {
        ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
        return array != nullptr ? array->references : 0U;
    }
};

// == Constants ==

TEST_F(ArrayServer_test, flagsHaveTheirValues) {
    EXPECT_EQ(ARRAY_TYPEABLE_IS_LOCKED_TYPE, 1);
    EXPECT_EQ(ARRAY_TYPEABLE_MODIFIED_CONTROL_0, 256);
    EXPECT_EQ(ARRAY_TYPEABLE_MODIFIED_CONTROL_1, 512);
    EXPECT_EQ(ARRAY_TYPEABLE_MODIFIED_CONTROL_2, 1024);
    EXPECT_EQ(ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK, 0xF00);
}

TEST_F(ArrayServer_test, namesAndHandlesAre32BitIndices) {
    static_assert(sizeof(ArrayId) == 4);
    static_assert(sizeof(ArrayHandle) == 4);
    EXPECT_EQ(ARRAY_ID_NONE, 0xFFFFFFFFU);
    ArrayHandle const none;
    EXPECT_EQ(*reinterpret_cast<unsigned int const*>(&none), 0xFFFFFFFFU);
}

TEST_F(ArrayServer_test, stateWordAndReferenceCountAre16Bits) {
    static_assert(sizeof(ArrayTypeable::flags) == 2);
    static_assert(sizeof(ArrayTypeable::references) == 2);
    static_assert(sizeof(ArrayTypeable::size) == 4);
    static_assert(sizeof(ArrayTypeable::capacity) == 4);
}

// == Creating and resolving ==

TEST_F(ArrayServer_test, aNewArrayHasZeroElementsAndOneReference) {
    ArrayId id = VL_ArrayServer.create(16, 5);
    ASSERT_NE(id, ARRAY_ID_NONE);
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->size, 5U);
    EXPECT_EQ(array->capacity, 5U);
    EXPECT_EQ(array->elementSize, 16U);
    EXPECT_EQ(array->references, 1U);
    EXPECT_NE(array->flags & ARRAY_TYPEABLE_IS_LOCKED_TYPE, 0);
    auto const* const bytes = static_cast<unsigned char const*>(array->data);
    for (unsigned int i = 0; i < 80; ++i) {
        ASSERT_EQ(bytes[i], 0) << "byte " << i;
    }
    EXPECT_TRUE(VL_ArrayServer.release(id));
}

TEST_F(ArrayServer_test, aNewArrayCountsAsModified) {
    ArrayId id = makeArray();
    EXPECT_EQ(VL_ArrayServer.resolve(id)->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK,
              ARRAY_TYPEABLE_MODIFIED_CONTROL_0);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, anArrayOfNothingHasNoStorage) {
    ArrayId id = VL_ArrayServer.create(Array<Vector3<double>>());
    ASSERT_NE(id, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(id)->data, nullptr);
    EXPECT_EQ(VL_ArrayServer.resolve(id)->size, 0U);
    EXPECT_EQ(VL_ArrayServer.resolve(id)->elementSize, 24U);
    EXPECT_TRUE(VL_ArrayServer.release(id));
}

TEST_F(ArrayServer_test, aCopyOfValuesIsKept) {
    Array<Vector3<double>> positions{{1, 2, 3}, {4, 5, 6}};
    positions.reserve(10, true);
    ArrayId id = VL_ArrayServer.create(positions);
    positions[1].z = -1;
    ArrayTypeable* const array = VL_ArrayServer.resolve(id);
    ASSERT_NE(array, nullptr);
    ASSERT_EQ(array->size, 2U);
    ASSERT_NE(array->as<Vector3<double>>(), nullptr);
    EXPECT_EQ(array->as<Vector3<double>>()[0].y, 2.0);
    EXPECT_EQ(array->as<Vector3<double>>()[1].z, 6.0);
    EXPECT_TRUE(VL_ArrayServer.release(id));
}

TEST_F(ArrayServer_test, elementsOfAnotherSizeAreNotGiven) {
    ArrayId id = VL_ArrayServer.create(Array<Vector3<float>>{{1, 2, 3}});
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    EXPECT_NE(array->as<Vector3<float>>(), nullptr);
    EXPECT_EQ(array->as<Vector3<double>>(), nullptr);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, elementsWithoutSizeAreRefused) {
    EXPECT_EQ(VL_ArrayServer.create(0, 5), ARRAY_ID_NONE);
}

TEST_F(ArrayServer_test, anArrayThatMemoryCannotHoldIsRefused) {
    if (isAddressSanitized() || isThreadSanitized()) {
        GTEST_SKIP() << "the sanitizer ends the process where the allocator would answer null";
    }
    EXPECT_EQ(VL_ArrayServer.create(0xFFFFFFFFU, 0xFFFFFFFFU), ARRAY_ID_NONE);
    ArrayId id = makeArray();
    EXPECT_EQ(VL_ArrayServer.create(0xFFFFFFFFU, 0xFFFFFFFFU), ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.arrayCount(), 1U);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, namesOfNoArrayResolveToNull) {
    EXPECT_EQ(VL_ArrayServer.resolve(ARRAY_ID_NONE), nullptr);
    EXPECT_EQ(VL_ArrayServer.resolve(0), nullptr);
    ArrayId id = makeArray();
    EXPECT_EQ(VL_ArrayServer.resolve(id + 1), nullptr);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, aRecordStaysWhereItIsWhileOthersComeAndGo) {
    ArrayId first = makeArray();
    ArrayTypeable const* const record = VL_ArrayServer.resolve(first);
    std::vector<ArrayId> others;
    for (int i = 0; i < 2000; ++i) {
        others.push_back(makeArray());
    }
    for (ArrayId& id : others) {
        EXPECT_TRUE(VL_ArrayServer.release(id));
    }
    EXPECT_EQ(VL_ArrayServer.resolve(first), record);
    EXPECT_EQ(record->as<int>()[2], 3);
    VL_ArrayServer.release(first);
}

// == References ==

TEST_F(ArrayServer_test, theLastReferenceDestroysTheArray) {
    ArrayId id = makeArray();
    ArrayId second = id;
    EXPECT_TRUE(VL_ArrayServer.retain(second));
    EXPECT_EQ(references(second), 2U);

    EXPECT_TRUE(VL_ArrayServer.release(id));
    EXPECT_EQ(id, ARRAY_ID_NONE);
    EXPECT_EQ(references(second), 1U);

    ArrayId const name = second;
    EXPECT_TRUE(VL_ArrayServer.release(second));
    EXPECT_EQ(second, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(name), nullptr);
}

TEST_F(ArrayServer_test, aSecondReleaseDoesNothing) {
    ArrayId id = makeArray();
    ArrayId stale = id;
    ArrayId other = makeArray();
    EXPECT_TRUE(VL_ArrayServer.release(id));
    EXPECT_FALSE(VL_ArrayServer.release(id)) << "the name is set to none";
    EXPECT_FALSE(VL_ArrayServer.release(stale)) << "a copy of the name is unknown by now";
    EXPECT_EQ(stale, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.arrayCount(), 1U);
    EXPECT_EQ(VL_ArrayServer.resolve(other)->as<int>()[0], 1);
    EXPECT_TRUE(VL_ArrayServer.release(other));
}

TEST_F(ArrayServer_test, anUnknownNameCannotBeRetained) {
    EXPECT_FALSE(VL_ArrayServer.retain(ARRAY_ID_NONE));
    EXPECT_FALSE(VL_ArrayServer.retain(0));
    EXPECT_FALSE(VL_ArrayServer.retain(123456));
}

TEST_F(ArrayServer_test, aFullReferenceCountTakesNoMore) {
    ArrayId id = makeArray();
    for (unsigned int i = 1; i < MOST_REFERENCES; ++i) {
        ASSERT_TRUE(VL_ArrayServer.retain(id));
    }
    EXPECT_EQ(references(id), MOST_REFERENCES);
    EXPECT_FALSE(VL_ArrayServer.retain(id));
    EXPECT_EQ(references(id), MOST_REFERENCES) << "the count must not run over";
    {
        ArrayHandle const handle(id);
        EXPECT_FALSE(handle.isHolding());
    }
    EXPECT_EQ(references(id), MOST_REFERENCES);
    for (unsigned int i = 1; i < MOST_REFERENCES; ++i) {
        ArrayId copy = id;
        ASSERT_TRUE(VL_ArrayServer.release(copy));
    }
    EXPECT_EQ(references(id), 1U);
    EXPECT_TRUE(VL_ArrayServer.release(id));
}

TEST_F(ArrayServer_test, destroyingReleasesTheStorageAndTheName) {
    ArrayId id = makeArray();
    ArrayId const name = id;
    ArrayTypeable const* const record = VL_ArrayServer.resolve(id);
    ArrayId other = makeArray();
    VL_ArrayServer.destroy_typeable(id);
    EXPECT_EQ(id, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(name), nullptr);
    EXPECT_EQ(VL_ArrayServer.arrayCount(), 1U);
    // The record stays in its page, in a valid state, until its index is reused.
    EXPECT_EQ(record->references, 0U);
    EXPECT_EQ(record->flags & ARRAY_TYPEABLE_IS_LOCKED_TYPE, 0);
    EXPECT_EQ(record->size, 0U);
    EXPECT_EQ(record->data, nullptr);
    VL_ArrayServer.release(other);
}

TEST_F(ArrayServer_test, destroyingClearsTheLockedFlagAlone) {
    ArrayId id = makeArray();
    ArrayTypeable* const record = VL_ArrayServer.resolve(id);
    record->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_2;
    ArrayId other = makeArray();
    VL_ArrayServer.destroy_typeable(id);
    EXPECT_EQ(record->flags, ARRAY_TYPEABLE_MODIFIED_CONTROL_0 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2);
    VL_ArrayServer.release(other);
}

TEST_F(ArrayServer_test, destroyingAnUnknownArrayOnlyClearsTheName) {
    ArrayId other = makeArray();
    ArrayId id = 77;
    VL_ArrayServer.destroy_typeable(id);
    EXPECT_EQ(id, ARRAY_ID_NONE);
    VL_ArrayServer.destroy_typeable(id);
    EXPECT_EQ(id, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.arrayCount(), 1U);
    VL_ArrayServer.release(other);
}

TEST_F(ArrayServer_test, aServerFreesWhatWasNeverReleased) {
    // Only a leak checker can see a failure of this test.
    ArrayServer server;
    EXPECT_NE(server.create(8, 100), ARRAY_ID_NONE);
    ArrayId id = server.create(8, 100);
    EXPECT_NE(server.create(8, 100), ARRAY_ID_NONE);
    EXPECT_TRUE(server.release(id));
    EXPECT_EQ(server.arrayCount(), 2U);
}

// == Handles ==

TEST_F(ArrayServer_test, anEmptyHandleHoldsNothing) {
    ArrayHandle const handle;
    EXPECT_FALSE(handle.isHolding());
    EXPECT_EQ(handle.resolve(), nullptr);
    ArrayHandle const copy(handle);
    EXPECT_FALSE(copy.isHolding());
    EXPECT_EQ(VL_ArrayServer.handleCount(), 0U);
}

TEST_F(ArrayServer_test, aHandleOfAnUnknownNameHoldsNothing) {
    ArrayHandle const none(ARRAY_ID_NONE);
    ArrayHandle const unknown(5);
    EXPECT_FALSE(none.isHolding());
    EXPECT_FALSE(unknown.isHolding());
    EXPECT_EQ(VL_ArrayServer.handleCount(), 0U);
}

TEST_F(ArrayServer_test, aHandleRaisesTheReferenceCountWhileItLives) {
    ArrayId id = makeArray();
    {
        ArrayHandle const handle(id);
        EXPECT_EQ(handle.resolve(), VL_ArrayServer.resolve(id));
        EXPECT_EQ(references(id), 2U);
        EXPECT_EQ(VL_ArrayServer.handleCount(), 1U);
    }
    EXPECT_EQ(references(id), 1U);
    EXPECT_EQ(VL_ArrayServer.handleCount(), 0U);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, twoHandlesOfAnArrayCountTwice) {
    ArrayId id = makeArray();
    {
        ArrayHandle const first(id);
        ArrayHandle const second(id);
        EXPECT_EQ(references(id), 3U);
        EXPECT_EQ(VL_ArrayServer.handleCount(), 2U);
    }
    EXPECT_EQ(references(id), 1U);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, copiesOfAHandleShareItsRecord) {
    ArrayId id = makeArray();
    {
        auto first = std::make_unique<ArrayHandle>(id);
        ArrayHandle const copy(*first);
        EXPECT_EQ(VL_ArrayServer.handleCount(), 1U);
        EXPECT_EQ(references(id), 2U) << "copies are counted in the handle record, not in the array";
        first.reset();
        EXPECT_EQ(copy.resolve(), VL_ArrayServer.resolve(id));
        EXPECT_EQ(references(id), 2U);
    }
    EXPECT_EQ(references(id), 1U);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, anArrayLivesUntilItsLastHandleIsGone) {
    ArrayId id = makeArray();
    ArrayId const name = id;
    {
        ArrayHandle const handle(id);
        EXPECT_TRUE(VL_ArrayServer.release(id));
        ASSERT_TRUE(handle.isHolding());
        EXPECT_EQ(handle.resolve()->as<int>()[1], 2);
        EXPECT_EQ(references(name), 1U);
    }
    EXPECT_EQ(VL_ArrayServer.resolve(name), nullptr);
}

TEST_F(ArrayServer_test, aHandleEndsAsNoHandle) {
    ArrayId id = makeArray();
    alignas(ArrayHandle) unsigned char memory[sizeof(ArrayHandle)];
    auto* const handle = new (memory) ArrayHandle(id);
    unsigned int const volatile* const index = reinterpret_cast<unsigned int const volatile*>(memory);
    EXPECT_NE(*index, 0xFFFFFFFFU);
    VL_ArrayServer.release(id);
    ArrayHandle* const moved = handle;
    ArrayHandle taken(std::move(*moved));
    EXPECT_EQ(*index, 0xFFFFFFFFU);
    moved->~ArrayHandle();
    EXPECT_TRUE(taken.isHolding());
}

TEST_F(ArrayServer_test, assigningLetsGoOfTheFormerArray) {
    ArrayId first = VL_ArrayServer.create(Array<int>{1});
    ArrayId second = VL_ArrayServer.create(Array<int>{2});
    {
        ArrayHandle handle(first);
        handle = ArrayHandle(second);
        EXPECT_EQ(references(first), 1U);
        EXPECT_EQ(references(second), 2U);
        EXPECT_EQ(handle.resolve()->as<int>()[0], 2);

        ArrayHandle const other(first);
        handle = other;
        EXPECT_EQ(references(first), 2U);
        EXPECT_EQ(references(second), 1U);
        EXPECT_EQ(handle.resolve(), other.resolve());

        ArrayHandle const& same = handle;
        handle = same;
        EXPECT_EQ(handle.resolve()->as<int>()[0], 1);
        EXPECT_EQ(references(first), 2U);

        handle = ArrayHandle();
        EXPECT_FALSE(handle.isHolding());
    }
    VL_ArrayServer.release(first);
    VL_ArrayServer.release(second);
}

TEST_F(ArrayServer_test, copiesBeyondTheCountOfARecordGoOnWithAnother) {
    ArrayId id = makeArray();
    {
        ArrayHandle const handle(id);
        std::vector<ArrayHandle> const copies(MOST_REFERENCES - 1, handle);
        EXPECT_EQ(VL_ArrayServer.handleCount(), 1U);
        EXPECT_EQ(references(id), 2U);
        {
            ArrayHandle const beyond(handle);
            EXPECT_TRUE(beyond.isHolding());
            EXPECT_EQ(VL_ArrayServer.handleCount(), 2U);
            EXPECT_EQ(references(id), 3U);
        }
        EXPECT_EQ(VL_ArrayServer.handleCount(), 1U);
        EXPECT_EQ(references(id), 2U);
        EXPECT_EQ(copies.back().resolve(), VL_ArrayServer.resolve(id));
    }
    EXPECT_EQ(references(id), 1U);
    VL_ArrayServer.release(id);
}

TEST_F(ArrayServer_test, aHandleOutlivesAnArrayThatWasDestroyedUnderIt) {
    ArrayId other = makeArray();
    ArrayId id = makeArray();
    {
        ArrayHandle const handle(id);
        VL_ArrayServer.destroy_typeable(id);
        EXPECT_FALSE(handle.isHolding());
        EXPECT_EQ(handle.resolve(), nullptr);
    }
    EXPECT_EQ(VL_ArrayServer.arrayCount(), 1U);
    EXPECT_EQ(VL_ArrayServer.handleCount(), 0U);
    VL_ArrayServer.release(other);
}

}  // namespace
}  // namespace vellum

// == Large pages ==

TEST(preferLargePages, theContentStays) {
    constexpr std::size_t COUNT = 3'000'000;
    std::vector<unsigned int> values(COUNT);
    std::iota(values.begin(), values.end(), 7U);
    std::vector<unsigned int> const before = values;
    vellum::preferLargePages(values.data(), COUNT * sizeof(unsigned int));
    vellum::preferLargePages(values.data() + 1, COUNT * sizeof(unsigned int) - 6);
    vellum::preferLargePages(values.data(), 100);
    vellum::preferLargePages(nullptr, 0);
    EXPECT_TRUE(values == before);
}
