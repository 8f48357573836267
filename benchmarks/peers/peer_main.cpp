// Question: how long is the processor busy with a frame of a million points or triangles, until the driver
// has all that it needs? Asked of each system alike: one context, one camera, the same numbers. Mesa draws
// nothing (GALLIUM_NOOP). The context is that of a hidden window on an X display: VTK and Coin of Debian 12
// find only contexts of GLX.
//
//     peer_X [OPTION of Google Benchmark...]
//     peer_X --picture points|triangles FILE      draws on llvmpipe and writes a PPM instead; the background is black

#include "Peer.h"

#include "benchmarks/PairTiming.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <GL/gl.h>
#include <GLFW/glfw3.h>

namespace vellum::benchmarks {
namespace {

constexpr std::size_t COUNT = 1000000;
constexpr int FRAMES = 10;

enum class Frame { UNCHANGED, MOVING, FIRST };

double processSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// A current context, with a square to draw into.
class HiddenWindow {
public:
    HiddenWindow() {
        if (glfwInit() == GLFW_TRUE) {
            glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
            window = glfwCreateWindow(PEER_SIDE, PEER_SIDE, "peer", nullptr, nullptr);
        }
        if (window != nullptr) {
            glfwMakeContextCurrent(window);
        }
    }
    ~HiddenWindow() { glfwTerminate(); }
    HiddenWindow(HiddenWindow const&) = delete;
    HiddenWindow& operator=(HiddenWindow const&) = delete;

    char const* error() const { return window == nullptr ? "no OpenGL on this display" : nullptr; }

    /// Red, green, blue; bottom row first.
    static std::vector<unsigned char> pixels() {
        std::vector<unsigned char> all(std::size_t{PEER_SIDE} * PEER_SIDE * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadBuffer(GL_BACK);  // which is never shown
        glReadPixels(0, 0, PEER_SIDE, PEER_SIDE, GL_RGB, GL_UNSIGNED_BYTE, all.data());
        return all;
    }

private:
    GLFWwindow* window = nullptr;
};

template <class Scene>
void measure(benchmark::State& state, Frame frame, Scene const& scene) {
    HiddenWindow const window;
    if (window.error() != nullptr) {
        state.SkipWithError(window.error());
        return;
    }
    double fastest = 1e9;
    auto const time = [&](auto const& work) {
        double const start = processSeconds();
        work();
        glFinish();
        double const seconds = processSeconds() - start;
        fastest = std::min(fastest, seconds);
        return seconds;
    };
    std::unique_ptr<Peer> peer;
    if (frame != Frame::FIRST) {
        peer = makePeer(scene);
        peer->draw();
        peer->draw();  // some systems prepare more at the second frame
    }
    float now = 0;
    for ([[maybe_unused]] auto const& iteration : state) {
        switch (frame) {
        case Frame::UNCHANGED:
            state.SetIterationTime(time([&] { peer->draw(); }));
            break;
        case Frame::MOVING:
            now += 0.01F;
            peer->move(now);
            state.SetIterationTime(time([&] {
                peer->markMoved();
                peer->draw();
            }));
            break;
        case Frame::FIRST:
            peer.reset();
            state.SetIterationTime(time([&] {
                peer = makePeer(scene);
                peer->draw();
            }));
            break;
        }
    }
    state.counters["fastest_ms"] = fastest * 1e3;
    peer.reset();
}

void points(benchmark::State& state, Frame frame) {
    measure(state, frame, makePlainPoints(COUNT));
}
void triangles(benchmark::State& state, Frame frame) {
    measure(state, frame, makePlainSurface(COUNT));
}

void settings(benchmark::internal::Benchmark* one) {
    one->UseManualTime()->Iterations(FRAMES)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(points, unchanged, Frame::UNCHANGED)->Apply(settings);
BENCHMARK_CAPTURE(points, moving, Frame::MOVING)->Apply(settings);
BENCHMARK_CAPTURE(points, first, Frame::FIRST)->Apply(settings);
BENCHMARK_CAPTURE(triangles, unchanged, Frame::UNCHANGED)->Apply(settings);
BENCHMARK_CAPTURE(triangles, moving, Frame::MOVING)->Apply(settings);
BENCHMARK_CAPTURE(triangles, first, Frame::FIRST)->Apply(settings);

/// Draws one scene and writes it as PPM, top row first.
int writePicture(std::string const& kind, char const* path) {
    HiddenWindow const window;
    if (window.error() != nullptr) {
        std::fprintf(stderr, "%s\n", window.error());
        return 1;
    }
    std::unique_ptr<Peer> const peer =
        kind == "points" ? makePeer(makePlainPoints(COUNT)) : makePeer(makePlainSurface(COUNT));
    peer->draw();
    peer->draw();
    std::vector<unsigned char> const pixels = HiddenWindow::pixels();
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr) {
        std::perror(path);
        return 1;
    }
    std::fprintf(file, "P6\n%d %d\n255\n", PEER_SIDE, PEER_SIDE);
    constexpr std::size_t ROW = std::size_t{PEER_SIDE} * 3;
    for (std::size_t end = pixels.size(); end > 0; end -= ROW) {
        std::fwrite(&pixels[end - ROW], 1, ROW, file);
    }
    return std::fclose(file) == 0 ? 0 : 1;
}

}  // namespace
}  // namespace vellum::benchmarks

int main(int count, char** words) {
    if (count == 4 && std::strcmp(words[1], "--picture") == 0) {
        return vellum::benchmarks::writePicture(words[2], words[3]);
    }
    setenv("GALLIUM_NOOP", "1", 1);  // Mesa reads it when it creates a context
    benchmark::Initialize(&count, words);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
