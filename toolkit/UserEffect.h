#pragma once

#include "glsl_shader/Custom_shader.h"
#include "toolkit/Layer.h"
#include "toolkit/StageReport.h"
#include "toolkit/export.h"

#include <string>
#include <vector>

namespace vellum::toolkit {

/// The files of a user's effect.
struct StageFiles {
    std::string vertex;    ///< empty: a stage that passes everything on
    std::string fragment;  ///< alike
    std::string geometry;  ///< empty: no such stage
};

/// A Custom_shader that says what became of its stages.
///
///     UserEffect effect(session.layer());
///     effect.setFloatVar(12, 0);
///     for (StageReport const& report : effect.load({"stripes.vert", "stripes.frag", ""})) {
///         std::cerr << toText(report);
///     }
///     drawWith(effect, [&] { drawMesh(renderer, {}); });
///
/// Whatever is wrong with the files, something is drawn: a stage that cannot be read or does not compile is
/// replaced by one that passes everything on, or left out if it is a geometry stage that cannot be read or
/// that the driver does not have; where the stages do not fit together, all of them are replaced. So is a
/// vertex or geometry stage that sets no gl_FrontColor, if the fragment stage that would read it is the one
/// that passes everything on: GL would draw it in an arbitrary color.
///
/// The variables, textures and other inputs are those of Custom_shader. The layer must be VL_Raster, and
/// outlive the effect.
class VL_TOOLKIT_EXPORT UserEffect : public Custom_shader {
public:
    explicit UserEffect(Layer& layer);  ///< GL: glGenTextures, eight times.

    /// Reads the files and builds the program; also when they are the same as before, so that changed files
    /// count.
    ///
    /// On a driver without shaders nothing is built, and the only report is about the program.
    /// \return one report for each stage that is not used as it is, or that the driver warns of
    ///     (StageReport::Replacement::NOTHING), in the order vertex, fragment, geometry, program; empty where all is
    ///     well. Of compile errors that other effects have left in the layer none is taken.
    /// GL: hasGeometryStages() with a geometry stage; the calls of Custom_shader::setShaders(), once or twice;
    /// glGetShaderInfoLog per stage that has a file, glGetProgramiv, glGetProgramInfoLog, glUseProgram(0),
    /// Core_RL::getError().
    /// State: the current program is 0. Clears pending errors.
    std::vector<StageReport> load(StageFiles const& files);

    StageFiles const& files() const { return loadedFiles; }  ///< Of the last load().

    /// Whether GL can draw with the program.
    /// GL: glGetProgramiv, if there is a program.
    bool isLinked() const;

private:
    struct Part;

    std::vector<Part> _readParts() const;
    void _compile(std::vector<Part>& parts);
    void _judgeProgram(std::vector<Part>& parts);

    Layer& layer;
    StageFiles loadedFiles;
};

}  // namespace vellum::toolkit
