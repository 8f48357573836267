#include "viewport/files/mesh/Textures.h"

#include "viewport/files/images/TextureFile.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

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

constexpr std::size_t LONGEST_NAME = 200;  // in notes; addresses may hold whole pictures

// Where textures are kept beside a mesh file, in the order in which they are looked through.
constexpr char const* FOLDERS[] = {"textures", "texture", "tex", "images", "maps"};

/// The entry of a folder with this name, whatever the case of its letters.
std::optional<fs::path> entryOf(fs::path const& folder, std::string const& name) {
    std::error_code error;
    fs::path const exact = folder / name;
    if (fs::exists(exact, error)) {
        return exact;
    }
    std::string const wanted = lowerCase(name);
    std::optional<fs::path> found;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        // The order of entries is that of the disk; the first by name is the same on every machine.
        if (lowerCase(entry->path().filename().string()) == wanted && (!found || entry->path() < *found)) {
            found = entry->path();
        }
    }
    return found;
}

/// The file below a folder, whatever the case of its letters.
std::optional<fs::path> fileBelow(fs::path const& folder, std::vector<std::string> const& names) {
    fs::path place = folder;
    for (std::string const& name : names) {
        std::optional<fs::path> const next = entryOf(place, name);
        if (!next) {
            return std::nullopt;
        }
        place = *next;
    }
    return isFile(place) ? std::optional<fs::path>(place) : std::nullopt;
}

/// The folders of a mesh file's textures, as names below its own: that itself, those in it, and those beside
/// it.
std::vector<std::vector<std::string>> const& texturePlaces() {
    static std::vector<std::vector<std::string>> const places = [] {
        std::vector<std::vector<std::string>> all{{}};
        for (char const* const folder : FOLDERS) {
            all.push_back({folder});
        }
        for (char const* const folder : FOLDERS) {
            all.push_back({"..", folder});
        }
        return all;
    }();
    return places;
}

/// The parts of a path that may lie below another folder.
std::vector<std::string> namesOf(fs::path const& path) {
    std::vector<std::string> names;
    for (fs::path const& name : path.relative_path()) {
        if (!name.empty() && name != "." && name != "..") {
            names.push_back(name.string());
        }
    }
    return names;
}

// == Pictures in the mesh file itself ==

constexpr std::string_view DATA_ADDRESS = "data:";

/// What the four letters of base64 in a row stand for; -1 for other characters.
int base64Digit(char c) {
    return c >= 'A' && c <= 'Z'   ? c - 'A'
           : c >= 'a' && c <= 'z' ? c - 'a' + 26
           : c >= '0' && c <= '9' ? c - '0' + 52
           : c == '+' || c == '-' ? 62
           : c == '/' || c == '_' ? 63
                                  : -1;
}

/// The bytes of an address that holds its data ("data:image/png;base64,..."); empty for others.
std::vector<unsigned char> bytesOfAddress(std::string_view address) {
    std::vector<unsigned char> bytes;
    std::size_t const comma = address.find(',');
    if (address.substr(0, DATA_ADDRESS.size()) != DATA_ADDRESS || comma == std::string_view::npos) {
        return bytes;
    }
    std::string_view const content = address.substr(comma + 1);
    if (address.substr(0, comma).find(";base64") == std::string_view::npos) {
        std::string const plain = decodePercents(std::string(content));
        return {plain.begin(), plain.end()};
    }
    unsigned int held = 0;
    int bits = 0;
    for (char const c : content) {
        int const digit = base64Digit(c);
        if (digit < 0) {
            continue;
        }
        held = (held << 6 | static_cast<unsigned int>(digit)) & 0xFFFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<unsigned char>(held >> bits & 0xFFU));
        }
    }
    return bytes;
}

/// A picture that a material names or holds.
struct Source {
    std::string const& name;
    std::vector<unsigned char> const& bytes;
    unsigned int columns;
    unsigned int rows;
};

Source colorsOf(Material const& material) {
    return {material.texture, material.textureBytes, material.texelColumns, material.texelRows};
}

Source lightOf(Material const& material) {
    MaterialPicture const& light = material.emissionTexture;
    return {light.name, light.bytes, light.columns, light.rows};
}

/// The picture of pixels that the mesh file holds, upper row first.
Image imageOfTexels(Source const& source) {
    auto const image = std::make_shared<VL_Image>();
    if (!image->create(source.columns, source.rows, 4, 8)) {
        return nullptr;
    }
    std::size_t const stride = std::size_t(4) * source.columns;
    for (std::size_t row = 0; row < source.rows; ++row) {
        std::copy_n(source.bytes.data() + (source.rows - 1 - row) * stride, stride,
                    image->getBuffer() + row * stride);
    }
    return image;
}

/// A channel of a pixel from 0 to 1; of pictures of real numbers it may be any.
float channelAt(VL_Image const& image, std::size_t place) {
    return image.bitdepth() == 8    ? static_cast<float>(image.getBuffer()[place]) / 255.0F
           : image.bitdepth() == 16 ? static_cast<float>(image.getBuffer16()[place]) / 65535.0F
                                    : image.getBuffer32()[place];
}

// == Light ==

/// The colors of a picture multiplied with a color, without its opacity.
Image multiplied(VL_Image const& image, Color4<float> const& color) {
    auto product = std::make_shared<VL_Image>();
    if (!product->create(image.width(), image.height(), 3, 8)) {
        return nullptr;
    }
    std::size_t const channels = static_cast<std::size_t>(image.pixdepth() / image.bitdepth());
    float const factors[3] = {color.r, color.g, color.b};
    std::size_t const count = std::size_t(image.width()) * image.height();
    unsigned char* to = product->getBuffer();
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            float const value = factors[k] * channelAt(image, i * channels + k);
            *to++ = static_cast<unsigned char>(value > 0 ? 255 * std::min(value, 1.0F) + 0.5F : 0.0F);
        }
    }
    return product;
}

// == Opacity ==

/// The opacity of a picture's pixel, or its brightness where the picture has none; 0 to 1.
float opacityAt(VL_Image const& image, std::size_t pixel) {
    std::size_t const channels = static_cast<std::size_t>(image.pixdepth() / image.bitdepth());
    auto const channel = [&](std::size_t k) { return channelAt(image, pixel * channels + k); };
    float const value = channels == 4 ? channel(3) : (channel(0) + channel(1) + channel(2)) / 3;
    return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0.0F;
}

/// The colors of one picture with the opacity of another, which is stretched over it. Colors of more than 8
/// bits are rounded. White where there is no picture of colors.
Image withOpacity(Image const& colors, VL_Image const& opacity) {
    VL_Image const& sized = colors != nullptr ? *colors : opacity;
    auto const image = std::make_shared<VL_Image>();
    if (!image->create(sized.width(), sized.height(), 4, 8)) {
        return nullptr;
    }
    unsigned char* to = image->getBuffer();
    std::size_t const channels =
        colors != nullptr ? static_cast<std::size_t>(colors->pixdepth() / colors->bitdepth()) : 0;
    auto const colorAt = [&](std::size_t place) {
        float const value = colors->bitdepth() == 16
                                ? static_cast<float>(colors->getBuffer16()[place]) / 65535.0F
                                : colors->getBuffer32()[place];
        // Pictures of real numbers may hold some that are none; these compare as false.
        return static_cast<unsigned char>(value > 0 ? 255 * std::min(value, 1.0F) + 0.5F : 0.0F);
    };
    for (std::size_t y = 0; y < sized.height(); ++y) {
        for (std::size_t x = 0; x < sized.width(); ++x) {
            std::size_t const pixel = y * sized.width() + x;
            for (std::size_t k = 0; k < 3; ++k) {
                std::size_t const place = pixel * channels + k;
                *to++ = colors == nullptr         ? 255
                        : colors->bitdepth() == 8 ? colors->getBuffer()[place]
                                                  : colorAt(place);
            }
            std::size_t const column = x * opacity.width() / sized.width();
            std::size_t const row = y * opacity.height() / sized.height();
            *to++ =
                static_cast<unsigned char>(255 * opacityAt(opacity, row * opacity.width() + column) + 0.5F);
        }
    }
    return image;
}

/// Reads the pictures of one mesh, each once.
class TextureReader {
public:
    TextureReader(std::string const& meshPath, std::vector<Fault>& notes, Progress const& progress)
        : meshPath(meshPath), notes(notes), progress(progress) {}

    /// Null without a picture.
    Image read(Material const& material) {
        Image colors = material.texture.empty() ? nullptr : _picture(colorsOf(material));
        if (material.opacityTexture.empty()) {
            return colors;
        }
        // The same picture has both.
        Image const opacity =
            material.opacityTexture == material.texture
                ? colors
                : _named(material.opacityTexture, [&] { return _file(material.opacityTexture); });
        if (opacity == nullptr || (opacity == colors && opacity->pixdepth() == 4 * opacity->bitdepth())) {
            return colors;
        }
        std::pair<Image, Image> const both(colors, opacity);
        auto const [entry, isNew] = combined.emplace(both, nullptr);
        if (isNew) {
            entry->second = withOpacity(colors, *opacity);
        }
        return entry->second;
    }

    /// Of the material's light; null without a picture.
    Image readLight(Material const& material) {
        Image picture = _picture(lightOf(material));
        Color4<float> const& color = material.emission;
        bool const hasOpacity = picture != nullptr && picture->pixdepth() == 4 * picture->bitdepth();
        if (picture == nullptr || (!hasOpacity && color.r == 1 && color.g == 1 && color.b == 1)) {
            return picture;
        }
        auto const [entry, isNew] =
            lights.emplace(std::make_tuple(picture, color.r, color.g, color.b), nullptr);
        if (isNew) {
            entry->second = multiplied(*picture, color);
        }
        return entry->second;
    }

private:
    Image _picture(Source const& source) {
        return _named(source.name, [&]() -> Image {
            if (source.rows > 0) {
                return _readable(source.name, imageOfTexels(source), source.bytes);
            }
            if (!source.bytes.empty()) {
                return _readable(source.name, readImage(source.bytes, progress), source.bytes);
            }
            return _file(source.name);
        });
    }

    template <class Read>
    Image _named(std::string const& name, Read const& read) {
        auto const [entry, isNew] = known.emplace(name, nullptr);
        if (isNew) {
            entry->second = read();
        }
        return entry->second;
    }

    Image _file(std::string const& name) {
        std::vector<unsigned char> const bytes = bytesOfAddress(name);
        if (!bytes.empty()) {
            return _readable("data:", readImage(bytes, progress), bytes);
        }
        if (std::optional<std::string> const path = findTexture(meshPath, name)) {
            return _readable(name, readImage(*path, progress), *path);
        }
        notes.push_back({meshPath, "texture '" + name + "' is neither beside the file nor in " +
                                       _textureFolders() + "; drawn without it"});
        return nullptr;
    }

    /// \param source of the image, a path or bytes
    template <class Source>
    Image _readable(std::string const& name, Image image, Source const& source) {
        if (image == nullptr) {
            notes.push_back({meshPath, "texture '" + name.substr(0, LONGEST_NAME) + "' " +
                                           unreadableReason(source) + "; drawn without it"});
        }
        return image;
    }

    static std::string _textureFolders() {
        std::string text;
        for (char const* const folder : FOLDERS) {
            text += std::string(folder) + ", ";
        }
        return text + "../" + FOLDERS[0] + " and its like";
    }

    std::string const& meshPath;
    std::vector<Fault>& notes;
    Progress const& progress;
    std::map<std::string, Image> known;
    std::map<std::pair<Image, Image>, Image> combined;
    std::map<std::tuple<Image, float, float, float>, Image> lights;
};

}  // namespace

std::optional<std::string> findTexture(std::string const& meshPath, std::string const& name) {
    fs::path const folder = fs::path(meshPath).parent_path();
    std::string plain = name.rfind("file://", 0) == 0 ? name.substr(7) : name;
    std::replace(plain.begin(), plain.end(), '\\', '/');
    for (std::string const& variant : {plain, decodePercents(plain)}) {
        // Longer names than a disk has would be faults of each look.
        constexpr std::size_t LONGEST = 4096;
        if (variant.empty() || variant.size() >= LONGEST || variant.rfind(DATA_ADDRESS, 0) == 0) {
            continue;
        }
        fs::path const path(variant);
        if (isFile(folder / path)) {
            return (folder / path).lexically_normal().string();
        }
        // The most of the path that lies below the folder: names come from machines with other folders.
        std::vector<std::string> names = namesOf(path);
        for (; !names.empty(); names.erase(names.begin())) {
            for (std::vector<std::string> const& place : texturePlaces()) {
                std::vector<std::string> whole = place;
                whole.insert(whole.end(), names.begin(), names.end());
                if (std::optional<fs::path> const found = fileBelow(folder, whole)) {
                    return found->lexically_normal().string();
                }
            }
        }
    }
    return std::nullopt;
}

std::vector<Fault> loadTextures(std::string const& meshPath, MeshData& mesh, Progress const& progress) {
    std::vector<Fault> notes;
    std::vector<bool> isUsed(mesh.materials.size(), false);
    for (unsigned int material : mesh.triangleMaterials) {
        isUsed[material] = true;
    }
    if (mesh.triangleMaterials.empty() && !isUsed.empty()) {
        isUsed.front() = true;
    }
    TextureReader reader(meshPath, notes, progress);
    for (std::size_t i = 0; i < mesh.materials.size(); ++i) {
        Material& material = mesh.materials[i];
        std::string const& light = material.emissionTexture.name;
        bool const hasColors = !material.texture.empty() || !material.opacityTexture.empty();
        if ((!hasColors && light.empty()) || !isUsed[i]) {
            continue;
        }
        if (mesh.textureCoordinates.empty()) {
            std::string const& name = !material.texture.empty()          ? material.texture
                                      : !material.opacityTexture.empty() ? material.opacityTexture
                                                                         : light;
            notes.push_back(
                {meshPath, "texture '" + name.substr(0, LONGEST_NAME) +
                               "' has no place: the mesh has no texture coordinates; drawn without it"});
            continue;
        }
        if (hasColors) {
            material.image = reader.read(material);
        }
        if (!light.empty()) {
            material.emissionImage = reader.readLight(material);
        }
    }
    for (Material& material : mesh.materials) {
        material.textureBytes = {};
        material.texelColumns = 0;
        material.texelRows = 0;
        material.emissionTexture.bytes = {};
        material.emissionTexture.columns = 0;
        material.emissionTexture.rows = 0;
    }
    return notes;
}

}  // namespace vellum::viewport
