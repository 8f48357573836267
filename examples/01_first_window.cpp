// Opens a window with a cube and the move gizmo, and draws until the window is closed.
#include "vl_raster_gl.h"
#include <GL/glew.h>
#include <GLFW/glfw3.h>
int main() {
    glfwInit();
    GLFWwindow* window = glfwCreateWindow(512, 512, "First window", nullptr, nullptr);
    glfwMakeContextCurrent(window);
    if (!window || glewInit() != GLEW_OK) {
        return 1;
    }
    vellum::Core_RL_GL core;
    vellum::Camera_RL_GL camera;
    camera.lookAt({1.6F, 1.2F, 2.4F}, {0.4F, 0.4F, 0.0F}, {0.0F, 1.0F, 0.0F});
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
    core.pushDepthTest({vellum::DEPTH_LESS, true});
    while (!glfwWindowShouldClose(window)) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        core.renderBox3({0.0F, 0.0F, 0.0F}, 0.3F);
        core.renderAxesArrow3(0, 1, 2, {{1, 0, 0, 1}, {0, 1, 0, 1}, {0.3F, 0.5F, 1, 1}}, 0.2F);
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
