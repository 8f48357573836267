#pragma once

#include "viewport/drawing/layer/ViewportLayer.h"

#include <string>
#include <vector>

namespace vellum::viewport {

/// What the driver says about a stage that does not compile.
struct ShaderReport {
    unsigned int stage;  ///< GL_VERTEX_SHADER, ...
    std::string log;
};

/// The program's layer, which keeps what drivers say about stages instead of printing it on the standard output, which
/// belongs to what was asked for.
class ReportingLayer : public ViewportLayer {
public:
    using ViewportLayer::ViewportLayer;

    /// GL: glGetShaderiv x 3, glGetShaderInfoLog if it did not compile. State: none.
    void checkShaderCompilationErrors(unsigned int shader, char const* name) override;

    std::vector<ShaderReport> takeReports();  ///< Those since the last call.

private:
    std::vector<ShaderReport> reports;
};

}  // namespace vellum::viewport
