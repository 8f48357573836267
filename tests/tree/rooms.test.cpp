#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// Holds the includes of the product against the list of arrows in docs/architecture.md: the block that
/// begins with
/// ```rooms. Each of its lines is "room -> room room ..."; a room is a folder or a single file, relative to
/// the root.

namespace {

namespace fs = std::filesystem;

fs::path const ROOT = VL_SOURCE_ROOT;
char const* const FOLDERS[] = {"foundation", "vl_raster_gl", "toolkit", "offscreen", "viewport", "examples"};

using Graph = std::map<std::string, std::set<std::string>>;

std::string read(fs::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream) << file << " cannot be read";
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

/// The arrows of docs/architecture.md.
Graph listedArrows() {
    Graph arrows;
    std::istringstream text(read(ROOT / "docs" / "architecture.md"));
    std::string line;
    bool isInBlock = false;
    while (std::getline(text, line)) {
        if (line == "```rooms") {
            isInBlock = true;
        } else if (line == "```") {
            isInBlock = false;
        } else if (isInBlock && !line.empty()) {
            std::istringstream words(line);
            std::string from;
            std::string arrow;
            words >> from >> arrow;
            EXPECT_EQ(arrow, "->") << "docs/architecture.md: not an arrow: " << line;
            std::set<std::string>& targets = arrows[from];
            for (std::string to; words >> to;) {
                EXPECT_TRUE(targets.insert(to).second)
                    << "docs/architecture.md lists twice: " << from << " -> " << to;
            }
        }
    }
    EXPECT_FALSE(arrows.empty()) << "docs/architecture.md has no block that begins with ```rooms";
    return arrows;
}

std::set<std::string> roomsOf(Graph const& arrows) {
    std::set<std::string> rooms;
    for (auto const& [from, targets] : arrows) {
        rooms.insert(from);
        rooms.insert(targets.begin(), targets.end());
    }
    return rooms;
}

/// The smallest room that holds a file; empty where none does.
std::string roomOf(std::string const& file, std::set<std::string> const& rooms) {
    std::string place = file;
    while (rooms.count(place) == 0) {
        std::size_t const slash = place.rfind('/');
        if (slash == std::string::npos) {
            return "";
        }
        place.resize(slash);
    }
    return place;
}

/// The sources of the product, relative to the root.
std::vector<std::string> sources() {
    std::vector<std::string> files;
    for (char const* const folder : FOLDERS) {
        for (auto const& entry : fs::recursive_directory_iterator(ROOT / folder)) {
            std::string const ending = entry.path().extension().string();
            if (ending == ".h" || ending == ".cpp" || ending == ".inc") {
                files.push_back(fs::relative(entry.path(), ROOT).generic_string());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// The file of the tree that an include of `from` names, or nothing: a header of the system.
std::optional<std::string> resolve(std::string const& from, std::string const& name) {
    for (fs::path const& folder : {fs::path(from).parent_path(), fs::path(), fs::path("vl_raster_gl/src")}) {
        fs::path const candidate = (folder / name).lexically_normal();
        if (fs::is_regular_file(ROOT / candidate)) {
            return candidate.generic_string();
        }
    }
    return std::nullopt;
}

/// The files of the tree that each source of the product includes.
Graph includes() {
    Graph graph;
    for (std::string const& file : sources()) {
        std::set<std::string>& targets = graph[file];
        std::istringstream text(read(ROOT / file));
        for (std::string line; std::getline(text, line);) {
            std::size_t const begin = line.find_first_not_of(" \t");
            if (begin == std::string::npos || line.compare(begin, 8, "#include") != 0) {
                continue;
            }
            std::size_t const open = line.find('"');
            std::size_t const close = line.find('"', open + 1);
            if (open == std::string::npos || close == std::string::npos) {
                continue;
            }
            if (auto const target = resolve(file, line.substr(open + 1, close - open - 1))) {
                targets.insert(*target);
            }
        }
    }
    return graph;
}

/// The arrows between different rooms, each with an include that makes it.
std::map<std::pair<std::string, std::string>, std::string> drawnArrows(std::set<std::string> const& rooms) {
    std::map<std::pair<std::string, std::string>, std::string> arrows;
    for (auto const& [file, targets] : includes()) {
        for (std::string const& target : targets) {
            std::string const from = roomOf(file, rooms);
            std::string const to = roomOf(target, rooms);
            if (from != to) {
                arrows.emplace(std::pair(from, to.empty() ? target : to),
                               file + " includes \"" + target + "\"");
            }
        }
    }
    return arrows;
}

/// Walks along the arrows from a place.
/// \return the way from a place back to itself, or an empty string.
std::string circleFrom(Graph const& graph, std::string const& place, std::vector<std::string>& way,
                       std::set<std::string>& done) {
    auto const seen = std::find(way.begin(), way.end(), place);
    if (seen != way.end()) {
        std::string text;
        for (auto step = seen; step != way.end(); ++step) {
            text += *step + " -> ";
        }
        return text + place;
    }
    auto const targets = graph.find(place);
    if (targets == graph.end() || !done.insert(place).second) {
        return "";
    }
    way.push_back(place);
    for (std::string const& target : targets->second) {
        std::string const circle = circleFrom(graph, target, way, done);
        if (!circle.empty()) {
            return circle;
        }
    }
    way.pop_back();
    return "";
}

std::string anyCircle(Graph const& graph) {
    std::set<std::string> done;
    for (auto const& entry : graph) {
        std::vector<std::string> way;
        std::string const circle = circleFrom(graph, entry.first, way, done);
        if (!circle.empty()) {
            return circle;
        }
    }
    return "";
}

TEST(Rooms, everySourceLiesInAListedRoom) {
    std::set<std::string> const rooms = roomsOf(listedArrows());
    for (std::string const& file : sources()) {
        EXPECT_NE(roomOf(file, rooms), "") << file << " lies in no room that docs/architecture.md lists";
    }
}

TEST(Rooms, everyIncludeFollowsAListedArrow) {
    Graph const listed = listedArrows();
    for (auto const& [arrow, reason] : drawnArrows(roomsOf(listed))) {
        auto const& [from, to] = arrow;
        auto const targets = listed.find(from);
        EXPECT_TRUE(targets != listed.end() && targets->second.count(to) != 0)
            << reason << ", but docs/architecture.md does not list " << from << " -> " << to;
    }
}

TEST(Rooms, everyListedArrowIsUsed) {
    Graph const listed = listedArrows();
    auto const drawn = drawnArrows(roomsOf(listed));
    for (auto const& [from, targets] : listed) {
        for (std::string const& to : targets) {
            EXPECT_EQ(drawn.count({from, to}), 1)
                << "docs/architecture.md lists " << from << " -> " << to << ", but no file includes along it";
        }
    }
}

TEST(Rooms, roomsFormNoCircle) {
    EXPECT_EQ(anyCircle(listedArrows()), "") << "rooms of docs/architecture.md depend on each other";
}

TEST(Rooms, headersFormNoCircle) {
    Graph headers;
    for (auto const& [file, targets] : includes()) {
        if (file.substr(file.size() - 2) == ".h") {
            headers[file] = targets;
        }
    }
    EXPECT_EQ(anyCircle(headers), "") << "headers include each other";
}

TEST(Rooms, circlesAreFound) {
    EXPECT_EQ(anyCircle({{"a", {"b"}}, {"b", {"c"}}, {"c", {}}}), "");
    EXPECT_EQ(anyCircle({{"a", {"b"}}, {"b", {"c", "d"}}, {"d", {"b"}}}), "b -> d -> b");
    EXPECT_EQ(anyCircle({{"a", {"a"}}}), "a -> a");
}

}  // namespace
