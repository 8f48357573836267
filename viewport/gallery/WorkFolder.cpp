#include "viewport/gallery/WorkFolder.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace vellum::gallery {

namespace fs = std::filesystem;

WorkFolder::WorkFolder(std::string const& parent) {
    std::string name = (fs::path(parent) / ".vl_gallery-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) {
        location = name;
    }
}

WorkFolder::~WorkFolder() {
    if (isValid()) {
        std::error_code ignored;
        fs::remove_all(location, ignored);
    }
}

}  // namespace vellum::gallery
