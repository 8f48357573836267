#include "toolkit/ColorMap.h"
#include "viewport/scene/ParticlePlaces.h"
#include "viewport/scene/ParticleSelection.h"
#include "viewport/text/shortest_number.h"
#include "viewport/window/panel/sections.h"

#include <cmath>

namespace vellum::viewport {

namespace {

using Modes = std::array<std::pair<ParticleMode, char const*>, 4>;
constexpr Modes MODES{{{ParticleMode::POINTS, "points"},
                       {ParticleMode::SPHERES, "spheres"},
                       {ParticleMode::ARROWS, "arrows of lines"},
                       {ParticleMode::SOLID_ARROWS, "solid arrows"}}};

/// A strip of all colors from the low end to the high one.
void drawStrip(ImVec2 const& corner, ImVec2 const& size, ValueColors const& colors) {
    constexpr int STEPS = 48;
    for (int i = 0; i < STEPS; ++i) {
        Color4<float> const color = colors.at((i + 0.5) / STEPS);
        float const left = corner.x + size.x * static_cast<float>(i) / STEPS;
        ImGui::GetWindowDrawList()->AddRectFilled(
            {left, corner.y}, {left + size.x / STEPS + 0.5F, corner.y + size.y},
            ImGui::ColorConvertFloat4ToU32({color.r, color.g, color.b, 1}));
    }
}

/// What is wrong with an expression, of the names that the files have as well.
std::optional<std::string> lackOfSelection(std::string const& text, Content const* content) {
    if (text.empty()) {
        return std::nullopt;
    }
    Result<ParticleSelection> const selection = ParticleSelection::parse(text);
    if (!selection.isOk()) {
        return selection.fault().message;
    }
    for (std::size_t i = 0; content != nullptr && i < content->particles.size(); ++i) {
        std::vector<unsigned int> nobody;
        ParticleFrame const& frame = content->particles[i];
        std::optional<Fault> const fault =
            selection.value().apply(frame, ParticlePlaces(frame, false), nobody);
        if (fault) {
            return fault->message;
        }
    }
    return std::nullopt;
}

}  // namespace

void ParticleSection::draw(PanelContext& context) {
    Workspace& workspace = context.workspace;
    bool const hasParticles = workspace.content() != nullptr && !workspace.content()->particles.empty();
    bool const hasValues = !workspace.channels().names().empty();
    if ((!hasParticles && !hasValues) || workspace.scene() == nullptr ||
        !sectionHeader(hasParticles ? "Particles" : "Values", true)) {
        return;
    }
    ImGui::PushID("particles");
    ParticleOptions& options = context.options.particles;
    if (hasParticles) {
        ParticleMode mode = options.mode.value_or(workspace.scene()->shown().look.mode);
        if (choice("Shown as", mode, MODES, "--particles MODE")) {
            options.mode = mode;
        }
    }
    _drawChannel(context);
    _drawColors(context);
    _drawRange(context);
    if (hasParticles) {
        _drawChoice(context);
    }
    ImGui::PopID();
}

void ParticleSection::_drawChannel(PanelContext& context) const {
    std::string& channel = context.options.particles.channel;
    ParticleLook const& look = context.workspace.scene()->shown().look;
    std::string const chosen = look.scale    ? look.scale->name
                               : look.legend ? look.legend->title
                                             : std::string("own colors");
    std::string const automatic = "automatic (" + chosen + ")";
    if (ImGui::BeginCombo("Channel", channel.empty() ? automatic.c_str() : channel.c_str())) {
        if (ImGui::Selectable("automatic", channel.empty())) {
            channel.clear();
        }
        for (std::string const& name : context.workspace.channels().names()) {
            if (ImGui::Selectable(name.c_str(), name == channel) && name != channel) {
                channel = name;
                context.options.particles.range.reset();
            }
        }
        ImGui::EndCombo();
    } else {
        hint("--channel NAME: what colors show; with arrows the vector that they are along");
    }
}

void ParticleSection::_drawColors(PanelContext& context) const {
    ParticleOptions& options = context.options.particles;
    float const line = ImGui::GetFontSize();
    ValueColors const current(options.colors, options.colorMap);
    drawStrip(ImGui::GetCursorScreenPos(), {ImGui::GetContentRegionAvail().x, line * 0.6F}, current);
    ImGui::Dummy({1, line * 0.6F});
    if (ImGui::BeginCombo("Colors", options.colorMap.empty() ? "two colors" : options.colorMap.c_str())) {
        auto const entry = [&](std::string const& name, char const* shown) {
            ImVec2 const corner = ImGui::GetCursorScreenPos();
            drawStrip(corner, {line * 5, line}, ValueColors(options.colors, name));
            ImGui::Dummy({line * 5, line});
            ImGui::SameLine();
            if (ImGui::Selectable(shown, name == options.colorMap)) {
                options.colorMap = name;
            }
        };
        entry("", "two colors");
        for (std::string const& name : toolkit::ColorMap::names()) {
            entry(name, name.c_str());
        }
        ImGui::EndCombo();
    } else {
        hint("--colormap NAME");
    }
    if (options.colorMap.empty()) {
        colorField("Low", options.colors.low, "--colors LOW,HIGH,ABOVE");
        ImGui::SameLine();
        colorField("High", options.colors.high, "--colors LOW,HIGH,ABOVE");
        ImGui::SameLine();
        colorField("Above", options.colors.above, "--colors LOW,HIGH,ABOVE: of all values above the range");
    }
    checkBox("Logarithmic", options.isLogarithmic,
             "--log: colors are spread over the logarithm of the values");
}

void ParticleSection::_drawRange(PanelContext& context) {
    ParticleOptions& options = context.options.particles;
    ParticleLook const& look = context.workspace.scene()->shown().look;
    if (look.legend) {
        drawLegend(*look.legend);
        return;
    }
    std::optional<ParticleScale> const& scale = look.scale ? look.scale : look.meshScale;
    if (!scale) {
        typedRange.reset();
        return;
    }
    if (!typedRange) {
        typedRange = options.range.value_or(scale->range);
    }
    if (ChannelFacts const* const facts = context.workspace.channels().facts(scale->name)) {
        ValueColors const colors(options.colors, options.colorMap);
        if (drawHistogram(*facts, &colors, &*typedRange, &grabbedEnd)) {
            options.range = *typedRange;
        }
    }
    bool const wasTyped = numberField("From", typedRange->low, "--range MIN,MAX");
    bool isActive = ImGui::IsItemActive();
    bool const wasTypedToo = numberField("To", typedRange->high, "--range MIN,MAX");
    isActive = isActive || ImGui::IsItemActive() || grabbedEnd >= 0;
    bool const isRange = std::isfinite(typedRange->low) && std::isfinite(typedRange->high) &&
                         typedRange->low < typedRange->high;
    if ((wasTyped || wasTypedToo) && isRange) {
        options.range = *typedRange;
    }
    if (!isRange && (options.range || isActive)) {
        faultLine("the second number must be the larger one");
    } else if (!isActive && !context.workspace.isLoading()) {
        typedRange = options.range.value_or(scale->range);
    }
    bool isAutomatic = !options.range.has_value();
    if (checkBox("Range of the data", isAutomatic, "without --range")) {
        options.range = isAutomatic ? std::nullopt : std::optional<ValueRange>(*typedRange);
        if (options.range && !(options.range->low < options.range->high)) {
            options.range.reset();
        }
        typedRange.reset();
    }
}

void ParticleSection::_drawChoice(PanelContext& context) {
    ParticleOptions& options = context.options.particles;
    Workspace& workspace = context.workspace;
    ImGui::SliderFloat("Percent", &options.percent, 0, 100, "%.3g", ImGuiSliderFlags_AlwaysClamp);
    hint("--percent P: this part of the particles, evenly chosen; Ctrl+click to type");
    bool hasSize = options.size.has_value();
    if (checkBox("Own size", hasSize, "--size-of-particles S: pixels of points; else units of the file")) {
        bool const arePoints = workspace.scene()->shown().look.mode == ParticleMode::POINTS;
        std::vector<ParticleCloud> const& clouds = workspace.scene()->scene().clouds();
        double const diameter =
            clouds.empty() ? 1 : clouds.front().diameter / workspace.scene()->scene().unitsPerFileUnit();
        options.size = hasSize ? std::optional<double>(arePoints ? 3 : diameter) : std::nullopt;
    }
    if (options.size) {
        double size = *options.size;
        if (numberField("Size", size, "--size-of-particles S") && std::isfinite(size) && size > 0) {
            options.size = size;
        }
    }
    std::shared_ptr<Content const> const content = workspace.content();
    selection.draw("Select", options.selection,
                   "--select CONDITION, such as: type == 2 and z > 0; Enter applies it",
                   [&content](std::string const& text) { return lackOfSelection(text, content.get()); });

    bool isClipped = options.clip.has_value();
    if (checkBox("Clip box", isClipped, "--clip BOX: only what is inside, in units of the files")) {
        std::vector<FileFacts> const* const files = workspace.channels().files();
        std::optional<Box3<double>> const bounds =
            files != nullptr && !files->empty() ? files->back().bounds : std::nullopt;
        options.clip =
            isClipped ? std::optional<Box3<double>>(bounds.value_or(Box3<double>{{-1, -1, -1}, {1, 1, 1}}))
                      : std::nullopt;
        typedClip = options.clip;
        auto const widen = [](double low, double& high) { high = high > low ? high : low + 1; };
        if (options.clip) {
            widen(typedClip->min.x, typedClip->max.x);
            widen(typedClip->min.y, typedClip->max.y);
            widen(typedClip->min.z, typedClip->max.z);
            options.clip = typedClip;
        }
    }
    if (options.clip) {
        if (!typedClip) {
            typedClip = options.clip;
        }
        Box3<double>& box = *typedClip;
        bool isChanged =
            ImGui::InputScalarN("Least", ImGuiDataType_Double, &box.min.x, 3, nullptr, nullptr, "%.4g");
        hint("--clip: the least x, y and z");
        isChanged =
            ImGui::InputScalarN("Most", ImGuiDataType_Double, &box.max.x, 3, nullptr, nullptr, "%.4g") ||
            isChanged;
        hint("--clip: the largest x, y and z");
        bool const isBox = box.min.x < box.max.x && box.min.y < box.max.y && box.min.z < box.max.z;
        if (!isBox) {
            faultLine("each number of Most must be larger than that of Least");
        } else if (isChanged) {
            options.clip = box;
        }
    }
    checkBox("Wrap", options.isWrapped, "--wrap: particles are moved into their periodic box");
    int copies[3] = {static_cast<int>(options.copies.e0), static_cast<int>(options.copies.e1),
                     static_cast<int>(options.copies.e2)};
    if (ImGui::InputInt3("Copies", copies)) {
        auto const valid = [](int number) { return static_cast<unsigned int>(std::clamp(number, 1, 1000)); };
        options.copies = {valid(copies[0]), valid(copies[1]), valid(copies[2])};
    }
    hint("--replicate A,B,C: copies of the box along each of its edges");
}

}  // namespace vellum::viewport
