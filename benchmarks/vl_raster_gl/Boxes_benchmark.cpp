// Question: what does a box cost through the render layer, compared with the same immediate-mode calls
// written by hand? Bound: at most 10 percent more.
//
// Constant: the boxes (a million different ones of each kind, drawn in order), the calls and values that
// reach OpenGL, the driver and its context, the compiler flags, and the path of a call from a shared library
// into libGL. Mesa draws nothing (GALLIUM_NOOP), so the time is CPU time in the caller and in the driver's
// front end. Different: the render layer is called once per box, through its virtual operation; by hand, one
// loop sends all.
//
// With GALLIUM_NOOP Mesa keeps all commands until the process ends: 2.3 GB per pair. Run one pair per process
// (--benchmark_filter), as scripts/bench does.

#include "benchmarks/PairTiming.h"
#include "boxes_by_hand.h"

#include "Core_RL_GL.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include <GL/gl.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int BOXES = 1000000;
constexpr int ROUNDS = 2;           // passes over all boxes
constexpr unsigned int PARTS = 20;  // into which the boxes are split; both sides alternate
constexpr unsigned int BOXES_PER_PART = BOXES / PARTS;
constexpr bool FILLED = false;
constexpr bool WIRE = true;

/// One context for all benchmarks, created by the first one that runs.
class Layer {
public:
    static Layer& instance() {
        static Layer layer;
        return layer;
    }

    char const* error() const { return _context.isValid() ? nullptr : _context.error().c_str(); }
    Core_RL& core() { return _core; }

private:
    Layer() : _context(_settings()) {
        if (_context.isValid()) {
            benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
        }
    }

    static OffscreenContext::Settings _settings() {
        // Mesa reads the variable when it creates the context.
        setenv("GALLIUM_NOOP", "1", 1);
        return {};
    }

    OffscreenContext _context;
    Core_RL_GL _core;
};

Vector3<float> place(unsigned int const& i) {
    return {0.01F * static_cast<float>(i % 100), 0.01F * static_cast<float>(i / 100 % 100),
            0.01F * static_cast<float>(i / 10000)};
}

template <class Box>
std::vector<Box> makeBoxes();

template <>
std::vector<Box3<float>> makeBoxes() {
    std::vector<Box3<float>> boxes;
    boxes.reserve(BOXES);
    for (unsigned int i = 0; i < BOXES; ++i) {
        boxes.push_back({place(i), place(i) + Vector3<float>{0.004F, 0.005F, 0.006F}});
    }
    return boxes;
}

template <>
std::vector<Obb3<float>> makeBoxes() {
    std::vector<Obb3<float>> boxes;
    boxes.reserve(BOXES);
    for (unsigned int i = 0; i < BOXES; ++i) {
        boxes.push_back(
            {{0.8F, 0.6F, 0.0F}, 0.004F, {-0.6F, 0.8F, 0.0F}, 0.005F, {0.0F, 0.0F, 1.0F}, 0.006F, place(i)});
    }
    return boxes;
}

template <>
std::vector<Box2<float>> makeBoxes() {
    std::vector<Box2<float>> boxes;
    boxes.reserve(BOXES);
    for (unsigned int i = 0; i < BOXES; ++i) {
        Vector3<float> const p = place(i);
        boxes.push_back({{p.x, p.y}, {p.x + 0.004F, p.y + 0.005F}});
    }
    return boxes;
}

constexpr Tuple8<Vector3<float>> COLORS{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0},
                                        {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};

/// Times `library(core, box)` for every box against `byHand(boxes)` for BOXES_PER_PART boxes.
template <class Box, class Library, class ByHand>
void compare(benchmark::State& state, Library const& library, ByHand const& byHand) {
    Layer& layer = Layer::instance();
    if (layer.error() != nullptr) {
        state.SkipWithError(layer.error());
        return;
    }
    std::vector<Box> const boxes = makeBoxes<Box>();
    Core_RL& core = layer.core();

    PairTiming timing(PARTS);
    timing.run(
        state,
        [&](unsigned int const& part) {
            Box const* const first = boxes.data() + part * BOXES_PER_PART;
            for (Box const* box = first; box != first + BOXES_PER_PART; ++box) {
                library(core, *box);
            }
            glFinish();
        },
        [&](unsigned int const& part) {
            byHand(boxes.data() + part * BOXES_PER_PART);
            glFinish();
        });

    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(BOXES));
    state.counters["library_ns"] = timing.librarySecondsPerRound() * 1e9 / BOXES;
    state.counters["by_hand_ns"] = timing.otherSecondsPerRound() * 1e9 / BOXES;
    state.counters["library/by_hand"] = timing.ratio();
}

template <class Box>
void plain(benchmark::State& state, bool const& wire) {
    compare<Box>(
        state, [&](Core_RL& core, Box const& box) { core.render(box, wire); },
        [&](Box const* some) { drawByHand(some, BOXES_PER_PART, wire); });
}

void Box3_plain(benchmark::State& state, bool const& wire) {
    plain<Box3<float>>(state, wire);
}

void Box3_colored(benchmark::State& state, bool const& wire) {
    compare<Box3<float>>(
        state, [&](Core_RL& core, Box3<float> const& box) { core.render(box, COLORS, wire); },
        [&](Box3<float> const* some) { drawByHand(some, COLORS, BOXES_PER_PART, wire); });
}

void Obb3_plain(benchmark::State& state, bool const& wire) {
    plain<Obb3<float>>(state, wire);
}

void Box2_plain(benchmark::State& state, bool const& wire) {
    plain<Box2<float>>(state, wire);
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Box3_plain, filled, FILLED)->Apply(settings);
BENCHMARK_CAPTURE(Box3_plain, wire, WIRE)->Apply(settings);
BENCHMARK_CAPTURE(Box3_colored, filled, FILLED)->Apply(settings);
BENCHMARK_CAPTURE(Box3_colored, wire, WIRE)->Apply(settings);
BENCHMARK_CAPTURE(Obb3_plain, filled, FILLED)->Apply(settings);
BENCHMARK_CAPTURE(Obb3_plain, wire, WIRE)->Apply(settings);
BENCHMARK_CAPTURE(Box2_plain, filled, FILLED)->Apply(settings);
BENCHMARK_CAPTURE(Box2_plain, wire, WIRE)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
