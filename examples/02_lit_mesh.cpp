// A mesh from plain arrays, lit, with its hard edges. Drag to turn it.
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
#include <cmath>
#include <vector>
using namespace vellum;
using namespace vellum::toolkit;
int main() {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Lit mesh", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);

    // A wheel: a profile (distance from the axis, height) at 64 places around the y axis.
    std::vector<Vector2<double>> const profile{{1, -0.2},  {1, 0.2},    {0.9, 0.3},
                                               {0.5, 0.3}, {0.5, -0.3}, {0.9, -0.3}};
    unsigned int const count = 6, sides = 64;
    std::vector<Vector3<double>> positions;
    std::vector<unsigned int> corners;  // three for each triangle, counter-clockwise as seen from outside
    for (unsigned int i = 0; i < sides; ++i) {
        double const angle = 2 * M_PI * i / sides;
        unsigned int const here = i * count, next = (i + 1) % sides * count;
        for (unsigned int k = 0; k < count; ++k) {
            positions.push_back(
                {profile[k].x * std::cos(angle), profile[k].y, profile[k].x * std::sin(angle)});
            unsigned int const up = (k + 1) % count;
            corners.insert(corners.end(), {here + k, here + up, next + k, here + up, next + up, next + k});
        }
    }
    Mesh mesh;
    setPositions(mesh, positions);
    setTriangles(mesh, corners);
    prepareMesh(mesh, 30);  // normals; an edge is hard where its faces differ by more than 30 degrees

    RenderSession session;
    Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
    CameraController controls(session.camera());
    controls.fit(mesh.box());
    MeshStyle style;
    style.color = {1.0F, 0.6F, 0.2F, 1.0F};
    style.edges = Edges::HARD;

    double x = 0, y = 0;
    while (!glfwWindowShouldClose(window)) {
        double const lastX = x, lastY = y;
        glfwGetCursorPos(window, &x, &y);
        if (glfwGetMouseButton(window, GLFW_MOUSE_BUTTON_LEFT) == GLFW_PRESS) {
            controls.orbit(x - lastX, y - lastY);
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        View const view = controls.load({0, 0, 640, 480});
        Lit const lit(view);
        drawMesh(renderer, style);
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
