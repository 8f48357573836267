#include "toolkit/draw_mesh.h"

#include "foundation/basic/ArrayHandle.h"
#include "foundation/basic/ArrayServer.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/raster/Core_RL.h"
#include "internal/misuse.h"
#include "toolkit/internal/gl.h"

#include <algorithm>

namespace vellum::toolkit {

namespace {

constexpr float FAINT = 0.25F;  // of the opacity of edges: where the surface hides them

constexpr float NO_NORMAL[3] = {0, 0, 0};
constexpr Vector2<float> NO_COORDINATE{0, 0};

bool isFilled(Shading shading) {
    return shading == Shading::FACETED || shading == Shading::SMOOTH;
}

bool isEmpty(VL_String const& text) {
    return *text.c_str() == '\0';
}

template <class T>
T const* elementsOf(ArrayTypeable const* record) {
    return record != nullptr ? record->as<T>() : nullptr;
}

unsigned int sizeOf(ArrayTypeable const* record) {
    return record != nullptr ? record->size : 0;
}

/// Three indices for each triangle, one after the other.
unsigned int const* indicesOf(ArrayTypeable const* record) {
    bool const areTriples = record != nullptr && record->elementSize == sizeof(Tuple3<unsigned int>);
    return areTriples ? static_cast<unsigned int const*>(record->data) : nullptr;
}

// == What a style asks for, as far as the mesh has it ==

/// The texture coordinates of a channel, found as Mesh_RL_GL::renderTextured() finds them.
class Channel {
public:
    Channel(Mesh const& mesh, VL_String const& name) {
        if (isEmpty(name)) {
            return;
        }
        ArrayTypeable const* const own =
            VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::TRINDEXED, name.c_str()));
        values = VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_FACE, name.c_str()));
        if (own != nullptr && values != nullptr) {
            isIndexed = true;
            indices = indicesOf(own);
            indexCount = indices != nullptr ? own->size * 3 : 0;
        } else {
            values = VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, name.c_str()));
        }
        coordinates = elementsOf<Vector2<float>>(values);
        coordinateCount = coordinates != nullptr ? values->size : 0;
    }

    bool isFound() const { return values != nullptr; }

    /// \param corner 3 t + k
    Vector2<float> const& at(unsigned int corner, unsigned int position) const {
        if (isIndexed && corner >= indexCount) {
            return NO_COORDINATE;
        }
        unsigned int const index = isIndexed ? indices[corner] : position;
        return index < coordinateCount ? coordinates[index] : NO_COORDINATE;
    }

private:
    ArrayTypeable const* values = nullptr;
    bool isIndexed = false;
    unsigned int const* indices = nullptr;
    unsigned int indexCount = 0;
    Vector2<float> const* coordinates = nullptr;
    unsigned int coordinateCount = 0;
};

/// The colors of a mesh by name.
class Colors {
public:
    Colors(Mesh const& mesh, VL_String const& name) {
        if (!isEmpty(name)) {
            record = VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, name.c_str()));
            colors = elementsOf<Color4<float>>(record);
        }
    }

    bool isFound() const { return colors != nullptr; }

    Color4<float> const& at(unsigned int position, Color4<float> const& fallback) const {
        return position < record->size ? colors[position] : fallback;
    }

private:
    ArrayTypeable const* record = nullptr;
    Color4<float> const* colors = nullptr;
};

/// A drawing of a mesh: what the style asks for and the mesh has.
struct Drawing {
    Mesh_RL_GL& renderer;
    MeshStyle const& style;
    Core_RL& layer;
    Channel channel;
    Colors colors;
    bool isTextured;  // a texture is put on

    Drawing(Mesh_RL_GL& renderer, MeshStyle const& style)
        : renderer(renderer)
        , style(style)
        , layer(*VL_Raster)
        , channel(*renderer.mesh, style.textureChannel)
        , colors(*renderer.mesh, style.colors)
        , isTextured(style.texture != 0 && isFilled(style.shading) &&
                     (channel.isFound() || isEmpty(style.textureChannel))) {}

    bool hasEdges() const { return style.edges != Edges::NONE && isFilled(style.shading); }

    bool isSurfaceBlended() const { return style.color.a < 1 || colors.isFound(); }
    bool areEdgesBlended() const {
        return hasEdges() && (style.edgeColor.a < 1 || style.edges == Edges::SHINING);
    }

    /// The groups of state that the drawing changes.
    unsigned int attributes() const {
        unsigned int bits = GL_CURRENT_BIT | GL_ENABLE_BIT | GL_LINE_BIT | GL_POLYGON_BIT;
        bits |= isSurfaceBlended() || areEdgesBlended() ? unsigned{GL_COLOR_BUFFER_BIT} : 0U;
        bits |= isTextured ? unsigned{GL_TEXTURE_BIT} : 0U;
        return bits;
    }
};

// == State ==

/// No program while it lives: effects with a geometry stage for triangles take no lines.
class WithoutProgram {
public:
    explicit WithoutProgram(Core_RL& layer) : layer(layer) {
        if (layer.checkShaderSupport()) {
            glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        }
        if (program != 0) {
            layer.useProgram(0);
        }
    }
    ~WithoutProgram() {
        if (program != 0) {
            layer.useProgram(static_cast<unsigned int>(program));
        }
    }
    WithoutProgram(WithoutProgram const&) = delete;
    WithoutProgram& operator=(WithoutProgram const&) = delete;

private:
    Core_RL& layer;
    GLint program = 0;
};

class Fillings {
public:
    Fillings(Core_RL& layer, FillingMode back, FillingMode front) : layer(layer) {
        layer.pushFillingBack(back);
        layer.pushFillingFront(front);
    }
    ~Fillings() {
        layer.popFillingFront();
        layer.popFillingBack();
    }
    Fillings(Fillings const&) = delete;
    Fillings& operator=(Fillings const&) = delete;

private:
    Core_RL& layer;
};

void disableLightAndTexture() {
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
}

/// Moves surfaces back in depth. A wide line has the depth of its middle all across, so the surface under its
/// rim must give way by half a line width of its slope; a pixel more is for the rasterizer.
void moveSurfacesBack(float lineWidth) {
    constexpr float LEAST = 2;
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(std::max(LEAST, 1 + lineWidth / 2), 2);
}

// == Parts ==

void drawBox(Drawing const& drawing) {
    Mesh& mesh = *drawing.renderer.mesh;
    if ((mesh.flags() & MESH_GOT_BOX) == 0) {
        mesh.workBox();
    }
    disableLightAndTexture();
    WithoutProgram const past(drawing.layer);
    Fillings const lines(drawing.layer, FILLING_LINES, FILLING_LINES);
    drawing.layer.render(mesh.box(), false);
}

/// The triangles with their colors, which are read where the mesh has them.
void drawColored(Drawing const& drawing) {
    Mesh const& mesh = *drawing.renderer.mesh;
    bool const isFaceted = drawing.style.shading == Shading::FACETED;
    if (mesh.triangleFault() != MeshFault_ns::NONE ||
        (isFaceted ? mesh.faceNormalFault() : mesh.vertexNormalFault()) != MeshFault_ns::NONE) {
        return;
    }
    ArrayTypeable const* const triangles = VL_ArrayServer.resolve(mesh.triangles());
    unsigned int const* const corners = indicesOf(triangles);
    auto const* const positions = elementsOf<Vector3<double>>(VL_ArrayServer.resolve(mesh.positions()));
    ArrayTypeable const* const faceRecord = VL_ArrayServer.resolve(mesh.faceNormals());
    auto const* const faceNormals = sizeOf(faceRecord) != 0 ? elementsOf<Color4<float>>(faceRecord) : nullptr;
    auto const* const vertexNormals =
        elementsOf<Vector3<float>>(VL_ArrayServer.resolve(mesh.vertexNormals()));
    ArrayTypeable const* const normalRecord = VL_ArrayServer.resolve(mesh.normalTriangles());
    unsigned int const* const normals =
        sizeOf(normalRecord) != 0 && vertexNormals != nullptr ? indicesOf(normalRecord) : nullptr;
    bool const hasCoordinates = drawing.channel.isFound();

    glBegin(GL_TRIANGLES);
    unsigned int const cornerCount = corners != nullptr && positions != nullptr ? triangles->size * 3 : 0;
    for (unsigned int corner = 0; corner < cornerCount; ++corner) {
        unsigned int const position = corners[corner];
        if (!isFaceted) {
            glNormal3fv(normals != nullptr ? &vertexNormals[normals[corner]].x : NO_NORMAL);
        } else if (corner % 3 == 0) {
            glNormal3fv(faceNormals != nullptr ? &faceNormals[corner / 3].r : NO_NORMAL);
        }
        if (hasCoordinates) {
            glTexCoord2fv(&drawing.channel.at(corner, position).x);
        }
        glColor4fv(&drawing.colors.at(position, drawing.style.color).r);
        glVertex3dv(&positions[position].x);
    }
    glEnd();
}

void drawTriangles(Drawing const& drawing) {
    Mesh_RL_GL& renderer = drawing.renderer;
    VL_String const& channel = drawing.style.textureChannel;
    if (drawing.colors.isFound()) {
        drawColored(drawing);
    } else if (drawing.style.shading == Shading::FACETED && drawing.channel.isFound()) {
        renderer.renderFacetedTextured(channel);
    } else if (drawing.style.shading == Shading::FACETED) {
        renderer.renderFaceted();
    } else if (drawing.style.shading == Shading::SMOOTH && drawing.channel.isFound()) {
        renderer.renderTextured(channel);
    } else {
        renderer.render();
    }
}

void drawWireframe(Drawing const& drawing) {
    disableLightAndTexture();
    Fillings const lines(drawing.layer, FILLING_LINES, FILLING_LINES);
    drawTriangles(drawing);
}

void drawSurface(Drawing const& drawing) {
    if (drawing.hasEdges()) {
        moveSurfacesBack(drawing.style.lineWidth);
    }
    if (drawing.isTextured) {
        drawing.layer.activateTextureColor(drawing.style.texture);
    }
    {
        Fillings const surface(drawing.layer, drawing.style.outlinesBack ? FILLING_LINES : FILLING_SOLID,
                               FILLING_SOLID);
        drawTriangles(drawing);
    }
    if (drawing.isTextured) {
        drawing.layer.disableTextureColor();
    }
}

/// Those that lie behind what is drawn already; all of them where depth is not tested.
void drawHiddenEdges(Drawing const& drawing) {
    Color4<float> const& color = drawing.style.edgeColor;
    // An attribute group inside another one would cost that one its colors; see docs/drivers.md.
    GLint function = 0;
    GLint isWritten = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    glGetIntegerv(GL_DEPTH_WRITEMASK, &isWritten);
    glDepthFunc(GL_GREATER);
    glDepthMask(GL_FALSE);
    drawing.layer.pushColor({color.r, color.g, color.b, color.a * FAINT});
    drawing.renderer.renderEdges();
    drawing.layer.popColor(1);
    glDepthFunc(static_cast<GLenum>(function));
    glDepthMask(static_cast<GLboolean>(isWritten));
}

void drawEdges(Drawing const& drawing) {
    disableLightAndTexture();
    WithoutProgram const past(drawing.layer);
    if (drawing.areEdgesBlended()) {
        drawing.layer.pushBlending(BLENDING_ALPHA);
    }
    if (drawing.style.edges == Edges::SHINING) {
        drawHiddenEdges(drawing);
    }
    drawing.layer.pushColor(drawing.style.edgeColor);
    if (drawing.style.edges == Edges::TRIANGLES) {
        Fillings const lines(drawing.layer, FILLING_LINES, FILLING_LINES);
        drawing.renderer.render();
    } else {
        drawing.renderer.renderEdges();
    }
    drawing.layer.popColor(1);
    if (drawing.areEdgesBlended()) {
        drawing.layer.popBlending();
    }
}

void draw(Drawing const& drawing) {
    Core_RL& layer = drawing.layer;
    layer.pushColor(drawing.style.color);
    layer.pushLineWidth(drawing.style.lineWidth);
    if (drawing.isSurfaceBlended()) {
        layer.pushBlending(BLENDING_ALPHA);
    }
    switch (drawing.style.shading) {
    case Shading::BOX:
        drawBox(drawing);
        break;
    case Shading::WIREFRAME:
        drawWireframe(drawing);
        break;
    case Shading::FACETED:
    case Shading::SMOOTH:
        drawSurface(drawing);
        break;
    }
    if (drawing.isSurfaceBlended()) {
        layer.popBlending();
    }
    if (drawing.hasEdges()) {
        drawEdges(drawing);
    }
    layer.popLineWidth();
    layer.popColor(1);
}

}  // namespace

void drawMesh(Mesh_RL_GL& renderer, MeshStyle const& style) {
    misuse::requireLayer("drawMesh");
    misuse::requireMesh("drawMesh", renderer.mesh);
    if (renderer.mesh == nullptr || VL_Raster == nullptr) {
        return;
    }
    Drawing const drawing(renderer, style);
    // The state stacks know nothing of what an application has set with GL itself, so GL keeps it.
    glPushAttrib(drawing.attributes());
    draw(drawing);
    // Workaround: Mesa (22.3) takes the current color over when it is used, and glPopAttrib() overlooks one
    // that waits: it came back later. A query makes it take it over.
    float color[4];
    glGetFloatv(GL_CURRENT_COLOR, color);
    glPopAttrib();
}

}  // namespace vellum::toolkit
