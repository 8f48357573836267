#pragma once

#include "viewport/drawing/effects/EffectSubject.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/program/InfoDocument.h"
#include "viewport/program/Options.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What the files hold.
struct Content {
    std::vector<MeshData> meshes;
    std::vector<ParticleFrame> particles;
    std::vector<std::string> textures;  ///< files that the meshes name
    std::optional<UpAxis> up;           ///< of the first file
    bool hasAnimations = false;         ///< of meshes
    bool hasTimes = false;              ///< of particles
    std::string texts;                  ///< its description, for --info
    InfoDocument document;              ///< the same as JSON; filled only where it is asked for

    /// Reads the files of the options. Must be called before there is a context: an import copies the process.
    static Result<Content> load(Options const& options);
};

/// What is drawn.
struct Subject {
    Scene scene;
    ParticleLook look;
    std::optional<EffectSubject> effect;  ///< for the first picture; only with an effect

    /// Makes it of the content, whose particles are used up.
    static Result<Subject> prepare(Options const& options, Content& content);
};

}  // namespace vellum::viewport
