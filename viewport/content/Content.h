#pragma once

#include "viewport/content/LoadObserver.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/effects/EffectSubject.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/playback/FrameSequence.h"
#include "viewport/scene/HeldLook.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What is up in a file.
struct UpOfFile {
    std::string file;
    UpAxis up;
};

/// A file whose content changes from frame to frame.
struct MovingFile {
    std::string name;
    FrameSequence sequence;
    bool isMesh;
    std::size_t place;           ///< among the meshes or the particles
    double framesPerSecond = 0;  ///< of an animation; 0: its frames have numbers alone
    std::size_t shown = 0;       ///< the frame that the content has, the nearest one of an animation

    bool isAnimation() const { return framesPerSecond > 0; }
};

/// What the files hold.
struct Content {
    std::vector<MeshData> meshes;
    std::vector<ParticleFrame> particles;
    std::vector<std::size_t> frameCounts;  ///< of the particles' files, one for each
    std::vector<std::string> textures;     ///< files that the meshes name
    std::optional<UpOfFile> up;            ///< of the first file
    std::optional<UpOfFile> otherUp;       ///< of the first file that disagrees with it
    bool hasAnimations = false;            ///< of meshes
    bool hasTimes = false;                 ///< of particles

    std::vector<MovingFile> moving = {};  ///< only with the frames of a film, and for a window

    // == Only with the frames of a film ==
    std::vector<std::size_t> frames = {};   ///< to be shown, at least one
    std::vector<ParticleFrame> still = {};  ///< of files with a single frame; the others are empty

    /// Puts a frame into the place of its file.
    void take(MovingFile const& file, SequenceFrame frame);

    /// Reads the files of the options. For a single picture of one file of particles only the values that it
    /// shows are kept. Of moving ones the first frame of the film. Prints nothing, and may be called on any
    /// thread, beside a context on another one.
    /// \return the content, or the fault of the first file that cannot be read; where the observer cancels, a
    /// fault that says so
    static Result<Content> load(Options const& options, LoadObserver& observer);

    /// Takes down what is up in the next file.
    void addUp(UpOfFile const& file);
};

/// What is drawn.
struct Subject {
    Scene scene;
    ParticleLook look;
    std::optional<EffectSubject> effect;  ///< for the first picture; only with an effect

    /// Makes it of the content, whose particles are used up; so are its meshes where somebody may ask for values, unless
    /// there are frames to follow. Makes no OpenGL call; otherwise as Content::load().
    /// \param held what it has in common with the frames of a film before it, which takes part in it. Null: it is the first
    ///     one.
    static Result<Subject> prepare(Options const& options, Content& content, LoadObserver& observer,
                                   HeldLook* held = nullptr);
};

}  // namespace vellum::viewport
