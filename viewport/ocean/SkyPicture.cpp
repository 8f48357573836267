#include "viewport/ocean/SkyPicture.h"

#include "viewport/ocean/color_blending.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <sys/mman.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

using Color = Vector3<double>;

constexpr int WIDTH = 512;
constexpr int HEIGHT = 256;

constexpr Color ZENITH{0.10, 0.24, 0.52};
constexpr Color AT_HORIZON{0.80, 0.88, 0.95};
constexpr Color NEAR_GROUND{0.30, 0.28, 0.26};
constexpr Color FAR_GROUND{0.10, 0.09, 0.09};
constexpr Color WINDOW{1, 0.99, 0.95};

/// The part of a direction that the window covers: two panes with a bar between them, at the upper left
/// behind the viewer.
double windowAt(double x, double y) {
    auto const within = [](double from, double to, double value) {
        constexpr double SOFTNESS = 0.012;
        return smoothStep(from - SOFTNESS, from + SOFTNESS, value) *
               (1 - smoothStep(to - SOFTNESS, to + SOFTNESS, value));
    };
    double const panes = within(-0.66, -0.42, x) + within(-0.38, -0.12, x);
    return panes * (within(0.28, 0.50, y) + within(0.53, 0.76, y));
}

/// \param x of the horizontal part of a direction in eye space, at unit length
/// \param y of the direction itself, at unit length
Color colorOf(double x, double y, bool isTowardViewer) {
    Color const sky = blend(AT_HORIZON, ZENITH, std::pow(std::max(y, 0.0), 0.55));
    Color const ground = blend(NEAR_GROUND, FAR_GROUND, std::min(1.0, -std::min(y, 0.0) * 1.6));
    Color const both = blend(ground, sky, smoothStep(-0.02, 0.02, y));
    return isTowardViewer ? blend(both, WINDOW, windowAt(x, y)) : both;
}

}  // namespace

std::vector<unsigned char> skyPicture() {
    std::string const header = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(HEIGHT) + " +X " +
                               std::to_string(WIDTH) + "\n";
    std::vector<unsigned char> bytes(header.begin(), header.end());
    for (int row = 0; row < HEIGHT; ++row) {
        double const y = 1 - 2 * (row + 0.5) / HEIGHT;
        for (int column = 0; column < WIDTH; ++column) {
            double const s = (column + 0.5) / WIDTH;
            bool const isTowardViewer = s >= 0.25 && s < 0.75;
            double const x = isTowardViewer ? 4 * s - 2 : s < 0.25 ? -4 * s : 4 - 4 * s;
            Color const color = colorOf(x, y, isTowardViewer);
            // With the exponent 128 a mantissa counts 256ths.
            for (double const channel : {color.x, color.y, color.z}) {
                bytes.push_back(static_cast<unsigned char>(std::clamp(channel * 256, 0.0, 255.0)));
            }
            bytes.push_back(128);
        }
    }
    return bytes;
}

MemoryFile::MemoryFile(std::vector<unsigned char> const& bytes)
    : descriptor(memfd_create("vl_viewport picture", MFD_CLOEXEC)) {
    std::size_t written = 0;
    while (descriptor >= 0 && written < bytes.size()) {
        ssize_t const count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count <= 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

MemoryFile::~MemoryFile() {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

std::string MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace vellum::viewport
