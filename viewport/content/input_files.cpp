#include "viewport/content/input_files.h"

#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/files/common/MappedFile.h"
#include "viewport/files/images/output_file.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <variant>

#include <sys/stat.h>

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
    files.insert(files.end(), {options.texture, options.view, options.configuration});
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
        bool const isEmbedded = !material.textureBytes.empty();
        for (std::string const& name :
             {isEmbedded ? std::string() : material.texture, material.opacityTexture,
              material.emissionTexture.bytes.empty() ? material.emissionTexture.name : std::string()}) {
            std::optional<std::string> const file = name.empty() ? std::nullopt : findTexture(meshPath, name);
            if (file) {
                files.push_back(*file);
            }
        }
    }
    return files;
}

std::vector<std::string> materialFiles(std::vector<std::string> const& meshPaths) {
    constexpr std::string_view STATEMENT = "mtllib";
    std::vector<std::string> files;
    for (std::string const& path : meshPaths) {
        std::filesystem::path const mesh(path);
        if (lowerCase(mesh.extension().string()) != ".obj") {
            continue;
        }
        files.push_back(std::filesystem::path(mesh).replace_extension(".mtl").string());
        Result<MappedFile> const file = MappedFile::open(path);
        std::string_view const text = file.isOk() ? file.value().bytes() : std::string_view();
        for (std::size_t place = text.find(STATEMENT); place != std::string_view::npos;
             place = text.find(STATEMENT, place + 1)) {
            std::string_view rest = text.substr(place + STATEMENT.size());
            std::string_view line = takeLine(rest);
            // Names may have blanks, and a line may have several names: both are taken.
            std::size_t const start = std::min(line.find_first_not_of(BLANKS), line.size());
            std::size_t const end = line.find_last_not_of(BLANKS) + 1;
            std::vector<std::string_view> names{line.substr(start, end > start ? end - start : 0)};
            for (std::string_view name = takeWord(line); !name.empty(); name = takeWord(line)) {
                names.push_back(name);
            }
            for (std::string_view const name : names) {
                files.push_back((mesh.parent_path() / name).string());
            }
        }
    }
    return files;
}

bool isOneOf(std::string const& out, std::vector<std::string> const& files) {
    return !out.empty() && !isWrittenStraight(out) &&
           std::any_of(files.begin(), files.end(), [&out](std::string const& file) {
               std::error_code ignored;
               return !file.empty() && std::filesystem::equivalent(out, file, ignored);
           });
}

// == FileSet ==

namespace {

std::optional<std::pair<std::uint64_t, std::uint64_t>> identityOf(std::string const& file) {
    struct stat facts {};
    if (file.empty() || stat(file.c_str(), &facts) != 0) {
        return std::nullopt;
    }
    return std::pair<std::uint64_t, std::uint64_t>(facts.st_dev, facts.st_ino);
}

}  // namespace

FileSet::FileSet(std::vector<std::string> const& files) {
    for (std::string const& file : files) {
        if (auto const identity = identityOf(file)) {
            identities.insert(*identity);
        }
    }
}

bool FileSet::contains(std::string const& file) const {
    auto const identity = identityOf(file);
    return identity && identities.count(*identity) != 0;
}

bool FileSet::isFile(std::string const& file) {
    return identityOf(file).has_value();
}

}  // namespace vellum::viewport
