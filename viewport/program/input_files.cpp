#include "viewport/program/input_files.h"

#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/files/mesh/Textures.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <variant>

namespace vellum::viewport {

namespace {

std::vector<std::string> filesOf(DisplacementEffect const& effect) {
    return {effect.map, effect.normals};
}

std::vector<std::string> filesOf(GlassEffect const& effect) {
    return {effect.environment};
}

std::vector<std::string> filesOf(CustomEffect const& effect) {
    std::vector<std::string> files{effect.vertexShader, effect.fragmentShader, effect.geometryShader};
    files.insert(files.end(), effect.textures.begin(), effect.textures.end());
    return files;
}

std::vector<std::string> filesOf(OceanEffect const& /*effect*/) {
    return {};
}

std::vector<std::string> filesOf(ScatteringEffect const& /*effect*/) {
    return {};
}

}  // namespace

std::vector<std::string> inputFiles(Options const& options) {
    std::vector<std::string> files = options.files;
    files.push_back(options.texture);
    if (options.effect) {
        std::vector<std::string> const more =
            std::visit([](auto const& effect) { return filesOf(effect); }, options.effect->values);
        files.insert(files.end(), more.begin(), more.end());
    }
    return files;
}

std::vector<std::string> textureFiles(std::string const& meshPath, MeshData const& mesh) {
    std::vector<std::string> files;
    for (Material const& material : mesh.materials) {
        if (material.texture.empty() || !material.textureBytes.empty()) {
            continue;
        }
        if (std::optional<std::string> const file = findTexture(meshPath, material.texture)) {
            files.push_back(*file);
        }
    }
    return files;
}

bool isOneOf(std::string const& out, std::vector<std::string> const& files) {
    return !out.empty() && std::any_of(files.begin(), files.end(), [&out](std::string const& file) {
        std::error_code ignored;
        return !file.empty() && std::filesystem::equivalent(out, file, ignored);
    });
}

}  // namespace vellum::viewport
