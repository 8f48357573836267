#include "foundation/raster/Core_RL.h"

#include "foundation/raster/Camera_RL.h"
#include "tests/foundation/raster/Recording_RL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <ostream>
#include <tuple>

namespace vellum {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<std::string>;
using Triangles = Array<Tuple3<unsigned int>>;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

class Core_RL_test : public testing::Test {
protected:
    // The calls recorded since the last request.
    Calls taken() { return layer.takeCalls(); }

    Recording_RL layer;
};

class Recording_camera : public Camera_RL {
public:
    void updateModelMatrix() override { calls.emplace_back("model"); }
    void updateProjectionMatrix() override { calls.emplace_back("projection"); }
    void updateProjectionMatrixZBias() override { calls.emplace_back("biased projection"); }

    Calls calls;
};

// == Construction ==

TEST_F(Core_RL_test, constructionTouchesNoDrawingSystem) {
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(Core_RL_test, theBaseDoesNotMakeItselfTheGlobalLayer) {
    EXPECT_NE(VL_Raster, &layer);
}

TEST_F(Core_RL_test, everyStackStartsWithTheStateOfANewContext) {
    EXPECT_EQ(layer.currentColor(), (Color4<float>{1, 1, 1, 1}));
    EXPECT_EQ(layer.currentBlending(), BLENDING_OFF);
    EXPECT_FALSE(layer.currentCulling().enabled);
    EXPECT_TRUE(layer.currentCulling().back);
    EXPECT_EQ(layer.currentDepthTest().mode, 1U);
    EXPECT_TRUE(layer.currentDepthTest().write);
    EXPECT_EQ(layer.currentFillingFront(), FILLING_SOLID);
    EXPECT_EQ(layer.currentFillingBack(), FILLING_SOLID);
    EXPECT_EQ(layer.currentLineWidth(), 1.0F);
    EXPECT_EQ(layer.currentPointSize(), 1.0F);
}

TEST_F(Core_RL_test, theLockWordIsTheFirstDataMember) {
    auto const* const start = reinterpret_cast<unsigned char const*>(static_cast<Core_RL*>(&layer));
    EXPECT_EQ(static_cast<unsigned char const*>(layer.lockWord()) - start,
              static_cast<std::ptrdiff_t>(sizeof(void*)))
        << "only the pointer to the virtual table stands before it";
}

// == Color stack ==

TEST_F(Core_RL_test, aPushedColorIsAppliedThroughTheSetter) {
    layer.pushColor({0.5F, 0, 0, 1});
    EXPECT_THAT(taken(), ElementsAre("setColor 0.5,0,0,1"));
    EXPECT_EQ(layer.currentColor(), (Color4<float>{0.5F, 0, 0, 1}));
}

TEST_F(Core_RL_test, poppingRestoresAndAppliesTheFormerColor) {
    layer.pushColor({0.5F, 0, 0, 1});
    layer.pushColor({0, 0.5F, 0, 1});
    layer.pushColor({0, 0, 0.5F, 1});
    layer.takeCalls();
    layer.popColor(1);
    EXPECT_THAT(taken(), ElementsAre("setColor 0,0.5,0,1"));
    layer.popColor(2);
    EXPECT_THAT(taken(), ElementsAre("setColor 1,1,1,1"));
}

TEST_F(Core_RL_test, setColorReplacesTheTopOfTheStackOnly) {
    layer.pushColor({0.5F, 0, 0, 1});
    layer.setColor({0.25F, 0, 0, 1});
    EXPECT_EQ(layer.currentColor(), (Color4<float>{0.25F, 0, 0, 1}));
    layer.takeCalls();
    layer.popColor(1);
    EXPECT_THAT(taken(), ElementsAre("setColor 1,1,1,1"));
}

TEST_F(Core_RL_test, poppingColorsBeyondTheBottomAppliesTheBottom) {
    layer.setColor({0.25F, 0, 0, 1});
    layer.pushColor({0.5F, 0, 0, 1});
    layer.takeCalls();
    for (unsigned int const count : {5U, 1U, 0xFFFFFFFFU, 0U}) {
        layer.popColor(count);
        EXPECT_THAT(taken(), ElementsAre("setColor 0.25,0,0,1")) << "popColor(" << count << ")";
        EXPECT_EQ(layer.currentColor(), (Color4<float>{0.25F, 0, 0, 1}));
    }
}

TEST_F(Core_RL_test, theCurrentColorMayBePushed) {
    layer.setColor({0.25F, 0, 0, 1});
    for (int i = 0; i < 50; ++i) {  // the stack's storage moves several times
        layer.pushColor(layer.currentColor());
    }
    EXPECT_EQ(layer.currentColor(), (Color4<float>{0.25F, 0, 0, 1}));
    layer.takeCalls();
    layer.popColor(50);
    EXPECT_THAT(taken(), ElementsAre("setColor 0.25,0,0,1"));
}

// == The other stacks ==

// One stack of render state: the pushed states and the call that each of them causes.
struct Stack {
    char const* name;
    void (*pushFirst)(Core_RL&);
    void (*pushSecond)(Core_RL&);
    void (*pushCurrent)(Core_RL&);
    void (*pop)(Core_RL&);
    void (*set)(Core_RL&);  // sets the second state without a push
    char const* bottomCall;
    char const* firstCall;
    char const* secondCall;
};

// Without it the names of the tests would contain addresses, which differ in every run.
void PrintTo(Stack const& stack, std::ostream* out) {
    *out << stack.name;
}

class Core_RL_stack_test : public Core_RL_test, public testing::WithParamInterface<Stack> {};

TEST_P(Core_RL_stack_test, aPushAppliesThroughTheSetter) {
    GetParam().pushFirst(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().firstCall));
    GetParam().pushSecond(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().secondCall));
}

TEST_P(Core_RL_stack_test, aPopRestoresAndApplies) {
    GetParam().pushFirst(layer);
    GetParam().pushSecond(layer);
    layer.takeCalls();
    GetParam().pop(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().firstCall));
    GetParam().pop(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().bottomCall));
}

TEST_P(Core_RL_stack_test, aPopWithoutAPushAppliesTheBottomEntry) {
    for (int i = 0; i < 10; ++i) {
        GetParam().pop(layer);
        EXPECT_THAT(taken(), ElementsAre(GetParam().bottomCall));
    }
    // The stack is still usable.
    GetParam().pushFirst(layer);
    GetParam().pushSecond(layer);
    layer.takeCalls();
    GetParam().pop(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().firstCall));
}

TEST_P(Core_RL_stack_test, aSetterThatKeepsNothingLeavesTheStackAlone) {
    GetParam().pushFirst(layer);
    GetParam().set(layer);
    GetParam().pushSecond(layer);
    layer.takeCalls();
    GetParam().pop(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().firstCall));
}

TEST_P(Core_RL_stack_test, theCurrentStateMayBePushed) {
    GetParam().pushFirst(layer);
    layer.takeCalls();
    for (int i = 0; i < 50; ++i) {
        GetParam().pushCurrent(layer);
        ASSERT_THAT(taken(), ElementsAre(GetParam().firstCall));
    }
    for (int i = 0; i < 50; ++i) {
        GetParam().pop(layer);
        ASSERT_THAT(taken(), ElementsAre(GetParam().firstCall));
    }
    GetParam().pop(layer);
    EXPECT_THAT(taken(), ElementsAre(GetParam().bottomCall));
}

Stack const STACKS[] = {
    {"blending", [](Core_RL& l) { l.pushBlending(BLENDING_ALPHA); },
     [](Core_RL& l) { l.pushBlending(BlendingMode(5)); },
     [](Core_RL& l) { l.pushBlending(l.currentBlending()); }, [](Core_RL& l) { l.popBlending(); },
     [](Core_RL& l) { l.setBlending(BlendingMode(5)); }, "setBlending 0", "setBlending 1", "setBlending 5"},
    {"culling",
     [](Core_RL& l) {
         l.pushCulling({true, true});
     },
     [](Core_RL& l) {
         l.pushCulling({true, false});
     },
     [](Core_RL& l) { l.pushCulling(l.currentCulling()); }, [](Core_RL& l) { l.popCulling(); },
     [](Core_RL& l) {
         l.setCulling({true, false});
     },
     "setCulling 0 1", "setCulling 1 1", "setCulling 1 0"},
    {"depthTest",
     [](Core_RL& l) {
         l.pushDepthTest({2, true});
     },
     [](Core_RL& l) {
         l.pushDepthTest({9, false});
     },
     [](Core_RL& l) { l.pushDepthTest(l.currentDepthTest()); }, [](Core_RL& l) { l.popDepthTest(); },
     [](Core_RL& l) {
         l.setDepthTest({9, false});
     },
     "setDepthTest 1 1", "setDepthTest 2 1", "setDepthTest 9 0"},
    {"fillingFront", [](Core_RL& l) { l.pushFillingFront(FILLING_LINES); },
     [](Core_RL& l) { l.pushFillingFront(FillingMode(3)); },
     [](Core_RL& l) { l.pushFillingFront(l.currentFillingFront()); }, [](Core_RL& l) { l.popFillingFront(); },
     [](Core_RL& l) { l.setFillingFront(FillingMode(3)); }, "setFillingFront 0", "setFillingFront 1",
     "setFillingFront 3"},
    {"fillingBack", [](Core_RL& l) { l.pushFillingBack(FILLING_LINES); },
     [](Core_RL& l) { l.pushFillingBack(FillingMode(3)); },
     [](Core_RL& l) { l.pushFillingBack(l.currentFillingBack()); }, [](Core_RL& l) { l.popFillingBack(); },
     [](Core_RL& l) { l.setFillingBack(FillingMode(3)); }, "setFillingBack 0", "setFillingBack 1",
     "setFillingBack 3"},
    {"lineWidth", [](Core_RL& l) { l.pushLineWidth(2.5F); }, [](Core_RL& l) { l.pushLineWidth(7); },
     [](Core_RL& l) { l.pushLineWidth(l.currentLineWidth()); }, [](Core_RL& l) { l.popLineWidth(); },
     [](Core_RL& l) { l.setLineWidth(7); }, "setLineWidth 1", "setLineWidth 2.5", "setLineWidth 7"},
};

INSTANTIATE_TEST_SUITE_P(stacks, Core_RL_stack_test, testing::ValuesIn(STACKS),
                         [](auto const& info) { return std::string(info.param.name); });

TEST_F(Core_RL_test, aSetterThatPassesAnotherValueOnDoesNotChangeWhatPopsApply) {
    class Scaling : public Recording_RL {
    public:
        void setLineWidth(float const& width) override {
            Recording_RL::setLineWidth(3 * width);
            lineWidthStack.back() = 3 * width;  // like the setter of a drawing system
        }
    } scaling;
    for (int i = 0; i < 3; ++i) {
        scaling.pushLineWidth(2);
        EXPECT_EQ(scaling.currentLineWidth(), 2);
        scaling.pushLineWidth(scaling.currentLineWidth());
        scaling.popLineWidth();
        scaling.popLineWidth();
        EXPECT_THAT(scaling.takeCalls(),
                    ElementsAre("setLineWidth 6", "setLineWidth 6", "setLineWidth 6", "setLineWidth 3"));
    }
    EXPECT_EQ(scaling.currentLineWidth(), 1);
}

TEST_F(Core_RL_test, theStacksAreIndependent) {
    layer.pushFillingFront(FILLING_LINES);
    layer.pushBlending(BLENDING_ALPHA);
    layer.takeCalls();
    layer.popFillingBack();
    layer.popColor(1);
    EXPECT_THAT(taken(), ElementsAre("setFillingBack 0", "setColor 1,1,1,1"));
    EXPECT_EQ(layer.currentFillingFront(), FILLING_LINES);
    EXPECT_EQ(layer.currentBlending(), BLENDING_ALPHA);
}

// == Camera and point state ==

TEST_F(Core_RL_test, theCameraIsStoredAndNotTouched) {
    EXPECT_EQ(layer.getCamera(), nullptr);
    Recording_camera camera;
    layer.setCamera(&camera);
    EXPECT_EQ(layer.getCamera(), &camera);
    EXPECT_THAT(camera.calls, IsEmpty());
    layer.setCamera(nullptr);
    EXPECT_EQ(layer.getCamera(), nullptr);
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(Core_RL_test, zBiasLoadsTheCamerasProjection) {
    Recording_camera camera;
    layer.setCamera(&camera);
    layer.setZBias(true);
    EXPECT_THAT(camera.calls, ElementsAre("biased projection"));
    EXPECT_TRUE(layer.zBias());
    layer.setZBias(false);
    EXPECT_THAT(camera.calls, ElementsAre("biased projection", "projection"));
    EXPECT_FALSE(layer.zBias());
}

TEST_F(Core_RL_test, zBiasWithoutACameraIsOnlyRemembered) {
    layer.setZBias(true);
    EXPECT_TRUE(layer.zBias());
    EXPECT_THAT(taken(), IsEmpty());
    layer.setZBias(false);
    EXPECT_FALSE(layer.zBias());
}

TEST_F(Core_RL_test, settingThePointSizeGivesTheFormerOne) {
    EXPECT_EQ(layer.setPointSize(5), 1.0F);
    EXPECT_EQ(layer.setPointSize(2.5F), 5.0F);
    EXPECT_EQ(layer.currentPointSize(), 2.5F);
    float const& own = layer.currentPointSize();
    EXPECT_EQ(layer.setPointSize(own), 2.5F);
    EXPECT_EQ(layer.currentPointSize(), 2.5F);
}

TEST_F(Core_RL_test, theArrowHeadLengthIsRemembered) {
    layer.setArrowHeadLength(0.75F);
    EXPECT_EQ(layer.arrowHeadLength(), 0.75F);
    EXPECT_THAT(taken(), IsEmpty());
}

// == Drawings under a picking name ==

TEST_F(Core_RL_test, anArrowLoadsItsNameFirst) {
    layer.renderArrow3({1, 2, 3}, {4, 5, 6}, 0.5F, 42, true);
    EXPECT_THAT(taken(), ElementsAre("loadName 42", "renderArrow3 1,2,3 4,5,6 0.5 1"));
    layer.renderArrow3({1, 2, 3}, {4, 5, 6}, 0.5F, 42, false);
    EXPECT_THAT(taken(), ElementsAre("loadName 42", "renderArrow3 1,2,3 4,5,6 0.5 0"));
}

TEST_F(Core_RL_test, aFlatArrowLoadsItsNameFirst) {
    layer.renderArrow2({1, 2}, {3, 4}, 0.5F, 43);
    EXPECT_THAT(taken(), ElementsAre("loadName 43", "renderArrow2 1,2 3,4 0.5"));
}

TEST_F(Core_RL_test, aPointLoadsItsNameFirst) {
    layer.renderPoint3({1, 2, 3}, 44);
    EXPECT_THAT(taken(), ElementsAre("loadName 44", "renderPoint3 1,2,3"));
}

TEST_F(Core_RL_test, aPointInsideABlockLoadsItsNameFirst) {
    layer.renderPoint3_scoped({1, 2, 3}, 45);
    EXPECT_THAT(taken(), ElementsAre("loadName 45", "renderPoint3_scoped 1,2,3"));
}

TEST_F(Core_RL_test, aFlatPointLoadsItsNameFirst) {
    layer.renderPoint2({1, 2}, 0xFFFFFFFF);
    EXPECT_THAT(taken(), ElementsAre("loadName 4294967295", "renderPoint2 1,2"));
}

// == Boxes ==

TEST_F(Core_RL_test, aSquareIsAFilledBoxAboutItsCenter) {
    layer.renderBox2({1, 2}, 0.5F);
    EXPECT_THAT(taken(), ElementsAre("renderBox2f 0.5,1.5 1.5,2.5 0"));
}

// == Closed solids ==

using Position = std::tuple<float, float, float>;

Position positionOf(Vector3<float> const& v) {
    return {v.x + 0.0F, v.y + 0.0F, v.z + 0.0F};  // one zero, not two
}

// Each edge must occur once in either direction: the surface is closed and consistently oriented.
void expectClosed(std::vector<Recording_RL::Triangle> const& triangles) {
    std::map<std::pair<Position, Position>, int> edges;
    for (Recording_RL::Triangle const& t : triangles) {
        for (int i = 0; i < 3; ++i) {
            ++edges[{positionOf(t.corners[i]), positionOf(t.corners[(i + 1) % 3])}];
        }
    }
    for (auto const& [edge, count] : edges) {
        EXPECT_EQ(count, 1) << "an edge is used twice in the same direction";
        EXPECT_EQ(edges.count({edge.second, edge.first}), 1U) << "an edge has no neighbor";
    }
}

// Counter-clockwise seen from outside.
void expectOutward(std::vector<Recording_RL::Triangle> const& triangles, Vector3<float> const& center) {
    for (Recording_RL::Triangle const& t : triangles) {
        Vector3<float> const normal = cross(t.corners[1] - t.corners[0], t.corners[2] - t.corners[0]);
        Vector3<float> const outward = (t.corners[0] + t.corners[1] + t.corners[2]) * (1.0F / 3.0F) - center;
        EXPECT_GT(length(normal), 0.0F) << "a triangle has no area";
        EXPECT_GT(dot(normal, outward), 0.0F) << "a triangle faces inward";
    }
}

TEST_F(Core_RL_test, aSphereIsClosedAndFacesOutward) {
    layer.renderSphere({0, 0, 0}, 1);
    // 32 meridians, 16 parallels; the poles' quads are single triangles.
    EXPECT_EQ(layer.triangles.size(), 32U * 15U * 2U);
    expectClosed(layer.triangles);
    expectOutward(layer.triangles, {0, 0, 0});
}

TEST_F(Core_RL_test, aSphereHasItsRadiusAndSmoothNormals) {
    Vector3<float> const center{1, -2, 3};
    float const radius = 2.5F;
    layer.renderSphere(center, radius);
    ASSERT_FALSE(layer.triangles.empty());
    expectOutward(layer.triangles, center);
    for (Recording_RL::Triangle const& t : layer.triangles) {
        ASSERT_TRUE(t.hasNormals);
        for (int i = 0; i < 3; ++i) {
            Vector3<float> const arm = t.corners[i] - center;
            EXPECT_NEAR(length(arm), radius, 1e-5F);
            EXPECT_NEAR(length(t.normals[i]), 1.0F, 1e-6F);
            EXPECT_NEAR(dot(arm, t.normals[i]), radius, 1e-5F);
        }
    }
}

TEST_F(Core_RL_test, aSphereIsMadeOfShadedTrianglesAlone) {
    layer.renderSphere({0, 0, 0}, 1);
    EXPECT_EQ(layer.calls.size(), layer.triangles.size());
}

TEST_F(Core_RL_test, aTetrahedronIsRegularClosedAndFacesOutward) {
    Vector3<float> const center{1, 2, 3};
    layer.renderTetrahedron(center, 2);
    ASSERT_EQ(layer.triangles.size(), 4U);
    expectClosed(layer.triangles);
    expectOutward(layer.triangles, center);
    bool hasTop = false;
    for (Recording_RL::Triangle const& t : layer.triangles) {
        EXPECT_FALSE(t.hasNormals);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(length(t.corners[i] - center), 2.0F, 1e-5F);
            // The edge of a regular tetrahedron is sqrt(8/3) circumradii.
            EXPECT_NEAR(length(t.corners[i] - t.corners[(i + 1) % 3]), 2.0F * std::sqrt(8.0F / 3.0F), 1e-5F);
            hasTop = hasTop || positionOf(t.corners[i]) == Position{1, 4, 3};
        }
    }
    EXPECT_TRUE(hasTop) << "no corner along +Y";
}

TEST_F(Core_RL_test, aTetrahedronInDoublesIsTheSameInFloats) {
    layer.renderTetrahedron(Vector3<float>{0.1F, 0.2F, 0.3F}, 0.7F);
    Calls const expected = taken();
    layer.renderTetrahedron(Vector3<double>{0.1, 0.2, 0.3}, 0.7);
    EXPECT_EQ(taken(), expected);
}

TEST_F(Core_RL_test, aTetrahedronInDoublesGoesToTheVirtualOneInFloats) {
    class Overriding : public Recording_RL {
    public:
        using Recording_RL::renderTetrahedron;
        void renderTetrahedron(Vector3<float> const& center, float const& size) override {
            EXPECT_EQ(center.y, 0.2F);
            EXPECT_EQ(size, 0.7F);
            ++count;
        }
        int count = 0;
    };
    Overriding overriding;
    static_cast<Core_RL&>(overriding).renderTetrahedron(Vector3<double>{0.1, 0.2, 0.3}, 0.7);
    EXPECT_EQ(overriding.count, 1);
}

// == Lattice cells and plane systems ==

template <class T>
TricubicVoxel<T> voxel() {
    TricubicVoxel<T> cell{};
    cell.origin = {1, 2, 3};
    cell.step = {2, 4, 8};
    for (int i = 0; i < 64; ++i) {
        cell.samples[i] = static_cast<T>(i) / 64;
    }
    return cell;
}

TEST_F(Core_RL_test, aTricubicVoxelIsItsCellAndItsSamples) {
    layer.setColor({0.25F, 0, 0, 1});
    layer.takeCalls();
    layer.renderTricubicVoxel(voxel<float>());
    Calls const calls = taken();
    ASSERT_EQ(calls.size(), 1U + 1U + 1U + 64U * 2U + 1U + 1U);
    EXPECT_EQ(calls[0], "renderBox3f 1,2,3 3,6,11 1");
    EXPECT_EQ(calls[2], "renderPoint3_Begin");
    // Samples (0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 1) and (3, 3, 3).
    std::map<int, std::string> const points{{0, "renderPoint3_scoped -1,-2,-5"},
                                            {1, "renderPoint3_scoped 1,-2,-5"},
                                            {4, "renderPoint3_scoped -1,2,-5"},
                                            {16, "renderPoint3_scoped -1,-2,3"},
                                            {63, "renderPoint3_scoped 5,10,19"}};
    for (auto const& [number, point] : points) {
        EXPECT_EQ(calls[static_cast<std::size_t>(3 + 2 * number + 1)], point) << "sample " << number;
    }
    EXPECT_EQ(calls[3 + 2 * 32], "setColor 0.5,0.5,0.5,1");
    EXPECT_EQ(calls[calls.size() - 2], "renderPoint3_End");
    EXPECT_EQ(calls.back(), "setColor 0.25,0,0,1") << "the color is restored";
}

TEST_F(Core_RL_test, aTricubicVoxelInDoublesLooksTheSame) {
    layer.renderTricubicVoxel(voxel<float>());
    Calls const expected = taken();
    layer.renderTricubicVoxel(voxel<double>());
    EXPECT_EQ(taken(), expected);
}

TEST_F(Core_RL_test, aPlaneSystemIsItsPlanes) {
    Plane3System<float> system;
    layer.renderPlane3System(system, 2, 8);
    EXPECT_THAT(taken(), IsEmpty());
    system.planes.pushBack({{1, 0, 0}, 5});
    system.planes.pushBack({{0, 1, 0}, -3});
    layer.renderPlane3System(system, 2, 8);
    EXPECT_THAT(taken(), ElementsAre("renderPlane3 1,0,0 5 2 8", "renderPlane3 0,1,0 -3 2 8"));

    Plane3System<double> doubles;
    doubles.planes.pushBack({{0, 0, 1}, 0.5});
    layer.renderPlane3System(doubles, 2, 8);
    EXPECT_THAT(taken(), ElementsAre("renderPlane3 0,0,1 0.5 2 8"));
}

// == Trees ==

using Node = GeometryNode<Box3<float>>;
using Tree = GeometryTree<Node>;

// A box that identifies its node.
Node node(float const& number, unsigned int const& firstChild, unsigned int const& childCount) {
    return {{{number, 0, 0}, {number, 1, 1}}, firstChild, childCount};
}

std::string drawn(int const& number) {
    return "renderBox3f " + std::to_string(number) + ",0,0 " + std::to_string(number) + ",1,1 1";
}

TEST_F(Core_RL_test, aTreeIsDrawnFromTheRootDown) {
    //        0
    //      1   2
    //     3 4   5
    Tree tree;
    tree.nodes = {node(0, 1, 2), node(1, 3, 2), node(2, 5, 1), node(3, 0, 0), node(4, 0, 0), node(5, 0, 0)};
    layer.renderTree(tree);
    EXPECT_THAT(taken(), ElementsAre(drawn(0), drawn(1), drawn(3), drawn(4), drawn(2), drawn(5)));
}

TEST_F(Core_RL_test, anEmptyTreeDrawsNothing) {
    Tree tree;
    layer.renderTree(tree);
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(Core_RL_test, nodesThatNoParentNamesAreNotDrawn) {
    Tree tree;
    tree.nodes = {node(0, 2, 1), node(1, 0, 0), node(2, 0, 0)};
    layer.renderTree(tree);
    EXPECT_THAT(taken(), ElementsAre(drawn(0), drawn(2)));
}

TEST_F(Core_RL_test, childrenBeyondTheEndOfATreeAreNotDrawn) {
    Tree tree;
    tree.nodes = {node(0, 1, 0xFFFFFFFF), node(1, 7, 3), node(2, 0xFFFFFFFF, 0xFFFFFFFF)};
    layer.renderTree(tree);
    EXPECT_THAT(taken(), ElementsAre(drawn(0), drawn(1), drawn(2)));
}

TEST_F(Core_RL_test, aTreeThatLeadsInCirclesComesToAnEnd) {
    Tree tree;
    tree.nodes = {node(0, 0, 3), node(1, 0, 3), node(2, 1, 2)};
    layer.renderTree(tree);
    EXPECT_THAT(taken(), testing::UnorderedElementsAre(drawn(0), drawn(1), drawn(2)));
}

TEST_F(Core_RL_test, aNodeWithManyParentsIsDrawnOnce) {
    // Drawing a node once per path would take exponential time in this tree.
    Tree tree;
    for (unsigned int i = 0; i < 200; ++i) {
        tree.nodes.pushBack(node(static_cast<float>(i), i + 1, 2));
    }
    layer.renderTree(tree);
    EXPECT_EQ(taken().size(), 200U);
}

// == Triangle lists ==

Array<Vector3<float>> const CORNERS{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {3, 3, 0}};
Array<Vector3<double>> const CORNERS_AS_DOUBLES{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {3, 3, 0}};
Array<Vector3<float>> const NO_NORMALS;
Array<Color4<float>> const NO_COLORS;
Array<Vector3<float>> const NORMALS{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, -1}};
Array<Color4<float>> const COLORS{{0.5F, 0, 0, 1}, {0, 0.5F, 0, 1}, {0, 0, 0.5F, 1}, {1, 1, 1, 1}};

TEST_F(Core_RL_test, aPlainTriangleListIsOneBlock) {
    layer.render(CORNERS, Triangles{{0, 1, 2}, {2, 1, 3}});
    EXPECT_THAT(taken(), ElementsAre("begin 4", "renderTriangleOptimized 0,0,0 3,0,0 0,3,0",
                                     "renderTriangleOptimized 0,3,0 3,0,0 3,3,0", "end"));
}

TEST_F(Core_RL_test, aTriangleListWithoutNormalsAndColorsIsAPlainOne) {
    layer.render(CORNERS, Triangles{{0, 1, 2}});
    Calls const expected = taken();
    layer.render(CORNERS, Triangles{{0, 1, 2}}, NO_NORMALS, NO_COLORS);
    EXPECT_EQ(taken(), expected);
    layer.render(CORNERS_AS_DOUBLES, Triangles{{0, 1, 2}}, NO_NORMALS, NO_COLORS);
    EXPECT_EQ(taken(), expected);
}

TEST_F(Core_RL_test, aTriangleListWithNormalsIsShaded) {
    Calls const expected{"renderTriangle 0,0,0 3,0,0 0,3,0 1,0,0 0,1,0 0,0,1"};
    layer.render(CORNERS, Triangles{{0, 1, 2}}, NORMALS, NO_COLORS);
    EXPECT_EQ(taken(), expected);
    layer.render(CORNERS_AS_DOUBLES, Triangles{{0, 1, 2}}, NORMALS, NO_COLORS);
    EXPECT_EQ(taken(), expected);
}

TEST_F(Core_RL_test, colorsRunOverATriangleWithoutNormals) {
    layer.setColor({0.25F, 0, 0, 1});
    layer.takeCalls();
    Calls const expected{"setColor 0.25,0,0,1",
                         "begin 4",
                         "setColor 0.5,0,0,1",
                         "renderPoint3_scoped 0,0,0",
                         "setColor 0,0.5,0,1",
                         "renderPoint3_scoped 3,0,0",
                         "setColor 0,0,0.5,1",
                         "renderPoint3_scoped 0,3,0",
                         "end",
                         "setColor 0.25,0,0,1"};
    layer.render(CORNERS, Triangles{{0, 1, 2}}, NO_NORMALS, COLORS);
    EXPECT_EQ(taken(), expected);
    layer.render(CORNERS_AS_DOUBLES, Triangles{{0, 1, 2}}, NO_NORMALS, COLORS);
    EXPECT_EQ(taken(), expected);
    EXPECT_EQ(layer.currentColor(), (Color4<float>{0.25F, 0, 0, 1}));
}

TEST_F(Core_RL_test, aShadedTriangleTakesTheMeanColor) {
    layer.setColor({0.25F, 0, 0, 1});
    layer.takeCalls();
    Array<Color4<float>> const colors{{0.75F, 0, 0, 1}, {0, 1.5F, 0, 1}, {0, 0, 3, 1}};
    layer.render(CORNERS, Triangles{{0, 1, 2}}, NORMALS, colors);
    EXPECT_EQ(layer.currentColor(), (Color4<float>{0.25F, 0, 0, 1}));
    // The fourth vertex has no color, and no triangle uses it.
    EXPECT_THAT(taken(),
                ElementsAre("setColor 0.25,0,0,1", "setColor 0.25,0.5,1,1",
                            "renderTriangle 0,0,0 3,0,0 0,3,0 1,0,0 0,1,0 0,0,1", "setColor 0.25,0,0,1"));
}

TEST_F(Core_RL_test, trianglesBeyondTheVerticesAreLeftOut) {
    Triangles const triangles{{0, 1, 4}, {0xFFFFFFFF, 1, 2}, {0, 1, 2}, {0, 4, 1}};
    layer.render(CORNERS, triangles);
    EXPECT_THAT(taken(), ElementsAre("begin 4", "renderTriangleOptimized 0,0,0 3,0,0 0,3,0", "end"));
    layer.render(CORNERS, triangles, NORMALS, NO_COLORS);
    EXPECT_EQ(taken().size(), 1U);
    layer.render(CORNERS_AS_DOUBLES, triangles, NORMALS, COLORS);
    EXPECT_EQ(layer.triangles.size(), 2U);
}

TEST_F(Core_RL_test, trianglesBeyondTheNormalsOrColorsAreLeftOut) {
    Triangles const triangles{{1, 2, 3}, {0, 1, 2}};
    Array<Vector3<float>> const threeNormals{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    Array<Color4<float>> const threeColors{{1, 0, 0, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}};
    layer.render(CORNERS, triangles, threeNormals, NO_COLORS);
    EXPECT_THAT(taken(), ElementsAre("renderTriangle 0,0,0 3,0,0 0,3,0 1,0,0 0,1,0 0,0,1"));
    layer.render(CORNERS, triangles, NO_NORMALS, threeColors);
    EXPECT_EQ(taken().size(), 1U + 1U + 6U + 1U + 1U);
}

TEST_F(Core_RL_test, emptyTriangleListsDrawNothing) {
    layer.render(Array<Vector3<float>>(), Triangles{{0, 1, 2}});
    EXPECT_THAT(taken(), ElementsAre("begin 4", "end"));
    layer.render(CORNERS, Triangles(), NORMALS, NO_COLORS);
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(Core_RL_test, everyBlockIsClosed) {
    layer.render(CORNERS, Triangles{{9, 9, 9}}, NO_NORMALS, COLORS);
    Calls const calls = taken();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "begin 4"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "end"), 1);
}

// == Normals of triangle lists ==

TEST_F(Core_RL_test, normalsStandOnTheCentroids) {
    layer.renderNormals(CORNERS_AS_DOUBLES, Triangles{{0, 1, 2}, {0, 2, 1}}, 2.5F);
    EXPECT_THAT(taken(), ElementsAre("begin 1", "renderPoint3_scoped 1,1,0", "renderPoint3_scoped 1,1,2.5",
                                     "renderPoint3_scoped 1,1,0", "renderPoint3_scoped 1,1,-2.5", "end"));
}

TEST_F(Core_RL_test, normalsOfBadTrianglesAreLeftOut) {
    Array<Vector3<double>> vertices = CORNERS_AS_DOUBLES;
    vertices.pushBack({NOT_A_NUMBER, 0, 0});
    // Out of range, of area 0, NaN.
    layer.renderNormals(vertices, Triangles{{0, 1, 5}, {0, 0, 1}, {1, 1, 1}, {0, 1, 4}}, 1);
    EXPECT_THAT(taken(), ElementsAre("begin 1", "end"));
}

}  // namespace
}  // namespace vellum
