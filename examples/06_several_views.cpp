// One mesh in four views: each has a camera and a part of the window of its own, and all share the renderer.
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
#include <vector>
using namespace vellum;
using namespace vellum::toolkit;
struct Pane {
    ViewKind kind;
    Viewport place;  // pixels, from the lower left corner of the window
    Camera_RL_GL camera = {};
    CameraController controls{camera};
};

int main() {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Several views", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);

    // A house: five corners in front, five behind; gables, then the walls, the floor and the roof between them.
    std::vector<Vector3<double>> const positions{{0, 0, 1},    {2, 0, 1},  {2, 1, 1},  {1, 1.8, 1},
                                                 {0, 1, 1},    {0, 0, -2}, {2, 0, -2}, {2, 1, -2},
                                                 {1, 1.8, -2}, {0, 1, -2}};
    std::vector<unsigned int> corners{0, 1, 2, 0, 2, 3, 0, 3, 4, 5, 7, 6, 5, 8, 7, 5, 9, 8};
    for (unsigned int k = 0; k < 5; ++k) {
        unsigned int const next = (k + 1) % 5;
        corners.insert(corners.end(), {k, k + 5, next + 5, k, next + 5, next});
    }
    Mesh mesh;
    setPositions(mesh, positions);
    setTriangles(mesh, corners);
    prepareMesh(mesh, 30);

    RenderSession session;
    Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
    MeshStyle style;
    style.shading = Shading::FACETED;
    style.edges = Edges::HARD;
    Pane panes[] = {{ViewKind::TOP, {0, 240, 320, 240}},
                    {ViewKind::PERSPECTIVE, {320, 240, 320, 240}},
                    {ViewKind::FRONT, {0, 0, 320, 240}},
                    {ViewKind::RIGHT, {320, 0, 320, 240}}};
    for (Pane& pane : panes) {
        pane.controls.setViewKind(pane.kind);
        pane.controls.fit(mesh.box());
    }
    while (!glfwWindowShouldClose(window)) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        for (Pane& pane : panes) {
            View const view = pane.controls.load(pane.place);
            Lit const lit(view);
            drawMesh(renderer, style);
        }
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
