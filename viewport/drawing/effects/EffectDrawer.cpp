#include "viewport/drawing/effects/EffectDrawer.h"

#include "viewport/drawing/effects/CustomDrawer.h"
#include "viewport/drawing/effects/DisplacementDrawer.h"
#include "viewport/drawing/effects/GlassDrawer.h"
#include "viewport/drawing/effects/OceanDrawer.h"
#include "viewport/drawing/effects/ScatteringDrawer.h"

#include <sstream>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

std::unique_ptr<EffectDrawer> drawerFor(DisplacementEffect const& effect, toolkit::Layer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<DisplacementDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(OceanEffect const& effect, toolkit::Layer& layer,
                                        EffectSubject const& subject) {
    return std::make_unique<OceanDrawer>(layer, effect, *subject.sea);
}

std::unique_ptr<EffectDrawer> drawerFor(GlassEffect const& effect, toolkit::Layer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<GlassDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(ScatteringEffect const& effect, toolkit::Layer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<ScatteringDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(CustomEffect const& effect, toolkit::Layer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<CustomDrawer>(layer, effect);
}

}  // namespace

std::unique_ptr<EffectDrawer> EffectDrawer::make(toolkit::Layer& layer, EffectValues const& values,
                                                 EffectSubject const& subject) {
    std::unique_ptr<EffectDrawer> drawer =
        std::visit([&](auto const& effect) { return drawerFor(effect, layer, subject); }, values);
    drawer->_create();
    return drawer;
}

std::vector<Fault> EffectDrawer::notes() const {
    std::vector<Fault> notes;
    for (toolkit::StageReport const& report : reports) {
        if (report.replacement != toolkit::StageReport::Replacement::NOTHING) {
            std::vector<Fault> const lines = linesOf(report);
            notes.insert(notes.end(), lines.begin(), lines.end());
        }
    }
    if (isPlain()) {
        notes.push_back({"", "nothing of the effect can be used: drawn lit, without it"});
    }
    return notes;
}

std::vector<Fault> EffectDrawer::linesOf(toolkit::StageReport const& report) {
    std::vector<Fault> lines;
    std::istringstream text(toText(report));
    for (std::string line; std::getline(text, line);) {
        lines.push_back({"", line});
    }
    return lines;
}

void EffectDrawer::_create() {
    if (!shader().created) {
        shader().create();
    }
    shader().enable(false);
    // A stage of the library that a driver rejects has no file.
    for (toolkit::CompileLog const& failed : layer.takeCompileLogs()) {
        toolkit::Stage const stage = failed.stage == GL_VERTEX_SHADER     ? toolkit::Stage::VERTEX
                                     : failed.stage == GL_FRAGMENT_SHADER ? toolkit::Stage::FRAGMENT
                                                                          : toolkit::Stage::GEOMETRY;
        reports.push_back({stage, "", toolkit::readStageLog(failed.log), failed.log,
                           toolkit::StageReport::Replacement::LEFT_OUT});
    }
}

}  // namespace vellum::viewport
