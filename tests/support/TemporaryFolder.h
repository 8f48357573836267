#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <stdlib.h>

/// A folder of a test's own, removed with all that is in it at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "vl_viewport_test-XXXXXX").string();
        _path = mkdtemp(name.data()) != nullptr ? name : std::string();
        // Tests that act as another user are to get as far as the files.
        std::filesystem::permissions(_path, std::filesystem::perms(0755));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    /// The path of a file in the folder, whether it exists or not.
    std::string file(std::string const& name) const { return _path + "/" + name; }

    /// Writes a file and gives its path.
    std::string write(std::string const& name, std::string const& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }

    std::string read(std::string const& name) const {
        std::ifstream stream(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }

    /// The names of all files in it, hidden ones too, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (auto const& entry : std::filesystem::directory_iterator(_path)) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::string _path;
};
