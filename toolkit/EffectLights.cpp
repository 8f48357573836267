#include "toolkit/EffectLights.h"

#include "glsl_shader/SSScattering_shader.h"
#include "toolkit/Lights.h"
#include "toolkit/internal/gl.h"

#include <algorithm>

namespace vellum::toolkit {

namespace {

using Point = Vector3<double>;

/// How the lights' places become positions of GL.
struct Frame {
    Point center;
    double radius;
    float strength;  // of diffuse light
};

/// Without the perspective division.
Point transformed(Matrix4<double> const& m, Point const& p) {
    return {m.e[0] * p.x + m.e[4] * p.y + m.e[8] * p.z + m.e[12],
            m.e[1] * p.x + m.e[5] * p.y + m.e[9] * p.z + m.e[13],
            m.e[2] * p.x + m.e[6] * p.y + m.e[10] * p.z + m.e[14]};
}

/// How much a matrix stretches lengths, at most along the axes.
double stretchOf(Matrix4<double> const& m) {
    return std::max({length(Point{m.e[0], m.e[1], m.e[2]}), length(Point{m.e[4], m.e[5], m.e[6]}),
                     length(Point{m.e[8], m.e[9], m.e[10]})});
}

Frame eyeFrame(View const& view, EffectSubject const& subject) {
    return {transformed(view.modelView, subject.center), subject.radius * stretchOf(view.modelView), 1};
}

/// The same for a shader that looks for its lights in clip coordinates, in which lengths are stretched by the
/// projection. From this distance on a tenth of the light arrives, wherever the light is.
Frame clipFrame(View const& view, EffectSubject const& subject) {
    constexpr double AWAY = 12;           // radii
    constexpr double LEAST_RADIUS = 250;  // also for an orthographic view, whose clip space has a side of 2
    constexpr float STRENGTH = 10;
    Frame const eye = eyeFrame(view, subject);
    Matrix4<double> const& m = view.projection;
    double const perEyeUnit = length(Point{m.e[3], m.e[7], m.e[11]});
    return {transformed(m, eye.center), AWAY * std::max(eye.radius * perEyeUnit, LEAST_RADIUS), STRENGTH};
}

}  // namespace

void setEffectLights(Mesh_RL_Shader const& effect, EffectLights const& lights, View const& view,
                     EffectSubject const& subject) {
    bool const isClipSpace = dynamic_cast<SSScattering_shader const*>(&effect) != nullptr;
    Frame const frame = isClipSpace ? clipFrame(view, subject) : eyeFrame(view, subject);
    // The screen's axes in eye space: there some projections turn the screen, those of the orthographic
    // cameras.
    ScreenAxes const screen = View{view.projection, Matrix4<double>::identity(), view.viewport}.axes();
    auto const source = [&](EffectLight const& light) {
        Point const p = convert<double>(light.place);
        Point const offset = screen.right * p.x + screen.up * p.y + screen.towardViewer * p.z;
        Color4<float> const full{light.color.r, light.color.g, light.color.b, 1};
        Color4<float> const diffuse{full.r * frame.strength, full.g * frame.strength, full.b * frame.strength,
                                    1};
        return LightSource{frame.center + offset * frame.radius, false, full, diffuse, full};
    };
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    source(lights.first).set(0);
    source(lights.second).set(1);
    glPopMatrix();
}

void setEffectMaterial(float gloss, float shininess) {
    float const ambient[4] = {0.22F, 0.23F, 0.26F, 1};
    float const diffuse[4] = {1, 1, 1, 1};
    float const specular[4] = {gloss, gloss, gloss, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
}

}  // namespace vellum::toolkit
