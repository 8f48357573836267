#include "viewport/drawing/EffectRenderer.h"

#include "Program_gl.h"
#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "viewport/drawing/ShaderFiles.h"
#include "viewport/files/mesh/Textures.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr double PI = 3.14159265358979323846;
constexpr int PICTURE_COUNT = 7;
constexpr int VARIABLE_COUNT = 10;

// How far away the sun of an ocean is: all of the water sees it in the same direction.
constexpr double SUN_DISTANCE = 1e6;

// == Frames ==

Matrix4<double> movedAndScaled(double factor, Point const& move) {
    return {{factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, factor, 0, move.x, move.y, move.z, 1}};
}

/// The frame of the meshes: a point p of a file is at (p - origin) * factor.
struct ObjectFrame {
    Point origin;
    double factor;

    Point place(Point const& p) const { return (p - origin) * factor; }

    Matrix4<double> toScene(Scene const& scene) const {
        double const scale = scene.unitsPerFileUnit();
        return movedAndScaled(scale / factor, scene.fileOrigin() + origin * scale);
    }
};

double longestSide(Box3<double> const& box) {
    Point const extent = box.max - box.min;
    return std::max({extent.x, extent.y, extent.z});
}

Point middle(Box3<double> const& box) {
    return box.min * 0.5 + box.max * 0.5;
}

ObjectFrame frameFor(EffectOptions const& options, Box3<double> const& box, Scene const& scene,
                     OceanMap const& map) {
    switch (options.effect) {
    case Effect::DISPLACEMENT: {
        double const side = longestSide(box);
        return {middle(box), side > 0 ? options.values.number("tile") / side : 1};
    }
    case Effect::OCEAN:
        return {{0, 0, 0}, 1 / static_cast<double>(map.unit)};
    default:
        break;
    }
    double const perRadius = scene.unitsPerFileUnit() / Scene::RADIUS;
    return {scene.fileOrigin() * (-1 / scene.unitsPerFileUnit()), perRadius};
}

/// The mesh as an ocean: flat, with texture coordinates that follow from the places.
MeshData asOcean(MeshData mesh, double patch) {
    mesh.normals.assign(mesh.positions.size(), {0, 1, 0});
    mesh.computedNormalCount = 0;
    mesh.textureCoordinates.resize(mesh.positions.size());
    std::transform(
        mesh.positions.begin(), mesh.positions.end(), mesh.textureCoordinates.begin(), [&](Point const& p) {
            return Vector2<float>{static_cast<float>(p.z / patch), static_cast<float>(-p.x / patch)};
        });
    return mesh;
}

// == Pictures ==

bool isPowerOfTwo(unsigned int number) {
    return number != 0 && (number & (number - 1)) == 0;
}

/// What is wrong with a picture file that an effect reads itself, or nothing.
std::optional<Fault> pictureFault(std::string const& path, bool isMap) {
    if (path.empty()) {
        return std::nullopt;
    }
    Result<std::shared_ptr<VL_Image const>> const image = readTexture(path);
    if (!image.isOk()) {
        return image.fault();
    }
    unsigned int const width = image.value()->width();
    unsigned int const height = image.value()->height();
    if (isMap && (!isPowerOfTwo(width) || !isPowerOfTwo(height))) {
        return Fault{path, "is " + std::to_string(width) + "x" + std::to_string(height) +
                               " pixels; the sides of a map must be powers of two"};
    }
    return std::nullopt;
}

std::optional<Fault> firstPictureFault(EffectOptions const& options) {
    for (char const* const name : {"map", "normals"}) {
        if (std::optional<Fault> fault = pictureFault(options.values.file(name), true)) {
            return fault;
        }
    }
    for (int i = 0; i < PICTURE_COUNT; ++i) {
        if (std::optional<Fault> fault =
                pictureFault(options.values.file("Texture" + std::to_string(i)), false)) {
            return fault;
        }
    }
    return pictureFault(options.environment, false);
}

SeaState seaOf(EffectValues const& values) {
    SeaState sea;
    sea.size = static_cast<unsigned int>(values.whole("size"));
    sea.patch = values.number("patch");
    sea.windSpeed = values.number("wind");
    sea.fetch = values.number("fetch");
    sea.windDirection = values.number("direction");
    sea.choppiness = values.number("choppiness");
    sea.seed = static_cast<unsigned int>(values.whole("seed"));
    sea.foamLimit = values.number("foam-limit");
    sea.foamLife = values.number("foam-life");
    return sea;
}

// == Lights ==

void setLight(GLenum light, Point const& eyePlace, Color4<float> const& color, float strength) {
    float const place[4] = {static_cast<float>(eyePlace.x), static_cast<float>(eyePlace.y),
                            static_cast<float>(eyePlace.z), 1};
    float const diffuse[4] = {color.r * strength, color.g * strength, color.b * strength, 1};
    float const specular[4] = {color.r, color.g, color.b, 1};
    glLightfv(light, GL_POSITION, place);
    glLightfv(light, GL_AMBIENT, specular);
    glLightfv(light, GL_DIFFUSE, diffuse);
    glLightfv(light, GL_SPECULAR, specular);
    glLightf(light, GL_CONSTANT_ATTENUATION, 1);
    glLightf(light, GL_LINEAR_ATTENUATION, 0);
    glLightf(light, GL_QUADRATIC_ATTENUATION, 0);
}

struct Matrix {
    explicit Matrix(GLenum name) { glGetDoublev(name, e); }

    /// The place that a point comes to, without a perspective's division.
    Point operator*(Point const& p) const {
        return {e[0] * p.x + e[4] * p.y + e[8] * p.z + e[12], e[1] * p.x + e[5] * p.y + e[9] * p.z + e[13],
                e[2] * p.x + e[6] * p.y + e[10] * p.z + e[14]};
    }

    GLdouble e[16];
};

/// The matrices of a model in its own units, while it lives: the model-view matrix turns and moves, and what scales
/// the model is in the projection. Normals so keep their length, which effects rely on, and lengths in eye space are
/// those of the model.
class ModelUnits {
public:
    /// \param toScene scales alike along all axes, and moves.
    explicit ModelUnits(Matrix4<double> const& toScene) {
        double const unit = toScene.e[0];
        Matrix const modelView(GL_MODELVIEW_MATRIX);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glScaled(unit, unit, unit);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
        glScaled(1 / unit, 1 / unit, 1 / unit);
        glMultMatrixd(modelView.e);
        glMultMatrixd(toScene.e);
    }
    ~ModelUnits() {
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
    }
    ModelUnits(ModelUnits const&) = delete;
    ModelUnits& operator=(ModelUnits const&) = delete;
};

/// Lights, materials, textures and the color as they were, when it ends.
class KeptState {
public:
    KeptState() {
        glGetFloatv(GL_CURRENT_COLOR, color);
        glPushAttrib(GL_LIGHTING_BIT | GL_TEXTURE_BIT);
    }
    ~KeptState() {
        // Workaround: Mesa 22.3 restores only those groups of attributes that were changed while this push was the
        // last one. Effects change textures while a push of their own is, so textures are changed here once more.
        glActiveTexture(GL_TEXTURE1);
        glActiveTexture(GL_TEXTURE0);
        glPopAttrib();
        glColor4fv(color);
    }
    KeptState(KeptState const&) = delete;
    KeptState& operator=(KeptState const&) = delete;

private:
    float color[4];
};

/// A user's stages, which may not go together.
class UserShader : public Custom_shader {
public:
    bool isLinked() const {
        GLint linked = GL_FALSE;
        if (program->getId() != 0) {
            glGetProgramiv(program->getId(), GL_LINK_STATUS, &linked);
        }
        return linked != GL_FALSE;
    }

    std::string linkLog() const { return program->getInfoLog(); }
};

std::string const replaced = "; a stage that passes everything on takes its place";
char const* const theProgram = "the program of the stages";

/// Whether a text file contains a word.
bool mentions(std::string const& path, std::string const& word) {
    std::ifstream file(path, std::ios::binary);
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return text.find(word) != std::string::npos;
}

}  // namespace

// == EffectSubject ==

Result<EffectSubject> EffectSubject::prepare(Options const& options, std::vector<MeshData> const& meshes,
                                             Scene const& scene) {
    EffectOptions const& effect = options.effect;
    EffectSubject subject;
    if (std::optional<Fault> fault = firstPictureFault(effect)) {
        return *fault;
    }
    if (effect.effect == Effect::OCEAN) {
        SeaState const sea = seaOf(effect.values);
        if (std::optional<std::string> const fault = sea.firstFault()) {
            return Fault{"", *fault};
        }
        subject.oceanMap = OceanMap::of(OceanSpectrum(sea), effect.values.number("time"));
        subject.oceanPatch = static_cast<float>(sea.patch);
        if (subject.oceanMap.image.width() == 0) {
            return Fault{"", "there is not enough memory for the sea"};
        }
        if (options.files.empty()) {
            Vector3<float> const sun = effect.values.triple("sun");
            subject.oceanScene.emplace(OceanScene::View{effect.values.number("eye"),
                                                        effect.values.number("tilt"), sun.x, sun.y,
                                                        static_cast<double>(options.width) / options.height});
            Model model{{}, movedAndScaled(static_cast<double>(subject.oceanMap.unit), {0, 0, 0})};
            model.meshes.push_back(
                subject.oceanScene->water(static_cast<double>(subject.oceanMap.unit), sea.patch));
            subject.models.push_back(std::move(model));
        }
    }
    // Parts have texture coordinates when there is a texture to be put on them.
    auto const anyTexture = std::make_shared<VL_Image>();
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        if (!effect.covers(i)) {
            continue;
        }
        ObjectFrame const frame = frameFor(effect, meshes[i].box(), scene, subject.oceanMap);
        auto const place = [&frame](Point const& p) { return frame.place(p); };
        std::vector<ModelPart> parts =
            effect.effect == Effect::OCEAN
                ? makeParts(asOcean(meshes[i], static_cast<double>(subject.oceanPatch)), place, anyTexture)
                : makeParts(meshes[i], place, anyTexture);
        Model model{{}, frame.toScene(scene)};
        for (ModelPart& part : parts) {
            model.meshes.push_back(std::move(part.mesh));
        }
        subject.models.push_back(std::move(model));
    }
    if (subject.models.empty()) {
        return Fault{"", "there is no mesh to draw with the effect"};
    }
    return subject;
}

// == EffectRenderer ==

EffectRenderer::EffectRenderer(ReportingLayer& layer, Options const& options, EffectSubject effectSubject)
    : layer(layer), request(options), subject(std::move(effectSubject)) {
    switch (request.effect.effect) {
    case Effect::DISPLACEMENT:
        _makeDisplacement();
        break;
    case Effect::OCEAN:
        _makeOcean();
        break;
    case Effect::GLASS:
        _makeGlass();
        break;
    case Effect::SSS:
        _makeScattering();
        break;
    case Effect::CUSTOM:
        _makeCustom();
        break;
    case Effect::NONE:
        break;
    }
    if (!shader->created) {
        shader->create();
    }
    shader->enable(false);
    _noteReports(0);

    bool const hasBuffers = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
    for (EffectSubject::Model const& model : subject.models) {
        renderers.emplace_back();
        for (std::unique_ptr<Mesh> const& mesh : model.meshes) {
            auto renderer = std::make_unique<Mesh_RL_GL>(mesh.get(), false);
            renderer->useBufferObjects = hasBuffers && !request.immediate;
            renderer->shader = shader.get();
            renderers.back().push_back(std::move(renderer));
        }
    }
}

EffectRenderer::~EffectRenderer() = default;

bool EffectRenderer::covers(std::size_t model) const {
    return request.effect.covers(model);
}

void EffectRenderer::draw(ScreenAxes const& screen) {
    KeptState const kept;
    _setMaterial();
    MeshShading shading;
    shading.mode =
        request.shading == Shading::FACETED ? MeshShadingMode_ns::FACETED : MeshShadingMode_ns::SMOOTH;
    shading.flags = MeshShadingFlags_ns::GPU_SHADER | MeshShadingFlags_ns::TEXTURE;
    if (request.wireframeBack) {
        shading.flags |= MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    }
    shading.textureChannel = ModelPart::CHANNEL;
    for (std::size_t i = 0; i < renderers.size(); ++i) {
        if (request.effect.effect == Effect::OCEAN) {
            _placeSun();
        } else {
            _placeLights(screen, subject.models[i].toScene.e[0]);
        }
        ModelUnits const units(subject.models[i].toScene);
        for (std::unique_ptr<Mesh_RL_GL> const& renderer : renderers[i]) {
            // The size of the viewport may be another one than at the last time.
            shader->markDirty();
            if (request.effect.effect == Effect::SSS) {
                // Its passes send their values to a program that is enabled, and do not enable it themselves.
                shader->enable(true);
            }
            renderer->render(shading);
        }
    }
}

// == The effects ==

void EffectRenderer::_makeDisplacement() {
    EffectValues const& values = request.effect.values;
    auto effect = std::make_unique<Displacement_shader>();
    Color4<float> const color = values.color("color");
    Vector3<float> const tile = values.triple("tile");
    effect->setBaseColor(color.r, color.g, color.b, color.a);
    effect->setScale(values.triple("scale"));
    effect->setTileScale(tile.x, tile.y);
    effect->setDepth(values.whole("depth"));
    effect->tesselate(values.isYes("tessellate"));
    effect->setNLights(static_cast<unsigned int>(values.whole("lights")));
    effect->setDisplacementTexture(VL_String(values.file("map").c_str()));
    effect->setNormalsTexture(VL_String(values.file("normals").c_str()));
    shader = std::move(effect);
}

void EffectRenderer::_makeOcean() {
    EffectValues const& values = request.effect.values;
    auto effect = std::make_unique<Displacement_XZ_shader>();
    Color4<float> const color = values.color("color");
    float const side = subject.oceanPatch / subject.oceanMap.unit;
    effect->setBaseColor(color.r, color.g, color.b, color.a);
    effect->setScale(subject.oceanMap.heightScale);
    effect->setDim_X(side);
    effect->setDim_Z(side);
    effect->setRepeat_U(1);
    effect->setRepeat_V(1);
    effect->setResolution(values.whole("size"));
    effect->setFoamThreshold(static_cast<float>(values.number("foam-threshold")));
    effect->setDisplacementTexture(subject.oceanMap.image);
    shader = std::move(effect);
}

void EffectRenderer::_makeGlass() {
    EffectValues const& values = request.effect.values;
    auto effect = std::make_unique<Glass_shader>();
    Color4<float> const color = values.color("color");
    std::string path = request.effect.environment;
    if (path.empty()) {
        sky = std::make_unique<MemoryFile>(skyPicture());
        path = sky->path();
    }
    effect->setBaseColor(color.r, color.g, color.b, color.a);
    effect->setDepth(static_cast<float>(values.number("depth")));
    effect->setMixRatio(static_cast<float>(values.number("mix")));
    effect->setNLights(static_cast<unsigned int>(values.whole("lights")));
    effect->setEnvironmentTexture(VL_String(path.c_str()));
    shader = std::move(effect);
}

void EffectRenderer::_makeScattering() {
    EffectValues const& values = request.effect.values;
    auto effect = std::make_unique<SSScattering_shader>();
    Color4<float> const color = values.color("color");
    effect->setBaseColor(color.r, color.g, color.b, color.a);
    effect->setExtinctionCoefficient(values.color("extinction"));
    effect->setMaterialThickness(static_cast<float>(values.number("thickness")));
    effect->setRimScalar(static_cast<float>(values.number("rim")));
    effect->setNLights(static_cast<unsigned int>(values.whole("lights")));
    shader = std::move(effect);
}

void EffectRenderer::_makeCustom() {
    EffectValues const& values = request.effect.values;
    auto effect = std::make_unique<UserShader>();
    effect->setBaseColor(values.color("BaseColor"));
    effect->setNLights(static_cast<unsigned int>(values.whole("lights")));
    for (int i = 0; i < VARIABLE_COUNT; ++i) {
        std::string const number = std::to_string(i);
        effect->setFloatVar(static_cast<float>(values.number("FloatVar" + number)), i);
        effect->setVec3Var(values.triple("Vec3Var" + number), i);
        effect->setVec4Var(values.color("Vec4Var" + number), i);
    }
    for (int i = 0; i < PICTURE_COUNT; ++i) {
        effect->setTexture(VL_String(values.file("Texture" + std::to_string(i)).c_str()), i);
    }

    std::string paths[] = {request.effect.vertexShader, request.effect.fragmentShader,
                           request.effect.geometryShader};
    for (std::string& path : paths) {
        std::optional<Fault> fault = path.empty() ? std::nullopt : shaderFileFault(path);
        if (fault) {
            fault->message += replaced;
            stageNotes.push_back(*fault);
            path.clear();
        }
    }
    effect->setShaders(VL_String(paths[0].c_str()), VL_String(paths[1].c_str()), VL_String(paths[2].c_str()));
    bool const hasFragments = !_noteReports(GL_FRAGMENT_SHADER) && !paths[1].empty();
    std::string const& last = paths[2].empty() ? paths[0] : paths[2];
    if (!effect->isLinked()) {
        for (Fault const& line : shaderFaults(theProgram, effect->linkLog())) {
            stageNotes.push_back(line);
        }
        stageNotes.push_back({theProgram, "cannot be linked; stages that pass everything on take its place"});
        effect->setShaders("", "", "");
    } else if (!hasFragments && !last.empty() && !mentions(last, "gl_FrontColor")) {
        stageNotes.push_back(
            {last, "sets no gl_FrontColor, which the fragment stage that passes everything on shows; "
                   "such a stage takes its place, too"});
        effect->setShaders("", "", "");
    }
    // GL refuses to use a program that is not linked, and says so.
    layer.getError("EffectRenderer", __LINE__);
    effect->grabFrameBuffer(values.isYes("grab"));
    shader = std::move(effect);
}

/// Stages that do not compile are known by what the driver says about them.
bool EffectRenderer::_noteReports(unsigned int stage) {
    EffectOptions const& options = request.effect;
    bool isFound = false;
    for (ShaderReport const& report : layer.takeReports()) {
        std::string const file = report.stage == GL_VERTEX_SHADER     ? options.vertexShader
                                 : report.stage == GL_FRAGMENT_SHADER ? options.fragmentShader
                                                                      : options.geometryShader;
        for (Fault const& line : shaderFaults(file, report.log)) {
            stageNotes.push_back(line);
        }
        stageNotes.push_back({file, "does not compile" + replaced});
        isFound = isFound || report.stage == stage;
    }
    return isFound;
}

// == Lights ==

/// \param unit what a length of 1 of the model is in the scene.
void EffectRenderer::_placeLights(ScreenAxes const& screen, double unit) const {
    EffectValues const& values = request.effect.values;
    Matrix const modelView(GL_MODELVIEW_MATRIX);
    Point center = modelView * Point{0, 0, 0};
    double radius = Scene::RADIUS;
    float strength = 1;
    if (request.effect.effect == Effect::SSS) {
        // The effect looks for its lights in clip coordinates, in which lengths are stretched by the projection; and
        // at the distances that a scene of this size has, a tenth of the light arrives.
        Matrix const projection(GL_PROJECTION_MATRIX);
        center = projection * center;
        radius *= 12;
        strength = 10;
        unit = 1;
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    auto const place = [&](char const* const name) {
        Vector3<double> const p = convert<double>(values.triple(name));
        return (center + (screen.right * p.x + screen.up * p.y + screen.towardViewer * p.z) * radius) *
               (1 / unit);
    };
    setLight(GL_LIGHT0, place("light"), values.color("light-color"), strength);
    setLight(GL_LIGHT1, place("light2"), values.color("light2-color"), strength);
    glPopMatrix();
}

void EffectRenderer::_placeSun() const {
    Vector3<float> const angles = request.effect.values.triple("sun");
    double const elevation = static_cast<double>(angles.x) * PI / 180;
    double const azimuth = static_cast<double>(angles.y) * PI / 180;
    // The world's axes in eye space: the columns of the model-view matrix.
    Matrix const m(GL_MODELVIEW_MATRIX);
    Point const up = normalized(Point{m.e[4], m.e[5], m.e[6]});
    Point const forward{0, 0, -1};
    Point const level = forward - up * dot(forward, up);
    Point const ahead = length(level) > 1e-6 ? normalized(level) : Point{0, 1, 0};
    Point const right = cross(ahead, up);
    Point const sun = (ahead * std::cos(azimuth) + right * std::sin(azimuth)) * std::cos(elevation) +
                      up * std::sin(elevation);
    constexpr Color4<float> sunlight{1.0F, 0.86F, 0.62F, 1};
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    setLight(GL_LIGHT0, sun * SUN_DISTANCE, sunlight, 1);
    glPopMatrix();
}

void EffectRenderer::_setMaterial() const {
    EffectValues const& values = request.effect.values;
    bool const isOcean = request.effect.effect == Effect::OCEAN;
    bool const isScattering = request.effect.effect == Effect::SSS;
    // The ocean makes the highlight three times as strong and ten times as narrow as the material has it.
    float const gloss = isOcean ? 0.5F : isScattering ? 1.0F : static_cast<float>(values.number("gloss"));
    float const shininess = isOcean ? 24.0F : static_cast<float>(values.number("shininess"));
    float const ambient[4] = {0.22F, 0.23F, 0.26F, 1};
    float const diffuse[4] = {1, 1, 1, 1};
    float const specular[4] = {gloss, gloss, gloss, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
}

}  // namespace vellum::viewport
