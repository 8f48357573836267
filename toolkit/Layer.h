#pragma once

#include "Core_RL_GL.h"
#include "toolkit/export.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::toolkit {

/// What a driver says about a stage that does not compile.
struct CompileLog {
    unsigned int stage;  ///< GL_VERTEX_SHADER, ...
    std::string log;
};

/// The render layer for applications: Core_RL_GL, which also answers how much video memory is free where the
/// driver does not tell, and keeps what drivers say about shaders instead of printing it on the standard
/// output.
///
/// The memory rule. Renderers of particles put them into a buffer of 24 bytes for each if the answer of
/// getFreeGpuMemory(), with 25 MB left over, is enough for it. The answer 0 means "unknown" and wraps around
/// in that rule: it looks like plenty, and the buffer, of which 22 particles and more do not fit into 0
/// kilobytes, is refused when it is about to be made. So with a driver that is silent (most Mesa drivers
/// without GL_NVX_gpu_memory_info) at most 21 particles get a buffer, whatever the memory really is. This
/// layer answers half of the main memory that is available, which is where software rasterizers have their
/// buffers, and processors with graphics of their own, too.
class VL_TOOLKIT_EXPORT Layer : public Core_RL_GL {
public:
    Layer() = default;  ///< Becomes VL_Raster, as every Core_RL_GL. GL: none.

    /// What getFreeGpuMemory() answers from now on, in megabytes; nothing: what the driver says, else as
    /// above.
    void assumeFreeGpuMemory(std::optional<unsigned int> const& megabytes) { assumedMegabytes = megabytes; }

    /// In kilobytes: what was assumed; else what the driver says; else half of the available main memory.
    unsigned int getFreeGpuMemory() override;

    /// As Core_RL_GL does, with pauses where very many points are drawn by a software rasterizer that would
    /// keep all of them. GL: glDrawArrays; where more than POINTS_AT_ONCE points came without a pause also
    /// glGetString(GL_RENDERER), once, and for llvmpipe glFinish behind each POINTS_AT_ONCE of them, with a
    /// glDrawArrays for each part. State: none.
    void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) override;

    /// The same for indices, but the call is not divided. GL: glDrawElements, and as above.  State: none.
    void drawElements(Primitive::type mode, unsigned long count, DataType::type type, void* indices) override;

    static constexpr unsigned long POINTS_AT_ONCE = 1UL << 18U;

    /// Keeps the log of a stage that did not compile; see takeCompileLogs().
    /// GL: glGetShaderiv x 3, glGetShaderInfoLog if it did not compile.  State: none.
    void checkShaderCompilationErrors(unsigned int shader, char const* name) override;

    std::vector<CompileLog> takeCompileLogs();  ///< Those since the last call. GL: none.

    /// Puts logs back before those that were kept since: for a caller that takes only its own.
    /// GL: none.
    void returnCompileLogs(std::vector<CompileLog> logs);

private:
    bool _keepsPoints();
    void _finish();

    std::optional<unsigned int> assumedMegabytes;
    std::optional<bool> areKept;  // by the driver, until they are on the picture; nothing: it was not asked
    unsigned long waitingPoints = 0;  // those since the last pause
    std::vector<CompileLog> compileLogs;
};

/// Kilobytes of main memory that programs can get without swapping; 0 where the system does not tell. GL:
/// none.
VL_TOOLKIT_EXPORT unsigned int availableMainMemory();

/// Whether the driver of the current context draws geometry stages, by an extension or by its version;
/// without them spheres, arrows and tessellation are not to be had. GL: Core_RL::checkShaderSupport() and
/// Base_shader::hasGeometryStages().
VL_TOOLKIT_EXPORT bool hasGeometryStages(Core_RL& layer);

}  // namespace vellum::toolkit
