#include "viewport/files/mesh/UpAxis.h"

#include <algorithm>
#include <iterator>

namespace vellum::viewport {

UpAxis upOfFormat(std::string_view extension) {
    // Of scanners, of machines that build in layers, of drawing boards, of the games and programs that have z
    // upward.
    static constexpr std::string_view Z_FORMATS[] = {
        ".3ds", ".3mf", ".amf",       ".ase", ".ask", ".blend",   ".cob",     ".csv", ".dxf", ".dump", ".hmp",
        ".ifc", ".iqm", ".lammpstrj", ".md2", ".md3", ".md5anim", ".md5mesh", ".mdc", ".mdl", ".off",  ".ply",
        ".prj", ".q3o", ".q3s",       ".raw", ".scn", ".smd",     ".stl",     ".ter", ".vta", ".xyz"};
    bool const isZ = std::find(std::begin(Z_FORMATS), std::end(Z_FORMATS), extension) != std::end(Z_FORMATS);
    return isZ ? UpAxis::Z : UpAxis::Y;
}

std::string wordOf(UpAxis up) {
    switch (up) {
    case UpAxis::X:
        return "x";
    case UpAxis::Y:
        return "y";
    case UpAxis::Z:
        return "z";
    case UpAxis::MINUS_X:
        return "-x";
    case UpAxis::MINUS_Y:
        return "-y";
    case UpAxis::MINUS_Z:
        break;
    }
    return "-z";
}

}  // namespace vellum::viewport
