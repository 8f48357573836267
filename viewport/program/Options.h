#pragma once

#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/scene/ParticleOptions.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What the program is asked to do: its command line as values. All are within their ranges.
struct Options {
    std::vector<std::string> files;  ///< at least one, except with an effect that brings its own scene
    std::string out;                 ///< the picture's file; empty: no picture is asked for
    PictureSize size;
    MeshStyle mesh;
    std::string texture;  ///< a picture file for all models; empty: the textures of their materials
    ParticleOptions particles;
    CameraSpec camera;
    Gizmo gizmo = Gizmo::NONE;
    std::optional<EffectSpec> effect;
    std::optional<Pixel> pick;  ///< inside the picture
    bool info = false;          ///< what the files hold and what the driver offers is printed
    bool isQuiet = false;       ///< notes and progress are not shown; faults are
    ImportLimits limits;

    /// Megabytes of video memory assumed to be free; nothing: what the driver says, or else an estimate.
    std::optional<unsigned int> gpuMemory;

    /// Whether a mesh, counted from 0, is drawn with the effect.
    bool hasEffect(std::size_t mesh) const { return effect && effect->covers(mesh); }
};

}  // namespace vellum::viewport
