#include "viewport/drawing/ColourBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr double referenceSide = 720;  // of a picture, for which sizes are given in pixels
constexpr double textSize = 17;
constexpr int smallestText = 10;
constexpr double barWidth = 18;
constexpr double barPart = 0.5;      // of the picture's height
constexpr double largestPart = 0.4;  // of the picture's width, with texts
constexpr double gapOfAbove = 0.7;   // parts of the height of a text
constexpr char const* aboveText = "above";

constexpr unsigned char letterColour[3] = {219, 224, 235};

/// Digits that tell apart what lies within a range.
int digitsFor(ValueRange const& range) {
    double const largest = std::max(std::abs(range.low), std::abs(range.high));
    double const extent = range.high - range.low;
    if (!(largest > 0) || !(extent > 0)) {
        return 6;
    }
    // An extent beyond all numbers has minus infinity digits.
    double const digits = std::ceil(std::log10(largest / extent) - 0.1) + 3;
    return static_cast<int>(std::clamp(digits, 3.0, 12.0));
}

std::string numberText(double const& number, int const& digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    return text;
}

/// The nearest of 1, 2 and 5 times a power of ten, from `number` on.
double roundStep(double const& number) {
    double const power = std::pow(10.0, std::floor(std::log10(number)));
    for (double const& factor : {1.0, 2.0, 5.0}) {
        if (number <= factor * power * 1.0000001) {
            return factor * power;
        }
    }
    return 10 * power;
}

void blend(Picture& picture, int const& x, int const& y, unsigned int const& coverage) {
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height) {
        return;
    }
    std::size_t const pixel = 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                   static_cast<std::size_t>(x));
    for (std::size_t i = 0; i < 3; ++i) {
        unsigned int const mixed =
            picture.pixels[pixel + i] * (255 - coverage) + letterColour[i] * coverage + 127;
        picture.pixels[pixel + i] = static_cast<unsigned char>(mixed / 255);
    }
}

/// Columns and rows count from the upper left corner.
void drawText(Picture& picture, TextMask const& text, int const& left, int const& top) {
    for (int y = 0; y < text.height; ++y) {
        for (int x = 0; x < text.width; ++x) {
            blend(picture, left + x, top + y,
                  text.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(text.width) +
                                static_cast<std::size_t>(x)]);
        }
    }
}

void drawRectangle(Picture& picture, int const& left, int const& top, int const& width, int const& height,
                   unsigned int const& coverage) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            blend(picture, left + x, top + y, coverage);
        }
    }
}

/// The lines around an area.
void drawFrame(Picture& picture, int const& left, int const& top, int const& width, int const& height,
               int const& thickness) {
    constexpr unsigned int strength = 150;
    drawRectangle(picture, left - thickness, top - thickness, width + 2 * thickness, thickness, strength);
    drawRectangle(picture, left - thickness, top + height, width + 2 * thickness, thickness, strength);
    drawRectangle(picture, left - thickness, top, thickness, height, strength);
    drawRectangle(picture, left + width, top, thickness, height, strength);
}

}  // namespace

std::vector<ColourBar::Mark> ColourBar::marksOf(ValueRange const& range, double const& nearest) {
    int const digits = digitsFor(range);
    std::vector<Mark> marks{{range.low, numberText(range.low, digits)}};
    // Halved, the ends of a double's range still have a difference.
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

ColourBar::ColourBar(ParticleScale const& scale, int const& pictureWidth, int const& pictureHeight)
    : _scale(scale), _pictureWidth(pictureWidth) {
    // From the low end on, so that the bar's own values are never negative: renderers see lengths only.
    double const extent = scale.range.high - scale.range.low;
    _scale.offset = scale.range.low;
    _scale.unit = extent > 0 && std::isfinite(extent) ? extent : 1;

    double const size = std::min(pictureWidth, pictureHeight) / referenceSide;
    _textHeight = std::max(smallestText, static_cast<int>(std::lround(textSize * size)));
    _cell = std::max(1, static_cast<int>(std::lround(size)));
    _columns = std::max(5, static_cast<int>(std::lround(barWidth * size / _cell)));
    _rows = std::max(1, static_cast<int>(std::lround(barPart * pictureHeight / _cell)));
    _aboveRows = scale.isExceeded ? _columns : 0;
    _bottom = (pictureHeight - _rows * _cell) / 2;

    _marks = marksOf(scale.range, 1.1 * _textHeight / (_rows * _cell));
    int texts = 0;
    for (Mark const& mark : _marks) {
        texts = std::max(texts, _writer.write(mark.text, _textHeight).width);
    }
    texts = std::max(texts, _aboveRows > 0 ? _writer.write(aboveText, _textHeight).width : 0);
    int const beside = _columns * _cell + _textHeight + texts;
    _reserved = std::max(beside, _writer.write(scale.name, _textHeight).width) + 3 * _textHeight;
    _isShown = _reserved <= largestPart * pictureWidth && _rows * _cell >= 4 * _textHeight;
}

int ColourBar::_left(int const& pictureWidth) const {
    return pictureWidth - _reserved + _textHeight;
}

/// Of a value's height: pixels above the bar's bottom.
int ColourBar::_rowOf(double const& value) const {
    double const extent = _scale.range.high - _scale.range.low;
    double const place = extent > 0 ? (value - _scale.range.low) / extent : 0.5;
    return static_cast<int>(std::lround(place * _rows * _cell));
}

std::shared_ptr<ParticleSystem_v2 const> ColourBar::cells() const {
    std::vector<Vector3<float>> positions;
    std::vector<Vector3<float>> magnitudes;
    auto const addRow = [&](double const& bottom, double const& value) {
        for (int column = 0; column < _columns; ++column) {
            positions.push_back({static_cast<float>(_left(_pictureWidth) + (column + 0.5) * _cell),
                                 static_cast<float>(bottom + 0.5 * _cell), 0});
            magnitudes.push_back({_scale.toMagnitude(value), 0, 0});
        }
    };
    for (int row = 0; row < _rows; ++row) {
        double const place = (row + 0.5) / _rows;
        addRow(_bottom + row * _cell, _scale.range.low * (1 - place) + _scale.range.high * place);
    }
    double const above = _bottom + _rows * _cell + std::lround(gapOfAbove * _textHeight);
    for (int row = 0; row < _aboveRows; ++row) {
        addRow(above + row * _cell, std::numeric_limits<double>::infinity());
    }

    auto const system = std::make_shared<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("colour", ParticleChannel_v2::VECTOR);
    system->addParticles(static_cast<unsigned int>(positions.size()));
    std::size_t done = 0;
    for (ParticleSystemChunk_v2* chunk = system->firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        std::copy_n(positions.data() + done, chunk->count(), chunk->channelData(0)->asVectors());
        std::copy_n(magnitudes.data() + done, chunk->count(), chunk->channelData(1)->asVectors());
        done += chunk->count();
    }
    return system;
}

void ColourBar::drawLabels(Picture& picture) const {
    int const left = _left(picture.width);
    int const width = _columns * _cell;
    int const height = _rows * _cell;
    int const top = picture.height - _bottom - height;
    int const line = _cell;
    int const afterBar = left + width + line;
    int const markLength = _textHeight / 3;
    int const textLeft = afterBar + markLength + _textHeight / 3;
    drawFrame(picture, left, top, width, height, line);
    for (Mark const& mark : _marks) {
        int const middle = top + height - _rowOf(mark.value);
        drawRectangle(picture, afterBar, middle - line / 2, markLength, line, 220);
        drawText(picture, _writer.write(mark.text, _textHeight), textLeft, middle - _textHeight / 2);
    }
    int head = top - line;
    if (_aboveRows > 0) {
        int const aboveHeight = _aboveRows * _cell;
        int const aboveTop = top - static_cast<int>(std::lround(gapOfAbove * _textHeight)) - aboveHeight;
        drawFrame(picture, left, aboveTop, width, aboveHeight, line);
        drawText(picture, _writer.write(aboveText, _textHeight), textLeft,
                 aboveTop + (aboveHeight - _textHeight) / 2);
        head = aboveTop - line;
    }
    drawText(picture, _writer.write(_scale.name, _textHeight), left, head - _textHeight * 2);
}

}  // namespace vellum::viewport
