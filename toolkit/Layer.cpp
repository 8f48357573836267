#include "toolkit/Layer.h"

#include "glsl_shader/Base_shader.h"
#include "toolkit/internal/gl.h"
#include "toolkit/internal/llvmpipe.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <utility>

namespace vellum::toolkit {

unsigned int Layer::getFreeGpuMemory() {
    if (assumedMegabytes) {
        constexpr unsigned int MOST = std::numeric_limits<unsigned int>::max() >> 10U;
        return std::min(*assumedMegabytes, MOST) << 10U;
    }
    unsigned int const told = Core_RL_GL::getFreeGpuMemory();
    return told != 0 ? told : availableMainMemory() / 2;
}

// Workaround: llvmpipe (Mesa 22.3) collects primitives in up to 64 scenes of 36 MB each while its rasterizer
// is behind: more than 2 GB for ten million points. To wait for the rasterizer now and then takes no longer
// and keeps that small.
void Layer::drawArrays(Primitive::type mode, unsigned long first, unsigned long count) {
    bool const isDivided =
        mode == Primitive::POINTS && waitingPoints + count > POINTS_AT_ONCE && _keepsPoints();
    while (isDivided && waitingPoints + count > POINTS_AT_ONCE) {
        unsigned long const part = POINTS_AT_ONCE - waitingPoints;
        if (part > 0) {
            Core_RL_GL::drawArrays(mode, first, part);
        }
        _finish();
        first += part;
        count -= part;
    }
    if (mode == Primitive::POINTS) {
        waitingPoints += count;
    }
    Core_RL_GL::drawArrays(mode, first, count);
}

void Layer::drawElements(Primitive::type mode, unsigned long count, DataType::type type, void* indices) {
    Core_RL_GL::drawElements(mode, count, type, indices);
    if (mode == Primitive::POINTS) {
        waitingPoints += count;
        if (waitingPoints > POINTS_AT_ONCE && _keepsPoints()) {
            _finish();
        }
    }
}

bool Layer::_keepsPoints() {
    if (!areKept) {
        areKept = isLlvmpipe();
    }
    return *areKept;
}

void Layer::_finish() {
    glFinish();
    waitingPoints = 0;
}

void Layer::checkShaderCompilationErrors(unsigned int shader, char const* /*name*/) {
    GLint isCompiled = GL_FALSE;
    GLint stage = 0;
    GLint length = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &isCompiled);
    if (isCompiled != GL_FALSE) {
        return;
    }
    glGetShaderiv(shader, GL_SHADER_TYPE, &stage);
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(std::max(length, 1)), '\0');
    GLsizei written = 0;
    glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), &written, log.data());
    log.resize(static_cast<std::size_t>(std::max(written, 0)));
    compileLogs.push_back({static_cast<unsigned int>(stage), log});
}

std::vector<CompileLog> Layer::takeCompileLogs() {
    return std::exchange(compileLogs, {});
}

void Layer::returnCompileLogs(std::vector<CompileLog> logs) {
    logs.insert(logs.end(), std::make_move_iterator(compileLogs.begin()),
                std::make_move_iterator(compileLogs.end()));
    compileLogs = std::move(logs);
}

unsigned int availableMainMemory() {
    std::ifstream facts("/proc/meminfo");
    std::string line;
    while (std::getline(facts, line)) {
        static constexpr char LABEL[] = "MemAvailable:";
        constexpr std::size_t LENGTH = sizeof(LABEL) - 1;
        if (line.compare(0, LENGTH, LABEL) == 0) {
            std::uint64_t const kilobytes = std::strtoull(line.c_str() + LENGTH, nullptr, 10);
            return static_cast<unsigned int>(
                std::min<std::uint64_t>(kilobytes, std::numeric_limits<unsigned int>::max()));
        }
    }
    return 0;
}

bool hasGeometryStages(Core_RL& layer) {
    return layer.checkShaderSupport() && Base_shader::hasGeometryStages();
}

}  // namespace vellum::toolkit
