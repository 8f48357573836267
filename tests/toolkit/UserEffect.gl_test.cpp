#include "toolkit/UserEffect.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/toolkit/effect_scene.h"
#include "toolkit/draw_with.h"

#include <gmock/gmock.h>

#include <memory>

namespace vellum::toolkit {
namespace {

using namespace effect_scene;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class UserEffect_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<Layer>();
        lookAtOrigin();
        ball = std::make_unique<Ball>();
    }
    void TearDown() override {
        ball.reset();
        layer.reset();
        GlTest::TearDown();
    }

    Pixel colorWith(UserEffect& effect) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawWith(effect, [this] { ball->draw(); });
        return readPixel(128, 128);
    }

    static constexpr Pixel WHITE{255, 255, 255, 255};  // what stages that pass everything on show

    TemporaryFolder folder;
    std::string const green =
        folder.write("green.frag", "void main()\n{\n    gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0);\n}\n");
    std::string const broken = folder.write("bad.frag", "void main()\n{\n    gl_FragColor = nothing;\n}\n");
    std::unique_ptr<Layer> layer;
    std::unique_ptr<Ball> ball;
};

}  // namespace

TEST_F(UserEffect_gl_test, theFilesDrawWithTheVariables) {
    UserEffect effect(*layer);
    effect.setFloatVar(0.5F, 0);
    std::string const stripes = folder.write(
        "stripes.frag", "uniform float FloatVar0;\nvoid main()\n{\n    gl_FragColor = vec4(1.0, FloatVar0, "
                        "step(0.5, fract(gl_FragCoord.x / 16.0)), 1.0);\n}\n");
    EXPECT_THAT(effect.load({"", stripes, ""}), IsEmpty());
    Pixel const color = colorWith(effect);
    EXPECT_EQ(color[0], 255);
    EXPECT_NEAR(color[1], 128, 1);
    savePicture("user_effect");
}

TEST_F(UserEffect_gl_test, whatIsWrongIsReplacedAndReported) {
    expectGlErrors(1);  // of the program that does not link
    std::string const plain =
        folder.write("plain.vert", "void main()\n{\n    gl_Position = ftransform();\n}\n");
    std::string const alone = folder.write(
        "alone.frag", "varying vec3 from;\nvoid main()\n{\n    gl_FragColor = vec4(from, 1.0);\n}\n");
    std::string const badGeometry =
        folder.write("bad.geom", "#version 150 compatibility\nlayout(triangles) in;\nno\n");
    struct Row {
        char const* name;
        StageFiles files;
        std::string start;  // of the report
        Pixel color;
    };
    for (Row const& row :
         {Row{"compile error", {"", broken, ""}, broken + ":3: error: ", WHITE},
          Row{"link error", {"", alone, ""}, "the program of the stages: error: ", WHITE},
          Row{"no color", {plain, "", ""}, plain + ": sets no gl_FrontColor", WHITE},
          Row{"unreadable",
              {folder.file("gone"), green, ""},
              folder.file("gone") + ": cannot be opened: ",
              Pixel{0, 255, 0, 255}},
          Row{"geometry", {"", green, badGeometry}, badGeometry + ":3: ", Pixel{0, 255, 0, 255}}}) {
        SCOPED_TRACE(row.name);
        UserEffect effect(*layer);
        std::vector<StageReport> const reports = effect.load(row.files);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_THAT(toText(reports[0]), StartsWith(row.start));
        EXPECT_TRUE(effect.isLinked());
        EXPECT_EQ(colorWith(effect), row.color);
    }
}

TEST_F(UserEffect_gl_test, aFileThatIsMendedDraws) {
    UserEffect effect(*layer);
    std::string const file = folder.write("mine.frag", "void main() { oh }\n");
    EXPECT_EQ(effect.load({"", file, ""}).size(), 1U);
    EXPECT_EQ(colorWith(effect), WHITE);
    folder.write("mine.frag", "void main() { gl_FragColor = vec4(0.0, 0.0, 1.0, 1.0); }\n");
    EXPECT_THAT(effect.load({"", file, ""}), IsEmpty());
    EXPECT_EQ(colorWith(effect), (Pixel{0, 0, 255, 255}));
}

TEST_F(UserEffect_gl_test, anEffectWithoutFilesPassesEverythingOn) {
    UserEffect effect(*layer);
    EXPECT_FALSE(effect.isLinked());
    // Also without a load() drawing creates it.
    EXPECT_EQ(colorWith(effect), WHITE);
    EXPECT_TRUE(effect.isLinked());
    EXPECT_THAT(effect.load({}), IsEmpty());
    EXPECT_EQ(colorWith(effect), WHITE);
}

}  // namespace vellum::toolkit
