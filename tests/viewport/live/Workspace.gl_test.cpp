#include "viewport/live/Workspace.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/support/TemporaryFolder.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/files/images/Picture.h"
#include "viewport/program/SavedView.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>
#include <memory>
#include <thread>

using namespace vellum;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

constexpr char TRIANGLE[] = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
constexpr char SQUARE[] = "v 2 0 0\nv 3 0 0\nv 3 1 0\nv 2 1 0\nf 1 2 3 4\n";

ObjectTransform movedBy(double x) {
    ObjectTransform transform;
    transform.translation = {x, 0.5, 0};
    return transform;
}

constexpr PictureSize SIZE{64, 64};

/// A workspace with two objects.
class Workspace_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        ASSERT_FALSE(startGlew().has_value());
        files = {folder.write("a.obj", TRIANGLE), folder.write("b.obj", SQUARE)};
        workspace = opened(optionsOf(files));
        ASSERT_NE(workspace->scene(), nullptr);
        // As a window does, at once. From then on the camera is one that is seen, and stays.
        workspace->scene()->draw(SIZE);
        workspace->takeEdited();
    }

    void TearDown() override {
        workspace.reset();
        GlTest::TearDown();
    }

    static Options optionsOf(std::vector<std::string> const& files) {
        Options options;
        options.files = files;
        return options;
    }

    static std::unique_ptr<Workspace> opened(Options const& options) {
        auto made = std::make_unique<Workspace>(options, [] {});
        load(*made);
        return made;
    }

    /// Until nothing is loading.
    static void load(Workspace& workspace) {
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        workspace.update(1);
        while (workspace.isLoading() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            workspace.update(1);
        }
        EXPECT_FALSE(workspace.isLoading());
    }

    static Picture pictureOf(Workspace& workspace) {
        Result<Picture> picture = workspace.scene()->picture(SIZE);
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    TemporaryFolder const folder;
    std::vector<std::string> files;
    std::unique_ptr<Workspace> workspace;
};

}  // namespace

// == Steps ==

TEST_F(Workspace_gl_test, aMoveIsShownAndCanBeTakenBackAndDoneAgain) {
    Picture const before = pictureOf(*workspace);
    workspace->setTransform(1, movedBy(1), "Move");
    EXPECT_EQ(workspace->transform(1), movedBy(1));
    EXPECT_TRUE(workspace->transform(0).isIdentity());
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{1, movedBy(1)}}));
    EXPECT_EQ(workspace->undoLabel(), "Move");
    EXPECT_FALSE(workspace->canRedo());
    EXPECT_TRUE(workspace->takeEdited());
    EXPECT_FALSE(workspace->takeEdited());
    Picture const moved = pictureOf(*workspace);
    EXPECT_NE(moved.pixels, before.pixels);

    workspace->undo();
    EXPECT_TRUE(workspace->transform(1).isIdentity());
    EXPECT_TRUE(workspace->options().transforms.empty());
    EXPECT_EQ(pictureOf(*workspace).pixels, before.pixels);
    EXPECT_FALSE(workspace->canUndo());
    EXPECT_EQ(workspace->redoLabel(), "Move");
    EXPECT_TRUE(workspace->takeEdited());

    workspace->redo();
    EXPECT_EQ(workspace->transform(1), movedBy(1));
    EXPECT_EQ(pictureOf(*workspace).pixels, moved.pixels);
    EXPECT_FALSE(workspace->canRedo());
    EXPECT_EQ(workspace->redoLabel(), "");
}

TEST_F(Workspace_gl_test, stepsOfSeveralObjectsAreTakenBackInTurn) {
    workspace->setTransform(0, movedBy(1), "first");
    workspace->setTransform(1, movedBy(2), "second");
    workspace->setTransform(0, movedBy(3), "third");
    workspace->undo();
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{0, movedBy(1)}, {1, movedBy(2)}}));
    workspace->undo();
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{0, movedBy(1)}}));
    workspace->setTransform(1, movedBy(4), "another");
    EXPECT_FALSE(workspace->canRedo()) << "what was taken back is given up by another step";
    workspace->redo();
    EXPECT_EQ(workspace->transform(1), movedBy(4));
    workspace->undo();
    workspace->undo();
    EXPECT_TRUE(workspace->options().transforms.empty());
    workspace->undo();
    EXPECT_TRUE(workspace->options().transforms.empty()) << "nothing is left to be taken back";
}

TEST_F(Workspace_gl_test, aDragIsOneStepHoweverOftenItIsShown) {
    Picture const before = pictureOf(*workspace);
    for (double const x : {0.25, 0.5, 0.75}) {
        workspace->preview(0, movedBy(x));
        EXPECT_TRUE(workspace->takeEdited());
        EXPECT_NE(pictureOf(*workspace).pixels, before.pixels);
        EXPECT_TRUE(workspace->transform(0).isIdentity()) << "as it was before the drag";
        EXPECT_TRUE(workspace->options().transforms.empty());
    }
    workspace->setTransform(0, movedBy(0.75), "Move");
    workspace->undo();
    EXPECT_EQ(pictureOf(*workspace).pixels, before.pixels);
    EXPECT_FALSE(workspace->canUndo());
}

TEST_F(Workspace_gl_test, whatCannotBeDrawnOrDoesNotExistChangesNothing) {
    Picture const before = pictureOf(*workspace);
    ObjectTransform flat;
    flat.scale.y = 0;
    workspace->setTransform(0, flat, "Scale");
    workspace->setTransform(0, movedBy(std::numeric_limits<double>::quiet_NaN()), "Move");
    workspace->setTransform(2, movedBy(1), "Move");
    workspace->setTransform(0, ObjectTransform(), "nothing");
    EXPECT_FALSE(workspace->canUndo());
    EXPECT_TRUE(workspace->options().transforms.empty());
    EXPECT_TRUE(workspace->transform(2).isIdentity());
    EXPECT_EQ(pictureOf(*workspace).pixels, before.pixels);
}

TEST_F(Workspace_gl_test, transformsThatAreGivenBeginAnew) {
    workspace->setTransform(0, movedBy(1), "Move");
    Options options = workspace->options();
    options.mesh.allEdges = true;
    workspace->apply(options);
    load(*workspace);
    EXPECT_TRUE(workspace->canUndo()) << "another look keeps the steps";
    options.transforms = {{1, movedBy(2)}};
    workspace->apply(options);
    load(*workspace);
    EXPECT_FALSE(workspace->canUndo()) << "they would lead to what has not been";
    EXPECT_TRUE(workspace->transform(0).isIdentity());
    EXPECT_EQ(workspace->transform(1), movedBy(2));
    EXPECT_EQ(pictureOf(*workspace).pixels, pictureOf(*opened(options)).pixels);
}

TEST_F(Workspace_gl_test, theCameraStaysWhereAnObjectMoves) {
    for (toolkit::ViewKind const kind : {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::FRONT}) {
        Options options = optionsOf(files);
        options.pictures.front().camera.view = kind;
        workspace = opened(options);
        workspace->scene()->draw(SIZE);
        Vector3<double> const corner = workspace->scene()->scene().placeToScene({3, 1, 0});
        toolkit::ScreenPoint const before = workspace->scene()->view(SIZE).project(corner);
        workspace->setTransform(0, movedBy(-40), "Move");
        toolkit::ScreenPoint const after = workspace->scene()->view(SIZE).project(corner);
        EXPECT_NEAR(after.x, before.x, 1e-6);
        EXPECT_NEAR(after.y, before.y, 1e-6);
        // Also where its options go to.
        std::unique_ptr<Workspace> const again = opened(workspace->options());
        EXPECT_EQ(pictureOf(*again).pixels, pictureOf(*workspace).pixels) << static_cast<int>(kind);
        workspace->undo();
        toolkit::ScreenPoint const undone = workspace->scene()->view(SIZE).project(corner);
        EXPECT_NEAR(undone.x, before.x, 1e-6);
        EXPECT_NEAR(undone.y, before.y, 1e-6);
    }
}

TEST_F(Workspace_gl_test, particlesStayThinnedWhereOnlyTheirColorsChange) {
    std::string rows = "id,x,y,z,heat\n";
    for (int i = 0; i < 9; ++i) {
        rows += std::to_string(i) + "," + std::to_string(i) + ",0,0," + std::to_string(i) + "\n";
    }
    Options options = optionsOf({folder.write("heat.csv", rows)});
    options.particles.channel = "heat";
    workspace = opened(options);
    workspace->scene()->setDetail(0.25);
    options.particles.range = ValueRange{2, 5};
    workspace->apply(options);
    load(*workspace);
    EXPECT_EQ(workspace->scene()->detail(), 0.25);
    EXPECT_EQ(workspace->options().particles.range->low, 2);
    Picture const thinned = pictureOf(*workspace);
    workspace->reload();
    load(*workspace);
    EXPECT_EQ(workspace->scene()->detail(), 1) << "the files may hold others now";
    EXPECT_EQ(pictureOf(*workspace).pixels, thinned.pixels) << "a picture has all of them";
}

// == While files are loaded ==

TEST_F(Workspace_gl_test, filesThatAreReadAgainKeepTransformsSelectionAndSteps) {
    workspace->setTransform(0, movedBy(1), "Move");
    workspace->select(1);
    workspace->reload();
    // Also what is done while they are being read.
    workspace->setTransform(1, movedBy(2), "Move");
    Picture const before = pictureOf(*workspace);
    load(*workspace);
    EXPECT_TRUE(workspace->takeReplaced());
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{0, movedBy(1)}, {1, movedBy(2)}}));
    EXPECT_EQ(workspace->selected(), 1U);
    EXPECT_EQ(pictureOf(*workspace).pixels, before.pixels);
    workspace->undo();
    workspace->undo();
    EXPECT_TRUE(workspace->options().transforms.empty());
}

TEST_F(Workspace_gl_test, filesThatCannotBeReadLeaveWhatWasOpenWithItsSteps) {
    workspace->setTransform(0, movedBy(1), "Move");
    workspace->open({folder.write("broken.stl", "solid nothing\nfacet normal x y\n")});
    workspace->setTransform(1, movedBy(2), "Move");
    Picture const before = pictureOf(*workspace);
    load(*workspace);
    ASSERT_TRUE(workspace->fault());
    EXPECT_THAT(workspace->fault()->line(), HasSubstr("broken.stl"));
    EXPECT_EQ(workspace->options().files, files);
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{0, movedBy(1)}, {1, movedBy(2)}}));
    EXPECT_EQ(pictureOf(*workspace).pixels, before.pixels);
    workspace->undo();
    EXPECT_EQ(workspace->options().transforms, (GivenTransforms{{0, movedBy(1)}}));
}

TEST_F(Workspace_gl_test, aLoadingThatIsCanceledLeavesWhatWasOpen) {
    workspace->setTransform(0, movedBy(1), "Move");
    workspace->open({folder.write("other.obj", SQUARE)});
    workspace->cancelLoading();
    load(*workspace);
    EXPECT_EQ(workspace->options().files, files);
    EXPECT_FALSE(workspace->fault());
    EXPECT_EQ(workspace->transform(0), movedBy(1));
    EXPECT_TRUE(workspace->canUndo());
}

TEST_F(Workspace_gl_test, otherFilesHaveOtherObjects) {
    workspace->setTransform(0, movedBy(1), "Move");
    workspace->select(1);
    std::string const other = folder.write("other.obj", SQUARE);
    workspace->open({other});
    // Still of what is seen, and not of what comes.
    workspace->setTransform(0, movedBy(3), "Move");
    Picture const before = pictureOf(*workspace);
    CameraSpec aside;
    aside.position = Vector3<double>{50, 0, 0};
    aside.focus = Vector3<double>{60, 0, 0};
    workspace->setCamera(aside);
    EXPECT_NE(pictureOf(*workspace).pixels, before.pixels);
    load(*workspace);
    EXPECT_TRUE(workspace->takeReplaced());
    EXPECT_TRUE(workspace->options().transforms.empty());
    EXPECT_FALSE(workspace->selected());
    EXPECT_FALSE(workspace->canUndo());
    EXPECT_EQ(pictureOf(*workspace).pixels, pictureOf(*opened(optionsOf({other}))).pixels);
}

// == Selection and gizmo ==

TEST_F(Workspace_gl_test, aGizmoNeedsAnObjectAndTakesTheFirst) {
    EXPECT_FALSE(workspace->selected());
    workspace->setGizmo(Gizmo::ROTATE);
    EXPECT_EQ(workspace->selected(), 0U);
    EXPECT_EQ(workspace->gizmo(), Gizmo::ROTATE);
    workspace->select(1);
    workspace->setGizmo(Gizmo::SCALE);
    EXPECT_EQ(workspace->selected(), 1U) << "one that is selected stays so";
    workspace->select(2);
    EXPECT_FALSE(workspace->selected()) << "there is none";
}

TEST_F(Workspace_gl_test, aScreenshotIsThePictureWithoutTheHandles) {
    std::string const plain = folder.file("plain.png");
    workspace->saveScreenshot(plain, SIZE);
    EXPECT_FALSE(workspace->fault());
    workspace->select(0);
    workspace->setGizmo(Gizmo::MOVE);
    std::string const edited = folder.file("edited.png");
    workspace->saveScreenshot(edited, SIZE);
    EXPECT_EQ(folder.read("edited.png"), folder.read("plain.png"));
    EXPECT_EQ(workspace->selected(), 0U);
    Result<Picture> const saved = Picture::loadPng(plain);
    ASSERT_TRUE(saved.isOk());
    EXPECT_NE(saved.value().pixels, pictureOf(*workspace).pixels) << "the handles are seen in the window";
    workspace->saveScreenshot(folder.file("picture.abc"), SIZE);
    EXPECT_TRUE(workspace->fault());
    EXPECT_THAT(folder.names(), testing::Not(testing::Contains("picture.abc")));
}

// == Saved views ==

TEST_F(Workspace_gl_test, aSavedViewOpensWithTheSameObjectsCameraAndGizmo) {
    ObjectTransform transform = movedBy(0.5);
    transform.rotation = Rotation::ofDegrees({10, -20, 30});
    transform.scale = {1.5, 0.5, -2};
    workspace->setTransform(1, transform, "Move");
    workspace->setTransform(0, movedBy(-0.5), "Move");
    workspace->setGizmo(Gizmo::SCALE);
    std::string const file = folder.file("seen.vlview");
    ASSERT_FALSE(saveView(file, workspace->options()));
    Result<Options> const loaded = loadView(file);
    ASSERT_TRUE(loaded.isOk()) << loaded.fault().line();
    std::unique_ptr<Workspace> const again = opened(loaded.value());
    ASSERT_NE(again->scene(), nullptr);
    EXPECT_EQ(pictureOf(*again).pixels, pictureOf(*workspace).pixels);
    EXPECT_EQ(again->gizmo(), Gizmo::SCALE);
    EXPECT_FALSE(again->canUndo());

    // Also into a workspace that shows something else.
    workspace->open({folder.write("other.obj", SQUARE)});
    load(*workspace);
    workspace->apply(loaded.value());
    load(*workspace);
    EXPECT_EQ(workspace->options().view, file);
    EXPECT_EQ(pictureOf(*workspace).pixels, pictureOf(*again).pixels);
}
