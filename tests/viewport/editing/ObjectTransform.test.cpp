#include "viewport/editing/ObjectTransform.h"

#include "tests/viewport/editing/edited_scene.h"
#include "viewport/editing/UndoStack.h"

#include <limits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

void expectNear(Point const& a, Point const& b, double slack = 1e-9) {
    EXPECT_NEAR(a.x, b.x, slack);
    EXPECT_NEAR(a.y, b.y, slack);
    EXPECT_NEAR(a.z, b.z, slack);
}

/// Where a point of the file comes to lie, in the file's axes and units.
Point movedInFile(Scene const& scene, ObjectTransform const& transform, Point const& p) {
    return scene.placeToFile(transformed(transform.toMatrix(scene, 0), scene.placeToScene(p)));
}

}  // namespace

TEST(Rotation, turnsAboutXThenYThenZ) {
    expectNear(Rotation::ofDegrees({90, 0, 0})(Point{0, 1, 0}), {0, 0, 1});
    expectNear(Rotation::ofDegrees({0, 90, 0})(Point{0, 0, 1}), {1, 0, 0});
    expectNear(Rotation::ofDegrees({0, 0, 90})(Point{1, 0, 0}), {0, 1, 0});
    // y goes to z by x, and to x by y.
    expectNear(Rotation::ofDegrees({90, 90, 0})(Point{0, 1, 0}), {1, 0, 0});
    // Then to y by z.
    expectNear(Rotation::ofDegrees({90, 90, 90})(Point{0, 1, 0}), {0, 1, 0});
}

TEST(Rotation, anglesGiveTheSameRotationAgain) {
    for (double x = -170; x <= 180; x += 50) {
        for (double y = -90; y <= 90; y += 30) {
            for (double z = -170; z <= 180; z += 50) {
                Rotation const rotation = Rotation::ofDegrees({x, y, z});
                Point const angles = rotation.toDegrees();
                Rotation const again = Rotation::ofDegrees(angles);
                for (Point const& v : {Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}}) {
                    expectNear(again(v), rotation(v), 1e-6);
                }
                if (std::abs(y) < 90) {
                    expectNear(angles, {x, y, z}, 1e-6);
                } else {
                    EXPECT_EQ(angles.z, 0);
                }
            }
        }
    }
}

TEST(Rotation, badNumbersTurnNothing) {
    constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Rotation::about({0, 0, 0}, 1), Rotation());
    EXPECT_EQ(Rotation::about({0, 0, 1}, NAN_VALUE), Rotation());
    EXPECT_EQ(Rotation::ofDegrees({NAN_VALUE, 0, 0}), Rotation());
}

TEST(ObjectTransform, scalesAlongItsOwnAxesThenTurnsThenMovesInAxesAndUnitsOfTheFile) {
    for (UpAxis const up :
         {UpAxis::X, UpAxis::Y, UpAxis::Z, UpAxis::MINUS_X, UpAxis::MINUS_Y, UpAxis::MINUS_Z}) {
        Scene const scene = sceneOfBox({10, 20, 30}, {2, 4, 6}, up);
        ObjectTransform transform;
        transform.scale = {3, 1, 1};
        transform.rotation = Rotation::ofDegrees({0, 0, 90});
        transform.translation = {100, 0, 5};
        expectNear(movedInFile(scene, transform, {10, 20, 30}), {110, 20, 35});
        expectNear(movedInFile(scene, transform, {11, 20, 30}), {110, 23, 35});
        expectNear(movedInFile(scene, transform, {10, 22, 33}), {108, 20, 38});
    }
}

TEST(ObjectTransform, identityIsExactlyTheIdentityMatrix) {
    Scene const scene = sceneOfBox({10, 20, 30}, {2, 4, 6}, UpAxis::Z);
    EXPECT_TRUE(ObjectTransform().isIdentity());
    Matrix4<double> const matrix = ObjectTransform().toMatrix(scene, 0);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(matrix.e[i], Matrix4<double>::identity().e[i]);
    }
}

TEST(ObjectTransform, tellsWhatCannotBeDrawn) {
    Scene const scene = sceneOfBox({0, 0, 0}, {2, 2, 2});
    ObjectTransform transform;
    EXPECT_TRUE(isDrawable(transform, scene, 0));
    transform.scale.y = 0;
    EXPECT_FALSE(transform.isValid());
    transform.scale.y = 1e-200;
    EXPECT_TRUE(transform.isValid());
    EXPECT_FALSE(isDrawable(transform, scene, 0));
    transform.scale.y = -1;
    EXPECT_TRUE(isDrawable(transform, scene, 0));
    EXPECT_TRUE(transform.isMirrored());
    transform.scale.z = -1;
    EXPECT_FALSE(transform.isMirrored());
    transform.translation.x = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(transform.isValid());
    transform.translation.x = 1e200;
    EXPECT_FALSE(isDrawable(transform, scene, 0));
    transform.translation.x = 0;
    transform.rotation.w = 2;
    EXPECT_FALSE(transform.isValid());
}

TEST(ObjectTransform, meanScaleIsThatOfVolumes) {
    ObjectTransform transform;
    transform.scale = {1, -2, 4};
    EXPECT_FALSE(transform.isUniform());
    EXPECT_NEAR(transform.meanScale(), 2, 1e-12);
    transform.scale = {3, -3, 3};
    EXPECT_TRUE(transform.isUniform());
    EXPECT_EQ(transform.meanScale(), 3);
}

namespace {

TransformStep stepTo(double x, double fromX = 0) {
    TransformStep step;
    step.label = "Move";
    step.before.translation.x = fromX;
    step.after.translation.x = x;
    return step;
}

}  // namespace

TEST(UndoStack, stepsAreTakenBackAndDoneAgainInOrder) {
    UndoStack undo;
    EXPECT_FALSE(undo.undo());
    EXPECT_FALSE(undo.redo());
    undo.push(stepTo(1));
    undo.push(stepTo(2, 1));
    ASSERT_NE(undo.nextUndo(), nullptr);
    EXPECT_EQ(undo.nextUndo()->after.translation.x, 2);
    EXPECT_EQ(undo.nextRedo(), nullptr);
    EXPECT_EQ(undo.undo()->before.translation.x, 1);
    EXPECT_EQ(undo.undo()->before.translation.x, 0);
    EXPECT_FALSE(undo.undo());
    EXPECT_EQ(undo.redo()->after.translation.x, 1);
    EXPECT_EQ(undo.nextRedo()->after.translation.x, 2);
}

TEST(UndoStack, aNewStepForgetsWhatWasTakenBack) {
    UndoStack undo;
    undo.push(stepTo(1));
    undo.undo();
    undo.push(stepTo(5));
    EXPECT_FALSE(undo.redo());
    EXPECT_EQ(undo.undo()->after.translation.x, 5);
    EXPECT_FALSE(undo.undo());
}

TEST(UndoStack, whatChangesNothingIsNoStep) {
    UndoStack undo;
    undo.push(stepTo(1));
    undo.undo();
    undo.push(stepTo(0));
    EXPECT_TRUE(undo.redo()) << "what was taken back stays";
    undo.clear();
    EXPECT_FALSE(undo.undo());
}

TEST(UndoStack, theOldestStepsAreForgotten) {
    UndoStack undo;
    for (std::size_t i = 1; i <= UndoStack::LIMIT + 5; ++i) {
        undo.push(stepTo(static_cast<double>(i)));
    }
    double last = 0;
    std::size_t count = 0;
    while (std::optional<TransformStep> const step = undo.undo()) {
        last = step->after.translation.x;
        ++count;
    }
    EXPECT_EQ(count, UndoStack::LIMIT);
    EXPECT_EQ(last, 6);
}
