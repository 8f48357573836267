#include "viewport/program/describe_pick.h"

#include "viewport/text/shortest_number.h"
#include "viewport/text/single_line.h"

#include <cmath>

namespace vellum::viewport {

namespace {

std::string entry(std::string const& key, std::string const& value) {
    return "  " + singleLine(key + ": " + value) + "\n";
}

std::string text(double number) {
    if (std::isnan(number)) {
        return "nan";
    }
    return std::isfinite(number) ? exactNumber(number) : number > 0 ? "inf" : "-inf";
}

std::string text(Vector3<double> const& v) {
    return text(v.x) + ", " + text(v.y) + ", " + text(v.z);
}

std::string text(std::string const& word) {
    return word;
}

std::string entry(PickedValue const& value) {
    std::string const key = value.unit.empty() ? value.name : value.name + " [" + value.unit + "]";
    std::string const number = std::visit([](auto const& each) { return text(each); }, value.value);
    return entry(key, value.meaning.empty() ? number : number + " (" + value.meaning + ")");
}

bool isSame(Vector3<double> const& a, Vector3<double> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

std::string describe(PickedParticle const& particle) {
    std::string lines = entry("particle", std::to_string(particle.index));
    if (particle.id) {
        lines += entry("id", text(*particle.id));
    }
    lines += entry("position", text(particle.position));
    if (!isSame(particle.position, particle.shownAt)) {
        lines += entry("shown at", text(particle.shownAt));
    }
    for (PickedValue const& value : particle.values) {
        lines += entry(value);
    }
    return lines;
}

std::string describe(PickedElement const& element) {
    char const* const kinds[] = {"triangle", "line", "point"};
    std::string lines = entry(kinds[static_cast<int>(element.kind)], std::to_string(element.index));
    lines += entry("position", text(element.position));
    lines += entry("vertex", std::to_string(element.vertex));
    lines += entry("vertex position", text(element.vertexPosition));
    if (!element.material.empty()) {
        lines += entry("material", element.material);
    }
    for (PickedValue const& value : element.values) {
        lines += entry(value);
    }
    return lines;
}

}  // namespace

std::string describePick(std::optional<Picked> const& picked) {
    if (!picked) {
        return "nothing\n";
    }
    std::string lines = singleLine(std::to_string(picked->name) + " " + picked->owner) + "\n";
    if (picked->particle) {
        lines += describe(*picked->particle);
    }
    if (picked->element) {
        lines += describe(*picked->element);
    }
    return lines;
}

}  // namespace vellum::viewport
