#pragma once

#include "viewport/program/EffectWords.h"
#include "viewport/program/Options.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace vellum::viewport {

/// The options as they are written on the command line; empty where they are missing. What needs no reading, like file
/// names and flags, goes into the Options at once.
struct OptionWords {
    std::string size;
    std::string shading;
    std::string normals;
    std::string gizmo;
    std::string view;
    std::string pick;
    std::string timeout;
    std::string memory;
    std::string particles;
    std::string percent;
    std::string particleSize;
    std::string range;
    std::string colors;
    std::string frame;
    std::string gpuMemory;
    EffectWords effect;

    /// Lets the command line fill this and the options, which both must outlive the parsing.
    void addTo(CLI::App& app, Options& options);

    /// Reads the words into the options. A fault is the first thing wrong with the command line, without a file's name.
    std::optional<Fault> read(Options& options) const;

private:
    // == Groups of options, in the order of the help ==
    void _addPicture(CLI::App& app, Options& options);
    void _addMeshes(CLI::App& app, Options& options);
    void _addView(CLI::App& app, Options& options);
    void _addLimits(CLI::App& app);
    void _addParticles(CLI::App& app, Options& options);

    // == Values ==
    std::optional<Fault> _readValues(Options& options) const;
    std::optional<Fault> _readSize(PictureSize& pictureSize) const;
    std::optional<Fault> _readPick(Options& options) const;
    std::optional<Fault> _readLimits(ImportLimits& limits) const;
    std::optional<Fault> _readParticles(ParticleOptions& options) const;
    std::optional<Fault> _readGpuMemory(Options& options) const;
    std::optional<Fault> _readRange(ParticleOptions& options) const;
    std::optional<Fault> _readColors(ParticleOptions& options) const;
};

}  // namespace vellum::viewport
