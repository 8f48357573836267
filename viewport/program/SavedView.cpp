#include "viewport/program/SavedView.h"

#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/files/common/InputFile.h"
#include "viewport/files/images/output_file.h"
#include "viewport/program/CommandLine.h"
#include "viewport/program/to_words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace vellum::viewport {

namespace {

namespace fs = std::filesystem;

using OrderedJson = nlohmann::ordered_json;

constexpr int VERSION = 1;
constexpr std::size_t LARGEST = std::size_t(1) << 20;  // bytes; words of options are far fewer

// == Paths, as seen from the folder of the view ==

std::string fromFolder(fs::path const& folder, std::string const& file) {
    if (fs::path(file).is_absolute()) {
        return file;
    }
    std::string path = (folder / file).string();
    // Else it would be taken for an option, or for standard input.
    return path.front() == '-' ? "./" + path : path;
}

std::string toFolder(fs::path const& folder, std::string const& file) {
    std::error_code lack;
    fs::path const path = fs::absolute(file, lack).lexically_normal();
    fs::path const from = fs::absolute(folder.empty() ? "." : folder, lack).lexically_normal();
    // A folder that ends with a slash has an empty last part.
    fs::path const relative = path.lexically_relative(from.has_filename() ? from : from.parent_path());
    return relative.empty() || *relative.begin() == ".." ? path.string() : relative.string();
}

// == Reading ==

/// A text without zeros, which would end a path; nothing for all else.
std::optional<std::string> textOf(OrderedJson const& json) {
    std::string text;
    if (json.is_string()) {
        text = json.get<std::string>();
    } else if (json.is_boolean() || json.is_number()) {
        text = json.dump();
    }
    bool const isText = !text.empty() && text.find('\0') == std::string::npos;
    return isText ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<std::string> readFiles(OrderedJson const& json, fs::path const& folder,
                                     std::vector<std::string>& files) {
    if (!json.is_array()) {
        return "'files' is not a list";
    }
    for (OrderedJson const& entry : json) {
        std::optional<std::string> const file = entry.is_string() ? textOf(entry) : std::nullopt;
        if (!file) {
            return "'files' holds something other than a path";
        }
        files.push_back(fromFolder(folder, *file));
    }
    return std::nullopt;
}

std::optional<std::string> readOptions(OrderedJson const& json, fs::path const& folder,
                                       std::vector<Configuration::Line>& lines) {
    constexpr std::size_t DASHES = 2;
    if (!json.is_object()) {
        return "'options' is not an object";
    }
    std::string const effect = json.contains("--effect") ? textOf(json["--effect"]).value_or("") : "";
    auto const toHere = [&folder](std::string const& path) { return fromFolder(folder, path); };
    for (auto const& [name, value] : json.items()) {
        if (name.compare(0, DASHES, "--") != 0 || name.size() == DASHES) {
            return "there is no option '" + name + "'";
        }
        for (OrderedJson const& entry : value.is_array() ? value : OrderedJson::array({value})) {
            std::optional<std::string> const word = textOf(entry);
            if (!word) {
                return name + ": is neither a text nor a number, true or false";
            }
            lines.push_back({0, name.substr(DASHES), withPath({name, *word}, effect, toHere)});
        }
    }
    return std::nullopt;
}

std::optional<std::string> readView(OrderedJson const& json, fs::path const& folder, SavedView& view) {
    if (!json.is_object() || !json.contains("version")) {
        return "is not a saved view";
    }
    if (!json["version"].is_number_integer() || json["version"] != VERSION) {
        return "is a view of version " + json["version"].dump() + ", of which nothing is known";
    }
    for (auto const& [name, value] : json.items()) {
        bool const isFiles = name == "files";
        std::optional<std::string> lack;
        if (isFiles) {
            lack = readFiles(value, folder, view.files);
        } else if (name == "options") {
            lack = readOptions(value, folder, view.options.lines);
        } else if (name != "version") {
            lack = "has an unknown entry '" + name + "'";
        }
        if (lack) {
            return lack;
        }
    }
    return std::nullopt;
}

// == Writing ==

OrderedJson toJson(fs::path const& folder, Options const& options) {
    auto const toThere = [&folder](std::string const& path) { return toFolder(folder, path); };
    OrderedJson files = OrderedJson::array();
    for (std::string const& file : options.files) {
        files.push_back(toThere(file));
    }
    std::vector<OptionWord> const words = toWords(options);
    std::string const effect = options.effect ? nameOf(options.effect->values) : "";
    OrderedJson saved = OrderedJson::object();
    for (OptionWord const& option : words) {
        std::string const word = withPath(option, effect, toThere);
        // Some may be given several times.
        if (option.option == "--effect-param" || option.option == "--transform") {
            saved[option.option].push_back(word);
        } else {
            saved[option.option] = word == "true" ? OrderedJson(true) : OrderedJson(word);
        }
    }
    return {{"version", VERSION}, {"files", files}, {"options", saved}};
}

}  // namespace

bool SavedView::isOne(std::string const& path) {
    return lowerCase(fs::path(path).extension().string()) == EXTENSION;
}

Result<SavedView> SavedView::read(std::string const& path) {
    errno = 0;
    std::error_code ignored;
    std::ifstream stream(path, std::ios::binary);
    if (!stream || fs::is_directory(path, ignored)) {
        return Fault{path,
                     std::string("cannot be read: ") + (errno != 0 ? std::strerror(errno) : "is a folder")};
    }
    std::string text(LARGEST + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > LARGEST) {
        return Fault{path, "is not a saved view: it is too large"};
    }
    OrderedJson const json = OrderedJson::parse(text, nullptr, false);
    if (json.is_discarded()) {
        return Fault{path, text.empty() ? "is empty" : "is damaged: it is not a complete JSON document"};
    }
    SavedView view;
    view.options.file = path;
    std::optional<std::string> const lack = readView(json, fs::path(path).parent_path(), view);
    return lack ? Result<SavedView>(Fault{path, *lack}) : Result<SavedView>(std::move(view));
}

std::optional<Fault> saveView(std::string const& path, Options const& options) {
    if (std::any_of(options.files.begin(), options.files.end(), InputFile::isStandardInput)) {
        return Fault{path, "is not written: standard input cannot be read again"};
    }
    std::string text;
    try {
        text = toJson(fs::path(path).parent_path(), options).dump(2) + "\n";
    } catch (OrderedJson::type_error const&) {
        return Fault{path, "is not written: the name of a file is not UTF-8"};
    }
    return writeOutput(path, [&text](std::FILE* file) {
        return std::string(
            std::fwrite(text.data(), 1, text.size(), file) == text.size() ? "" : std::strerror(errno));
    });
}

Result<Options> loadView(std::string const& path) {
    // Not taken for an option.
    std::string const name = fromFolder("", path);
    char const* const arguments[] = {"vl_viewport", name.c_str()};
    CommandLine const line = parseCommandLine(static_cast<int>(std::size(arguments)), arguments);
    return line.options ? Result<Options>(*line.options) : Result<Options>(line.fault);
}

std::string newViewPath(std::vector<std::string> const& files) {
    if (files.empty()) {
        return "";
    }
    fs::path const first(files.front());
    std::string const name = (first.parent_path() / first.stem()).string();
    std::error_code ignored;
    std::string path = name + SavedView::EXTENSION;
    for (int number = 2; fs::exists(path, ignored); ++number) {
        path = name + "-" + std::to_string(number) + SavedView::EXTENSION;
    }
    return path;
}

}  // namespace vellum::viewport
