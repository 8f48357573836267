#include "viewport/drawing/overlays/ColorBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr double TEXT_SIZE = 17;      // pixels of a picture of 720
constexpr int SMALLEST_TEXT = 10;     // pixels
constexpr double BAR_WIDTH = 18;      // pixels of a picture of 720
constexpr double BAR_PART = 0.5;      // of the picture's height
constexpr double LARGEST_PART = 0.4;  // of the picture's width, with texts
constexpr double GAP_OF_ABOVE = 0.7;  // parts of the height of a text
constexpr char const* ABOVE_TEXT = "above";

constexpr unsigned char LETTER_COLOR[3] = {219, 224, 235};

/// The digits that make the values of a range distinguishable.
int digitsFor(ValueRange const& range) {
    double const largest = std::max(std::abs(range.low), std::abs(range.high));
    double const extent = range.high - range.low;
    if (!(largest > 0) || !(extent > 0)) {
        return 6;
    }
    // An extent that overflows gives minus infinity, which the clamp takes care of.
    double const digits = std::ceil(std::log10(largest / extent) - 0.1) + 3;
    return static_cast<int>(std::clamp(digits, 3.0, 12.0));
}

std::string numberText(double number, int digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    return text;
}

/// The nearest of 1, 2 and 5 times a power of ten, from `number` on.
double roundStep(double number) {
    double const power = std::pow(10.0, std::floor(std::log10(number)));
    for (double factor : {1.0, 2.0, 5.0}) {
        if (number <= factor * power * 1.0000001) {
            return factor * power;
        }
    }
    return 10 * power;
}

void blend(Picture& picture, int x, int y, unsigned int coverage) {
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height) {
        return;
    }
    std::size_t const pixel = 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                   static_cast<std::size_t>(x));
    for (std::size_t i = 0; i < 3; ++i) {
        unsigned int const mixed =
            picture.pixels[pixel + i] * (255 - coverage) + LETTER_COLOR[i] * coverage + 127;
        picture.pixels[pixel + i] = static_cast<unsigned char>(mixed / 255);
    }
}

/// Columns and rows count from the upper left corner.
void drawText(Picture& picture, TextMask const& text, int left, int top) {
    for (int y = 0; y < text.height; ++y) {
        for (int x = 0; x < text.width; ++x) {
            blend(picture, left + x, top + y,
                  text.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(text.width) +
                                static_cast<std::size_t>(x)]);
        }
    }
}

void drawRectangle(Picture& picture, int left, int top, int width, int height, unsigned int coverage) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            blend(picture, left + x, top + y, coverage);
        }
    }
}

/// The lines around an area.
void drawFrame(Picture& picture, int left, int top, int width, int height, int thickness) {
    constexpr unsigned int STRENGTH = 150;
    drawRectangle(picture, left - thickness, top - thickness, width + 2 * thickness, thickness, STRENGTH);
    drawRectangle(picture, left - thickness, top + height, width + 2 * thickness, thickness, STRENGTH);
    drawRectangle(picture, left - thickness, top, thickness, height, STRENGTH);
    drawRectangle(picture, left + width, top, thickness, height, STRENGTH);
}

}  // namespace

std::vector<ColorBar::Mark> ColorBar::marksOf(ValueRange const& range, double nearest) {
    int const digits = digitsFor(range);
    std::vector<Mark> marks{{range.low, numberText(range.low, digits)}};
    // The whole extent of a double's range would overflow.
    double const half = range.high / 2 - range.low / 2;
    if (!(half > 0)) {
        return marks;
    }
    double const step = roundStep(half / 2.6);
    for (double index = std::ceil(range.low / step); index * step < range.high; ++index) {
        double const value = index * step;
        double const place = (value / 2 - range.low / 2) / half;
        bool const isApart = place >= nearest && 1 - place >= nearest;
        if (isApart && marks.size() < 12) {
            marks.push_back({value, numberText(value, digits)});
        }
        if (index + 1 == index) {
            break;  // Steps are lost in numbers as large as these.
        }
    }
    marks.push_back({range.high, numberText(range.high, digits)});
    return marks;
}

ColorBar::ColorBar(ParticleScale const& scale, PictureSize const& size) : cellScale(scale), size(size) {
    // Counted from the low end, the values of cells are never negative: renderers see lengths only.
    double const extent = scale.range.high - scale.range.low;
    cellScale.offset = scale.range.low;
    cellScale.unit = extent > 0 && std::isfinite(extent) ? extent : 1;

    textHeight = std::max(SMALLEST_TEXT, static_cast<int>(std::lround(TEXT_SIZE * size.scale())));
    cell = std::max(1, static_cast<int>(std::lround(size.scale())));
    columns = std::max(5, static_cast<int>(std::lround(BAR_WIDTH * size.scale() / cell)));
    rows = std::max(1, static_cast<int>(std::lround(BAR_PART * size.height / cell)));
    aboveRows = scale.isExceeded ? columns : 0;
    barBottom = (size.height - rows * cell) / 2;

    marks = marksOf(scale.range, 1.1 * textHeight / (rows * cell));
    int texts = 0;
    for (Mark const& mark : marks) {
        texts = std::max(texts, writer.write(mark.text, textHeight).width);
    }
    texts = std::max(texts, aboveRows > 0 ? writer.write(ABOVE_TEXT, textHeight).width : 0);
    int const beside = columns * cell + textHeight + texts;
    reserved = std::max(beside, writer.write(scale.name, textHeight).width) + 3 * textHeight;
    fits = reserved <= LARGEST_PART * size.width && rows * cell >= 4 * textHeight;
}

int ColorBar::_left() const {
    return size.width - reserved + textHeight;
}

int ColorBar::_heightOf(double value) const {
    double const extent = cellScale.range.high - cellScale.range.low;
    double const place = extent > 0 ? (value - cellScale.range.low) / extent : 0.5;
    return static_cast<int>(std::lround(place * rows * cell));
}

std::shared_ptr<ParticleSystem_v2 const> ColorBar::cells() const {
    std::vector<Vector3<float>> positions;
    std::vector<Vector3<float>> magnitudes;
    auto const addRow = [&](double bottom, double value) {
        for (int column = 0; column < columns; ++column) {
            positions.push_back({static_cast<float>(_left() + (column + 0.5) * cell),
                                 static_cast<float>(bottom + 0.5 * cell), 0});
            magnitudes.push_back({cellScale.toMagnitude(value), 0, 0});
        }
    };
    for (int row = 0; row < rows; ++row) {
        double const place = (row + 0.5) / rows;
        addRow(barBottom + row * cell, cellScale.range.low * (1 - place) + cellScale.range.high * place);
    }
    double const above = barBottom + rows * cell + std::lround(GAP_OF_ABOVE * textHeight);
    for (int row = 0; row < aboveRows; ++row) {
        addRow(above + row * cell, std::numeric_limits<double>::infinity());
    }

    auto const system = std::make_shared<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("color", ParticleChannel_v2::VECTOR);
    system->addParticles(static_cast<unsigned int>(positions.size()));
    std::size_t done = 0;
    for (ParticleSystemChunk_v2* chunk = system->firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        std::copy_n(positions.data() + done, chunk->count(), chunk->channelData(0)->asVectors());
        std::copy_n(magnitudes.data() + done, chunk->count(), chunk->channelData(1)->asVectors());
        done += chunk->count();
    }
    return system;
}

void ColorBar::drawLabels(Picture& picture) const {
    int const left = _left();
    int const width = columns * cell;
    int const height = rows * cell;
    int const top = size.height - barBottom - height;
    int const line = cell;
    int const afterBar = left + width + line;
    int const markLength = textHeight / 3;
    int const textLeft = afterBar + markLength + textHeight / 3;
    drawFrame(picture, left, top, width, height, line);
    for (Mark const& mark : marks) {
        int const middle = top + height - _heightOf(mark.value);
        drawRectangle(picture, afterBar, middle - line / 2, markLength, line, 220);
        drawText(picture, writer.write(mark.text, textHeight), textLeft, middle - textHeight / 2);
    }
    int head = top - line;
    if (aboveRows > 0) {
        int const aboveHeight = aboveRows * cell;
        int const aboveTop = top - static_cast<int>(std::lround(GAP_OF_ABOVE * textHeight)) - aboveHeight;
        drawFrame(picture, left, aboveTop, width, aboveHeight, line);
        drawText(picture, writer.write(ABOVE_TEXT, textHeight), textLeft,
                 aboveTop + (aboveHeight - textHeight) / 2);
        head = aboveTop - line;
    }
    drawText(picture, writer.write(cellScale.name, textHeight), left, head - textHeight * 2);
}

}  // namespace vellum::viewport
