#pragma once

#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/program/EffectOptions.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/scene/ViewFraming.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

enum class Shading { BOX, WIREFRAME, FACETED, SMOOTH };
enum class Normals { NONE, VERTEX, FACE };
enum class Gizmo { NONE, MOVE, ROTATE, SCALE };

/// A pixel of the picture, counted from its upper left corner.
struct Pixel {
    int x = 0;
    int y = 0;
};

/// What the program is asked to do: its command line as values. All are within their ranges.
struct Options {
    /// The largest width and height of a picture, pixels.
    static constexpr int LARGEST_SIZE = 16384;

    std::vector<std::string> files;  ///< at least one, but for an effect that brings its own scene
    std::string out;                 ///< empty: no picture is asked for
    int width = 1280;                ///< pixels, 1 to LARGEST_SIZE
    int height = 720;                ///< pixels, 1 to LARGEST_SIZE
    Shading shading = Shading::SMOOTH;
    Normals normals = Normals::NONE;
    bool edges = false;
    bool edgesBlend = false;  ///< not together with `edges`
    bool connectivity = false;
    bool wireframeBack = false;  ///< triangles seen from behind are outlines
    bool importPreview = false;  ///< what the import gave, in place of every other way to show a model
    bool immediate = false;      ///< no buffer objects, even if the driver has them
    std::string texture;         ///< a picture file for all models; empty: the textures of their materials
    Gizmo gizmo = Gizmo::NONE;
    View view = View::PERSPECTIVE;
    std::optional<Pixel> pick;  ///< inside the picture
    bool info = false;
    ImportLimits limits;
    ParticleOptions particles;
    /// Megabytes of video memory taken to be free; nothing: what the driver says, or else an assumption.
    std::optional<unsigned int> gpuMemory;
    EffectOptions effect;
};

/// What became of a command line: options, or else texts to be shown and the status to end with.
struct CommandLine {
    static constexpr int USAGE_ERROR = 2;  ///< the exit status of a command line that makes no sense

    std::optional<Options> options;
    std::string output;  ///< for standard output, as --help and --version ask for it; complete lines
    std::string error;   ///< for standard error: one line without its end
    int exitStatus = 0;
};

/// Reads a command line; `arguments` as main() gets them, the program's name first. Touches no stream and no file.
CommandLine parseCommandLine(int count, char const* const* arguments);

}  // namespace vellum::viewport
