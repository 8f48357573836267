#pragma once

#include "toolkit/ViewKind.h"
#include "viewport/content/Options.h"
#include "viewport/program/word_values.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// \file
/// The words of options that have a few known ones. One table for reading, writing and completing them.

inline Modes<Shading> const SHADINGS{{"box", Shading::BOX},
                                     {"wireframe", Shading::WIREFRAME},
                                     {"faceted", Shading::FACETED},
                                     {"smooth", Shading::SMOOTH}};
inline Modes<Normals> const NORMAL_KINDS{{"vertex", Normals::VERTEX}, {"face", Normals::FACE}};
inline Modes<ParticleMode> const PARTICLE_MODES{{"points", ParticleMode::POINTS},
                                                {"spheres", ParticleMode::SPHERES},
                                                {"arrows", ParticleMode::ARROWS},
                                                {"arrows3d", ParticleMode::SOLID_ARROWS}};
inline Modes<std::optional<UpAxis>> const UP_AXES{
    {"auto", std::nullopt},  {"x", UpAxis::X},        {"y", UpAxis::Y},       {"z", UpAxis::Z},
    {"-x", UpAxis::MINUS_X}, {"-y", UpAxis::MINUS_Y}, {"-z", UpAxis::MINUS_Z}};
inline Modes<InfoForm> const INFO_FORMS{{"text", InfoForm::TEXT}, {"json", InfoForm::JSON}};
inline Modes<Gizmo> const GIZMOS{{"move", Gizmo::MOVE}, {"rotate", Gizmo::ROTATE}, {"scale", Gizmo::SCALE}};
inline Modes<Projection> const PROJECTIONS{{"perspective", Projection::PERSPECTIVE},
                                           {"parallel", Projection::PARALLEL}};
inline Modes<toolkit::ViewKind> const VIEWS{{"perspective", toolkit::ViewKind::PERSPECTIVE},
                                            {"front", toolkit::ViewKind::FRONT},
                                            {"back", toolkit::ViewKind::BACK},
                                            {"top", toolkit::ViewKind::TOP},
                                            {"bottom", toolkit::ViewKind::BOTTOM},
                                            {"left", toolkit::ViewKind::LEFT},
                                            {"right", toolkit::ViewKind::RIGHT}};

/// The word of a mode; empty where it has none.
template <class Value>
std::string wordOfMode(Modes<Value> const& modes, Value const& value) {
    for (auto const& mode : modes) {
        if (mode.second == value) {
            return mode.first;
        }
    }
    return "";
}

}  // namespace vellum::viewport
