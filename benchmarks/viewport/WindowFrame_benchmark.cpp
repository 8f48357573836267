// Question: what does a frame of the window cost the processor, beside its panel, while 4,000,000 particles
// and 1,000,000 triangles rest and the view is turned? Bound: at most 500 microseconds in the library, the
// program and the driver's front end together. Mesa draws nothing (GALLIUM_NOOP), so that the time is the
// processor's in the calling thread.
//
// And does the memory of the process grow from frame to frame? Bound: by less than a megabyte in 10,000
// frames. Memory shows that with a smaller scene that Mesa's rasterizer draws: told to draw nothing, Mesa
// keeps what it was sent.
//
// Constant: the driver and its context, the scene, which is read from two files.

#include "offscreen/OffscreenContext.h"
#include "tests/support/TemporaryFolder.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/drawing/view/Navigation.h"
#include "viewport/live/Workspace.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include <time.h>
#include <unistd.h>

namespace vellum::benchmarks {
namespace {

using namespace viewport;

struct Case {
    PictureSize size;
    unsigned int particles;
    unsigned int side;  // vertices along a side of the sheet
    int frames;
    bool isDrawn;
    bool isTurned;
};

constexpr int FIRST_FRAMES = 100;                                       // until caches are full
constexpr int FIRST_DRAWN_FRAMES = 5000;                                // and the heaps of Mesa's threads
constexpr Case TURNED{{1280, 720}, 4'000'000, 708, 3000, false, true};  // 999,698 triangles
constexpr Case UNCHANGED{{1280, 720}, 4'000'000, 708, 3000, false, false};
constexpr Case MEMORY{{160, 90}, 10'000, 71, 10'000, true, true};

template <class T>
void append(std::string& bytes, T value) {
    bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
}

float heightAt(float x, float z) {
    return 0.1F * std::sin(9 * x) * std::cos(7 * z);
}

/// A block of points above a sheet.
std::string pointFile(unsigned int particles) {
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(particles) +
                        "\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
    std::uint32_t state = 1;
    auto const next = [&state] {
        state = state * 1664525U + 1013904223U;
        return static_cast<float>(state >> 8U) / 16777216.0F;
    };
    for (unsigned int i = 0; i < particles; ++i) {
        append(bytes, next());
        append(bytes, 0.2F + next());
        append(bytes, next());
    }
    return bytes;
}

std::string sheetFile(unsigned int side) {
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                        std::to_string(side * side) +
                        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                        std::to_string(2 * (side - 1) * (side - 1)) +
                        "\nproperty list uchar int vertex_indices\nend_header\n";
    for (unsigned int row = 0; row < side; ++row) {
        for (unsigned int column = 0; column < side; ++column) {
            float const x = static_cast<float>(column) / side;
            float const z = static_cast<float>(row) / side;
            append(bytes, x);
            append(bytes, heightAt(x, z));
            append(bytes, z);
        }
    }
    for (std::uint32_t row = 0; row + 1 < side; ++row) {
        for (std::uint32_t column = 0; column + 1 < side; ++column) {
            std::uint32_t const first = row * side + column;
            for (std::uint32_t const& other : {first + side, first + side + 1}) {
                append(bytes, static_cast<unsigned char>(3));
                append(bytes, first);
                append(bytes, other);
                append(bytes, other == first + side ? first + side + 1 : first + 1);
            }
        }
    }
    return bytes;
}

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// What the process has in memory now, kilobytes.
double residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    double pages = 0;
    file >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

void staticScene(benchmark::State& state, Case const& given) {
    if (!given.isDrawn) {
        setenv("GALLIUM_NOOP", "1", 1);
    }
    OffscreenContext const context({given.size.width, given.size.height});
    if (!context.isValid() || startGlew().has_value()) {
        state.SkipWithError("no context");
        return;
    }
    TemporaryFolder const folder;
    Options options;
    options.files = {folder.write("points.ply", pointFile(given.particles)),
                     folder.write("sheet.ply", sheetFile(given.side))};
    Workspace workspace(options, [] {});
    double const aspect = static_cast<double>(given.size.width) / given.size.height;
    workspace.update(aspect);
    while (workspace.isLoading()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        workspace.update(aspect);
    }
    if (workspace.scene() == nullptr) {
        state.SkipWithError("the scene cannot be drawn");
        return;
    }
    LiveScene& scene = *workspace.scene();
    scene.setBudget(60);  // nothing is thinned out
    auto const drawFrame = [&] {
        if (given.isTurned) {
            workspace.setCamera(Navigation(scene.scene(), scene.camera()).orbit(0.5, 0.1));
        }
        workspace.update(aspect);
        scene.draw(given.size);
    };
    for (int i = 0; i < (given.isDrawn ? FIRST_DRAWN_FRAMES : FIRST_FRAMES); ++i) {
        drawFrame();
    }
    double seconds = 0;
    double grown = 0;
    for (auto step : state) {
        double const before = residentKilobytes();
        double const start = cpuSeconds();
        for (int i = 0; i < given.frames; ++i) {
            drawFrame();
        }
        seconds = cpuSeconds() - start;
        grown = residentKilobytes() - before;
        state.SetIterationTime(seconds);
    }
    if (given.isDrawn) {
        state.counters["grown_kB"] = grown;
    } else {
        state.counters["frame_us"] = seconds / given.frames * 1e6;
    }
}

BENCHMARK_CAPTURE(staticScene, turned, TURNED)->Name("StaticScene/turned")->Iterations(1)->UseManualTime();
BENCHMARK_CAPTURE(staticScene, unchanged, UNCHANGED)
    ->Name("StaticScene/unchanged")
    ->Iterations(1)
    ->UseManualTime();
BENCHMARK_CAPTURE(staticScene, memory, MEMORY)->Name("Memory")->Iterations(1)->UseManualTime();

}  // namespace
}  // namespace vellum::benchmarks
