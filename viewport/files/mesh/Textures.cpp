#include "viewport/files/mesh/Textures.h"

#include "viewport/files/images/TextureFile.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

namespace vellum::viewport {

namespace {

namespace fs = std::filesystem;

using Image = std::shared_ptr<VL_Image const>;

int hexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) == 0 ? -1
           : c <= '9'                                        ? c - '0'
                                                             : (c | 0x20) - 'a' + 10;
}

/// "%20" and its like as the characters they stand for: names in glTF and COLLADA files are addresses.
std::string decodePercents(std::string const& text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        int const high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        int const low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low >= 0 && high + low > 0) {
            decoded.push_back(static_cast<char>(high * 16 + low));
            i += 2;
        } else {
            decoded.push_back(text[i]);
        }
    }
    return decoded;
}

bool isFile(fs::path const& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

}  // namespace

std::optional<std::string> findTexture(std::string const& meshPath, std::string const& name) {
    fs::path const folder = fs::path(meshPath).parent_path();
    std::string plain = name.rfind("file://", 0) == 0 ? name.substr(7) : name;
    std::replace(plain.begin(), plain.end(), '\\', '/');
    for (std::string const& variant : {plain, decodePercents(plain)}) {
        fs::path const path(variant);
        for (fs::path const& candidate : {folder / path, folder / path.filename()}) {
            if (isFile(candidate)) {
                return candidate.lexically_normal().string();
            }
        }
    }
    std::string const wanted = lowerCase(fs::path(decodePercents(plain)).filename().string());
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (lowerCase(entry->path().filename().string()) == wanted && isFile(entry->path())) {
            return entry->path().string();
        }
    }
    return std::nullopt;
}

std::vector<Fault> loadTextures(std::string const& meshPath, MeshData& mesh) {
    std::vector<Fault> notes;
    std::map<std::string, Image> known;
    std::vector<bool> isUsed(mesh.materials.size(), false);
    for (unsigned int material : mesh.triangleMaterials) {
        isUsed[material] = true;
    }
    for (std::size_t i = 0; i < mesh.materials.size(); ++i) {
        Material& material = mesh.materials[i];
        if (material.texture.empty() || !isUsed[i] || mesh.textureCoordinates.empty()) {
            continue;
        }
        auto const [entry, isNew] = known.emplace(material.texture, nullptr);
        if (isNew) {
            std::string const shown = "texture '" + material.texture + "' ";
            if (!material.textureBytes.empty()) {
                entry->second = readImage(material.textureBytes);
            } else if (std::optional<std::string> const path = findTexture(meshPath, material.texture)) {
                entry->second = readImage(*path);
            } else {
                notes.push_back({meshPath, shown + "is not beside the file; drawn without it"});
                continue;
            }
            if (entry->second == nullptr) {
                notes.push_back({meshPath, shown + "is not a readable picture; drawn without it"});
            }
        }
        material.image = entry->second;
        material.textureBytes = {};
    }
    return notes;
}

}  // namespace vellum::viewport
