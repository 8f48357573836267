#include "viewport/window/panel/sections.h"

namespace vellum::viewport {

namespace {

constexpr std::array<std::pair<Shading, char const*>, 4> SHADINGS{{{Shading::SMOOTH, "smooth"},
                                                                   {Shading::FACETED, "faceted"},
                                                                   {Shading::WIREFRAME, "wireframe"},
                                                                   {Shading::BOX, "box"}}};
constexpr std::array<std::pair<Normals, char const*>, 3> NORMALS{
    {{Normals::NONE, "none"}, {Normals::VERTEX, "of vertices"}, {Normals::FACE, "of faces"}}};

/// The kinds of edges, which exclude each other.
enum class Edges { NONE, HARD, BLENDED, ALL };
constexpr std::array<std::pair<Edges, char const*>, 4> EDGES{{{Edges::NONE, "none"},
                                                              {Edges::HARD, "hard"},
                                                              {Edges::BLENDED, "hard, shining through"},
                                                              {Edges::ALL, "all"}}};

Edges edgesOf(MeshStyle const& style) {
    return style.allEdges     ? Edges::ALL
           : style.edgesBlend ? Edges::BLENDED
           : style.edges      ? Edges::HARD
                              : Edges::NONE;
}

using Up = std::optional<UpAxis>;
constexpr std::array<std::pair<Up, char const*>, 7> UP_AXES{{{std::nullopt, "as the files say"},
                                                             {UpAxis::X, "x"},
                                                             {UpAxis::Y, "y"},
                                                             {UpAxis::Z, "z"},
                                                             {UpAxis::MINUS_X, "-x"},
                                                             {UpAxis::MINUS_Y, "-y"},
                                                             {UpAxis::MINUS_Z, "-z"}}};

}  // namespace

void MeshSection::draw(PanelContext& context) {
    bool const hasMeshes =
        context.workspace.content() != nullptr && !context.workspace.content()->meshes.empty();
    if (!hasMeshes || !sectionHeader("Meshes", true)) {
        return;
    }
    ImGui::PushID("meshes");
    Options& options = context.options;
    MeshStyle& style = options.mesh;
    bool const isCovered = options.effect && !options.hasSurroundingSea();
    if (isCovered) {
        paleLine("Of models with an effect only smooth and faceted are shown.");
    }
    choice("Shading", style.shading, SHADINGS, "--shading MODE");
    Edges edges = edgesOf(style);
    if (choice("Edges", edges, EDGES, "--edges, --edges-blend, --edges=all")) {
        style.edges = edges == Edges::HARD;
        style.edgesBlend = edges == Edges::BLENDED;
        style.allEdges = edges == Edges::ALL;
    }
    choice("Normals", style.normals, NORMALS, "--normals vertex or face");
    bool hasColor = style.color.has_value();
    if (checkBox("One color", hasColor, "--mesh-color RRGGBB: in place of those of the files")) {
        style.color = hasColor ? std::optional<Color4<float>>({0.8F, 0.8F, 0.8F, 1}) : std::nullopt;
    }
    if (style.color) {
        ImGui::SameLine();
        colorField("##color", *style.color, "--mesh-color RRGGBB");
    }
    ImGui::SliderFloat("Opacity", &style.opacity, 0, 1, "%.2f", ImGuiSliderFlags_AlwaysClamp);
    hint("--opacity PART; Ctrl+click to type");
    bool hasWidth = style.lineWidth.has_value();
    if (checkBox("Own line width", hasWidth, "--line-width PIXELS: of edges, outlines and lines")) {
        style.lineWidth = hasWidth ? std::optional<double>(1.5) : std::nullopt;
    }
    if (style.lineWidth) {
        auto width = static_cast<float>(*style.lineWidth);
        if (ImGui::SliderFloat("Pixels", &width, 0.1F, 100, "%.2g",
                               ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_Logarithmic)) {
            style.lineWidth = static_cast<double>(width);
        }
        hint("--line-width PIXELS; Ctrl+click to type");
    }
    checkBox("Connectivity", style.connectivity, "--connectivity: shared edges in white, borders in amber");
    checkBox("Wireframe back", style.wireframeBack,
             "--wireframe-back: triangles seen from behind are outlines");
    checkBox("Import preview", style.importPreview,
             "--import-preview: what the import gave, in place of all of the above");
    texture.draw("Texture", options.texture, "--texture FILE: a picture for all models; empty: their own",
                 lackOfFile);
    choice("Up", options.up, UP_AXES, "--up AXIS: what is vertical in the files");
    ImGui::PopID();
}

}  // namespace vellum::viewport
