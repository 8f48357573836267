#include "viewport/drawing/Viewer.h"

#include "viewport/drawing/ImpostorView.h"
#include "viewport/drawing/Lit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr double PI = 3.14159265358979323846;
constexpr double FIELD_OF_VIEW = 32;  // vertical, degrees
constexpr Point PERSPECTIVE_DIRECTION{-0.62, -0.46, -0.80};

// == Sizes on the screen, pixels of a picture whose shorter side has 720 ==

constexpr double REFERENCE_SIDE = 720;
constexpr double GIZMO_LENGTH = 118;
constexpr double CORNER_AXES_LENGTH = 34;
constexpr double CORNER_AXES_INSET = 64;
constexpr double LETTER_HALF_SIZE = 5;
constexpr double POINT_SIZE = 2.4;

// In mean distances of neighbors.
constexpr double LONGEST_ARROW = 1.9;

// == Colors ==

constexpr Color4<float> BACKGROUND_TOP{0.235F, 0.275F, 0.335F, 1};
constexpr Color4<float> BACKGROUND_BOTTOM{0.085F, 0.098F, 0.122F, 1};
constexpr Color4<float> GIZMO_CENTER{0.86F, 0.87F, 0.90F, 1};
constexpr Color4<float> LETTERS{0.86F, 0.88F, 0.92F, 1};
constexpr Color4<float> PARTICLE_BOX{0.86F, 0.88F, 0.92F, 0.5F};

// == Picking names ==

constexpr unsigned int GIZMO_NAMES[] = {1, 2, 3, 4};  // X, Y, Z and the center
constexpr unsigned int FIRST_MODEL_NAME = 16;
constexpr double PICK_REACH = 2.5;  // pixels on each side of the pixel's center

constexpr DepthtTestMode DEPTH_TESTED{DEPTH_LESS, true};
constexpr DepthtTestMode DEPTH_TESTED_ONLY{DEPTH_LESS_OR_EQUAL, false};
constexpr DepthtTestMode DEPTH_IGNORED{DEPTH_TEST_OFF, false};

Tuple3<Color4<float>> axisColors() {
    return {axisColor(0), axisColor(1), axisColor(2)};
}

Vector3<double> axis(unsigned int index) {
    return {index == 0 ? 1.0 : 0.0, index == 1 ? 1.0 : 0.0, index == 2 ? 1.0 : 0.0};
}

/// The matrix whose first three columns are the given vectors and whose fourth is the place.
Matrix4<double> frame(Point const& x, Point const& y, Point const& z, Point const& place) {
    return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, place.x, place.y, place.z, 1}};
}

Matrix4<double> scaling(double factor) {
    return frame({factor, 0, 0}, {0, factor, 0}, {0, 0, factor}, {0, 0, 0});
}

char const* gizmoWord(Gizmo gizmo) {
    switch (gizmo) {
    case Gizmo::MOVE:
        return "move";
    case Gizmo::ROTATE:
        return "rotate";
    case Gizmo::SCALE:
        return "scale";
    case Gizmo::NONE:
        break;
    }
    return "";
}

void setLight(GLenum light, Point const& direction, std::array<float, 3> const& diffuse, float specular) {
    float const position[4] = {static_cast<float>(direction.x), static_cast<float>(direction.y),
                               static_cast<float>(direction.z), 0};
    float const ambient[4] = {0, 0, 0, 1};
    float const color[4] = {diffuse[0], diffuse[1], diffuse[2], 1};
    float const shine[4] = {specular, specular, specular, 1};
    glLightfv(light, GL_POSITION, position);
    glLightfv(light, GL_AMBIENT, ambient);
    glLightfv(light, GL_DIFFUSE, color);
    glLightfv(light, GL_SPECULAR, shine);
}

/// Two lights that stand with the viewer: the main one from the upper left, a fainter one from the right.
/// The directions are given in the frame that the model-view matrix stands for now.
void placeLights(ScreenAxes const& screen, float specular) {
    auto const toward = [&screen](double right, double up, double viewer) {
        return screen.right * right + screen.up * up + screen.towardViewer * viewer;
    };
    setLight(GL_LIGHT0, toward(-0.50, 0.72, 0.62), {0.66F, 0.645F, 0.62F}, specular);
    setLight(GL_LIGHT1, toward(0.85, -0.05, 0.42), {0.20F, 0.23F, 0.29F}, 0);
    // Files are not to be relied on for the order of corners; a face is lit on the side that is seen.
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
}

/// One hit of GL's selection.
struct Hit {
    unsigned int name;
    unsigned int nearestDepth;
};

/// Reads the records that glRenderMode left in the selection buffer: per hit the number of names, the nearest and
/// the farthest depth, the names.
std::vector<Hit> readHits(std::vector<GLuint> const& buffer, int count) {
    std::vector<Hit> hits;
    std::size_t at = 0;
    for (int i = 0; i < count && at + 3 < buffer.size(); ++i) {
        std::size_t const names = buffer[at];
        std::size_t const last = at + 2 + names;
        if (names > 0 && last < buffer.size()) {
            hits.push_back({buffer[last], buffer[at + 1]});
        }
        at += 3 + names;
    }
    return hits;
}

/// Whether the first hit is rather what the user means than the second.
bool comesBefore(Hit const& a, Hit const& b) {
    bool const isGizmoA = a.name < FIRST_MODEL_NAME;
    bool const isGizmoB = b.name < FIRST_MODEL_NAME;
    return isGizmoA != isGizmoB ? isGizmoA : a.nearestDepth < b.nearestDepth;
}

/// Shrinks a tile to a part of the picture: each pixel is the mean of its samples.
void shrinkInto(Picture& picture, int left, int top, Tiling const& tiling,
                std::vector<unsigned char> const& samples) {
    int const side = tiling.samplesPerSide;
    int const width = std::min(tiling.width, picture.width - left);
    int const height = std::min(tiling.height, picture.height - top);
    std::size_t const row = 4 * static_cast<std::size_t>(tiling.bufferWidth());
    for (int y = 0; y < height; ++y) {
        std::size_t const pixelRow =
            static_cast<std::size_t>(top + y) * static_cast<std::size_t>(picture.width);
        unsigned char* out = picture.pixels.data() + 4 * (pixelRow + static_cast<std::size_t>(left));
        for (int x = 0; x < width; ++x) {
            unsigned int sums[3] = {0, 0, 0};
            for (int j = 0; j < side; ++j) {
                unsigned char const* in = samples.data() +
                                          row * static_cast<std::size_t>((y + tiling.margin) * side + j) +
                                          4 * static_cast<std::size_t>((x + tiling.margin) * side);
                for (int i = 0; i < side; ++i, in += 4) {
                    sums[0] += in[0];
                    sums[1] += in[1];
                    sums[2] += in[2];
                }
            }
            unsigned int const count = static_cast<unsigned int>(side * side);
            for (unsigned int sum : sums) {
                *out++ = static_cast<unsigned char>((sum + count / 2) / count);
            }
            *out++ = 255;
        }
    }
}

}  // namespace

// == Tiling ==

Tiling Tiling::of(int pictureWidth, int pictureHeight) {
    // Beyond this a picture is so fine that the samples of the buffer alone smooth it.
    constexpr double LARGEST_SMOOTHED = 20e6;
    constexpr int LARGEST_TILE = 1024;
    bool const isSmoothed = static_cast<double>(pictureWidth) * pictureHeight <= LARGEST_SMOOTHED;
    return {isSmoothed ? 2 : 1, std::min(pictureWidth, LARGEST_TILE), std::min(pictureHeight, LARGEST_TILE),
            16};
}

Tiling Tiling::ofOneTile(int pictureWidth, int pictureHeight) {
    // Four times as many samples as pixels, each in the buffer four times, should take no more than some 250 MB.
    constexpr double LARGEST_SMOOTHED = 2e6;
    constexpr int LARGEST_TILE = 4096;
    bool const isSmoothed = static_cast<double>(pictureWidth) * pictureHeight <= LARGEST_SMOOTHED;
    return {isSmoothed ? 2 : 1, std::min(pictureWidth, LARGEST_TILE), std::min(pictureHeight, LARGEST_TILE),
            16};
}

Tiling Tiling::of(Options const& options) {
    return options.effect.isOn() ? ofOneTile(options.width, options.height)
                                 : of(options.width, options.height);
}

// == Viewer ==

Viewer::Viewer(Core_RL& layer, Scene const& scene, Options const& options, ParticleLook const& look,
               EffectRenderer* effect)
    : layer(layer)
    , scene(scene)
    , request(options)
    , effect(effect)
    , particleMode(look.mode)
    , particleScale(look.scale)
    , frameWidth(options.width)
    , textures(layer) {
    _prepareClouds();
    for (Model const& model : scene.models()) {
        models.emplace_back(layer, model, options, textures);
    }
    _placeCamera();
    layer.setCamera(&viewCamera);
    groundSegments = _ground().segments();
}

OffscreenContext::Settings Viewer::contextSettings(Options const& options) {
    Tiling const tiling = Tiling::of(options);
    OffscreenContext::Settings settings;
    settings.width = tiling.bufferWidth();
    settings.height = tiling.bufferHeight();
    settings.samples = 4;
    return settings;
}

Result<Picture> Viewer::draw(OffscreenContext& context, Tiling const& tiling) {
    Picture picture;
    picture.width = request.width;
    picture.height = request.height;
    picture.pixels.resize(4 * static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    for (int top = 0; top < picture.height; top += tiling.height) {
        for (int left = 0; left < picture.width; left += tiling.width) {
            Region const region{static_cast<double>(left - tiling.margin),
                                static_cast<double>(picture.height - top - tiling.height - tiling.margin),
                                static_cast<double>(tiling.width + 2 * tiling.margin),
                                static_cast<double>(tiling.height + 2 * tiling.margin)};
            glViewport(0, 0, tiling.bufferWidth(), tiling.bufferHeight());
            _drawRegion(region, tiling.samplesPerSide);
            shrinkInto(picture, left, top, tiling, context.readPixels());
            if (layer.getError("Viewer::draw", __LINE__)) {
                return Fault{request.out, "cannot be drawn: OpenGL reports an error"};
            }
        }
    }
    if (colorBar) {
        colorBar->drawLabels(picture);
    }
    return picture;
}

std::string Viewer::pick(Pixel pixel) {
    // A record of one name has four words; each handle and each model gives one record at most.
    std::vector<GLuint> buffer(4 * (scene.models().size() + 64));
    glViewport(0, 0, request.width, request.height);
    glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0);

    double const x = pixel.x + 0.5;
    double const y = request.height - pixel.y - 0.5;
    _loadCamera({x - PICK_REACH, y - PICK_REACH, 2 * PICK_REACH, 2 * PICK_REACH});
    for (std::size_t i = 0; i < scene.models().size(); ++i) {
        Model const& model = scene.models()[i];
        layer.loadName(FIRST_MODEL_NAME + static_cast<unsigned int>(i));
        if (request.shading == Shading::BOX) {
            layer.render(model.box, false);
        } else {
            models[i].drawShape();
        }
    }
    _drawGizmo(true);

    std::vector<Hit> hits = readHits(buffer, glRenderMode(GL_RENDER));
    // What is a particle's place, its effect alone knows: particles are drawn, and their depth is looked at.
    constexpr int side = 2 * PICK_REACH;
    auto const firstCloudName = FIRST_MODEL_NAME + static_cast<unsigned int>(scene.models().size());
    glViewport(0, 0, side, side);
    for (std::size_t i = 0; i < clouds.size(); ++i) {
        glClear(GL_DEPTH_BUFFER_BIT);
        layer.pushDepthTest(DEPTH_TESTED);
        _drawCloud(i);
        layer.popDepthTest();
        GLuint depths[side * side];
        glReadPixels(0, 0, side, side, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, depths);
        GLuint const nearest = *std::min_element(std::begin(depths), std::end(depths));
        if (nearest != std::numeric_limits<GLuint>::max()) {
            hits.push_back({firstCloudName + static_cast<unsigned int>(i), nearest});
        }
    }
    auto const best = std::min_element(hits.begin(), hits.end(), comesBefore);
    if (best == hits.end()) {
        return "nothing";
    }
    std::string const name = std::to_string(best->name) + " ";
    if (best->name >= firstCloudName) {
        return name + scene.clouds()[best->name - firstCloudName].name;
    }
    if (best->name >= FIRST_MODEL_NAME) {
        return name + scene.models()[best->name - FIRST_MODEL_NAME].name;
    }
    static constexpr char const* handles[] = {"X", "Y", "Z", "center"};
    return name + "gizmo " + gizmoWord(request.gizmo) + " " + handles[best->name - GIZMO_NAMES[0]];
}

// == Particles ==

void Viewer::_prepareClouds() {
    if (scene.clouds().empty()) {
        return;
    }
    ParticleOptions const& options = request.particles;
    for (ParticleCloud const& cloud : scene.clouds()) {
        clouds.emplace_back(
            layer, cloud.system,
            ParticleRenderer::Look{particleMode, particleScale, options.colors, options.percent});
    }
    if (!particleScale) {
        return;
    }
    colorBar.emplace(*particleScale, request.width, request.height);
    if (!colorBar->isShown()) {
        colorBar.reset();
        return;
    }
    frameWidth -= colorBar->reservedWidth();
    constexpr float all = 100;
    colorBarCells.emplace(
        layer, colorBar->cells(),
        ParticleRenderer::Look{ParticleMode::POINTS, colorBar->scale(), options.colors, all});
}

double Viewer::_sizeForEffect(ParticleCloud const& cloud, double ball) const {
    std::optional<double> const& asked = request.particles.size;
    switch (particleMode) {
    case ParticleMode::SPHERES:
        return ball;
    case ParticleMode::ARROWS: {
        // The effect puts its arrows' tips at twice the vector.
        double const unit = particleScale ? particleScale->unit : 1;
        if (asked) {
            return *asked * scene.unitsPerFileUnit() * unit / 2;
        }
        double const part = std::max(request.particles.percent / 100.0, 1e-6);
        double const fastest = particleScale ? particleScale->toMagnitude(particleScale->range.high) : 1;
        return LONGEST_ARROW * cloud.spacing / std::cbrt(part) / (fastest > 0 ? fastest : 1) / 2;
    }
    case ParticleMode::POINTS:
        break;
    }
    return asked ? *asked * OVERSAMPLING : POINT_SIZE * lineScale;
}

// == Cameras and lights ==

void Viewer::_placeCamera() {
    double const aspect = frameWidth / request.height;
    viewCamera.aspect = static_cast<float>(aspect);
    viewCamera.viewKind = static_cast<unsigned int>(request.view);
    if (effect != nullptr && effect->ownScene() != nullptr) {
        effect->ownScene()->placeCamera(viewCamera);
        return;
    }
    if (request.view != View::PERSPECTIVE) {
        OrthographicFraming const framing = frameOrthographic(scene.box(), request.view, aspect);
        viewCamera.panX = static_cast<float>(framing.panX);
        viewCamera.panY = static_cast<float>(framing.panY);
        viewCamera.zoom = static_cast<float>(framing.zoom);
        return;
    }
    double const around = 1.8 * Scene::RADIUS;
    Box3<double> const surroundings{{-around, scene.box().min.y, -around},
                                    {around, scene.box().max.y, around}};
    PerspectiveFraming const framing =
        framePerspective(_framedPoints(), surroundings, PERSPECTIVE_DIRECTION, FIELD_OF_VIEW, aspect);
    viewCamera.fieldOfView = static_cast<float>(FIELD_OF_VIEW);
    viewCamera.nearDistance = static_cast<float>(framing.nearDistance);
    viewCamera.farDistance = static_cast<float>(framing.farDistance);
    viewCamera.lookAt(convert<float>(framing.eye), convert<float>(framing.eye + framing.direction),
                      convert<float>(framing.up));
}

std::vector<Point> Viewer::_framedPoints() const {
    std::vector<Point> points;
    for (Model const& model : scene.models()) {
        if (request.shading == Shading::BOX) {
            std::vector<Point> const corners = cornersOf(model.box);
            points.insert(points.end(), corners.begin(), corners.end());
        } else {
            points.insert(points.end(), model.vertices.begin(), model.vertices.end());
        }
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        std::vector<Point> const corners = cornersOf(cloud.box);
        points.insert(points.end(), corners.begin(), corners.end());
    }
    return points;
}

void Viewer::_loadCamera(Region const& region) {
    viewCamera.updateProjectionMatrix();
    _cropProjection(region, frameWidth);
    viewCamera.updateModelMatrix();
}

void Viewer::_cropProjection(Region const& region, double width) const {
    GLdouble projection[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    GLint whole[4] = {0, 0, static_cast<GLint>(width), request.height};
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // What GLU calls picking is a crop: the region's center and size come to fill the viewport.
    gluPickMatrix(region.x + region.width / 2, region.y + region.height / 2, region.width, region.height,
                  whole);
    glMultMatrixd(projection);
    glMatrixMode(GL_MODELVIEW);
}

void Viewer::_placeLights() const {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // The orthographic cameras leave their orientation to the projection, so light is computed in the world's frame
    // there, with the viewer at +z whatever the view: highlights would be in wrong places and are left out.
    bool const isPerspective = request.view == View::PERSPECTIVE;
    placeLights(screenAxes(request.view), isPerspective ? 1.0F : 0.0F);
}

ScreenAxes Viewer::_screen() const {
    if (request.view != View::PERSPECTIVE) {
        return screenAxes(request.view);
    }
    Camera_RL_GL camera(viewCamera);
    Matrix4<float> const& m = *camera.transform.matrix();
    Point const direction = normalized(Point{m.e[0], m.e[1], m.e[2]});
    Point const right = normalized(cross(direction, Point{m.e[4], m.e[5], m.e[6]}));
    return {right, cross(right, direction), -direction};
}

Point Viewer::_viewDirection() const {
    return -_screen().towardViewer;
}

double Viewer::_unitsPerPixel() const {
    if (request.view != View::PERSPECTIVE) {
        return 2 * std::exp(static_cast<double>(viewCamera.zoom)) / frameWidth;
    }
    Camera_RL_GL camera(viewCamera);
    Matrix4<float> const& m = *camera.transform.matrix();
    double const depth = dot(-Point{m.e[12], m.e[13], m.e[14]}, _viewDirection());
    return 2 * depth * std::tan(FIELD_OF_VIEW * PI / 360) / request.height;
}

// == Parts of the picture ==

void Viewer::_drawRegion(Region const& region, int samplesPerSide) {
    double const side = std::min(request.width, request.height);
    lineScale = samplesPerSide * std::max(1.0, side / REFERENCE_SIDE);
    OVERSAMPLING = samplesPerSide;
    glEnable(GL_NORMALIZE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    if (effect != nullptr && effect->ownScene() != nullptr) {
        _loadCamera(region);
        _drawOwnScene();
        return;
    }
    _drawBackground(region);
    _placeLights();
    _loadCamera(region);
    layer.pushDepthTest(DEPTH_TESTED);
    // The box of a simulation tells its scale better than a ground that things of no weight do not stand on.
    bool const areAllInBoxes =
        scene.models().empty() &&
        std::none_of(scene.clouds().begin(), scene.clouds().end(),
                     [](ParticleCloud const& cloud) { return cloud.boxLines.empty(); });
    if (!areAllInBoxes || scene.clouds().empty()) {
        _drawGround();
    }
    _drawModels();
    _drawClouds();
    if (effect != nullptr) {
        // Last, as an effect may show what is behind it.
        effect->draw(screenAxes(request.view));
    }
    if (request.gizmo != Gizmo::NONE) {
        glClear(GL_DEPTH_BUFFER_BIT);
        _drawGizmo(false);
    }
    glClear(GL_DEPTH_BUFFER_BIT);
    _drawCornerAxes(region);
    layer.popDepthTest();
    _drawColorBar(region);
}

void Viewer::_drawOwnScene() {
    effect->ownScene()->drawSky(layer);
    layer.pushDepthTest(DEPTH_TESTED);
    effect->draw(screenAxes(View::PERSPECTIVE));
    layer.popDepthTest();
    effect->ownScene()->drawHaze(layer);
}

void Viewer::_drawBackground(Region const& region) const {
    Tuple4<unsigned int> const viewport = layer.getCurrentViewportCoords();
    Tuple4<float> const part{static_cast<float>(region.x / request.width),
                             static_cast<float>((region.x + region.width) / request.width),
                             static_cast<float>(region.y / request.height),
                             static_cast<float>((region.y + region.height) / request.height)};
    layer.pushDepthTest(DEPTH_IGNORED);
    layer.pushViewportOrtho(viewport, part);
    layer.pushColor(BACKGROUND_BOTTOM);
    layer.begin(Primitive::QUADS);
    layer.renderPoint3_scoped({0, 0, 0});
    layer.renderPoint3_scoped({1, 0, 0});
    layer.setColor(BACKGROUND_TOP);
    layer.renderPoint3_scoped({1, 1, 0});
    layer.renderPoint3_scoped({0, 1, 0});
    layer.end();
    layer.popColor(1);
    layer.popViewportOrtho();
    layer.popDepthTest();
}

GroundGrid Viewer::_ground() const {
    Box3<double> const& box = scene.box();
    double const size = 2 * Scene::RADIUS;
    double const spacing = GroundGrid::spacingFor(size, scene.unitsPerFileUnit());
    if (request.view == View::PERSPECTIVE) {
        // A little below the models, whose undersides would otherwise flicker through it.
        Point const center{0, box.min.y - 0.004 * Scene::RADIUS, 0};
        return {center, {1, 0, 0}, {0, 0, 1}, 1.8 * Scene::RADIUS, true, scene.fileOrigin(), spacing};
    }
    // Seen along an axis, the ground would be a line or in the way: here the grid is a wall behind the models.
    ScreenAxes const screen = screenAxes(request.view);
    double const aspect = static_cast<double>(request.width) / request.height;
    double const halfWidth = std::exp(static_cast<double>(viewCamera.zoom));
    double const radius = std::max(halfWidth, halfWidth / aspect) + Scene::RADIUS;
    return {screen.towardViewer * (-1.5 * Scene::RADIUS),
            screen.right,
            screen.up,
            radius,
            false,
            scene.fileOrigin(),
            spacing};
}

void Viewer::_drawGround() const {
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    layer.pushColor(LETTERS);
    layer.begin(Primitive::LINES);
    for (ShadedSegment const& segment : groundSegments) {
        layer.setColor(segment.fromColor);
        layer.renderPoint3_scoped(segment.from);
        layer.setColor(segment.toColor);
        layer.renderPoint3_scoped(segment.to);
    }
    layer.end();
    layer.popColor(1);
    layer.popLineWidth();
    layer.popBlending();
    layer.popDepthTest();
}

void Viewer::_drawModels() {
    for (std::size_t i = 0; i < models.size(); ++i) {
        if (effect == nullptr || !effect->covers(i)) {
            models[i].draw(lineScale);
        }
    }
}

void Viewer::_drawClouds() {
    for (ParticleCloud const& cloud : scene.clouds()) {
        _drawBoxOf(cloud);
    }
    for (std::size_t i = 0; i < clouds.size(); ++i) {
        _drawCloud(i);
    }
}

void Viewer::_drawCloud(std::size_t index) {
    ParticleCloud const& cloud = scene.clouds()[index];
    GLint viewport[4];
    Matrix4<double> projection;
    Matrix4<double> modelView;
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.e);
    ScreenAxes const screen = _screen();
    ImpostorView const view = ImpostorView::of(projection * modelView, viewport[2], viewport[3], screen.right,
                                               screen.towardViewer, cloud.diameter);
    int const side = std::max(viewport[2], viewport[3]);

    glViewport(viewport[0], viewport[1], side, side);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(view.projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(view.modelView.e);
    clouds[index].draw(static_cast<float>(_sizeForEffect(cloud, view.size)));
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(modelView.e);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

void Viewer::_drawBoxOf(ParticleCloud const& cloud) const {
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    layer.pushColor(PARTICLE_BOX);
    layer.begin(Primitive::LINES);
    for (Vector3<float> const& end : cloud.boxLines) {
        layer.renderPoint3_scoped(end);
    }
    layer.end();
    layer.popColor(1);
    layer.popLineWidth();
    layer.popBlending();
    layer.popDepthTest();
}

void Viewer::_drawColorBar(Region const& region) {
    if (!colorBar) {
        return;
    }
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, request.width, 0, request.height, -1, 1);
    _cropProjection(region, request.width);
    glLoadIdentity();
    layer.pushDepthTest(DEPTH_IGNORED);
    // With several samples points are round; the cells are to be squares.
    glPushAttrib(GL_MULTISAMPLE_BIT);
    glDisable(GL_MULTISAMPLE);
    colorBarCells->draw(static_cast<float>(colorBar->cellSize() * OVERSAMPLING));
    glPopAttrib();
    layer.popDepthTest();
}

void Viewer::_drawGizmo(bool isSelecting) const {
    double const side = std::min(request.width, request.height);
    double const length = GIZMO_LENGTH * side / REFERENCE_SIDE * _unitsPerPixel();
    layer.pushTransform(scaling(length));
    _pushLineWidth(2.6);
    switch (request.gizmo) {
    case Gizmo::MOVE: {
        Lit const lit(layer, Lit::Finish::bright);
        layer.renderAxesArrow3(GIZMO_NAMES[0], GIZMO_NAMES[1], GIZMO_NAMES[2], axisColors(), 0.26F);
        break;
    }
    case Gizmo::SCALE: {
        Lit const lit(layer, Lit::Finish::bright);
        Tuple4<Color4<float>> const colors{axisColor(0), axisColor(1), axisColor(2), GIZMO_CENTER};
        layer.renderAxesBox3(GIZMO_NAMES[0], GIZMO_NAMES[1], GIZMO_NAMES[2], GIZMO_NAMES[3], colors, 0.075F);
        break;
    }
    case Gizmo::ROTATE: {
        Vector3<float> const direction = convert<float>(_viewDirection());
        Matrix4<float> const frame = Matrix4<float>::identity();
        if (!isSelecting) {
            // The whole circles thinly, so that the far halves show, too.
            _pushLineWidth(0.8);
            layer.renderAxesCircle3(GIZMO_NAMES[0], GIZMO_NAMES[1], GIZMO_NAMES[2], axisColors(), 1.0F);
            layer.popLineWidth();
        }
        layer.renderAxesCircleCulled3(GIZMO_NAMES[0], GIZMO_NAMES[1], GIZMO_NAMES[2], direction, frame, 1.0F,
                                      axisColors(), 1.0F);
        break;
    }
    case Gizmo::NONE:
        break;
    }
    layer.popLineWidth();
    layer.popTransform();
}

void Viewer::_drawCornerAxes(Region const& region) {
    double const scale = std::min(request.width, request.height) / REFERENCE_SIDE;
    ScreenAxes const screen = _screen();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, request.width, 0, request.height, -request.width, request.width);
    _cropProjection(region, request.width);
    glLoadIdentity();
    placeLights(screenAxes(View::FRONT), 0);

    double const length = CORNER_AXES_LENGTH * scale;
    Point const corner{CORNER_AXES_INSET * scale, CORNER_AXES_INSET * scale, 0};
    auto const onScreen = [&screen](Point const& p) {
        return Point{dot(p, screen.right), dot(p, screen.up), dot(p, screen.towardViewer)};
    };
    _pushLineWidth(2.0);
    layer.pushTransform(
        frame(onScreen(axis(0)) * length, onScreen(axis(1)) * length, onScreen(axis(2)) * length, corner));
    {
        Lit const lit(layer, Lit::Finish::bright);
        layer.renderAxesArrow3(0, 0, 0, axisColors(), 0.30F);
    }
    layer.popTransform();
    layer.popLineWidth();

    _pushLineWidth(1.5);
    layer.pushColor(LETTERS);
    for (unsigned int i = 0; i < 3; ++i) {
        Point const tip = onScreen(axis(i));
        // Where an axis points at the viewer or away there is no place beside its tip.
        if (std::abs(tip.z) < 0.95) {
            Point const place = corner + Point{tip.x, tip.y, 0} * (1.52 * length);
            double const size = LETTER_HALF_SIZE * scale;
            layer.pushTransform(frame({size, 0, 0}, {0, size, 0}, {0, 0, 1}, place));
            _drawLetter(i);
            layer.popTransform();
        }
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void Viewer::_drawLetter(unsigned int axis) const {
    switch (axis) {
    case 0:
        layer.renderSegment3({-0.7F, -1, 0}, {0.7F, 1, 0});
        layer.renderSegment3({-0.7F, 1, 0}, {0.7F, -1, 0});
        break;
    case 1:
        layer.renderSegment3({0, -1, 0}, {0, 0, 0});
        layer.renderSegment3({0, 0, 0}, {-0.7F, 1, 0});
        layer.renderSegment3({0, 0, 0}, {0.7F, 1, 0});
        break;
    default:
        layer.renderSegment3({-0.7F, 1, 0}, {0.7F, 1, 0});
        layer.renderSegment3({0.7F, 1, 0}, {-0.7F, -1, 0});
        layer.renderSegment3({-0.7F, -1, 0}, {0.7F, -1, 0});
        break;
    }
}

void Viewer::_pushLineWidth(double pixels) const {
    layer.pushLineWidth(static_cast<float>(pixels * lineScale));
}

}  // namespace vellum::viewport
