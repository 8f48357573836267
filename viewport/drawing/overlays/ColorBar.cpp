#include "viewport/drawing/overlays/ColorBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vellum::viewport {

namespace {

constexpr double BAR_PART = 0.5;       // of the picture's height
constexpr double GAP_OF_PIECES = 0.7;  // parts of the height of a text
constexpr std::size_t MOST_MARKS = 12;
constexpr char const* ABOVE_TEXT = "above";

char const* undefinedText(ValueScale const& scale) {
    return scale.isLogarithmic ? "undefined" : "no value";
}

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

/// Below a million all digits before the point are written: 12345, not 1.23e+04.
std::string numberText(double number, int digits) {
    constexpr double LARGEST = 1e6;
    double const size = std::abs(number);
    if (size >= 1 && size < LARGEST) {
        digits = std::max(digits, static_cast<int>(std::floor(std::log10(size))) + 1);
    }
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    return text;
}

/// A whole number with all of its digits, as long as these are few.
std::string wholeText(double number, int digits) {
    constexpr double LARGEST = 1e10;
    if (std::abs(number) >= LARGEST || number != std::floor(number)) {
        return numberText(number, digits);
    }
    return std::to_string(static_cast<long long>(number));
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

/// Round numbers inside a range with an extent, in ascending order.
std::vector<double> evenSteps(ValueScale const& scale) {
    std::vector<double> values;
    // The whole extent of a double's range would overflow.
    double const half = scale.range.high / 2 - scale.range.low / 2;
    double const step = scale.isWhole ? std::max(1.0, roundStep(half / 2.6)) : roundStep(half / 2.6);
    for (double index = std::ceil(scale.range.low / step); index * step < scale.range.high; ++index) {
        values.push_back(index * step);
        if (index + 1 == index || values.size() == MOST_MARKS) {
            break;  // Steps are lost in numbers as large as these.
        }
    }
    return values;
}

/// Powers of ten inside a range; where they are few, twice and five times them as well.
std::vector<double> logarithmicSteps(ValueRange const& range) {
    int const first = static_cast<int>(std::floor(std::log10(range.low)));
    int const last = static_cast<int>(std::ceil(std::log10(range.high)));
    int const every = std::max(1, (last - first) / 8);
    std::vector<double> factors{1};
    if (std::log10(range.high) - std::log10(range.low) < 2.5) {
        factors = {1, 2, 5};
    }
    std::vector<double> values;
    for (int exponent = first; exponent <= last; ++exponent) {
        for (double const factor : factors) {
            double const value = factor * std::pow(10.0, exponent);
            if (exponent % every == 0 && value > range.low && value < range.high) {
                values.push_back(value);
            }
        }
    }
    return values;
}

}  // namespace

std::vector<ColorBar::Mark> ColorBar::marksOf(ValueScale const& scale, double nearest) {
    ValueRange const& range = scale.range;
    // The distance of two values on a logarithmic scale needs no more digits than the values themselves.
    int const digits = scale.isLogarithmic ? 3 : digitsFor(range);
    auto const markOf = [&](double value) {
        return Mark{value, scale.isWhole ? wholeText(value, digits) : numberText(value, digits)};
    };
    std::vector<Mark> marks{markOf(range.low)};
    if (!(range.high > range.low)) {
        return marks;
    }
    double last = 0;
    for (double const value : scale.isLogarithmic ? logarithmicSteps(range) : evenSteps(scale)) {
        double const place = scale.place(value);
        if (place - last >= nearest && 1 - place >= nearest && marks.size() < MOST_MARKS) {
            marks.push_back(markOf(value));
            last = place;
        }
    }
    marks.push_back(markOf(range.high));
    return marks;
}

ColorBar::ColorBar(ValueScale const& scale, ValueColors const& colors, PictureSize const& size, int right)
    : scale(scale), colors(colors), sizes(size) {
    int const height = std::max(1, static_cast<int>(std::lround(BAR_PART * size.height)));
    marks = marksOf(scale, 1.1 * sizes.text / height);
    int texts = 0;
    for (Mark const& mark : marks) {
        texts = std::max(texts, writer.write(mark.text, sizes.text).width);
    }
    texts = std::max(texts, scale.isExceeded ? writer.write(ABOVE_TEXT, sizes.text).width : 0);
    if (scale.undefinedCount > 0) {
        for (std::string const& text :
             {std::string(undefinedText(scale)), std::to_string(scale.undefinedCount)}) {
            texts = std::max(texts, writer.write(text, sizes.text).width);
        }
    }
    reserved = std::max(sizes.narrowest, sizes.swatch + sizes.text + texts + 2 * sizes.margin);
    fits = reserved <= sizes.widest && height >= 4 * sizes.text;
    int const left = size.width - right - reserved + sizes.margin;
    bar = {left, (size.height - height) / 2, sizes.swatch, height};
}

/// Of a value, in the picture.
int ColorBar::_rowOf(double value) const {
    bool const hasExtent = scale.range.high > scale.range.low;
    double const place = hasExtent ? scale.place(value) : 0.5;
    return bar.top + bar.height - static_cast<int>(std::lround(place * bar.height));
}

void ColorBar::draw(Picture& picture, Color4<float> const& ink) const {
    if (!fits) {
        return;
    }
    bool const hasExtent = scale.range.high > scale.range.low;
    for (int row = 0; row < bar.height; ++row) {
        double const place = hasExtent ? (bar.height - row - 0.5) / bar.height : 0;
        fill(picture, {bar.left, bar.top + row, bar.width, 1}, colors.at(place));
    }
    drawFrame(picture, ink, bar, sizes.line);
    int const afterBar = bar.left + bar.width + sizes.line;
    int const markLength = sizes.text / 3;
    int const textLeft = afterBar + markLength + sizes.text / 3;
    for (Mark const& mark : marks) {
        int const middle = _rowOf(mark.value);
        drawMark(picture, ink, {afterBar, middle - sizes.line / 2, markLength, sizes.line});
        drawText(picture, ink, writer.write(mark.text, sizes.text), textLeft, middle - sizes.text / 2);
    }
    int const gap = static_cast<int>(std::lround(GAP_OF_PIECES * sizes.text));
    int head = bar.top - sizes.line;
    if (scale.isExceeded) {
        PixelArea const piece{bar.left, bar.top - gap - sizes.swatch, bar.width, sizes.swatch};
        fill(picture, piece, colors.above());
        drawFrame(picture, ink, piece, sizes.line);
        drawText(picture, ink, writer.write(ABOVE_TEXT, sizes.text), textLeft,
                 piece.top + (piece.height - sizes.text) / 2);
        head = piece.top - sizes.line;
    }
    if (scale.undefinedCount > 0) {
        PixelArea const piece{bar.left, bar.top + bar.height + gap, bar.width, sizes.swatch};
        fill(picture, piece, colors.undefined());
        drawFrame(picture, ink, piece, sizes.line);
        int const top = piece.top + (piece.height - sizes.text) / 2;
        drawText(picture, ink, writer.write(undefinedText(scale), sizes.text), textLeft, top);
        drawText(picture, ink, writer.write(std::to_string(scale.undefinedCount), sizes.text), textLeft,
                 top + sizes.text);
    }
    _drawTitle(picture, head, ink);
}

/// In two lines where the unit would not fit behind the name.
void ColorBar::_drawTitle(Picture& picture, int bottom, Color4<float> const& ink) const {
    int const widest = reserved - 2 * sizes.margin;
    std::vector<std::string> lines{scale.title()};
    if (!scale.unit.empty() && writer.write(lines.front(), sizes.text).width > widest) {
        lines = {scale.name, "[" + scale.unit + "]"};
    }
    int top = bottom - sizes.text * static_cast<int>(lines.size() + 1);
    for (std::string const& line : lines) {
        drawText(picture, ink, writer.write(writer.shortened(line, sizes.text, widest), sizes.text), bar.left,
                 top);
        top += sizes.text;
    }
}

}  // namespace vellum::viewport
