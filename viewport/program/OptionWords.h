#pragma once

#include "viewport/content/Options.h"
#include "viewport/program/EffectWords.h"
#include "viewport/program/PictureWords.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellum::viewport {

/// The options as they are written on the command line; empty where they are missing. What needs no reading,
/// like file names and flags, goes into the Options at once.
struct OptionWords {
    std::string shading;
    std::string edges;
    std::string normals;
    std::string meshColor;
    std::string opacity;
    std::string lineWidth;
    std::string up;
    std::string clip;
    std::string info;
    std::string timeout;
    std::string memory;
    std::string particles;
    std::string percent;
    std::string particleSize;
    std::string range;
    std::string colors;
    std::string colorMap;
    std::string frame;
    std::string time;
    std::string frames;
    std::string framesPerSecond;
    std::string turntable;
    std::string copies;
    std::string gpuMemory;
    std::vector<std::string> transforms;
    EffectWords effect;
    PictureList pictures;

    /// Lets the command line fill this and the options, which both must outlive the parsing.
    void addTo(CLI::App& app, Options& options);

    /// Reads the words into the options. A fault is the first thing wrong with the command line, without a
    /// file's name. \param app that was parsed \param standard for pictures, where the command line says
    /// nothing
    std::optional<Fault> read(CLI::App const& app, PictureWords const& standard, Options& options) const;

private:
    // == Groups of options, in the order of the help ==
    void _addFiles(CLI::App& app, Options& options);
    void _addMeshes(CLI::App& app, Options& options);
    void _addParticles(CLI::App& app, Options& options);
    void _addFilms(CLI::App& app);
    void _addRest(CLI::App& app, Options& options);

    // == Values ==
    std::optional<Fault> _readValues(Options& options) const;
    std::optional<Fault> _readFormat(Options const& options) const;
    std::optional<Fault> _readInfo(Options& options) const;
    std::optional<Fault> _readLimits(ImportLimits& limits) const;
    std::optional<Fault> _readMeshStyle(MeshStyle& style) const;
    std::optional<Fault> _readClip(Options& options) const;
    std::optional<Fault> _readParticles(ParticleOptions& options) const;
    std::optional<Fault> _readTransforms(Options& options) const;
    std::optional<Fault> _readFrame(Options& options) const;
    std::optional<Fault> _readFilm(FilmOptions& film) const;
    std::optional<Fault> _readNames(Options& options) const;
    std::optional<Fault> _readCopies(ParticleOptions& options) const;
    std::optional<Fault> _readSelection(ParticleOptions const& options) const;
    std::optional<Fault> _readGpuMemory(Options& options) const;
    std::optional<Fault> _readRange(Options& options) const;
    std::optional<Fault> _readColors(ParticleOptions& options) const;
};

}  // namespace vellum::viewport
