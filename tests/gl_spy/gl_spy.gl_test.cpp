#include "gl_spy.h"
#include "GlTest.h"

#include <gtest/gtest-spi.h>

#include <cmath>
#include <filesystem>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

#include <dlfcn.h>

extern "C" GLenum glewInit();  // GLEW's own header would replace every entry point by a macro

namespace {

using gl_spy::Recording;
using gl_spy::Script;
using Texts = std::vector<std::string>;

/// Calls that are passed on to the driver.
class Gl_spy_drawn_test : public gl_spy::GlTest {};

void drawTriangle(float z) {
    glBegin(GL_TRIANGLES);
    glVertex3f(-1, -1, z);
    glVertex3f(3, -1, z);
    glVertex3f(-1, 3, z);
    glEnd();
}

// == The driver ==

TEST_F(Gl_spy_drawn_test, callsReachDriver) {
    Recording const recording;
    glColor3f(1, 0, 0);
    drawTriangle(0);
    EXPECT_EQ(readPixel(128, 128), (Pixel{255, 0, 0, 255})) << savePicture("callsReachTheDriver");
    EXPECT_EQ(recording.calls().size(), 6u);
}

TEST_F(Gl_spy_drawn_test, sharedLibrariesFindSpyAheadOfDriver) {
    void* const ours = reinterpret_cast<void*>(&glVertex3fv);
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "glVertex3fv"), ours);
    EXPECT_NE(dlsym(RTLD_NEXT, "glVertex3fv"), ours);
    EXPECT_NE(dlsym(RTLD_NEXT, "glVertex3fv"), nullptr);
}

TEST_F(Gl_spy_drawn_test, glewInitIsOneCall) {
    // Without GLX it ends in GLEW_ERROR_NO_GLX_DISPLAY, after it has loaded the entry points of OpenGL.
    Recording const recording;
    glewInit();
    EXPECT_EQ(recording.texts(), Texts{"glewInit()"});
    auto* const loaded = static_cast<void**>(dlsym(RTLD_DEFAULT, "__glewCreateShader"));
    ASSERT_NE(loaded, nullptr);
    EXPECT_NE(*loaded, nullptr) << "GLEW has not loaded OpenGL 2.0";
}

TEST_F(Gl_spy_drawn_test, topRowComesFirst) {
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, height - 1, 1, 1);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(readPixel(0, 0), (Pixel{0, 255, 0, 255}));
    EXPECT_EQ(readPixel(0, height - 1)[1], 0);
}

TEST_F(Gl_spy_drawn_test, trackerAgreesWithDriverOnMatrices) {
    double const some[16] = {1, 2, 0, 0, -1, 1, 0.5, 0, 3, 0, 1, 0, 0.25, 7, -2, 1};
    std::array<double, 16> expected{};
    Recording recording;
    glMatrixMode(GL_MODELVIEW);
    gluLookAt(1, 2, 3, -4, 5, 6, 0.1, 1, 0);
    glRotated(33, 1, -2, 0.5);
    glMultMatrixd(some);
    glScaled(2, 3, 4);
    glMultTransposeMatrixd(some);
    glLoadTransposeMatrixd(some);
    glOrtho(-1, 2, -3, 5, 0.5, 9);
    glFrustum(-1, 2, -3, 5, 0.5, 9);
    gluPerspective(40, 1.5, 0.1, 20);
    gluOrtho2D(-2, 3, -1, 4);
    GLint viewport[4] = {0, 0, 256, 256};
    gluPickMatrix(30, 40, 5, 6, viewport);
    glTranslated(0.5, 0.25, -1);
    glGetDoublev(GL_MODELVIEW_MATRIX, expected.data());

    std::array<double, 16> actual{};
    {
        Script modeled;
        modeled.answerWithoutDriver();
        glMatrixMode(GL_MODELVIEW);
        gluLookAt(1, 2, 3, -4, 5, 6, 0.1, 1, 0);
        glRotated(33, 1, -2, 0.5);
        glMultMatrixd(some);
        glScaled(2, 3, 4);
        glMultTransposeMatrixd(some);
        glLoadTransposeMatrixd(some);
        glOrtho(-1, 2, -3, 5, 0.5, 9);
        glFrustum(-1, 2, -3, 5, 0.5, 9);
        gluPerspective(40, 1.5, 0.1, 20);
        gluOrtho2D(-2, 3, -1, 4);
        gluPickMatrix(30, 40, 5, 6, viewport);
        glTranslated(0.5, 0.25, -1);
        glGetDoublev(GL_MODELVIEW_MATRIX, actual.data());
    }
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-4 * std::max(1.0, std::abs(expected[i]))) << "element " << i;
    }
}

TEST_F(Gl_spy_drawn_test, gluDrawsThroughDriverUnnoted) {
    Recording recording;
    GLUquadric* const quadric = gluNewQuadric();
    gluSphere(quadric, 0.5, 16, 16);
    gluDeleteQuadric(quadric);
    unsigned char const texel[4 * 4] = {};
    gluBuild2DMipmaps(GL_TEXTURE_2D, GL_RGBA, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    glFinish();
    EXPECT_EQ(recording.texts(),
              (Texts{"gluNewQuadric()", "gluSphere(pointer, 0.5, 16, 16)", "gluDeleteQuadric(pointer)",
                     "gluBuild2DMipmaps(GL_TEXTURE_2D, GL_RGBA, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, pointer)",
                     "glFinish()"}));
    EXPECT_EQ(readPixel(128, 128)[0], 255) << savePicture("gluDrawsThroughTheDriverUnnoted");
}

TEST_F(Gl_spy_drawn_test, scriptsAnswerInPlaceOfDriver) {
    Script script;
    script.nullMap().string(GL_VERSION, "1.4").shaderStatus(false, "chosen", [](std::string const& source) {
        return source.find("chosen") != std::string::npos;
    });
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    float const values[2] = {1, 2};
    glBufferData(GL_ARRAY_BUFFER, sizeof values, values, GL_STATIC_DRAW);
    EXPECT_EQ(glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY), nullptr);
    EXPECT_EQ(gl_spy::as<float>(gl_spy::bufferContents(GL_ARRAY_BUFFER)), (std::vector<float>{1, 2}));
    glDeleteBuffers(1, &buffer);
    EXPECT_TRUE(gl_spy::bufferContents(GL_ARRAY_BUFFER).empty());

    GLuint const shader = glCreateShader(GL_VERTEX_SHADER);
    int status = -1;
    for (char const* text : {"// chosen\nvoid main() { gl_Position = gl_Vertex; }",
                             "void main() { gl_Position = gl_Vertex; }"}) {
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
        EXPECT_EQ(status, text[0] == '/' ? GL_FALSE : GL_TRUE) << text;
    }
    glDeleteShader(shader);
}

TEST_F(Gl_spy_drawn_test, stateIsResetBetweenTests) {
    // Two rounds of the fixture's own SetUp, with everything changed in between.
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glEnable(GL_LIGHTING);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glTranslatef(1, 0, 0);
    glViewport(0, 0, 10, 10);
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    SetUp();
    EXPECT_EQ(glIsEnabled(GL_LIGHTING), GL_FALSE);
    int values[4] = {};
    glGetIntegerv(GL_MATRIX_MODE, values);
    EXPECT_EQ(values[0], GL_MODELVIEW);
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, values);
    EXPECT_EQ(values[0], 1);
    glGetIntegerv(GL_VIEWPORT, values);
    EXPECT_EQ(values[2], width);
    EXPECT_EQ(readPixel(128, 128)[0], 0);
}

// == The judge ==

/// A test within a test: the fixture judges what happens between its SetUp and TearDown.
class Judged : public gl_spy::GlTest {
public:
    void TestBody() override {}
    static void run(void (*body)(Judged&)) {
        Judged judged;
        judged.SetUp();
        body(judged);
        judged.TearDown();
    }
    using GlTest::allowGlErrors;
    using GlTest::expectGlErrors;
};

TEST(GlTest_test, errorFailsTest) {
    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&results);
        Judged::run([](Judged&) { glEnable(0xABCD); });
    }
    ASSERT_EQ(results.size(), 2);  // the report of the driver, and the error left for glGetError
    EXPECT_TRUE(results.GetTestPartResult(0).nonfatally_failed());
    EXPECT_NE(std::string(results.GetTestPartResult(1).message()).find("GL_INVALID_ENUM"), std::string::npos);
}

TEST(GlTest_test, errorThatTestFetchedFailsItToo) {
    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&results);
        Judged::run([](Judged&) {
            glEnable(0xABCD);
            glGetError();
        });
    }
    EXPECT_EQ(results.size(), 1);
}

TEST(GlTest_test, announcedErrorPasses) {
    Judged::run([](Judged& judged) {
        judged.expectGlErrors(2);
        glEnable(0xABCD);
        glMatrixMode(0xABCD);
    });
    Judged::run([](Judged& judged) {
        judged.allowGlErrors();
        glEnable(0xABCD);
    });
}

TEST(GlTest_test, announcedErrorMustHappen) {
    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(&results);
        Judged::run([](Judged& judged) { judged.expectGlErrors(1); });
    }
    EXPECT_EQ(results.size(), 1);
}

TEST(GlTest_test, shaderThatDoesNotCompileIsNoGlError) {
    Judged::run([](Judged&) {
        GLuint const shader = glCreateShader(GL_VERTEX_SHADER);
        char const* const text = "nonsense";
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        int status = GL_TRUE;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
        EXPECT_EQ(status, GL_FALSE);
        glDeleteShader(shader);
    });
}

TEST_F(Gl_spy_drawn_test, picturesAreWritten) {
    std::string const path = savePicture("picturesAreWritten");
    EXPECT_TRUE(std::filesystem::exists(path)) << path;
}

}  // namespace
