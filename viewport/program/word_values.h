#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/text/Fault.h"
#include "viewport/text/joined.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// \file
/// Words of a command line as values. Nothing where a word is not of the stated form.

namespace vellum::viewport {

/// A fault of the command line, without a file's name.
Fault usageFault(std::string const& message);

/// The same of an option: "--size: 'x' is not ...".
Fault wordFault(std::string const& option, std::string const& word, std::string const& lack);

std::vector<std::string_view> split(std::string_view text, char separator);

/// A color as six hexadecimal digits, with or without a '#' before them.
std::optional<Color4<float>> toColor(std::string_view text);

/// Two numbers from 0 on with a separator between them.
std::optional<std::pair<int, int>> toPair(std::string_view text, char separator);

/// A number of finite reals with commas between them.
std::optional<std::vector<double>> toReals(std::string_view text, std::size_t count);

/// "X,Y,Z"
std::optional<Vector3<double>> toVector(std::string_view text);

/// "xmin,xmax,ymin,ymax,zmin,zmax", each minimum below its maximum.
std::optional<Box3<double>> toBox(std::string_view text);

template <class Value>
using Modes = std::map<std::string, Value>;

/// Reads the word of an option with a few known words.
/// \param value a Value, or an optional one; unchanged where the word is empty.
template <class Value, class Place>
std::optional<Fault> readMode(char const* const option, std::string const& word, Modes<Value> const& modes,
                              Place& value) {
    if (word.empty()) {
        return std::nullopt;
    }
    auto const found = modes.find(word);
    if (found != modes.end()) {
        value = found->second;
        return std::nullopt;
    }
    std::vector<std::string> known;
    for (auto const& mode : modes) {
        known.push_back(mode.first);
    }
    return usageFault(std::string(option) + ": unknown mode '" + word + "' (known: " + joined(known) + ")");
}

}  // namespace vellum::viewport
