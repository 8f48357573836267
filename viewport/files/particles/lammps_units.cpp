#include "viewport/files/particles/lammps_units.h"

#include <algorithm>
#include <iterator>

namespace vellum::viewport {

namespace {

template <std::size_t count>
bool isOneOf(std::string_view word, std::string_view const (&words)[count]) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

}  // namespace

std::string lammpsUnit(std::string_view style, std::string_view column) {
    struct Style {
        std::string_view name;
        char const* length;
        char const* velocity;
        char const* force;
        char const* mass;
        char const* charge;
    };
    static constexpr Style STYLES[] = {
        {"real", "Å", "Å/fs", "kcal/mol/Å", "g/mol", "e"},
        {"metal", "Å", "Å/ps", "eV/Å", "g/mol", "e"},
        {"si", "m", "m/s", "N", "kg", "C"},
        {"cgs", "cm", "cm/s", "dyn", "g", "statC"},
        {"electron", "a0", "a0/atu", "Eh/a0", "u", "e"},
        {"micro", "µm", "µm/µs", "pg µm/µs²", "pg", "pC"},
        {"nano", "nm", "nm/ns", "ag nm/ns²", "ag", "e"},
    };
    auto const* const found = std::find_if(std::begin(STYLES), std::end(STYLES),
                                           [style](Style const& each) { return each.name == style; });
    if (found == std::end(STYLES)) {
        return {};
    }
    if (isOneOf(column, {"x", "y", "z", "xu", "yu", "zu", "radius", "diameter"})) {
        return found->length;
    }
    if (isOneOf(column, {"vx", "vy", "vz"})) {
        return found->velocity;
    }
    if (isOneOf(column, {"fx", "fy", "fz"})) {
        return found->force;
    }
    return column == "mass" ? found->mass : column == "q" ? found->charge : "";
}

}  // namespace vellum::viewport
