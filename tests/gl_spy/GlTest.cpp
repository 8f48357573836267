#include "GlTest.h"

#include "Spy.h"

#include <filesystem>
#include <system_error>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <png.h>

namespace gl_spy {

namespace {

/// Depths of the attribute stacks while a test runs: the initial state lies on each.
constexpr GLint baseDepth = 1;

GLint getInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void saveInitialState() {
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
}

void resetMatrices(GLenum mode, GLenum depth) {
    glMatrixMode(mode);
    for (GLint left = getInteger(depth); left > 1; --left) {
        glPopMatrix();
    }
    glLoadIdentity();
}

/// Back to the state of a new context, as far as attribute stacks, matrices, names and bindings hold it.
void restoreInitialState() {
    if (getInteger(GL_RENDER_MODE) == GL_SELECT) {
        glInitNames();
    }
    glRenderMode(GL_RENDER);
    glUseProgram(0);

    for (GLint depth = getInteger(GL_ATTRIB_STACK_DEPTH); depth >= baseDepth; --depth) {
        glPopAttrib();
    }
    for (GLint depth = getInteger(GL_CLIENT_ATTRIB_STACK_DEPTH); depth >= baseDepth; --depth) {
        glPopClientAttrib();
    }

    // Workaround: Mesa 22.3 forgets, with the end of an inner attribute group, what was changed inside it
    // beyond that group, and the outer glPopAttrib leaves it as it is. Reading pixels opens such a group
    // while the color of the last glBegin is still on its way to the current one.
    glColor4f(1, 1, 1, 1);
    glNormal3f(0, 0, 1);
    glTexCoord4f(0, 0, 0, 1);
    // Workaround: nor does it bring single lights back that were switched on inside a group with the enable
    // bits.
    for (GLint light = getInteger(GL_MAX_LIGHTS) - 1; light >= 0; --light) {
        glDisable(GL_LIGHT0 + GLenum(light));
    }

    for (GLint unit = getInteger(GL_MAX_TEXTURE_COORDS) - 1; unit >= 0; --unit) {
        glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        resetMatrices(GL_TEXTURE, GL_TEXTURE_STACK_DEPTH);
    }
    resetMatrices(GL_PROJECTION, GL_PROJECTION_STACK_DEPTH);
    resetMatrices(GL_MODELVIEW, GL_MODELVIEW_STACK_DEPTH);

    for (GLenum const target :
         {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER}) {
        glBindBuffer(target, 0);
    }
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    saveInitialState();
}

std::string joined(std::vector<std::string> const& lines) {
    std::string text;
    for (std::string const& line : lines) {
        text += "\n  " + line;
    }
    return text;
}

}  // namespace

vellum::OffscreenContext& GlTest::context() {
    // It is never released: what a driver that is unloaded before the process ends has left behind looks like
    // leaks of the test.
    static vellum::OffscreenContext* const shared = [] {
        Spy::Passage const unseen;
        auto* const context = new vellum::OffscreenContext({width, height, 0, true});
        if (context->isValid()) {
            saveInitialState();
        }
        return context;
    }();
    return *shared;
}

void GlTest::SetUp() {
    ASSERT_TRUE(context().isValid()) << context().error()
                                     << " Tests that draw need one; Mesa's llvmpipe will do.";
    ASSERT_TRUE(context().reportsErrors()) << "The driver has no GL_KHR_debug to report errors with.";
    ASSERT_TRUE(context().makeCurrent()) << "The test's context can't be made current.";

    Spy::Passage const unseen;
    restoreInitialState();
    while (glGetError() != GL_NO_ERROR) {
    }
    context().takeErrors();
}

void GlTest::TearDown() {
    if (!context().isValid() || !context().reportsErrors()) {
        return;
    }

    Spy::Passage const unseen;
    std::vector<std::string> const& errors = glErrors();
    if (!_anyErrors) {
        EXPECT_EQ(errors.size(), _expectedErrors) << "GL errors in this test:" << joined(errors);
        // Errors that the test announced may wait; GL keeps one of each kind at most.
        GLenum const pending = glGetError();
        if (_expectedErrors == 0) {
            EXPECT_EQ(pending, GLenum(GL_NO_ERROR)) << "left for glGetError: " << enumName(pending);
        }
    }
}

void GlTest::expectGlErrors(std::size_t const& count) {
    _expectedErrors = glErrors().size() + count;
}

void GlTest::allowGlErrors() {
    _anyErrors = true;
}

std::vector<std::string> const& GlTest::glErrors() {
    for (std::string& error : context().takeErrors()) {
        _errors.push_back(std::move(error));
    }
    return _errors;
}

GlTest::Pixel GlTest::readPixel(int const& x, int const& y) {
    Pixel pixel{};
    if (x < 0 || x >= width || y < 0 || y >= height) {
        ADD_FAILURE() << "pixel " << x << ", " << y << " lies outside the frame buffer";
        return pixel;
    }
    // One pixel instead of the whole frame buffer: some tests look at thousands.
    Spy::Passage const unseen;
    glPushAttrib(GL_PIXEL_MODE_BIT);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    for (GLenum const skip : {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS}) {
        glPixelStorei(skip, 0);
    }
    for (GLenum const scale : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE}) {
        glPixelTransferf(scale, 1);
    }
    for (GLenum const bias : {GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS}) {
        glPixelTransferf(bias, 0);
    }
    glReadPixels(x, height - 1 - y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    glPopClientAttrib();
    glPopAttrib();
    return pixel;
}

std::vector<unsigned char> GlTest::readPixels() {
    return context().readPixels();
}

std::string GlTest::savePicture(std::string const& name) {
    std::error_code error;
    std::filesystem::path const folder = GL_TEST_PICTURES;
    std::filesystem::create_directories(folder, error);
    std::string const path = (folder / (name + ".png")).string();

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> const pixels = readPixels();
    return png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr) ? path : "";
}

}  // namespace gl_spy
