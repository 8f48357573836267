#include "viewport/drawing/overlays/ColorLegend.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

constexpr double LARGEST_PART = 0.86;         // of the picture's height
constexpr double ROW_HEIGHT = 1.35;           // texts
constexpr double WIDEST_NAME = 7;             // texts
constexpr std::size_t FEWEST_ROWS = 3;        // else the picture is too small
constexpr unsigned int COUNT_STRENGTH = 165;  // counts are paler than names

}  // namespace

ColorLegend::ColorLegend(ParticleLegend const& legend, PictureSize const& size, int right)
    : sizes(size)
    , edge(size.width - right)
    , rowHeight(static_cast<int>(std::lround(ROW_HEIGHT * sizes.text))) {
    int const titleHeight = 2 * sizes.text;
    auto const space = static_cast<std::size_t>(
        std::max(0, static_cast<int>(LARGEST_PART * size.height) - titleHeight) / rowHeight);
    std::size_t const all = legend.entries.size();
    std::size_t listed = std::min(all, MOST_ENTRIES);
    if (listed + (listed < all ? 1 : 0) > space) {
        listed = space > 0 ? space - 1 : 0;
    }
    int names = 0;
    int counts = 0;
    int const widestName = static_cast<int>(WIDEST_NAME * sizes.text);
    for (std::size_t i = 0; i < listed; ++i) {
        ParticleLegend::Entry const& entry = legend.entries[i];
        Row row{writer.shortened(entry.text, sizes.text, widestName), std::to_string(entry.count),
                entry.color};
        names = std::max(names, writer.write(row.name, sizes.text).width);
        counts = std::max(counts, writer.write(row.count, sizes.text).width);
        rows.push_back(row);
    }
    rest = listed < all ? "and " + std::to_string(all - listed) + " more" : std::string();
    int const entries = sizes.swatch + sizes.text / 2 + names + sizes.text + counts;
    int const below = writer.write(rest, sizes.text).width;
    reserved = std::max(sizes.narrowest, std::max(entries, below) + 2 * sizes.margin);
    fits = reserved <= sizes.widest && space >= FEWEST_ROWS && !legend.entries.empty();
    title = writer.shortened(legend.title, sizes.text, reserved - 2 * sizes.margin);
    int const lines = static_cast<int>(rows.size() + (rest.empty() ? 0 : 1));
    top = (size.height - titleHeight - lines * rowHeight) / 2;
}

int ColorLegend::_rowTop(std::size_t row) const {
    return top + 2 * sizes.text + static_cast<int>(row) * rowHeight;
}

PixelArea ColorLegend::swatch(std::size_t entry) const {
    int const height = std::min(sizes.swatch, rowHeight - 2 * sizes.line - 2);
    return {edge - reserved + sizes.margin, _rowTop(entry) + (rowHeight - height) / 2, sizes.swatch, height};
}

void ColorLegend::draw(Picture& picture, Color4<float> const& ink) const {
    if (!fits) {
        return;
    }
    int const left = edge - reserved + sizes.margin;
    int const right = edge - sizes.margin;
    int const inRow = (rowHeight - sizes.text) / 2;
    drawText(picture, ink, writer.write(title, sizes.text), left, top);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        PixelArea const area = swatch(i);
        fill(picture, area, rows[i].color);
        drawFrame(picture, ink, area, sizes.line);
        int const textTop = _rowTop(i) + inRow;
        drawText(picture, ink, writer.write(rows[i].name, sizes.text),
                 area.left + area.width + sizes.text / 2, textTop);
        TextMask const count = writer.write(rows[i].count, sizes.text);
        drawText(picture, ink, count, right - count.width, textTop, COUNT_STRENGTH);
    }
    drawText(picture, ink, writer.write(rest, sizes.text), left, _rowTop(rows.size()) + inRow,
             COUNT_STRENGTH);
}

}  // namespace vellum::viewport
