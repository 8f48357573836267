#include "viewport/gallery/sheets/Sheet.h"

#include "Camera_RL_GL.h"
#include "foundation/foundation.h"
#include "offscreen/OffscreenContext.h"
#include "viewport/gallery/sheets/SheetLayer.h"
#include "viewport/gallery/sheets/StrokeFont.h"
#include "viewport/gallery/sheets/placement.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <GL/gl.h>

namespace vellum::gallery {

namespace {

constexpr int SCALE = SheetLayer::OVERSAMPLING;
constexpr int MARGIN = 10;        // pixels between cells
constexpr int LABEL_HEIGHT = 24;  // pixels at the foot of a cell
constexpr float LABEL_SIZE = 11.0F;
constexpr float LINE_WIDTH = 1.5F;

constexpr Color4<float> PAPER{0.090F, 0.106F, 0.129F, 1.0F};
constexpr Color4<float> CELL_TOP{0.208F, 0.239F, 0.282F, 1.0F};
constexpr Color4<float> CELL_BOTTOM{0.133F, 0.153F, 0.184F, 1.0F};
constexpr Color4<float> LABEL{0.72F, 0.76F, 0.82F, 1.0F};

/// A rectangle of the sheet in pixels; the origin is the lower left corner of the sheet.
struct Area {
    int x;
    int y;
    int width;
    int height;
};

void openOverlay(Core_RL& layer, Area const& area) {
    auto const pixels = [](int value) { return static_cast<unsigned int>(SCALE * value); };
    layer.pushViewportOrtho(
        Tuple4<unsigned int>{pixels(area.x), pixels(area.y), pixels(area.width), pixels(area.height)},
        Tuple4<float>{0.0F, static_cast<float>(area.width), 0.0F, static_cast<float>(area.height)});
    layer.pushDepthTest({DEPTH_TEST_OFF, false});
}

void closeOverlay(Core_RL& layer) {
    layer.popDepthTest();
    layer.popViewportOrtho();
}

void drawBackground(Core_RL& layer, Area const& area) {
    auto const width = static_cast<float>(area.width);
    auto const height = static_cast<float>(area.height);
    openOverlay(layer, area);
    layer.pushColor(CELL_BOTTOM);
    layer.begin(Primitive::QUADS);
    layer.renderPoint3_scoped({0.0F, 0.0F, 0.0F});
    layer.renderPoint3_scoped({width, 0.0F, 0.0F});
    layer.setColor(CELL_TOP);
    layer.renderPoint3_scoped({width, height, 0.0F});
    layer.renderPoint3_scoped({0.0F, height, 0.0F});
    layer.end();
    layer.popColor(1);
    closeOverlay(layer);
}

void drawLabel(Core_RL& layer, Area const& area, std::string const& label) {
    openOverlay(layer, area);
    layer.pushColor(LABEL);
    layer.pushLineWidth(1.2F);
    drawText(layer, label, {0.5F * (static_cast<float>(area.width) - textWidth(label, LABEL_SIZE)), 9.0F},
             LABEL_SIZE);
    layer.popLineWidth();
    layer.popColor(1);
    closeOverlay(layer);
}

void loadView(Camera_RL& camera, View view, float aspect) {
    camera.aspect = aspect;
    if (view.isFlat()) {
        camera.viewKind = 1;
        camera.zoom = std::log(view.reach * std::max(aspect, 1.0F));
    } else {
        camera.viewKind = 0;
        float const half = std::tan(0.5F * radians(view.fieldOfView)) / std::min(aspect, 1.0F);
        camera.fieldOfView = 2.0F * degrees(std::atan(half));
        camera.nearDistance = 0.1F;
        camera.farDistance = 100.0F;
        camera.lookAt(view.eye, view.target, {0.0F, 1.0F, 0.0F});
    }
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
}

/// Sets two directional lights in eye space: a bright one from the upper left, and a dim cool one from the
/// right that keeps the shaded sides readable.
void placeLights() {
    GLfloat const keyDirection[] = {-0.45F, 0.75F, 0.65F, 0.0F};
    GLfloat const keyColor[] = {0.80F, 0.79F, 0.76F, 1.0F};
    GLfloat const fillDirection[] = {0.85F, -0.05F, 0.45F, 0.0F};
    GLfloat const fillColor[] = {0.22F, 0.25F, 0.30F, 1.0F};
    GLfloat const ambient[] = {0.24F, 0.24F, 0.26F, 1.0F};
    GLfloat const none[] = {0.0F, 0.0F, 0.0F, 1.0F};
    GLfloat const gloss[] = {0.18F, 0.18F, 0.18F, 1.0F};

    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glLightfv(GL_LIGHT0, GL_POSITION, keyDirection);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, keyColor);
    glLightfv(GL_LIGHT0, GL_SPECULAR, keyColor);
    glLightfv(GL_LIGHT1, GL_POSITION, fillDirection);
    glLightfv(GL_LIGHT1, GL_DIFFUSE, fillColor);
    glLightfv(GL_LIGHT1, GL_SPECULAR, none);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, gloss);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 40.0F);
}

void drawCell(Core_RL& layer, Cell const& cell, Area const& area) {
    Area scene = area;
    if (!cell.label.empty()) {
        scene.y += LABEL_HEIGHT;
        scene.height -= LABEL_HEIGHT;
    }
    drawBackground(layer, area);

    placeLights();
    glViewport(SCALE * scene.x, SCALE * scene.y, SCALE * scene.width, SCALE * scene.height);
    Camera_RL_GL camera;
    layer.setCamera(&camera);
    loadView(camera, cell.view, static_cast<float>(scene.width) / static_cast<float>(scene.height));
    cell.draw(layer, cell.view);
    layer.setCamera(nullptr);

    drawLabel(layer, area, cell.label);
}

/// Averages blocks of oversampled pixels to the pixels of the sheet. The sheet is opaque, although blended
/// drawings leave their opacity in the framebuffer.
viewport::Picture averaged(std::vector<unsigned char> const& samples, int width, int height) {
    constexpr std::size_t SIDE = SCALE;
    auto const columns = static_cast<std::size_t>(width);
    auto const rows = static_cast<std::size_t>(height);
    std::size_t const rowBytes = 4 * SIDE * columns;
    constexpr unsigned int BLOCK_SIZE = SIDE * SIDE;
    viewport::Picture picture{width, height, {}};
    picture.pixels.reserve(4 * columns * rows);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            unsigned char const* const block = samples.data() + row * SIDE * rowBytes + 4 * SIDE * column;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                unsigned int sum = BLOCK_SIZE / 2;
                for (std::size_t y = 0; y < SIDE; ++y) {
                    for (std::size_t x = 0; x < SIDE; ++x) {
                        sum += block[y * rowBytes + 4 * x + channel];
                    }
                }
                picture.pixels.push_back(static_cast<unsigned char>(sum / BLOCK_SIZE));
            }
            picture.pixels.push_back(255);
        }
    }
    return picture;
}

}  // namespace

// == View ==

View View::perspective(Vector3<float> const& eye, Vector3<float> const& target, float fieldOfView) {
    return {eye, target, fieldOfView, 0.0F};
}

View View::flat(float reach) {
    return {{0.0F, 0.0F, 1.0F}, {0.0F, 0.0F, 0.0F}, 0.0F, reach};
}

Vector3<float> View::direction() const {
    return normalized(target - eye);
}

// == Sheet ==

void fitToDrawings(Subject& subject, int width, int height) {
    auto const rows = static_cast<int>(subject.rows.size());
    auto const columns = static_cast<int>(subject.rows.front().cells.size());
    subject.width = columns * width + (columns + 1) * MARGIN;
    subject.height = rows * (height + LABEL_HEIGHT) + (rows + 1) * MARGIN;
}

viewport::Picture drawSheet(OffscreenContext& context, SheetLayer& layer, Subject const& subject) {
    glViewport(0, 0, SCALE * subject.width, SCALE * subject.height);
    glClearColor(PAPER.r, PAPER.g, PAPER.b, PAPER.a);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    layer.pushDepthTest({DEPTH_LESS, true});
    layer.pushLineWidth(LINE_WIDTH);

    float heights = 0.0F;
    for (Row const& row : subject.rows) {
        heights += row.height;
    }
    auto const rowCount = static_cast<int>(subject.rows.size());
    int const freeHeight = subject.height - (rowCount + 1) * MARGIN;
    float above = 0.0F;
    int rowIndex = 0;
    for (Row const& row : subject.rows) {
        auto const edge = [&](float upTo) {
            return static_cast<int>(static_cast<float>(freeHeight) * upTo / heights);
        };
        int const top = edge(above);
        above += row.height;
        int const height = edge(above) - top;

        auto const cellCount = static_cast<int>(row.cells.size());
        int const freeWidth = subject.width - (cellCount + 1) * MARGIN;
        for (int i = 0; i < cellCount; ++i) {
            int const left = freeWidth * i / cellCount;
            int const right = freeWidth * (i + 1) / cellCount;
            drawCell(layer, row.cells[static_cast<std::size_t>(i)],
                     {(i + 1) * MARGIN + left, subject.height - (rowIndex + 1) * MARGIN - top - height,
                      right - left, height});
        }
        ++rowIndex;
    }

    layer.popLineWidth();
    layer.popDepthTest();

    return averaged(context.readPixels(), subject.width, subject.height);
}

}  // namespace vellum::gallery
