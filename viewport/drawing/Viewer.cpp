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

constexpr double pi = 3.14159265358979323846;
constexpr double fieldOfView = 32;  // vertical, degrees
constexpr Point perspectiveDirection{-0.62, -0.46, -0.80};

// == Sizes on the screen, pixels of a picture whose shorter side has 720 ==

constexpr double referenceSide = 720;
constexpr double gizmoLength = 118;
constexpr double cornerAxesLength = 34;
constexpr double cornerAxesInset = 64;
constexpr double letterHalfSize = 5;
constexpr double pointSize = 2.4;

// In mean distances of neighbours.
constexpr double longestArrow = 1.9;

// == Colours ==

constexpr Color4<float> backgroundTop{0.235F, 0.275F, 0.335F, 1};
constexpr Color4<float> backgroundBottom{0.085F, 0.098F, 0.122F, 1};
constexpr Color4<float> gizmoCentre{0.86F, 0.87F, 0.90F, 1};
constexpr Color4<float> letters{0.86F, 0.88F, 0.92F, 1};
constexpr Color4<float> particleBox{0.86F, 0.88F, 0.92F, 0.5F};

// == Picking names ==

constexpr unsigned int gizmoNames[] = {1, 2, 3, 4};  // X, Y, Z and the centre
constexpr unsigned int firstModelName = 16;
constexpr double pickReach = 2.5;  // pixels on each side of the pixel's centre

constexpr DepthtTestMode depthTested{DEPTH_LESS, true};
constexpr DepthtTestMode depthTestedOnly{DEPTH_LESS_OR_EQUAL, false};
constexpr DepthtTestMode depthIgnored{DEPTH_TEST_OFF, false};

Tuple3<Color4<float>> axisColours() {
    return {axisColour(0), axisColour(1), axisColour(2)};
}

Vector3<double> axis(unsigned int const& index) {
    return {index == 0 ? 1.0 : 0.0, index == 1 ? 1.0 : 0.0, index == 2 ? 1.0 : 0.0};
}

/// The matrix whose first three columns are the given vectors and whose fourth is the place.
Matrix4<double> frame(Point const& x, Point const& y, Point const& z, Point const& place) {
    return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, place.x, place.y, place.z, 1}};
}

Matrix4<double> scaling(double const& factor) {
    return frame({factor, 0, 0}, {0, factor, 0}, {0, 0, factor}, {0, 0, 0});
}

char const* gizmoWord(Gizmo const& gizmo) {
    switch (gizmo) {
    case Gizmo::move:
        return "move";
    case Gizmo::rotate:
        return "rotate";
    case Gizmo::scale:
        return "scale";
    case Gizmo::none:
        break;
    }
    return "";
}

void setLight(GLenum const& light, Point const& direction, std::array<float, 3> const& diffuse,
              float const& specular) {
    float const position[4] = {static_cast<float>(direction.x), static_cast<float>(direction.y),
                               static_cast<float>(direction.z), 0};
    float const ambient[4] = {0, 0, 0, 1};
    float const colour[4] = {diffuse[0], diffuse[1], diffuse[2], 1};
    float const shine[4] = {specular, specular, specular, 1};
    glLightfv(light, GL_POSITION, position);
    glLightfv(light, GL_AMBIENT, ambient);
    glLightfv(light, GL_DIFFUSE, colour);
    glLightfv(light, GL_SPECULAR, shine);
}

/// Two lights that stand with the viewer: the main one from the upper left, a fainter one from the right.
/// The directions are given in the frame that the model-view matrix stands for now.
void placeLights(ScreenAxes const& screen, float const& specular) {
    auto const towards = [&screen](double const& right, double const& up, double const& viewer) {
        return screen.right * right + screen.up * up + screen.towardsViewer * viewer;
    };
    setLight(GL_LIGHT0, towards(-0.50, 0.72, 0.62), {0.66F, 0.645F, 0.62F}, specular);
    setLight(GL_LIGHT1, towards(0.85, -0.05, 0.42), {0.20F, 0.23F, 0.29F}, 0);
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
std::vector<Hit> readHits(std::vector<GLuint> const& buffer, int const& count) {
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
    bool const isGizmoA = a.name < firstModelName;
    bool const isGizmoB = b.name < firstModelName;
    return isGizmoA != isGizmoB ? isGizmoA : a.nearestDepth < b.nearestDepth;
}

/// Shrinks a tile to a part of the picture: each pixel is the mean of its samples.
void shrinkInto(Picture& picture, int const& left, int const& top, Tiling const& tiling,
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
            for (unsigned int const& sum : sums) {
                *out++ = static_cast<unsigned char>((sum + count / 2) / count);
            }
            *out++ = 255;
        }
    }
}

}  // namespace

// == Tiling ==

Tiling Tiling::of(int const& pictureWidth, int const& pictureHeight) {
    // Beyond this a picture is so fine that the samples of the buffer alone smooth it.
    constexpr double largestSmoothed = 20e6;
    constexpr int largestTile = 1024;
    bool const isSmoothed = static_cast<double>(pictureWidth) * pictureHeight <= largestSmoothed;
    return {isSmoothed ? 2 : 1, std::min(pictureWidth, largestTile), std::min(pictureHeight, largestTile),
            16};
}

Tiling Tiling::ofOneTile(int const& pictureWidth, int const& pictureHeight) {
    // Four times as many samples as pixels, each in the buffer four times, should take no more than some 250 MB.
    constexpr double largestSmoothed = 2e6;
    constexpr int largestTile = 4096;
    bool const isSmoothed = static_cast<double>(pictureWidth) * pictureHeight <= largestSmoothed;
    return {isSmoothed ? 2 : 1, std::min(pictureWidth, largestTile), std::min(pictureHeight, largestTile),
            16};
}

Tiling Tiling::of(Options const& options) {
    return options.effect.isOn() ? ofOneTile(options.width, options.height)
                                 : of(options.width, options.height);
}

// == Viewer ==

Viewer::Viewer(Core_RL& layer, Scene const& scene, Options const& options, ParticleLook const& look,
               EffectRenderer* effect)
    : _layer(layer)
    , _scene(scene)
    , _options(options)
    , _effect(effect)
    , _particleMode(look.mode)
    , _particleScale(look.scale)
    , _frameWidth(options.width)
    , _textures(layer) {
    _prepareClouds();
    for (Model const& model : scene.models()) {
        _models.emplace_back(layer, model, options, _textures);
    }
    _placeCamera();
    _layer.setCamera(&_camera);
    _groundSegments = _ground().segments();
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
    picture.width = _options.width;
    picture.height = _options.height;
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
            if (_layer.getError("Viewer::draw", __LINE__)) {
                return Fault{_options.out, "cannot be drawn: OpenGL reports an error"};
            }
        }
    }
    if (_colourBar) {
        _colourBar->drawLabels(picture);
    }
    return picture;
}

std::string Viewer::pick(Pixel const& pixel) {
    // A record of one name has four words; each handle and each model gives one record at most.
    std::vector<GLuint> buffer(4 * (_scene.models().size() + 64));
    glViewport(0, 0, _options.width, _options.height);
    glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0);

    double const x = pixel.x + 0.5;
    double const y = _options.height - pixel.y - 0.5;
    _loadCamera({x - pickReach, y - pickReach, 2 * pickReach, 2 * pickReach});
    for (std::size_t i = 0; i < _scene.models().size(); ++i) {
        Model const& model = _scene.models()[i];
        _layer.loadName(firstModelName + static_cast<unsigned int>(i));
        if (_options.shading == Shading::box) {
            _layer.render(model.box, false);
        } else {
            _models[i].drawShape();
        }
    }
    _drawGizmo(true);

    std::vector<Hit> hits = readHits(buffer, glRenderMode(GL_RENDER));
    // What is a particle's place, its effect alone knows: particles are drawn, and their depth is looked at.
    constexpr int side = 2 * pickReach;
    auto const firstCloudName = firstModelName + static_cast<unsigned int>(_scene.models().size());
    glViewport(0, 0, side, side);
    for (std::size_t i = 0; i < _clouds.size(); ++i) {
        glClear(GL_DEPTH_BUFFER_BIT);
        _layer.pushDepthTest(depthTested);
        _drawCloud(i);
        _layer.popDepthTest();
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
        return name + _scene.clouds()[best->name - firstCloudName].name;
    }
    if (best->name >= firstModelName) {
        return name + _scene.models()[best->name - firstModelName].name;
    }
    static constexpr char const* handles[] = {"X", "Y", "Z", "centre"};
    return name + "gizmo " + gizmoWord(_options.gizmo) + " " + handles[best->name - gizmoNames[0]];
}

// == Particles ==

void Viewer::_prepareClouds() {
    if (_scene.clouds().empty()) {
        return;
    }
    ParticleOptions const& options = _options.particles;
    for (ParticleCloud const& cloud : _scene.clouds()) {
        _clouds.emplace_back(
            _layer, cloud.system,
            ParticleRenderer::Look{_particleMode, _particleScale, options.colours, options.percent});
    }
    if (!_particleScale) {
        return;
    }
    _colourBar.emplace(*_particleScale, _options.width, _options.height);
    if (!_colourBar->isShown()) {
        _colourBar.reset();
        return;
    }
    _frameWidth -= _colourBar->reservedWidth();
    constexpr float all = 100;
    _colourBarCells.emplace(
        _layer, _colourBar->cells(),
        ParticleRenderer::Look{ParticleMode::points, _colourBar->scale(), options.colours, all});
}

double Viewer::_sizeForEffect(ParticleCloud const& cloud, double const& ball) const {
    std::optional<double> const& asked = _options.particles.size;
    switch (_particleMode) {
    case ParticleMode::spheres:
        return ball;
    case ParticleMode::arrows: {
        // The effect puts its arrows' tips at twice the vector.
        double const unit = _particleScale ? _particleScale->unit : 1;
        if (asked) {
            return *asked * _scene.unitsPerFileUnit() * unit / 2;
        }
        double const part = std::max(_options.particles.percent / 100.0, 1e-6);
        double const fastest = _particleScale ? _particleScale->toMagnitude(_particleScale->range.high) : 1;
        return longestArrow * cloud.spacing / std::cbrt(part) / (fastest > 0 ? fastest : 1) / 2;
    }
    case ParticleMode::points:
        break;
    }
    return asked ? *asked * _samplesPerSide : pointSize * _lineScale;
}

// == Cameras and lights ==

void Viewer::_placeCamera() {
    double const aspect = _frameWidth / _options.height;
    _camera.aspect = static_cast<float>(aspect);
    _camera.viewKind = static_cast<unsigned int>(_options.view);
    if (_effect != nullptr && _effect->ownScene() != nullptr) {
        _effect->ownScene()->placeCamera(_camera);
        return;
    }
    if (_options.view != View::perspective) {
        OrthographicFraming const framing = frameOrthographic(_scene.box(), _options.view, aspect);
        _camera.panX = static_cast<float>(framing.panX);
        _camera.panY = static_cast<float>(framing.panY);
        _camera.zoom = static_cast<float>(framing.zoom);
        return;
    }
    double const around = 1.8 * Scene::radius;
    Box3<double> const surroundings{{-around, _scene.box().min.y, -around},
                                    {around, _scene.box().max.y, around}};
    PerspectiveFraming const framing =
        framePerspective(_framedPoints(), surroundings, perspectiveDirection, fieldOfView, aspect);
    _camera.fieldOfView = static_cast<float>(fieldOfView);
    _camera.nearDistance = static_cast<float>(framing.nearDistance);
    _camera.farDistance = static_cast<float>(framing.farDistance);
    _camera.lookAt(convert<float>(framing.eye), convert<float>(framing.eye + framing.direction),
                   convert<float>(framing.up));
}

std::vector<Point> Viewer::_framedPoints() const {
    std::vector<Point> points;
    for (Model const& model : _scene.models()) {
        if (_options.shading == Shading::box) {
            std::vector<Point> const corners = cornersOf(model.box);
            points.insert(points.end(), corners.begin(), corners.end());
        } else {
            points.insert(points.end(), model.vertices.begin(), model.vertices.end());
        }
    }
    for (ParticleCloud const& cloud : _scene.clouds()) {
        std::vector<Point> const corners = cornersOf(cloud.box);
        points.insert(points.end(), corners.begin(), corners.end());
    }
    return points;
}

void Viewer::_loadCamera(Region const& region) {
    _camera.updateProjectionMatrix();
    _cropProjection(region, _frameWidth);
    _camera.updateModelMatrix();
}

void Viewer::_cropProjection(Region const& region, double const& width) const {
    GLdouble projection[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    GLint whole[4] = {0, 0, static_cast<GLint>(width), _options.height};
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // What GLU calls picking is a crop: the region's centre and size come to fill the viewport.
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
    bool const isPerspective = _options.view == View::perspective;
    placeLights(screenAxes(_options.view), isPerspective ? 1.0F : 0.0F);
}

ScreenAxes Viewer::_screen() const {
    if (_options.view != View::perspective) {
        return screenAxes(_options.view);
    }
    Camera_RL_GL camera(_camera);
    Matrix4<float> const& m = *camera.transform.matrix();
    Point const direction = normalized(Point{m.e[0], m.e[1], m.e[2]});
    Point const right = normalized(cross(direction, Point{m.e[4], m.e[5], m.e[6]}));
    return {right, cross(right, direction), -direction};
}

Point Viewer::_viewDirection() const {
    return -_screen().towardsViewer;
}

double Viewer::_unitsPerPixel() const {
    if (_options.view != View::perspective) {
        return 2 * std::exp(static_cast<double>(_camera.zoom)) / _frameWidth;
    }
    Camera_RL_GL camera(_camera);
    Matrix4<float> const& m = *camera.transform.matrix();
    double const depth = dot(-Point{m.e[12], m.e[13], m.e[14]}, _viewDirection());
    return 2 * depth * std::tan(fieldOfView * pi / 360) / _options.height;
}

// == Parts of the picture ==

void Viewer::_drawRegion(Region const& region, int const& samplesPerSide) {
    double const side = std::min(_options.width, _options.height);
    _lineScale = samplesPerSide * std::max(1.0, side / referenceSide);
    _samplesPerSide = samplesPerSide;
    glEnable(GL_NORMALIZE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    if (_effect != nullptr && _effect->ownScene() != nullptr) {
        _loadCamera(region);
        _drawOwnScene();
        return;
    }
    _drawBackground(region);
    _placeLights();
    _loadCamera(region);
    _layer.pushDepthTest(depthTested);
    // The box of a simulation tells its scale better than a ground that things of no weight do not stand on.
    bool const areAllInBoxes =
        _scene.models().empty() &&
        std::none_of(_scene.clouds().begin(), _scene.clouds().end(),
                     [](ParticleCloud const& cloud) { return cloud.boxLines.empty(); });
    if (!areAllInBoxes || _scene.clouds().empty()) {
        _drawGround();
    }
    _drawModels();
    _drawClouds();
    if (_effect != nullptr) {
        // Last, as an effect may show what is behind it.
        _effect->draw(screenAxes(_options.view));
    }
    if (_options.gizmo != Gizmo::none) {
        glClear(GL_DEPTH_BUFFER_BIT);
        _drawGizmo(false);
    }
    glClear(GL_DEPTH_BUFFER_BIT);
    _drawCornerAxes(region);
    _layer.popDepthTest();
    _drawColourBar(region);
}

void Viewer::_drawOwnScene() {
    _effect->ownScene()->drawSky(_layer);
    _layer.pushDepthTest(depthTested);
    _effect->draw(screenAxes(View::perspective));
    _layer.popDepthTest();
    _effect->ownScene()->drawHaze(_layer);
}

void Viewer::_drawBackground(Region const& region) const {
    Tuple4<unsigned int> const viewport = _layer.getCurrentViewportCoords();
    Tuple4<float> const part{static_cast<float>(region.x / _options.width),
                             static_cast<float>((region.x + region.width) / _options.width),
                             static_cast<float>(region.y / _options.height),
                             static_cast<float>((region.y + region.height) / _options.height)};
    _layer.pushDepthTest(depthIgnored);
    _layer.pushViewportOrtho(viewport, part);
    _layer.pushColor(backgroundBottom);
    _layer.begin(Primitive::QUADS);
    _layer.renderPoint3_scoped({0, 0, 0});
    _layer.renderPoint3_scoped({1, 0, 0});
    _layer.setColor(backgroundTop);
    _layer.renderPoint3_scoped({1, 1, 0});
    _layer.renderPoint3_scoped({0, 1, 0});
    _layer.end();
    _layer.popColor(1);
    _layer.popViewportOrtho();
    _layer.popDepthTest();
}

GroundGrid Viewer::_ground() const {
    Box3<double> const& box = _scene.box();
    double const size = 2 * Scene::radius;
    double const spacing = GroundGrid::spacingFor(size, _scene.unitsPerFileUnit());
    if (_options.view == View::perspective) {
        // A little below the models, whose undersides would otherwise flicker through it.
        Point const centre{0, box.min.y - 0.004 * Scene::radius, 0};
        return {centre, {1, 0, 0}, {0, 0, 1}, 1.8 * Scene::radius, true, _scene.fileOrigin(), spacing};
    }
    // Seen along an axis, the ground would be a line or in the way: here the grid is a wall behind the models.
    ScreenAxes const screen = screenAxes(_options.view);
    double const aspect = static_cast<double>(_options.width) / _options.height;
    double const halfWidth = std::exp(static_cast<double>(_camera.zoom));
    double const radius = std::max(halfWidth, halfWidth / aspect) + Scene::radius;
    return {screen.towardsViewer * (-1.5 * Scene::radius),
            screen.right,
            screen.up,
            radius,
            false,
            _scene.fileOrigin(),
            spacing};
}

void Viewer::_drawGround() const {
    _layer.pushDepthTest(depthTestedOnly);
    _layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    _layer.pushColor(letters);
    _layer.begin(Primitive::LINES);
    for (ShadedSegment const& segment : _groundSegments) {
        _layer.setColor(segment.fromColour);
        _layer.renderPoint3_scoped(segment.from);
        _layer.setColor(segment.toColour);
        _layer.renderPoint3_scoped(segment.to);
    }
    _layer.end();
    _layer.popColor(1);
    _layer.popLineWidth();
    _layer.popBlending();
    _layer.popDepthTest();
}

void Viewer::_drawModels() {
    for (std::size_t i = 0; i < _models.size(); ++i) {
        if (_effect == nullptr || !_effect->covers(i)) {
            _models[i].draw(_lineScale);
        }
    }
}

void Viewer::_drawClouds() {
    for (ParticleCloud const& cloud : _scene.clouds()) {
        _drawBoxOf(cloud);
    }
    for (std::size_t i = 0; i < _clouds.size(); ++i) {
        _drawCloud(i);
    }
}

void Viewer::_drawCloud(std::size_t const& index) {
    ParticleCloud const& cloud = _scene.clouds()[index];
    GLint viewport[4];
    Matrix4<double> projection;
    Matrix4<double> modelView;
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.e);
    ScreenAxes const screen = _screen();
    ImpostorView const view = ImpostorView::of(projection * modelView, viewport[2], viewport[3], screen.right,
                                               screen.towardsViewer, cloud.diameter);
    int const side = std::max(viewport[2], viewport[3]);

    glViewport(viewport[0], viewport[1], side, side);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(view.projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(view.modelView.e);
    _clouds[index].draw(static_cast<float>(_sizeForEffect(cloud, view.size)));
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(modelView.e);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

void Viewer::_drawBoxOf(ParticleCloud const& cloud) const {
    _layer.pushDepthTest(depthTestedOnly);
    _layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    _layer.pushColor(particleBox);
    _layer.begin(Primitive::LINES);
    for (Vector3<float> const& end : cloud.boxLines) {
        _layer.renderPoint3_scoped(end);
    }
    _layer.end();
    _layer.popColor(1);
    _layer.popLineWidth();
    _layer.popBlending();
    _layer.popDepthTest();
}

void Viewer::_drawColourBar(Region const& region) {
    if (!_colourBar) {
        return;
    }
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, _options.width, 0, _options.height, -1, 1);
    _cropProjection(region, _options.width);
    glLoadIdentity();
    _layer.pushDepthTest(depthIgnored);
    // With several samples points are round; the cells are to be squares.
    glPushAttrib(GL_MULTISAMPLE_BIT);
    glDisable(GL_MULTISAMPLE);
    _colourBarCells->draw(static_cast<float>(_colourBar->cellSize() * _samplesPerSide));
    glPopAttrib();
    _layer.popDepthTest();
}

void Viewer::_drawGizmo(bool const& isSelecting) const {
    double const side = std::min(_options.width, _options.height);
    double const length = gizmoLength * side / referenceSide * _unitsPerPixel();
    _layer.pushTransform(scaling(length));
    _pushLineWidth(2.6);
    switch (_options.gizmo) {
    case Gizmo::move: {
        Lit const lit(_layer, Lit::Finish::bright);
        _layer.renderAxesArrow3(gizmoNames[0], gizmoNames[1], gizmoNames[2], axisColours(), 0.26F);
        break;
    }
    case Gizmo::scale: {
        Lit const lit(_layer, Lit::Finish::bright);
        Tuple4<Color4<float>> const colours{axisColour(0), axisColour(1), axisColour(2), gizmoCentre};
        _layer.renderAxesBox3(gizmoNames[0], gizmoNames[1], gizmoNames[2], gizmoNames[3], colours, 0.075F);
        break;
    }
    case Gizmo::rotate: {
        Vector3<float> const direction = convert<float>(_viewDirection());
        Matrix4<float> const frame = Matrix4<float>::identity();
        if (!isSelecting) {
            // The whole circles thinly, so that the far halves show, too.
            _pushLineWidth(0.8);
            _layer.renderAxesCircle3(gizmoNames[0], gizmoNames[1], gizmoNames[2], axisColours(), 1.0F);
            _layer.popLineWidth();
        }
        _layer.renderAxesCircleCulled3(gizmoNames[0], gizmoNames[1], gizmoNames[2], direction, frame, 1.0F,
                                       axisColours(), 1.0F);
        break;
    }
    case Gizmo::none:
        break;
    }
    _layer.popLineWidth();
    _layer.popTransform();
}

void Viewer::_drawCornerAxes(Region const& region) {
    double const scale = std::min(_options.width, _options.height) / referenceSide;
    ScreenAxes const screen = _screen();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, _options.width, 0, _options.height, -_options.width, _options.width);
    _cropProjection(region, _options.width);
    glLoadIdentity();
    placeLights(screenAxes(View::front), 0);

    double const length = cornerAxesLength * scale;
    Point const corner{cornerAxesInset * scale, cornerAxesInset * scale, 0};
    auto const onScreen = [&screen](Point const& p) {
        return Point{dot(p, screen.right), dot(p, screen.up), dot(p, screen.towardsViewer)};
    };
    _pushLineWidth(2.0);
    _layer.pushTransform(
        frame(onScreen(axis(0)) * length, onScreen(axis(1)) * length, onScreen(axis(2)) * length, corner));
    {
        Lit const lit(_layer, Lit::Finish::bright);
        _layer.renderAxesArrow3(0, 0, 0, axisColours(), 0.30F);
    }
    _layer.popTransform();
    _layer.popLineWidth();

    _pushLineWidth(1.5);
    _layer.pushColor(letters);
    for (unsigned int i = 0; i < 3; ++i) {
        Point const tip = onScreen(axis(i));
        // Where an axis points at the viewer or away there is no place beside its tip.
        if (std::abs(tip.z) < 0.95) {
            Point const place = corner + Point{tip.x, tip.y, 0} * (1.52 * length);
            double const size = letterHalfSize * scale;
            _layer.pushTransform(frame({size, 0, 0}, {0, size, 0}, {0, 0, 1}, place));
            _drawLetter(i);
            _layer.popTransform();
        }
    }
    _layer.popColor(1);
    _layer.popLineWidth();
}

void Viewer::_drawLetter(unsigned int const& axis) const {
    switch (axis) {
    case 0:
        _layer.renderSegment3({-0.7F, -1, 0}, {0.7F, 1, 0});
        _layer.renderSegment3({-0.7F, 1, 0}, {0.7F, -1, 0});
        break;
    case 1:
        _layer.renderSegment3({0, -1, 0}, {0, 0, 0});
        _layer.renderSegment3({0, 0, 0}, {-0.7F, 1, 0});
        _layer.renderSegment3({0, 0, 0}, {0.7F, 1, 0});
        break;
    default:
        _layer.renderSegment3({-0.7F, 1, 0}, {0.7F, 1, 0});
        _layer.renderSegment3({0.7F, 1, 0}, {-0.7F, -1, 0});
        _layer.renderSegment3({-0.7F, -1, 0}, {0.7F, -1, 0});
        break;
    }
}

void Viewer::_pushLineWidth(double const& pixels) const {
    _layer.pushLineWidth(static_cast<float>(pixels * _lineScale));
}

}  // namespace vellum::viewport
