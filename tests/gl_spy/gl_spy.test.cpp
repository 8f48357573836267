#include "gl_spy.h"

#include <gtest/gtest.h>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

namespace {

using gl_spy::Recording;
using gl_spy::Script;
using Texts = std::vector<std::string>;

/// Without a driver: the spy answers every call.
class Gl_spy_test : public testing::Test {
protected:
    std::string textOfOnlyCall() const {
        EXPECT_EQ(recording.calls().size(), 1u);
        return recording.calls().empty() ? "" : recording.calls().front().text();
    }

    Script driver = gl_spy::drivers::gl21();
    Recording recording;
};

// == Notes ==

TEST_F(Gl_spy_test, numbersHaveFewestCharacters) {
    glColor4f(1, 0.5f, 0.1f, -0.0f);
    glRotated(0.1, 1e-3, 1.0 / 3, 100000);
    glVertex2i(-7, 2147483647);
    glColor3ub(255, 0, 65);
    EXPECT_EQ(recording.texts(),
              (Texts{"glColor4f(1, 0.5, 0.1, -0)", "glRotated(0.1, 0.001, 0.3333333333333333, 1e+05)",
                     "glVertex2i(-7, 2147483647)", "glColor3ub(255, 0, 65)"}));
    EXPECT_EQ(recording.calls()[0].numbers, (std::vector<double>{1, 0.5, double(0.1f), 0}));
}

TEST_F(Gl_spy_test, vectorsAreNotedByValue) {
    float position[3] = {1, 2, 3};
    glVertex3fv(position);
    position[0] = 99;
    EXPECT_EQ(textOfOnlyCall(), "glVertex3fv({1, 2, 3})");
}

TEST_F(Gl_spy_test, matricesHaveSixteenNumbers) {
    double matrix[16];
    for (int i = 0; i < 16; ++i) {
        matrix[i] = i + 0.5;
    }
    glLoadMatrixd(matrix);
    EXPECT_EQ(textOfOnlyCall(),
              "glLoadMatrixd({0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5, 10.5, 11.5, "
              "12.5, 13.5, 14.5, 15.5})");
    EXPECT_EQ(recording.calls()[0].numbers, std::vector<double>(matrix, matrix + 16));
}

TEST_F(Gl_spy_test, enumsHaveNameThatArgumentMeans) {
    glEnable(GL_LIGHTING);
    glBegin(GL_QUADS);
    glBegin(GL_POINTS);
    glBlendFunc(GL_ONE, GL_ZERO);
    glDrawBuffer(GL_NONE);
    glDepthMask(GL_TRUE);
    glEnable(0xABCD);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glPushAttrib(GL_VIEWPORT_BIT);
    EXPECT_EQ(recording.texts(),
              (Texts{"glEnable(GL_LIGHTING)", "glBegin(GL_QUADS)", "glBegin(GL_POINTS)",
                     "glBlendFunc(GL_ONE, GL_ZERO)", "glDrawBuffer(GL_NONE)", "glDepthMask(GL_TRUE)",
                     "glEnable(0xABCD)", "glClear(0x4100)", "glPushAttrib(0x800)"}));
    EXPECT_EQ(recording.calls()[0].enums, std::vector<unsigned int>{GL_LIGHTING});
}

TEST_F(Gl_spy_test, parametersAreEnumsWhereTheyTakeEnums) {
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, 2);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, GL_REPEAT);
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glTexEnvi(GL_POINT_SPRITE, GL_COORD_REPLACE, GL_TRUE);
    glPixelStoref(GL_UNPACK_ALIGNMENT, 1);
    glProgramParameteriEXT(7, GL_GEOMETRY_INPUT_TYPE_EXT, GL_TRIANGLES);
    glProgramParameteriEXT(7, GL_GEOMETRY_VERTICES_OUT_EXT, 4);
    float const color[4] = {0, 0.25f, 0.5f, 1};
    glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, color);
    glLightfv(GL_LIGHT0, GL_SPOT_DIRECTION, color);
    float const mode = GL_LINEAR;
    glFogfv(GL_FOG_MODE, &mode);
    EXPECT_EQ(recording.texts(), (Texts{"glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
                                        "glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, 2)",
                                        "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 10497)",
                                        "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)",
                                        "glTexEnvi(GL_POINT_SPRITE, GL_COORD_REPLACE, GL_TRUE)",
                                        "glPixelStoref(GL_UNPACK_ALIGNMENT, 1)",
                                        "glProgramParameteriEXT(7, GL_GEOMETRY_INPUT_TYPE_EXT, GL_TRIANGLES)",
                                        "glProgramParameteriEXT(7, GL_GEOMETRY_VERTICES_OUT_EXT, 4)",
                                        "glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, {0, 0.25, 0.5, 1})",
                                        "glLightfv(GL_LIGHT0, GL_SPOT_DIRECTION, {0, 0.25, 0.5})",
                                        "glFogfv(GL_FOG_MODE, {GL_LINEAR})"}));
}

TEST_F(Gl_spy_test, pointersAreNullOrPointerAndKeepTheirAddress) {
    float vertices[3] = {};
    glBufferData(GL_ARRAY_BUFFER, 24, nullptr, GL_STREAM_DRAW);
    glVertexPointer(3, GL_FLOAT, 0, vertices);
    glVertex3fv(nullptr);
    EXPECT_EQ(recording.texts(), (Texts{"glBufferData(GL_ARRAY_BUFFER, 24, null, GL_STREAM_DRAW)",
                                        "glVertexPointer(3, GL_FLOAT, 0, pointer)", "glVertex3fv(null)"}));
    EXPECT_EQ(recording.calls()[0].addresses, std::vector<std::uintptr_t>{0});
    EXPECT_EQ(recording.calls()[1].addresses[0], reinterpret_cast<std::uintptr_t>(vertices));
}

TEST_F(Gl_spy_test, arraysAreAsLongAsTheirCountSays) {
    float const values[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned int const names[2] = {7, 8};
    glUniform3fv(5, 2, values);
    glUniformMatrix2fv(5, 2, GL_FALSE, values);
    glDeleteTextures(2, names);
    glDeleteTextures(-1, names);
    EXPECT_EQ(recording.texts(), (Texts{"glUniform3fv(5, 2, {1, 2, 3, 4, 5, 6})",
                                        "glUniformMatrix2fv(5, 2, GL_FALSE, {1, 2, 3, 4, 5, 6, 7, 8})",
                                        "glDeleteTextures(2, {7, 8})", "glDeleteTextures(-1, {})"}));
}

TEST_F(Gl_spy_test, stringsAreQuotedAndKeptAsTheyAre) {
    char const* const source[2] = {"a\n\"b\"", "cut here"};
    int const lengths[2] = {-1, 3};
    glShaderSource(1, 2, source, lengths);
    glGetUniformLocation(2, "color");
    EXPECT_EQ(recording.texts(), (Texts{R"(glShaderSource(1, 2, {"a\n\"b\"", "cut"}, {-1, 3}))",
                                        R"(glGetUniformLocation(2, "color"))"}));
    EXPECT_EQ(recording.calls()[0].strings, (Texts{"a\n\"b\"", "cut"}));
}

TEST_F(Gl_spy_test, elevenArgumentsAreNotedInOrder) {
    glTexSubImage3D(GL_TEXTURE_3D, 1, 2, 3, 4, 5, 6, 7, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    EXPECT_EQ(textOfOnlyCall(),
              "glTexSubImage3D(GL_TEXTURE_3D, 1, 2, 3, 4, 5, 6, 7, GL_RGBA, GL_UNSIGNED_BYTE, null)");
}

// == Recordings ==

TEST_F(Gl_spy_test, recordingsNoteTheirOwnLifetime) {
    glPushMatrix();
    {
        Recording const inner;
        glLoadIdentity();
        EXPECT_EQ(inner.texts(), Texts{"glLoadIdentity()"});
    }
    glPopMatrix();
    EXPECT_EQ(recording.texts(), (Texts{"glPushMatrix()", "glLoadIdentity()", "glPopMatrix()"}));
    EXPECT_EQ(recording.count("glPopMatrix"), 1u);
    EXPECT_EQ(recording.named("glVertex3f").size(), 0u);
    recording.clear();
    EXPECT_TRUE(recording.calls().empty());
}

TEST_F(Gl_spy_test, gluIsOneCall) {
    GLUquadric* const quadric = gluNewQuadric();
    ASSERT_NE(quadric, nullptr);
    gluQuadricDrawStyle(quadric, GLU_FILL);
    gluCylinder(quadric, 1, 0, 2, 16, 1);
    gluDeleteQuadric(quadric);
    gluLookAt(0, 0, 5, 0, 0, 0, 0, 1, 0);
    EXPECT_STREQ(reinterpret_cast<char const*>(gluErrorString(GL_INVALID_ENUM)), "invalid enumerant");
    EXPECT_EQ(recording.texts(),
              (Texts{"gluNewQuadric()", "gluQuadricDrawStyle(pointer, GLU_FILL)",
                     "gluCylinder(pointer, 1, 0, 2, 16, 1)", "gluDeleteQuadric(pointer)",
                     "gluLookAt(0, 0, 5, 0, 0, 0, 0, 1, 0)", "gluErrorString(GL_INVALID_ENUM)"}));
}

// == Primitives ==

TEST_F(Gl_spy_test, primitivesDoNotCareForVariants) {
    double const d[3] = {4, 5, 6};
    glColor3ub(255, 0, 51);
    glBegin(GL_LINES);
    glNormal3f(1, 0, 0);
    glTexCoord2f(0.25f, 0.75f);
    glVertex2i(1, 2);
    glColor4f(0, 0, 1, 0.5f);
    glVertex3dv(d);
    glEnd();
    glBegin(GL_POINTS);
    glEnd();

    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    ASSERT_EQ(primitives.size(), 2u);
    EXPECT_EQ(primitives[0].mode, unsigned(GL_LINES));
    ASSERT_EQ(primitives[0].vertices.size(), 2u);
    gl_spy::Vertex const& first = primitives[0].vertices[0];
    EXPECT_EQ(first.position, (std::array<double, 3>{1, 2, 0}));
    EXPECT_EQ(first.normal, (std::array<double, 3>{1, 0, 0}));
    EXPECT_EQ(first.color, (std::array<double, 4>{1, 0, 0.2, 1}));
    EXPECT_EQ(first.textureCoordinate, (std::array<double, 4>{0.25, 0.75, 0, 1}));
    EXPECT_EQ(first.name, std::nullopt);
    gl_spy::Vertex const& second = primitives[0].vertices[1];
    EXPECT_EQ(second.position, (std::array<double, 3>{4, 5, 6}));
    EXPECT_EQ(second.color, (std::array<double, 4>{0, 0, 1, 0.5}));
    EXPECT_EQ(primitives[1].mode, unsigned(GL_POINTS));
    EXPECT_TRUE(primitives[1].vertices.empty());
}

TEST_F(Gl_spy_test, primitivesFollowNamesAndSavedColors) {
    auto const point = [] {
        glBegin(GL_POINTS);
        glVertex3f(0, 0, 0);
        glEnd();
    };
    glLoadName(3);
    point();
    glPushName(4);
    glPushAttrib(GL_CURRENT_BIT);
    glColor3f(0, 1, 0);
    point();
    glPopAttrib();
    glPopName();
    point();
    glInitNames();
    point();

    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    ASSERT_EQ(primitives.size(), 4u);
    EXPECT_EQ(primitives[0].vertices[0].name, 3u);
    EXPECT_EQ(primitives[1].vertices[0].name, 4u);
    EXPECT_EQ(primitives[1].vertices[0].color, (std::array<double, 4>{0, 1, 0, 1}));
    EXPECT_EQ(primitives[2].vertices[0].name, 3u);
    EXPECT_EQ(primitives[2].vertices[0].color, (std::array<double, 4>{1, 1, 1, 1}));
    EXPECT_EQ(primitives[3].vertices[0].name, std::nullopt);
}

TEST_F(Gl_spy_test, onlyModelviewMovesVertices) {
    glMatrixMode(GL_PROJECTION);
    glTranslatef(100, 0, 0);
    glMatrixMode(GL_MODELVIEW);
    glTranslated(1, 2, 3);
    glRotatef(90, 0, 0, 2);
    glPushMatrix();
    glScalef(5, 5, 5);
    glPopMatrix();
    glBegin(GL_POINTS);
    glVertex3f(1, 0, 0);
    glEnd();

    gl_spy::Vertex const vertex = recording.primitives().at(0).vertices.at(0);
    EXPECT_NEAR(vertex.transformed[0], 1, 1e-12);
    EXPECT_NEAR(vertex.transformed[1], 3, 1e-12);
    EXPECT_NEAR(vertex.transformed[2], 3, 1e-12);
    EXPECT_EQ(vertex.position, (std::array<double, 3>{1, 0, 0}));
}

// == Scripts ==

TEST_F(Gl_spy_test, laterScriptsAnswerFirstAndOnlyWhileTheyLive) {
    EXPECT_STREQ(reinterpret_cast<char const*>(glGetString(GL_VERSION)), "2.1.0");
    {
        Script inner;
        inner.string(GL_VERSION, "7.8").nullString(GL_EXTENSIONS);
        EXPECT_STREQ(reinterpret_cast<char const*>(glGetString(GL_VERSION)), "7.8");
        EXPECT_EQ(glGetString(GL_EXTENSIONS), nullptr);
    }
    EXPECT_STREQ(reinterpret_cast<char const*>(glGetString(GL_VERSION)), "2.1.0");
    EXPECT_NE(glGetString(GL_EXTENSIONS), nullptr);
}

TEST_F(Gl_spy_test, integersAndErrorsAnswerInTurn) {
    driver.integer(GL_VIEWPORT, {1, 2, 3, 4}).errors({GL_INVALID_ENUM, GL_OUT_OF_MEMORY});
    int viewport[4] = {};
    float asFloats[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetFloatv(GL_VIEWPORT, asFloats);
    EXPECT_EQ(std::vector<int>(viewport, viewport + 4), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(asFloats[3], 4.0f);
    EXPECT_EQ(driver.errorsLeft(), 2u);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
    EXPECT_EQ(glGetError(), GLenum(GL_OUT_OF_MEMORY));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    EXPECT_EQ(driver.errorsLeft(), 0u);
}

TEST_F(Gl_spy_test, shadersFailByTheirSource) {
    driver.shaderStatus(true, "fine").shaderStatus(false, "0:1: no", [](std::string const& source) {
        return source.find("BAD") != std::string::npos;
    });
    auto const make = [](char const* text) {
        GLuint const shader = glCreateShader(GL_FRAGMENT_SHADER);
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        return shader;
    };
    GLuint const good = make("void main() {}");
    GLuint const bad = make("BAD");

    int status = -1;
    glGetShaderiv(good, GL_COMPILE_STATUS, &status);
    EXPECT_EQ(status, GL_TRUE);
    glGetShaderiv(bad, GL_COMPILE_STATUS, &status);
    EXPECT_EQ(status, GL_FALSE);
    int length = 0;
    glGetShaderiv(bad, GL_INFO_LOG_LENGTH, &length);
    EXPECT_EQ(length, 8);

    char log[6] = {};
    glGetShaderInfoLog(bad, sizeof log, &length, log);
    EXPECT_STREQ(log, "0:1: ");
    EXPECT_EQ(length, 5);
}

TEST_F(Gl_spy_test, programsFailAndLocationsAreChosen) {
    GLuint const program = glCreateProgram();
    int status = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &status);
    EXPECT_EQ(status, GL_TRUE);
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &status);
    EXPECT_EQ(status, 0);

    driver.programStatus(false, "no main").uniformLocation("hidden", -1).attributeLocation("height", 12);
    glGetProgramiv(program, GL_LINK_STATUS, &status);
    EXPECT_EQ(status, GL_FALSE);
    char log[32] = {};
    glGetProgramInfoLog(program, sizeof log, nullptr, log);
    EXPECT_STREQ(log, "no main");
    EXPECT_EQ(glGetUniformLocation(program, "hidden"), -1);
    EXPECT_EQ(glGetAttribLocation(program, "height"), 12);
}

TEST_F(Gl_spy_test, driversListTheirExtensions) {
    auto const text = [](GLenum name) {
        return std::string(reinterpret_cast<char const*>(glGetString(name)));
    };
    int value = 0;
    {
        Script const geometry = gl_spy::drivers::geometryShader4();
        EXPECT_NE(text(GL_EXTENSIONS).find("GL_EXT_geometry_shader4"), std::string::npos);
        glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT, &value);
        EXPECT_EQ(value, 1024);
    }
    {
        Script const memory = gl_spy::drivers::nvxMemory(2048, 512);
        glGetIntegerv(0x9048, &value);
        EXPECT_EQ(value, 2048);
        glGetIntegerv(0x9049, &value);
        EXPECT_EQ(value, 512);
    }
    {
        Script const old = gl_spy::drivers::gl15();
        EXPECT_EQ(text(GL_VERSION).substr(0, 3), "1.5");
    }
    {
        Script const young = gl_spy::drivers::gl10_0();
        EXPECT_EQ(text(GL_VERSION).substr(0, 4), "10.0");
    }
    Script const poor = gl_spy::drivers::noExtensions();
    EXPECT_EQ(text(GL_EXTENSIONS), "");
}

// == No driver ==

TEST_F(Gl_spy_test, buffersHaveMemory) {
    GLuint names[2] = {};
    glGenBuffers(2, names);
    EXPECT_NE(names[0], names[1]);
    EXPECT_EQ(driver.liveObjects(), 2u);
    glBindBuffer(GL_ARRAY_BUFFER, names[0]);
    glBufferData(GL_ARRAY_BUFFER, 3 * sizeof(float), nullptr, GL_STATIC_DRAW);
    auto* const memory = static_cast<float*>(glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY));
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
    memory[0] = 1;
    memory[1] = 2;
    memory[2] = 3;
    EXPECT_EQ(glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
    EXPECT_EQ(glUnmapBuffer(GL_ARRAY_BUFFER), GL_FALSE);
    float const seven = 7;
    glBufferSubData(GL_ARRAY_BUFFER, sizeof(float), sizeof seven, &seven);
    glBufferSubData(GL_ARRAY_BUFFER, 3 * sizeof(float), sizeof seven, &seven);  // outside: an error to GL

    EXPECT_EQ(gl_spy::as<float>(driver.bufferContents(names[0])), (std::vector<float>{1, 7, 3}));
    EXPECT_EQ(gl_spy::bufferContents(GL_ARRAY_BUFFER), driver.bufferContents(names[0]));
    int bound = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), names[0]);
    glDeleteBuffers(2, names);
    EXPECT_TRUE(driver.bufferContents(names[0]).empty());
    EXPECT_TRUE(gl_spy::bufferContents(GL_ARRAY_BUFFER).empty());
    EXPECT_EQ(driver.liveObjects(), 0u);
}

TEST_F(Gl_spy_test, unwrittenBytesShow) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    glBindBuffer(GL_ARRAY_BUFFER, name);
    glBufferData(GL_ARRAY_BUFFER, 2, nullptr, GL_STATIC_DRAW);
    EXPECT_EQ(driver.bufferContents(name), (std::vector<unsigned char>{0xA5, 0xA5}));
    driver.nullMap();
    EXPECT_EQ(glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
    driver.noBufferNames();
    glGenBuffers(1, &name);
    EXPECT_EQ(name, 0U);
}

TEST_F(Gl_spy_test, objectsAreCounted) {
    GLuint const shader = glCreateShader(GL_VERTEX_SHADER);
    GLuint const program = glCreateProgram();
    GLuint texture = 0;
    glGenTextures(1, &texture);
    EXPECT_EQ(driver.liveObjects(), 3u);
    EXPECT_EQ(glIsShader(shader), GL_TRUE);
    EXPECT_EQ(glIsShader(program), GL_FALSE);
    glDeleteShader(program);
    EXPECT_EQ(driver.liveObjects(), 3u);
    glDeleteShader(shader);
    glDeleteProgram(program);
    glDeleteTextures(1, &texture);
    EXPECT_EQ(driver.liveObjects(), 0u);
}

TEST_F(Gl_spy_test, uniformsCanBeReadBack) {
    GLuint const program = glCreateProgram();
    int const location = glGetUniformLocation(program, "light");
    EXPECT_EQ(glGetUniformLocation(program, "light"), location);
    EXPECT_NE(glGetUniformLocation(program, "other"), location);
    float const lights[6] = {1, 2, 3, 4, 5, 6};
    glUseProgram(program);
    glUniform3fv(location, 2, lights);
    float read[4] = {0, 0, 0, -1};
    glGetUniformfv(program, location, read);
    EXPECT_EQ(std::vector<float>(read, read + 4), (std::vector<float>{1, 2, 3, -1}));
}

TEST_F(Gl_spy_test, stateIsAnsweredFromCalls) {
    glViewport(0, 0, 640, 480);
    glTranslatef(1, 2, 3);
    glBindTexture(GL_TEXTURE_2D, 9);
    int viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 640);
    float matrix[16] = {};
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
    EXPECT_EQ(matrix[13], 2.0f);
    int texture = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 9);
}

}  // namespace
