#include "viewport/live/WindowSettings.h"

#include "viewport/files/common/InputFile.h"
#include "viewport/files/images/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <nlohmann/json.hpp>

namespace vellum::viewport {

namespace {

namespace fs = std::filesystem;

using OrderedJson = nlohmann::ordered_json;

constexpr std::size_t LARGEST_FILE = std::size_t(1) << 20;  // bytes

std::optional<int> sideOf(OrderedJson const& json, char const* name) {
    auto const found = json.find(name);
    if (found == json.end() || !found->is_number_integer()) {
        return std::nullopt;
    }
    auto const side = found->get<long long>();
    return side >= WindowSettings::SMALLEST && side <= WindowSettings::LARGEST
               ? std::optional<int>(static_cast<int>(side))
               : std::nullopt;
}

}  // namespace

std::string WindowSettings::userFile() {
    char const* const folder = std::getenv("XDG_CONFIG_HOME");
    char const* const home = std::getenv("HOME");
    if (folder != nullptr && *folder == '/') {
        return (fs::path(folder) / "vl_viewport" / "window.json").string();
    }
    return home != nullptr && *home == '/'
               ? (fs::path(home) / ".config" / "vl_viewport" / "window.json").string()
               : std::string();
}

std::optional<Fault> WindowSettings::load(std::string const& file) {
    path = file;
    stored = _text();
    std::error_code ignored;
    if (path.empty() || !fs::exists(path, ignored)) {
        return std::nullopt;
    }
    std::ifstream stream(path, std::ios::binary);
    std::string text(LARGEST_FILE + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    OrderedJson const json =
        text.size() > LARGEST_FILE ? OrderedJson() : OrderedJson::parse(text, nullptr, false);
    if (!json.is_object()) {
        stored.clear();
        return Fault{path, "is damaged and not taken"};
    }
    stored = text;
    width = sideOf(json, "width");
    height = sideOf(json, "height");
    if (!width || !height) {
        width.reset();
        height.reset();
    }
    auto const panel = json.find("panel");
    hasPanel = panel == json.end() || !panel->is_boolean() || panel->get<bool>();
    recent.clear();
    auto const files = json.find("recent");
    if (files != json.end() && files->is_array()) {
        for (OrderedJson const& entry : *files) {
            std::string const name = entry.is_string() ? entry.get<std::string>() : std::string();
            bool const isPath = fs::path(name).is_absolute() && name.find('\0') == std::string::npos;
            if (isPath && recent.size() < MOST_FILES) {
                recent.push_back(name);
            }
        }
    }
    return std::nullopt;
}

std::optional<Fault> WindowSettings::save() {
    std::string const text = _text();
    if (path.empty() || text == stored) {
        return std::nullopt;
    }
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    std::optional<Fault> fault = writeOutput(path, [&text](std::FILE* file) {
        return std::string(
            std::fwrite(text.data(), 1, text.size(), file) == text.size() ? "" : std::strerror(errno));
    });
    if (!fault) {
        stored = text;
    }
    return fault;
}

void WindowSettings::remember(std::vector<std::string> const& files) {
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        if (!InputFile::isStandardInput(*file)) {
            std::error_code ignored;
            std::string const name = fs::absolute(*file, ignored).lexically_normal().string();
            forget(name);
            recent.insert(recent.begin(), name);
        }
    }
    recent.resize(std::min(recent.size(), MOST_FILES));
}

void WindowSettings::forget(std::string const& file) {
    recent.erase(std::remove(recent.begin(), recent.end(), file), recent.end());
}

std::string WindowSettings::_text() const {
    OrderedJson json = OrderedJson::object();
    if (width && height) {
        json["width"] = *width;
        json["height"] = *height;
    }
    json["panel"] = hasPanel;
    json["recent"] = recent;
    // A name that is not UTF-8 cannot be written; what is put in its place leads nowhere.
    return json.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

}  // namespace vellum::viewport
