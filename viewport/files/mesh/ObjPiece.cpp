#include "viewport/files/mesh/ObjPiece.h"

#include "viewport/files/mesh/blanks.h"
#include "viewport/text/data_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vellum::viewport {

namespace {

char const* skipBlanks(char const* here, char const* end) {
    while (here != end && isBlank(*here)) {
        ++here;
    }
    return here;
}

bool isAtLineEnd(char const* here, char const* end) {
    return here == end || *here == FEED || *here == '#';
}

/// Takes some numbers. \return behind the last one; null where there are fewer, or one has an unusual end.
template <std::size_t COUNT>
char const* takeNumbers(char const* here, char const* end, double (&numbers)[COUNT]) {
    for (double& number : numbers) {
        here = skipBlanks(here, end);
        char const* const next = isAtLineEnd(here, end) ? nullptr : takeDataNumber(here, end, number);
        if (next == nullptr || !(next == end || isBlank(*next) || *next == FEED)) {
            return nullptr;
        }
        here = next;
    }
    return here;
}

/// Takes an index other than 0. \return behind it, or null.
char const* takeIndex(char const* here, char const* end, std::int32_t& index) {
    constexpr std::ptrdiff_t MOST_DIGITS = 9;
    bool const isBackward = here != end && *here == '-';
    here += isBackward ? 1 : 0;
    char const* const first = here;
    std::int32_t number = 0;
    for (; here != end && isDigit(*here) && here - first < MOST_DIGITS; ++here) {
        number = 10 * number + (*here - '0');
    }
    index = isBackward ? -number : number;
    return number != 0 ? here : nullptr;
}

}  // namespace

Vector3<float> objNormal(double x, double y, double z) {
    double const size = std::sqrt(x * x + y * y + z * z);
    bool const isUsable = std::isfinite(size) && size > 0;
    Vector3<double> const normal = Vector3<double>{x, y, z} * (1 / size);
    return isUsable ? convert<float>(normal) : Vector3<float>{0, 0, 0};
}

Vector2<float> objTexture(double u, double v) {
    Vector2<float> const place{static_cast<float>(u), static_cast<float>(v)};
    return std::isfinite(place.x) && std::isfinite(place.y) ? place : Vector2<float>{0, 0};
}

float objColorPart(double value) {
    constexpr double LARGEST_PART = 1e30;
    return value > 0 ? static_cast<float>(std::min(value, LARGEST_PART)) : 0.0F;
}

void ObjPiece::read(std::string_view text, char const* textEnd) {
    // The memory of a former text is used again.
    runs.clear();
    positions.clear();
    colors.clear();
    textures.clear();
    normals.clear();
    corners.clear();
    faces.clear();
    others.clear();
    stop = nullptr;
    char const* here = text.data();
    char const* const end = here + text.size();
    while (here != end) {
        void const* const feed = std::memchr(here, FEED, static_cast<std::size_t>(end - here));
        char const* const lineEnd = feed != nullptr ? static_cast<char const*>(feed) : end;
        char const* last = lineEnd;
        last -= last != here && last[-1] == '\r' ? 1 : 0;
        if (last != here && last[-1] == '\\') {
            stop = here;
            return;
        }
        if (!_readStatement(here, textEnd)) {
            others.push_back(here);
            _count(Kind::OTHERS);
        }
        here = lineEnd != end ? lineEnd + 1 : end;
    }
}

/// \return false where the reader of the file must read the line
bool ObjPiece::_readStatement(char const* here, char const* textEnd) {
    char const* const first = skipBlanks(here, textEnd);
    if (isAtLineEnd(first, textEnd)) {
        return true;
    }
    char const* const second = first + 1;
    if (second == textEnd) {
        return false;
    }
    if (isBlank(*second)) {
        switch (*first) {
        case 'v':
            return _readPosition(second, textEnd);
        case 'f':
            return _readFace(here, second, textEnd);
        default:
            // Smoothing groups are not taken.
            return *first == 's';
        }
    }
    if (*first != 'v' || second + 1 == textEnd || !isBlank(second[1])) {
        return false;
    }
    return *second == 'n'   ? _readNormal(second + 1, textEnd)
           : *second == 't' ? _readTexture(second + 1, textEnd)
                            : false;
}

bool ObjPiece::_readPosition(char const* here, char const* textEnd) {
    double place[3];
    here = takeNumbers(here, textEnd, place);
    if (here == nullptr) {
        return false;
    }
    double color[3];
    bool const hasColor = !isAtLineEnd(skipBlanks(here, textEnd), textEnd);
    if (hasColor) {
        here = takeNumbers(here, textEnd, color);
        // A single number more is a weight or an opacity.
        if (here == nullptr || !isAtLineEnd(skipBlanks(here, textEnd), textEnd)) {
            return false;
        }
        colors.push_back({objColorPart(color[0]), objColorPart(color[1]), objColorPart(color[2]), 1});
    }
    positions.push_back({place[0], place[1], place[2]});
    _count(hasColor ? Kind::COLORED_POSITIONS : Kind::POSITIONS);
    return true;
}

bool ObjPiece::_readTexture(char const* here, char const* textEnd) {
    double place[2];
    if (takeNumbers(here, textEnd, place) == nullptr) {
        return false;
    }
    textures.push_back(objTexture(place[0], place[1]));
    _count(Kind::TEXTURES);
    return true;
}

bool ObjPiece::_readNormal(char const* here, char const* textEnd) {
    double direction[3];
    if (takeNumbers(here, textEnd, direction) == nullptr) {
        return false;
    }
    normals.push_back(objNormal(direction[0], direction[1], direction[2]));
    _count(Kind::NORMALS);
    return true;
}

bool ObjPiece::_readFace(char const* statement, char const* here, char const* textEnd) {
    std::size_t const first = corners.size();
    bool hasPairs = false;
    for (here = skipBlanks(here, textEnd); !isAtLineEnd(here, textEnd); here = skipBlanks(here, textEnd)) {
        Corner corner{{0, 0, 0}};
        here = takeIndex(here, textEnd, corner.indices[0]);
        if (here != nullptr && here != textEnd && *here == '/') {
            bool const hasSecond = here + 1 != textEnd && here[1] != '/';
            here = hasSecond ? takeIndex(here + 1, textEnd, corner.indices[1]) : here + 1;
            if (here != nullptr && here != textEnd && *here == '/') {
                here = takeIndex(here + 1, textEnd, corner.indices[2]);
            } else {
                hasPairs = true;
            }
        }
        if (here == nullptr || !(here == textEnd || isBlank(*here) || *here == FEED)) {
            corners.resize(first);
            return false;
        }
        corners.push_back(corner);
    }
    std::size_t const count = corners.size() - first;
    if (count < 3) {
        corners.resize(first);
        return false;
    }
    faces.push_back({statement, count});
    _count(Kind::FACES, hasPairs);
    return true;
}

void ObjPiece::_count(Kind kind, bool hasPairs) {
    if (runs.empty() || runs.back().kind != kind) {
        runs.push_back({kind, false, 0});
    }
    runs.back().hasPairs = runs.back().hasPairs || hasPairs;
    ++runs.back().count;
}

}  // namespace vellum::viewport
