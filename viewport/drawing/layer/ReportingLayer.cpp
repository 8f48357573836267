#include "viewport/drawing/layer/ReportingLayer.h"

#include <algorithm>
#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

void ReportingLayer::checkShaderCompilationErrors(unsigned int shader, char const* /*name*/) {
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
    reports.push_back({static_cast<unsigned int>(stage), log});
}

std::vector<ShaderReport> ReportingLayer::takeReports() {
    return std::exchange(reports, {});
}

}  // namespace vellum::viewport
