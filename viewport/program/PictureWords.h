#pragma once

#include "viewport/content/PictureOptions.h"
#include "viewport/text/Fault.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vellum::viewport {

/// The options of one picture as they are written on the command line.
class PictureWords {
public:
    /// Sets the word of an option, such as "--size"; that of a flag is "true". A fault where it has one
    /// already.
    std::optional<Fault> set(std::string const& option, std::string const& word);

    bool has(std::string const& option) const { return words.count(option) != 0; }

    /// Takes over the words of others for the options that have none.
    void complete(PictureWords const& others) { words.insert(others.words.begin(), others.words.end()); }

    /// The picture. A fault is the first thing that is wrong with it.
    std::optional<Fault> read(PictureOptions& picture) const;

private:
    std::string _word(std::string const& option) const;

    std::optional<Fault> _readSize(PictureOptions& picture) const;
    std::optional<Fault> _readPick(PictureOptions& picture) const;
    std::optional<Fault> _readQuality(PictureOptions& picture) const;
    std::optional<Fault> _readCamera(CameraSpec& camera) const;
    std::optional<Fault> _cameraConflict() const;
    std::optional<Fault> _readVector(char const* option, std::optional<Vector3<double>>& vector) const;
    std::optional<Fault> _readNumber(char const* option, double low, double high, char const* meaning,
                                     std::optional<double>& number) const;
    std::optional<Fault> _readBackground(Background& background) const;
    std::optional<Fault> _readLight(std::optional<LightSpec>& light) const;

    std::map<std::string, std::string> words;  // by the option
};

/// The options of pictures on a command line with several of them: those that stand after an --out, up to the
/// next one, are of that picture alone; those before the first are of all pictures.
class PictureList {
public:
    /// Declares the options.
    void addTo(CLI::App& app);

    /// Whether the option is one of a picture.
    bool knows(std::string const& option) const { return places.count(option) != 0; }

    /// Whether it takes no word.
    bool isFlag(std::string const& option) const;

    /// Reads them after the command line was parsed.
    /// \param standard words for what no option says
    std::optional<Fault> read(CLI::App const& app, PictureWords const& standard,
                              std::vector<PictureOptions>& pictures) const;

private:
    struct Place {
        CLI::Option* option;
        std::vector<std::string> given;  // words, in their order; not of flags
    };

    std::map<std::string, Place> places;  // by the option
};

}  // namespace vellum::viewport
