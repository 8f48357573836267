// A thread paints images and drops the textures of outdated ones; the thread of the context uploads and deletes.
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>
using namespace vellum;
using namespace vellum::toolkit;
constexpr unsigned int SIZE = 64, NO_TEXTURE = 0xFFFFFFFF;

int main() {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Textures", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);
    RenderSession session;
    Layer& layer = session.layer();
    std::mutex mutex;                                         // guards the next two
    std::vector<unsigned char> pixels(4 * SIZE * SIZE, 255);  // RGBA; empty when they are uploaded
    unsigned int texture = NO_TEXTURE;
    std::atomic<bool> isRunning{true};

    // Rings that grow, ten times a second. This thread makes no GL call.
    std::thread painter([&] {
        for (unsigned int frame = 0; isRunning; ++frame) {
            std::vector<unsigned char> painted;
            for (unsigned int i = 0; i < SIZE * SIZE; ++i) {
                unsigned int const x = i % SIZE, y = i / SIZE;
                unsigned int const ring = (x * x + y * y + 64 * (63 - frame % 64)) / 512 % 8;
                painted.insert(painted.end(), {static_cast<unsigned char>(32 * ring), 120, 200, 255});
            }
            {
                std::lock_guard<std::mutex> const lock(mutex);
                layer.queueUnloadTextureColor(texture);  // sets the name to NO_TEXTURE
                pixels.swap(painted);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    while (!glfwWindowShouldClose(window)) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        {
            std::lock_guard<std::mutex> const lock(mutex);
            if (!pixels.empty()) {
                layer.loadTextureColor(SIZE, SIZE, pixels.data(), texture, TEXTURE_REPEAT);
                pixels.clear();
            }
            layer.renderQuad3(texture);
        }
        session.deleteQueuedTextures();  // once a frame, on this thread
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
    isRunning = false;
    painter.join();  // before the session ends
}
