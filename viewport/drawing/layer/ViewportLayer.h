#pragma once

#include "Core_RL_GL.h"

#include <optional>

namespace vellum::viewport {

/// The render layer of the program. Where the driver does not tell how much video memory is free, renderers would
/// do without buffers; here they get an answer.
class ViewportLayer : public Core_RL_GL {
public:
    /// \param gpuMegabytes what to answer in any case, if it is given.
    explicit ViewportLayer(std::optional<unsigned int> const& gpuMegabytes = std::nullopt);

    /// In kilobytes: what was given; else what the driver says; else half of the main memory that is available,
    /// which is where software rasterizers have their buffers, and processors with graphics of their own, too.
    unsigned int getFreeGpuMemory() override;

private:
    std::optional<unsigned int> gpuMegabytes;
};

/// Kilobytes of main memory that programs can get without swapping; 0 when the system does not tell.
unsigned int availableMainMemory();

}  // namespace vellum::viewport
