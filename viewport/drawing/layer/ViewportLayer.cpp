#include "viewport/drawing/layer/ViewportLayer.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string>

namespace vellum::viewport {

ViewportLayer::ViewportLayer(std::optional<unsigned int> const& gpuMegabytes) : gpuMegabytes(gpuMegabytes) {}

unsigned int ViewportLayer::getFreeGpuMemory() {
    if (gpuMegabytes) {
        return *gpuMegabytes << 10U;
    }
    unsigned int const told = Core_RL_GL::getFreeGpuMemory();
    return told != 0 ? told : availableMainMemory() / 2;
}

unsigned int availableMainMemory() {
    std::ifstream facts("/proc/meminfo");
    std::string line;
    while (std::getline(facts, line)) {
        static std::string const label = "MemAvailable:";
        if (line.compare(0, label.size(), label) == 0) {
            std::uint64_t const kilobytes = std::strtoull(line.c_str() + label.size(), nullptr, 10);
            return static_cast<unsigned int>(
                std::min<std::uint64_t>(kilobytes, std::numeric_limits<unsigned int>::max()));
        }
    }
    return 0;
}

}  // namespace vellum::viewport
