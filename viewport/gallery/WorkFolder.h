#pragma once

#include <string>

namespace vellum::gallery {

/// A hidden folder inside the gallery's folder, removed with all that is in it at the end of the scope. A
/// picture that is finished in it is renamed into the gallery, which takes one step as both lie on one file
/// system.
class WorkFolder {
public:
    explicit WorkFolder(std::string const& parent);  ///< makes the folder; see isValid()
    ~WorkFolder();
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;

    bool isValid() const { return !location.empty(); }
    std::string const& path() const { return location; }

    /// The path of a file in the folder.
    std::string file(std::string const& name) const { return location + "/" + name; }

private:
    std::string location;  // empty where the folder could not be made
};

}  // namespace vellum::gallery
