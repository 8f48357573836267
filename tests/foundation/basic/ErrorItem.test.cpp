#include "foundation/basic/ErrorItem.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vellum {
namespace {

TEST(ErrorItem_test, membersFollowEachOtherInOrder) {
    ErrorItem const item{};
    auto const offset = [&item](void const* const member) {
        return static_cast<unsigned char const*>(member) - reinterpret_cast<unsigned char const*>(&item);
    };
    EXPECT_EQ(offset(&item.categoryFlags), 0);
    EXPECT_EQ(offset(&item.libraryFlags), 4);
    EXPECT_EQ(offset(&item.value), 8);
    EXPECT_EQ(offset(&item.message), static_cast<std::ptrdiff_t>(8 + sizeof(void*)));
    EXPECT_EQ(sizeof(item.value), 4U);
    EXPECT_EQ(sizeof(item.categoryFlags), 4U);
    EXPECT_EQ(sizeof(item.libraryFlags), 4U);
    static_assert(std::is_same_v<decltype(item.message), VL_String>);
}

TEST(ErrorItem_test, categoryFlagsHaveTheirValues) {
    EXPECT_EQ(EICF_TOO_OLD, 1U);
    EXPECT_EQ(EICF_INFO, 2U);
    EXPECT_EQ(EICF_WARNING, 4U);
    EXPECT_EQ(EICF_RECOVERABLE_ERROR, 8U);
    EXPECT_EQ(EICF_CRITICAL_ERROR, 16U);
}

TEST(ErrorItem_test, libraryFlagsHaveTheirValues) {
    EXPECT_EQ(EILF_TOO_OLD, 1U);
    EXPECT_EQ(EILF_BASICLIB, 2U);
}

TEST(ErrorItem_test, theItemForErrorsTooOldIsBuiltWithTheLibrary) {
    EXPECT_EQ(ERROR_TOO_OLD.categoryFlags, 1U);
    EXPECT_EQ(ERROR_TOO_OLD.libraryFlags, 1U);
    EXPECT_EQ(ERROR_TOO_OLD.value, 0);
    EXPECT_STREQ(ERROR_TOO_OLD.message.c_str(), "Error not in list because too old");
    EXPECT_EQ(ERROR_TOO_OLD.message.size(), 34U);
}

TEST(ErrorItem_test, anItemOwnsItsMessage) {
    VL_String text("the file is damaged");
    ErrorItem const item{EICF_CRITICAL_ERROR, EILF_BASICLIB, 3, text};
    text.data()[0] = 'X';
    ErrorItem const copy(item);
    EXPECT_STREQ(item.message.c_str(), "the file is damaged");
    EXPECT_NE(copy.message.data(), item.message.data());
}

}  // namespace
}  // namespace vellum
