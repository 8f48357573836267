#include "foundation/geometry/Obb3.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vellum {
namespace {

Obb3<float> uprightBox() {
    return {{1, 0, 0}, 1, {0, 1, 0}, 2, {0, 0, 1}, 3, {0, 0, 0}};
}

template <class T>
Vector3<T> vertexOf(Obb3<T> const& box, unsigned int const& index) {
    Vector3<T> vertex{99, 99, 99};
    box.getVertex(index, vertex);
    return vertex;
}

TEST(Obb3_test, vertexFiveOfAnUprightBox) {
    Vector3<float> const vertex = vertexOf(uprightBox(), 5);
    EXPECT_EQ(vertex.x, 1.0F);
    EXPECT_EQ(vertex.y, -2.0F);
    EXPECT_EQ(vertex.z, 3.0F);
}

TEST(Obb3_test, everyBitOfTheIndexChoosesASide) {
    for (unsigned int index = 0; index < 8; ++index) {
        Vector3<float> const vertex = vertexOf(uprightBox(), index);
        EXPECT_EQ(vertex.x, (index & 1U) != 0 ? 1.0F : -1.0F) << "vertex " << index;
        EXPECT_EQ(vertex.y, (index & 2U) != 0 ? 2.0F : -2.0F) << "vertex " << index;
        EXPECT_EQ(vertex.z, (index & 4U) != 0 ? 3.0F : -3.0F) << "vertex " << index;
    }
}

TEST(Obb3_test, higherBitsOfTheIndexAreIgnored) {
    for (unsigned int index = 0; index < 8; ++index) {
        Vector3<float> const plain = vertexOf(uprightBox(), index);
        for (unsigned int const high : {8U, 16U, 0x80000000U, 0xFFFFFFF8U}) {
            Vector3<float> const vertex = vertexOf(uprightBox(), index | high);
            EXPECT_EQ(vertex.x, plain.x);
            EXPECT_EQ(vertex.y, plain.y);
            EXPECT_EQ(vertex.z, plain.z);
        }
    }
}

TEST(Obb3_test, anOrientedBoxIsMovedAndTurned) {
    float const s = std::sqrt(0.5F);
    Obb3<float> const box{{s, s, 0}, 2, {-s, s, 0}, 1, {0, 0, 1}, 4, {10, 20, 30}};
    Vector3<float> const vertex = vertexOf(box, 3);
    // The sum in its order, each step rounded: center + e0, + e1, - e2.
    EXPECT_EQ(vertex.x, (10.0F + s * 2.0F) + -s * 1.0F);
    EXPECT_EQ(vertex.y, (20.0F + s * 2.0F) + s * 1.0F);
    EXPECT_EQ(vertex.z, (30.0F + 0.0F) + 0.0F - 4.0F);
}

TEST(Obb3_test, theVertexMayBeAMemberOfTheBox) {
    Obb3<float> box = uprightBox();
    box.getVertex(7, box.centre);
    EXPECT_EQ(box.centre.x, 1.0F);
    EXPECT_EQ(box.centre.y, 2.0F);
    EXPECT_EQ(box.centre.z, 3.0F);
}

TEST(Obb3_test, doublesGiveTheSameCorners) {
    Obb3<double> const box{{1, 0, 0}, 1, {0, 1, 0}, 2, {0, 0, 1}, 3, {0, 0, 0}};
    Vector3<double> const vertex = vertexOf(box, 5);
    EXPECT_EQ(vertex.x, 1.0);
    EXPECT_EQ(vertex.y, -2.0);
    EXPECT_EQ(vertex.z, 3.0);
}

}  // namespace
}  // namespace vellum
