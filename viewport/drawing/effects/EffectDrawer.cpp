#include "viewport/drawing/effects/EffectDrawer.h"

#include "viewport/drawing/effects/CustomDrawer.h"
#include "viewport/drawing/effects/DisplacementDrawer.h"
#include "viewport/drawing/effects/GlassDrawer.h"
#include "viewport/drawing/effects/OceanDrawer.h"
#include "viewport/drawing/effects/ScatteringDrawer.h"
#include "viewport/drawing/effects/ShaderFiles.h"

namespace vellum::viewport {

namespace {

std::unique_ptr<EffectDrawer> drawerFor(DisplacementEffect const& effect, ReportingLayer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<DisplacementDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(OceanEffect const& effect, ReportingLayer& layer,
                                        EffectSubject const& subject) {
    return std::make_unique<OceanDrawer>(layer, effect, *subject.sea);
}

std::unique_ptr<EffectDrawer> drawerFor(GlassEffect const& effect, ReportingLayer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<GlassDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(ScatteringEffect const& effect, ReportingLayer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<ScatteringDrawer>(layer, effect);
}

std::unique_ptr<EffectDrawer> drawerFor(CustomEffect const& effect, ReportingLayer& layer,
                                        EffectSubject const& /*subject*/) {
    return std::make_unique<CustomDrawer>(layer, effect);
}

}  // namespace

std::unique_ptr<EffectDrawer> EffectDrawer::make(ReportingLayer& layer, EffectValues const& values,
                                                 EffectSubject const& subject) {
    std::unique_ptr<EffectDrawer> drawer =
        std::visit([&](auto const& effect) { return drawerFor(effect, layer, subject); }, values);
    drawer->_create();
    return drawer;
}

void EffectDrawer::prepareMesh() {
    // The viewport may have another size than at the last time, and shaders see only changes of their own values.
    shader().markDirty();
}

std::string EffectDrawer::fileOfStage(unsigned int /*stage*/) const {
    return {};
}

/// A stage that does not compile is known only by the driver's report: the library replaces it and goes on.
bool EffectDrawer::takeReports(unsigned int stage) {
    bool isFound = false;
    for (ShaderReport const& report : layer.takeReports()) {
        std::string const file = fileOfStage(report.stage);
        for (Fault const& line : shaderFaults(file, report.log)) {
            stageNotes.push_back(line);
        }
        stageNotes.push_back({file, "does not compile; a stage that passes everything on takes its place"});
        isFound = isFound || report.stage == stage;
    }
    return isFound;
}

void EffectDrawer::_create() {
    constexpr unsigned int NO_STAGE = 0;
    if (!shader().created) {
        shader().create();
    }
    shader().enable(false);
    takeReports(NO_STAGE);
}

}  // namespace vellum::viewport
