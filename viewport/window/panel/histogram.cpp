#include "viewport/window/panel/sections.h"

#include <cmath>

namespace vellum::viewport {

namespace {

ImU32 toImColor(Color4<float> const& color) {
    return ImGui::ColorConvertFloat4ToU32({color.r, color.g, color.b, 1});
}

}  // namespace

bool drawHistogram(ChannelFacts const& facts, ValueColors const* colors, ValueRange* range, int* grabbedEnd) {
    ImVec2 const corner = ImGui::GetCursorScreenPos();
    float const width = std::max(1.0F, ImGui::GetContentRegionAvail().x);
    float const height = ImGui::GetFontSize() * 3.5F;
    ImGui::InvisibleButton("histogram", {width, height});
    bool const isGrabbed = ImGui::IsItemActive();
    // A mouse that is moved and released between two frames has moved what it held.
    bool const isReleased = ImGui::IsItemDeactivated() && grabbedEnd != nullptr && *grabbedEnd >= 0;
    if (range != nullptr) {
        hint("--range MIN,MAX: drag the ends");
    }
    ImDrawList& list = *ImGui::GetWindowDrawList();
    list.AddRectFilled(corner, {corner.x + width, corner.y + height}, ImGui::GetColorU32(ImGuiCol_FrameBg),
                       3);
    // All values, and also the ends of a range that reaches farther.
    double const left = range != nullptr ? std::min(facts.least, range->low) : facts.least;
    double const right = range != nullptr ? std::max(facts.most, range->high) : facts.most;
    double const extent = right - left;
    auto const toX = [&](double value) {
        double const part = extent > 0 && std::isfinite(extent) ? (value - left) / extent : 0.5;
        return corner.x + static_cast<float>(part) * width;
    };
    auto const fullest = static_cast<double>(std::max<std::size_t>(1, facts.fullestBin()));
    for (std::size_t i = 0; i < ChannelFacts::BINS; ++i) {
        if (facts.bins[i] == 0) {
            continue;
        }
        double const step = (facts.most - facts.least) / static_cast<double>(ChannelFacts::BINS);
        double const start = facts.least + step * static_cast<double>(i);
        // The root shows rare values beside frequent ones.
        auto const part = static_cast<float>(std::sqrt(static_cast<double>(facts.bins[i]) / fullest));
        double const middle = start + step / 2;
        double const place = range != nullptr && range->high > range->low
                                 ? (middle - range->low) / (range->high - range->low)
                                 : 0;
        ImU32 const color = colors != nullptr && range != nullptr
                                ? toImColor(colors->at(place))
                                : ImGui::GetColorU32(ImGuiCol_PlotHistogram);
        float const x = step > 0 ? toX(start) : corner.x + width * 0.5F - 2;
        float const end = step > 0 ? std::max(x + 1, toX(start + step)) : x + 4;
        list.AddRectFilled({x, corner.y + height - std::max(1.0F, part * (height - 2))},
                           {end, corner.y + height}, color);
    }
    if (range == nullptr) {
        return false;
    }
    for (double const value : {range->low, range->high}) {
        float const x = std::clamp(toX(value), corner.x + 1, corner.x + width - 1);
        list.AddLine({x, corner.y}, {x, corner.y + height}, ImGui::GetColorU32(ImGuiCol_Text), 2);
    }
    if (!isGrabbed && !isReleased) {
        *grabbedEnd = -1;
        return false;
    }
    float const mouse = ImGui::GetIO().MousePos.x;
    if (*grabbedEnd < 0) {
        *grabbedEnd = std::abs(mouse - toX(range->low)) <= std::abs(mouse - toX(range->high)) ? 0 : 1;
    }
    int const end = *grabbedEnd;
    *grabbedEnd = isReleased ? -1 : end;
    if (!(extent > 0) || !std::isfinite(extent) || ImGui::GetIO().MouseDelta.x == 0) {
        return false;
    }
    double const value =
        left + std::clamp(static_cast<double>((mouse - corner.x) / width), 0.0, 1.0) * extent;
    ValueRange changed = *range;
    (end == 0 ? changed.low : changed.high) = value;
    if (!(changed.low < changed.high)) {
        return false;
    }
    *range = changed;
    return true;
}

void drawLegend(ParticleLegend const& legend) {
    ImGui::TextUnformatted(legend.title.c_str());
    float const side = ImGui::GetFontSize();
    for (ParticleLegend::Entry const& entry : legend.entries) {
        ImVec2 const corner = ImGui::GetCursorScreenPos();
        ImGui::GetWindowDrawList()->AddRectFilled(corner, {corner.x + side, corner.y + side},
                                                  toImColor(entry.color), 3);
        ImGui::Dummy({side, side});
        ImGui::SameLine();
        ImGui::Text("%s (%zu)", entry.text.c_str(), entry.count);
    }
}

}  // namespace vellum::viewport
