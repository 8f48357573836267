// A user's GLSL files on a mesh, and what the driver says about them. Press R to read changed files again.
//
//     04_effect_with_report [VERTEX-FILE FRAGMENT-FILE]
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
#include <iostream>
using namespace vellum;
using namespace vellum::toolkit;
int main(int argc, char** argv) {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Effect with report", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);

    RenderSession session;
    CameraController controls(session.camera());
    controls.fit({{-1, -1, -1}, {1, 1, 1}});
    auto& effect = session.add<UserEffect>(session.layer());
    effect.setBaseColor({0.1F, 0.4F, 0.7F, 1});
    StageFiles files{EXAMPLE_SHADERS "/stripes.vert", EXAMPLE_SHADERS "/stripes.frag", ""};
    if (argc == 3) {
        files = {argv[1], argv[2], ""};
    }
    auto const load = [&] {
        for (StageReport const& report : effect.load(files)) {
            std::cerr << toText(report) << std::flush;
        }
    };
    load();

    bool wasPressed = false;
    while (!glfwWindowShouldClose(window)) {
        bool const isPressed = glfwGetKey(window, GLFW_KEY_R) == GLFW_PRESS;
        if (isPressed && !wasPressed) {
            load();
        }
        wasPressed = isPressed;
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        controls.load({0, 0, 640, 480});
        drawWith(effect, [&] { session.layer().renderSphere({0, 0, 0}, 1); });
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
