#pragma once

#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellum::viewport {

/// The options of effects as they are written on the command line; empty where they are missing.
struct EffectWords {
    std::string effect;
    std::vector<std::string> assignments;  ///< each "NAME=VALUE", or "help"
    std::string model;
    std::string environment;
    std::string vertexShader;
    std::string fragmentShader;
    std::string geometryShader;
    bool shaderFallback = false;

    /// Lets the command line fill this, which must outlive the parsing.
    void addTo(CLI::App& app);

    /// Whether a list of the effect's parameters is asked for.
    bool asksForHelp() const;

    /// The list of the effect's parameters, in complete lines; for an effect that exists.
    std::string help() const;

    /// Reads the words; no effect where none is named. A fault is the first thing wrong with them, without a
    /// file's name. \param fileCount of the files on the command line
    std::optional<Fault> read(std::size_t fileCount, std::optional<EffectSpec>& spec) const;

private:
    std::optional<Fault> _firstStray() const;
    std::optional<Fault> _assign(EffectValues& values, std::string const& assignment) const;
    std::optional<Fault> _readModel(std::size_t fileCount, EffectSpec& spec) const;
};

}  // namespace vellum::viewport
