// A ball with a move gizmo. The handle under the cursor turns yellow; drag it to move the ball along its axis.
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
using namespace vellum;
using namespace vellum::toolkit;
int main() {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Pick and drag", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);
    RenderSession session;
    Layer& layer = session.layer();
    CameraController controls(session.camera());
    controls.fit({{-0.5, -0.5, -0.5}, {1, 1, 1}});

    Ray axis{{0, 0, 0},
             {1, 0, 0}};  // of the drag: the ball's place when it began, and the handle's direction
    double start = 0;     // of the cursor, along this axis
    bool isDragging = false;
    Vector3<double> position{0, 0, 0};  // of the ball
    unsigned int handle = 0;            // under the cursor: 1, 2 and 3 are the names of x, y and z; 0 is none
    auto const drawGizmo = [&] {
        Color4<float> colors[] = {{}, {1, 0.2F, 0.2F, 1}, {0.2F, 0.8F, 0.2F, 1}, {0.3F, 0.5F, 1, 1}};
        colors[handle] = {1, 1, 0, 1};
        layer.renderAxesArrow3(1, 2, 3, {colors[1], colors[2], colors[3]}, 0.15F);
    };
    while (!glfwWindowShouldClose(window)) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        View const view = controls.load({0, 0, 640, 480});
        double x = 0, y = 0;
        glfwGetCursorPos(window, &x, &y);
        bool const isPressed = glfwGetMouseButton(window, GLFW_MOUSE_BUTTON_LEFT) == GLFW_PRESS;
        if (isDragging) {
            position = axis.origin + axis.direction * (alongAxis(view, axis, x, y) - start);
        }
        layer.pushTransform(translation(position));
        if (!isPressed) {
            auto const hits = pick(x, y, 4, drawGizmo);
            handle = hits.empty() ? 0 : hits.front().name;
        } else if (!isDragging && handle != 0) {
            axis = {position, {handle == 1 ? 1.0 : 0.0, handle == 2 ? 1.0 : 0.0, handle == 3 ? 1.0 : 0.0}};
            start = alongAxis(view, axis, x, y);
        }
        isDragging = isPressed && handle != 0;
        {
            Lit const lit(view);
            layer.setColor({0.8F, 0.8F, 0.8F, 1});
            layer.renderSphere({0, 0, 0}, 0.4F);
        }
        drawGizmo();
        layer.popTransform();
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
