// Draws a cube with the move gizmo and writes the picture to first_picture.bmp.
#include "vl_raster_gl.h"
#include <GL/glew.h>
#include <GLFW/glfw3.h>
#include <fstream>
int main() {
    glfwInit();
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(256, 256, "First picture", nullptr, nullptr);
    glfwMakeContextCurrent(window);
    if (!window || glewInit() != GLEW_OK) {
        return 1;
    }
    vellum::Core_RL_GL core;
    vellum::Camera_RL_GL camera;
    camera.lookAt({1.6F, 1.2F, 2.4F}, {0.4F, 0.4F, 0.0F}, {0.0F, 1.0F, 0.0F});
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    core.pushDepthTest({vellum::DEPTH_LESS, true});
    core.renderBox3({0.0F, 0.0F, 0.0F}, 0.3F);
    core.renderAxesArrow3(0, 1, 2, {{1, 0, 0, 1}, {0, 1, 0, 1}, {0.3F, 0.5F, 1, 1}}, 0.2F);
    static char picture[54 + 256 * 256 * 3] = "BM6\0\3\0\0\0\0\0006\0\0\0(\0\0\0\0\1\0\0\0\1\0\0\1\0\30";
    glReadPixels(0, 0, 256, 256, GL_BGR, GL_UNSIGNED_BYTE, picture + 54);
    std::ofstream("first_picture.bmp", std::ios::binary).write(picture, sizeof(picture));
}
