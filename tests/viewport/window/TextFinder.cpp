#include "tests/viewport/window/TextFinder.h"

#include "viewport/drawing/overlays/TextMask.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include <imgui.h>

using vellum::viewport::Picture;
using vellum::viewport::Pixel;
using vellum::viewport::TextWriter;

namespace {

constexpr double LETTERS = 15;  // points, see Interface.cpp
constexpr int MARGIN = 4;       // pixels without letters left and right

/// A part of the font's picture at a pixel's middle, as a texture that is filtered linearly gives it.
double texel(unsigned char const* pixels, int width, int height, double u, double v) {
    double const x = u * width - 0.5;
    double const y = v * height - 0.5;
    auto const at = [&](double column, double row) {
        int const i = std::clamp(static_cast<int>(column), 0, width - 1);
        int const j = std::clamp(static_cast<int>(row), 0, height - 1);
        return static_cast<double>(pixels[j * width + i]);
    };
    double const left = std::floor(x);
    double const top = std::floor(y);
    double const right = x - left;
    double const down = y - top;
    return (at(left, top) * (1 - right) + at(left + 1, top) * right) * (1 - down) +
           (at(left, top + 1) * (1 - right) + at(left + 1, top + 1) * right) * down;
}

/// The letters as the interface has them, in a context of their own.
class Letters {
public:
    explicit Letters(double scale) : context(ImGui::CreateContext()) {
        ImGui::SetCurrentContext(context);
        auto const size = static_cast<float>(LETTERS * scale);
        ImFontAtlas& fonts = *ImGui::GetIO().Fonts;
        for (std::string const& file : TextWriter::systemFonts()) {
            if (fonts.Fonts.empty() && std::filesystem::is_regular_file(file)) {
                fonts.AddFontFromFileTTF(file.c_str(), size);
            }
        }
        if (fonts.Fonts.empty()) {
            ImFontConfig config;
            config.SizePixels = size;
            fonts.AddFontDefault(&config);
        }
        fonts.GetTexDataAsAlpha8(&pixels, &width, &height);
    }
    ~Letters() { ImGui::DestroyContext(context); }
    Letters(Letters const&) = delete;
    Letters& operator=(Letters const&) = delete;

    ImFont const& font() const { return *ImGui::GetIO().Fonts->Fonts[0]; }
    double at(double u, double v) const { return texel(pixels, width, height, u, v); }

private:
    ImGuiContext* context;
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
};

}  // namespace

TextFinder::TextFinder(std::string const& text, double scale) {
    Letters const letters(scale);
    ImFont const& font = letters.font();
    float pen = 0;
    for (char const letter : text) {
        pen += font.FindGlyph(static_cast<ImWchar>(letter))->AdvanceX;
    }
    width = static_cast<int>(std::ceil(pen)) + 2 * MARGIN;
    height = static_cast<int>(std::ceil(font.FontSize));
    std::vector<double> covered(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    pen = MARGIN;
    for (char const letter : text) {
        ImFontGlyph const& glyph = *font.FindGlyph(static_cast<ImWchar>(letter));
        float const left = pen + glyph.X0;
        float const right = pen + glyph.X1;
        pen += glyph.AdvanceX;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                double const u = (static_cast<double>(x) + 0.5 - left) / (right - left);
                double const v = (static_cast<double>(y) + 0.5 - glyph.Y0) / (glyph.Y1 - glyph.Y0);
                if (u >= 0 && u < 1 && v >= 0 && v < 1) {
                    covered[static_cast<std::size_t>(y * width + x)] += letters.at(
                        glyph.U0 + u * (glyph.U1 - glyph.U0), glyph.V0 + v * (glyph.V1 - glyph.V0));
                }
            }
        }
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double const part = covered[static_cast<std::size_t>(y * width + x)] / 255;
            if (part > 0.9 || part < 0.1) {
                samples.push_back({x, y, part > 0.9});
            }
        }
    }
    // A wrong place is left after a few of them: those of letters are rarely right by chance.
    std::stable_partition(samples.begin(), samples.end(),
                          [](Sample const& sample) { return sample.isLetter; });
}

std::optional<Pixel> TextFinder::find(Picture const& seen, Pixel after) const {
    for (int top = std::max(0, after.y); top + height <= seen.height; ++top) {
        for (int left = std::max(-MARGIN, after.x); left + width <= seen.width; ++left) {
            if (_isAt(seen, left, top)) {
                return Pixel{left + width / 2, top + height / 2};
            }
        }
    }
    return std::nullopt;
}

bool TextFinder::_isAt(Picture const& seen, int left, int top) const {
    // The grounds of the interface are blue and dark: only letters are red as well.
    constexpr unsigned char BRIGHT = 150;
    for (Sample const& sample : samples) {
        int const x = left + sample.x;
        bool const isBright =
            x >= 0 && seen.pixels[4 * static_cast<std::size_t>((top + sample.y) * seen.width + x)] >= BRIGHT;
        if (isBright != sample.isLetter) {
            return false;
        }
    }
    return !samples.empty();
}
