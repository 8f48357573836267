#include "viewport/ocean/SkyPicture.h"

#include "foundation/geometry/Vector3.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <sys/mman.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

using Colour = Vector3<double>;

constexpr int width = 512;
constexpr int height = 256;

constexpr Colour zenith{0.10, 0.24, 0.52};
constexpr Colour horizon{0.80, 0.88, 0.95};
constexpr Colour nearGround{0.30, 0.28, 0.26};
constexpr Colour farGround{0.10, 0.09, 0.09};
constexpr Colour window{1, 0.99, 0.95};

double smooth(double const& from, double const& to, double const& value) {
    double const t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

Colour mix(Colour const& a, Colour const& b, double const& part) {
    return a * (1 - part) + b * part;
}

/// How much of the window lies in a direction: two panes with a bar between them, up to the left behind the viewer.
double windowAt(double const& x, double const& y) {
    auto const within = [](double const& from, double const& to, double const& value) {
        constexpr double softness = 0.012;
        return smooth(from - softness, from + softness, value) *
               (1 - smooth(to - softness, to + softness, value));
    };
    double const panes = within(-0.66, -0.42, x) + within(-0.38, -0.12, x);
    return panes * (within(0.28, 0.50, y) + within(0.53, 0.76, y));
}

/// \param x, y, z a direction in eye space, unit length; x of its horizontal part alone.
Colour colourOf(double const& x, double const& y, bool const& isTowardsViewer) {
    Colour const sky = mix(horizon, zenith, std::pow(std::max(y, 0.0), 0.55));
    Colour const ground = mix(nearGround, farGround, std::min(1.0, -std::min(y, 0.0) * 1.6));
    Colour const both = mix(ground, sky, smooth(-0.02, 0.02, y));
    return isTowardsViewer ? mix(both, window, windowAt(x, y)) : both;
}

}  // namespace

std::vector<unsigned char> skyPicture() {
    std::string const header = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(height) + " +X " +
                               std::to_string(width) + "\n";
    std::vector<unsigned char> bytes(header.begin(), header.end());
    for (int row = 0; row < height; ++row) {
        double const y = 1 - 2 * (row + 0.5) / height;
        for (int column = 0; column < width; ++column) {
            double const s = (column + 0.5) / width;
            bool const isTowardsViewer = s >= 0.25 && s < 0.75;
            double const x = isTowardsViewer ? 4 * s - 2 : s < 0.25 ? -4 * s : 4 - 4 * s;
            Colour const colour = colourOf(x, y, isTowardsViewer);
            // With the exponent 128 a mantissa counts 256ths.
            for (double const channel : {colour.x, colour.y, colour.z}) {
                bytes.push_back(static_cast<unsigned char>(std::clamp(channel * 256, 0.0, 255.0)));
            }
            bytes.push_back(128);
        }
    }
    return bytes;
}

MemoryFile::MemoryFile(std::vector<unsigned char> const& bytes)
    : _descriptor(memfd_create("vl_viewport picture", MFD_CLOEXEC)) {
    std::size_t written = 0;
    while (_descriptor >= 0 && written < bytes.size()) {
        ssize_t const count = ::write(_descriptor, bytes.data() + written, bytes.size() - written);
        if (count <= 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

MemoryFile::~MemoryFile() {
    if (_descriptor >= 0) {
        ::close(_descriptor);
    }
}

std::string MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(_descriptor);
}

}  // namespace vellum::viewport
