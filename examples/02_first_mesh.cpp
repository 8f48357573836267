// Fills a mesh, derives its normals and draws it lit and turning, until the window is closed.
#include "vl_raster_gl.h"
#include <GL/glew.h>
#include <GLFW/glfw3.h>
#include <cmath>
int main() {
    glfwInit();
    GLFWwindow* window = glfwCreateWindow(512, 512, "First mesh", nullptr, nullptr);
    glfwMakeContextCurrent(window);
    if (!window || glewInit() != GLEW_OK) {
        return 1;
    }
    vellum::Core_RL_GL core;
    vellum::Camera_RL_GL camera;
    core.pushDepthTest({vellum::DEPTH_LESS, true});
    core.pushColor({1.0F, 0.6F, 0.2F, 1.0F});
    core.enableColorMaterial();
    core.enableLight_0();
    core.enableLighting();

    // An octahedron: six corners and eight faces, counter-clockwise seen from outside.
    vellum::Mesh mesh;
    mesh.setPositions({{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}});
    mesh.setTriangles(
        {{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4}, {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}});
    mesh.workNormals();
    vellum::Mesh_RL_GL renderer(&mesh, false);
    vellum::MeshShading shading;
    shading.mode = vellum::MeshShadingMode_ns::FACETED;

    while (!glfwWindowShouldClose(window)) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        auto const angle = static_cast<float>(glfwGetTime());
        camera.lookAt({4 * std::sin(angle), 1.5F, 4 * std::cos(angle)}, {0, 0, 0}, {0, 1, 0});
        camera.updateProjectionMatrix();
        camera.updateModelMatrix();
        renderer.render(shading);
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
