#include "viewport/program/option_choices.h"

#include "toolkit/ColorMap.h"
#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/program/option_modes.h"

#include <algorithm>
#include <iterator>

namespace vellum::viewport {

namespace {

template <class Value>
std::vector<std::string> wordsOf(Modes<Value> const& modes) {
    std::vector<std::string> words;
    for (auto const& mode : modes) {
        words.push_back(mode.first);
    }
    return words;
}

/// The names of the formats of particles and of meshes, each once.
std::vector<std::string> fileFormatNames() {
    std::vector<std::string> names = particleFormatNames();
    for (std::string const& name : meshFormatNames()) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return names;
}

struct Row {
    char const* option;
    std::vector<std::string> (*choices)();
};

constexpr Row ROWS[] = {{"--format", fileFormatNames},
                        {"--up", [] { return wordsOf(UP_AXES); }},
                        {"--view", [] { return wordsOf(VIEWS); }},
                        {"--projection", [] { return wordsOf(PROJECTIONS); }},
                        {"--gizmo", [] { return wordsOf(GIZMOS); }},
                        {"--shading", [] { return wordsOf(SHADINGS); }},
                        {"--edges",
                         [] {
                             return std::vector<std::string>{"all", "hard"};
                         }},
                        {"--normals", [] { return wordsOf(NORMAL_KINDS); }},
                        {"--particles", [] { return wordsOf(PARTICLE_MODES); }},
                        {"--colormap", toolkit::ColorMap::names},
                        {"--effect", effectNames},
                        {"--info", [] { return wordsOf(INFO_FORMS); }}};

}  // namespace

std::vector<std::string> choicesOf(std::string const& option) {
    auto const* const row = std::find_if(std::begin(ROWS), std::end(ROWS),
                                         [&option](Row const& entry) { return entry.option == option; });
    return row != std::end(ROWS) ? row->choices() : std::vector<std::string>();
}

}  // namespace vellum::viewport
