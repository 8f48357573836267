#pragma once

#include "viewport/content/PictureOptions.h"
#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/editing/GivenTransforms.h"
#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/playback/FrameRange.h"
#include "viewport/playback/PlaybackClock.h"
#include "viewport/scene/ParticleOptions.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What is printed about files, camera and driver.
enum class InfoForm { NONE, TEXT, JSON };

/// Several pictures that follow each other, for each PictureOptions one file with the number of the picture
/// in its name.
struct FilmOptions {
    std::optional<FrameRange> frames;                        ///< one picture for each of these
    double framesPerSecond = PlaybackClock::STANDARD_SPEED;  ///< of the frames of animated meshes, above 0
    std::size_t turn = 0;        ///< pictures of a full turn of the camera; 0: it stands still
    bool isRangeOfEach = false;  ///< each picture has the range of its own values

    bool isAsked() const { return frames || turn > 0; }
};

/// What the program is asked to do: its command line as values. All are within their ranges.
struct Options {
    std::vector<std::string> files;  ///< at least one, except with an effect that brings its own scene
    std::string view;                ///< the saved view that all of it is from; empty: none
    std::string configuration;       ///< the file that some of it is from; empty: none
    std::string format;              ///< of all files, by its name; empty: what they look like
    bool isSeries = false;           ///< the particle files are the frames of one dump
    std::vector<PictureOptions> pictures =
        std::vector<PictureOptions>(1);  ///< at least one; a single one may be without file
    MeshStyle mesh;
    std::string texture;  ///< a picture file for all models; empty: the textures of their materials
    ParticleOptions particles;
    std::optional<double>
        time;          ///< of the frame to be shown, in units of the file; not together with a frame's number
    FilmOptions film;  ///< frames not together with a frame's number or time
    std::optional<UpAxis> up;    ///< what is up in the files; nothing: what they say themselves
    GivenTransforms transforms;  ///< of objects that are moved, turned or scaled
    std::optional<EffectSpec> effect;
    InfoForm info = InfoForm::NONE;
    std::string
        windowPicture;  ///< a PNG file for a picture of the window itself, which is closed then; empty: none
    bool isQuiet = false;  ///< notes and progress are not shown; faults are
    ImportLimits limits;

    /// Megabytes of video memory assumed to be free; nothing: what the driver says, or else an estimate.
    std::optional<unsigned int> gpuMemory;

    /// Options of the command line itself, such as "--percent", and parameters of effects, as "--effect-param
    /// wind".
    std::set<std::string> given;

    /// Whether a mesh, counted from 0, is drawn with the effect.
    bool hasEffect(std::size_t mesh) const { return effect && effect->covers(mesh); }

    /// Whether something is to be found at a pixel of a picture.
    bool isPicking() const {
        return std::any_of(pictures.begin(), pictures.end(),
                           [](PictureOptions const& picture) { return picture.pick.has_value(); });
    }

    /// Whether nothing is asked for that could be done without a window.
    bool opensWindow() const {
        return info == InfoForm::NONE && pictures.size() == 1 && pictures.front().out.empty() &&
               !isPicking() && !film.isAsked();
    }

    /// Whether somebody may ask for what the files say of a place.
    bool needsValues() const { return isPicking() || opensWindow(); }

    /// Whether the effect draws an open sea: one of its own without files, else one that surrounds what they
    /// hold.
    bool hasOwnSea() const { return files.empty() && effect && effect->isSea(); }
    bool hasSurroundingSea() const { return !files.empty() && effect && effect->isSea(); }
};

}  // namespace vellum::viewport
