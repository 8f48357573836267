#include "viewport/program/word_values.h"

#include "viewport/scene/rgb_color.h"
#include "viewport/text/numbers.h"

#include <charconv>

namespace vellum::viewport {

Fault usageFault(std::string const& message) {
    return {"", message};
}

Fault wordFault(std::string const& option, std::string const& word, std::string const& lack) {
    return usageFault(option + ": '" + word + "' is not " + lack);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t end = 0;
    while ((end = text.find(separator)) != std::string_view::npos) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

std::optional<Color4<float>> toColor(std::string_view text) {
    if (!text.empty() && text.front() == '#') {
        text.remove_prefix(1);
    }
    unsigned int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error != std::errc() || end != text.data() + text.size() || text.size() != 6) {
        return std::nullopt;
    }
    return colorOfRgb(number);
}

std::optional<std::pair<int, int>> toPair(std::string_view text, char separator) {
    std::size_t const middle = text.find(separator);
    if (middle == std::string_view::npos) {
        return std::nullopt;
    }
    std::optional<int> const first = toInteger(text.substr(0, middle));
    std::optional<int> const second = toInteger(text.substr(middle + 1));
    return first && second ? std::optional<std::pair<int, int>>({*first, *second}) : std::nullopt;
}

std::optional<std::vector<double>> toReals(std::string_view text, std::size_t count) {
    std::vector<double> numbers;
    for (std::string_view const word : split(text, ',')) {
        std::optional<double> const number = toReal(word);
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers.size() == count ? std::optional<std::vector<double>>(numbers) : std::nullopt;
}

std::optional<Vector3<double>> toVector(std::string_view text) {
    std::optional<std::vector<double>> const n = toReals(text, 3);
    return n ? std::optional<Vector3<double>>({(*n)[0], (*n)[1], (*n)[2]}) : std::nullopt;
}

std::optional<Box3<double>> toBox(std::string_view text) {
    std::optional<std::vector<double>> const n = toReals(text, 6);
    if (!n || !((*n)[0] < (*n)[1] && (*n)[2] < (*n)[3] && (*n)[4] < (*n)[5])) {
        return std::nullopt;
    }
    return Box3<double>{{(*n)[0], (*n)[2], (*n)[4]}, {(*n)[1], (*n)[3], (*n)[5]}};
}

}  // namespace vellum::viewport
