#include "viewport/drawing/layer/GlewStart.h"
#include "Core_RL_GL.h"
#include "offscreen/OffscreenContext.h"
#include "viewport/program/ContextAhead.h"

// After GLEW's header; brings no OpenGL header of its own.
#include <GL/glew.h>
#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

/// The start of the program on the two ways to a context: EGL without a display, and GLX with one.

using namespace vellum;

namespace {

/// What the rest of the program relies on once GLEW is initialized: entry points beyond OpenGL 1.1, and a
/// drawing.
void expectWorkingContext() {
    std::optional<viewport::Fault> const fault = viewport::startGlew();
    ASSERT_FALSE(fault.has_value()) << fault->message;
    ASSERT_NE(glCreateShader, nullptr);
    ASSERT_NE(glGenBuffers, nullptr);
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    EXPECT_NE(buffer, 0U);
    glDeleteBuffers(1, &buffer);

    std::unique_ptr<Core_RL> const layer(new Core_RL_GL);
    glViewport(0, 0, 32, 32);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    layer->pushColor({0, 1, 0, 1});
    layer->renderQuad3({-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0});
    layer->popColor(1);
    std::array<unsigned char, 4> pixel{};
    glReadPixels(16, 16, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    EXPECT_EQ(pixel[0], 0);
    EXPECT_EQ(pixel[1], 255);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

/// A display server without a screen, for the lifetime of the object.
class VirtualDisplay {
public:
    explicit VirtualDisplay(std::string const& server) {
        int ends[2];
        if (pipe(ends) != 0) {
            return;
        }
        _process = fork();
        if (_process == 0) {
            close(ends[0]);
            std::string const end = std::to_string(ends[1]);
            execl(server.c_str(), server.c_str(), "-displayfd", end.c_str(), "-screen", "0", "320x240x24",
                  "-nolisten", "tcp", "-noreset", nullptr);
            _exit(127);
        }
        close(ends[1]);
        // The server writes the number of the display it has found once it is ready.
        std::string number;
        char digit = 0;
        pollfd waiting{ends[0], POLLIN, 0};
        while (poll(&waiting, 1, 30'000) > 0 && read(ends[0], &digit, 1) == 1 && digit != '\n') {
            number.push_back(digit);
        }
        close(ends[0]);
        _name = number.empty() ? "" : ":" + number;
    }
    ~VirtualDisplay() {
        if (_process > 0) {
            kill(_process, SIGTERM);
            waitpid(_process, nullptr, 0);
        }
    }
    VirtualDisplay(VirtualDisplay const&) = delete;
    VirtualDisplay& operator=(VirtualDisplay const&) = delete;

    std::string const& name() const { return _name; }  ///< as in DISPLAY; empty when there is none

private:
    pid_t _process = -1;
    std::string _name;
};

}  // namespace

/// Both ways unload the driver before the process ends. The sanitizer then cannot tell any more that what it
/// kept was the driver's, so in this program it does not look for leaks.
extern "C" char const* __asan_default_options();
extern "C" char const* __asan_default_options() {
    return "detect_leaks=0";
}

TEST(startup_gl_test, withoutADisplayEglServes) {
    OffscreenContext::Settings settings;
    settings.width = 32;
    settings.height = 32;
    OffscreenContext const context(settings);
    ASSERT_TRUE(context.isValid()) << context.error();
    expectWorkingContext();
}

TEST(startup_gl_test, aContextOfAnotherThreadServes) {
    viewport::ContextAhead ahead({32, 32});
    ahead.begin();
    ahead.begin();
    OffscreenContext& context = ahead.get();
    ASSERT_TRUE(context.isValid()) << context.error();
    EXPECT_EQ(&ahead.get(), &context);
    expectWorkingContext();
}

TEST(startup_gl_test, aContextThatWasNotBegunServes) {
    viewport::ContextAhead ahead({32, 32});
    ASSERT_TRUE(ahead.get().isValid());
    expectWorkingContext();

    viewport::ContextAhead impossible({0, 32});
    impossible.begin();
    EXPECT_FALSE(impossible.get().isValid());
}

TEST(startup_gl_test, anotherThreadMayHaveAReleasedContext) {
    OffscreenContext context({32, 32});
    ASSERT_TRUE(context.isValid()) << context.error();
    EXPECT_TRUE(context.release());
    EXPECT_FALSE(context.release()) << "it is not current any more";
    std::thread([&context] {
        EXPECT_TRUE(context.makeCurrent());
        expectWorkingContext();
        EXPECT_TRUE(context.release());
    }).join();
    EXPECT_TRUE(context.makeCurrent());
}

TEST(startup_gl_test, withADisplayGlxServes) {
    std::string const server = "/usr/bin/Xvfb";
    if (!std::filesystem::exists(server)) {
        FAIL() << "there is no " << server << " to give a display";
    }
    VirtualDisplay const display(server);
    ASSERT_FALSE(display.name().empty()) << "the display server did not start";
    setenv("DISPLAY", display.name().c_str(), 1);

    ASSERT_TRUE(glfwInit());
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    glfwWindowHint(GLFW_CONTEXT_CREATION_API, GLFW_NATIVE_CONTEXT_API);
    GLFWwindow* const window = glfwCreateWindow(32, 32, "start-up", nullptr, nullptr);
    if (window != nullptr) {
        glfwMakeContextCurrent(window);
        expectWorkingContext();
        glfwDestroyWindow(window);
    }
    glfwTerminate();
    EXPECT_NE(window, nullptr) << "GLX makes no context";
}
