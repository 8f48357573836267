#pragma once

#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What a window keeps from one run to the next. A file of it is never needed: what it lacks is as by
/// default.
///
///     WindowSettings settings;
///     std::optional<Fault> const note = settings.load(WindowSettings::userFile());
///     settings.width = 800;
///     settings.save();           // only where something has changed
class WindowSettings {
public:
    static constexpr std::size_t MOST_FILES = 10;
    static constexpr int SMALLEST = 64;    ///< of width and height
    static constexpr int LARGEST = 16384;  ///< alike

    std::optional<int> width;  ///< in points; both or neither
    std::optional<int> height;
    bool hasPanel = true;

    /// vl_viewport/window.json in $XDG_CONFIG_HOME, or else in ~/.config. Empty where there is neither.
    static std::string userFile();

    /// Reads them and keeps the path for save(). A fault where the file is damaged: it is then not taken, and
    /// replaced by save(). No file is no fault.
    std::optional<Fault> load(std::string const& file);

    /// Writes them, complete or not at all, where they differ from what was read or written last. Makes the
    /// folder. A fault where it cannot be written.
    std::optional<Fault> save();

    /// What has been open, the last one first; absolute paths.
    std::vector<std::string> const& recentFiles() const { return recent; }

    /// The files have been opened. Standard input is left out; the oldest ones are forgotten.
    void remember(std::vector<std::string> const& files);

    void forget(std::string const& file);

private:
    std::string _text() const;

    std::string path;
    std::string stored;  // the text of the file
    std::vector<std::string> recent;
};

}  // namespace vellum::viewport
