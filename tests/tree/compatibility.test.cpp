#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>
#include <vector>

// Reads the source tree: every mark of a deliberate oddity has a name, every name an entry in
// docs/compatibility.md, and every entry a mark in the product.

namespace {

using std::filesystem::path;

path const ROOT = VL_SOURCE_ROOT;

struct Marks {
    std::map<std::string, std::string> fileByName;
    std::vector<std::string> unnamed;  // files, once for each mark
};

std::string textOf(path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// A mark is the word followed by a colon or a parenthesis; in other places it is just a word.
void addMarksOf(path const& file, Marks& marks) {
    static std::string const WORD = "Deliberate";
    static std::regex const NAME(R"(^ \(([a-z0-9-]+)\):)");
    static std::regex const MARK(R"(^(:|\s*\())");
    std::string const text = textOf(file);
    std::string const name = file.lexically_relative(ROOT).string();
    for (auto at = text.find(WORD); at != std::string::npos; at = text.find(WORD, at + 1)) {
        std::string const rest = text.substr(at + WORD.size(), 80);
        std::smatch match;
        if (std::regex_search(rest, match, NAME)) {
            marks.fileByName.emplace(match[1], name);
        } else if (std::regex_search(rest, MARK)) {
            marks.unnamed.push_back(name);
        }
    }
}

Marks marksIn(std::vector<std::string> const& folders) {
    Marks marks;
    for (std::string const& folder : folders) {
        if (!std::filesystem::exists(ROOT / folder)) {
            continue;
        }
        for (auto const& entry : std::filesystem::recursive_directory_iterator(ROOT / folder)) {
            std::string const extension = entry.path().extension().string();
            if (entry.is_regular_file() && (extension == ".h" || extension == ".cpp")) {
                addMarksOf(entry.path(), marks);
            }
        }
    }
    return marks;
}

std::vector<std::string> const PRODUCT{"foundation", "vl_raster_gl", "toolkit", "offscreen", "viewport"};

std::vector<std::string> const EVERYTHING{"foundation", "vl_raster_gl", "toolkit",  "offscreen",
                                          "viewport",   "benchmarks",   "examples", "tests"};

std::vector<std::string> entries() {
    static std::regex const HEADING("### `([a-z0-9-]+)`");
    std::vector<std::string> names;
    std::ifstream page(ROOT / "docs" / "compatibility.md");
    for (std::string line; std::getline(page, line);) {
        std::smatch match;
        if (std::regex_match(line, match, HEADING)) {
            names.push_back(match[1]);
        }
    }
    return names;
}

}  // namespace

TEST(compatibility_test, everyMarkHasAName) {
    for (std::string const& file : marksIn(EVERYTHING).unnamed) {
        ADD_FAILURE() << file << " has a mark without a name";
    }
}

TEST(compatibility_test, everyNameHasAnEntry) {
    std::vector<std::string> const names = entries();
    for (auto const& [name, file] : marksIn(EVERYTHING).fileByName) {
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end())
            << name << " is marked in " << file << " and has no entry in docs/compatibility.md";
    }
}

TEST(compatibility_test, everyEntryHasAMarkInTheProduct) {
    Marks const marks = marksIn(PRODUCT);
    std::vector<std::string> const names = entries();
    ASSERT_FALSE(names.empty()) << "docs/compatibility.md has no entries";
    for (std::string const& name : names) {
        EXPECT_EQ(marks.fileByName.count(name), 1U)
            << name << " has an entry in docs/compatibility.md and no mark in the source";
    }
}

TEST(compatibility_test, everyEntryHasItsOwnName) {
    std::vector<std::string> names = entries();
    std::sort(names.begin(), names.end());
    auto const twice = std::adjacent_find(names.begin(), names.end());
    EXPECT_EQ(twice, names.end()) << "two entries have the same name";
}
