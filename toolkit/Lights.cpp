#include "toolkit/Lights.h"

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

void LightSource::set(unsigned int index) const {
    GLenum const light = GL_LIGHT0 + index;
    float const place[4] = {static_cast<float>(position.x), static_cast<float>(position.y),
                            static_cast<float>(position.z), isFarAway ? 0.0F : 1.0F};
    glLightfv(light, GL_POSITION, place);
    glLightfv(light, GL_AMBIENT, &ambient.r);
    glLightfv(light, GL_DIFFUSE, &diffuse.r);
    glLightfv(light, GL_SPECULAR, &specular.r);
    glLightf(light, GL_CONSTANT_ATTENUATION, 1);
    glLightf(light, GL_LINEAR_ATTENUATION, 0);
    glLightf(light, GL_QUADRATIC_ATTENUATION, 0);
}

void setHeadLights(ScreenAxes const& screen, float specular) {
    auto const toward = [&screen](double right, double up, double viewer) {
        return screen.right * right + screen.up * up + screen.towardViewer * viewer;
    };
    constexpr Color4<float> BLACK{0, 0, 0, 1};
    LightSource{
        toward(-0.50, 0.72, 0.62), true, BLACK, {0.66F, 0.645F, 0.62F, 1}, {specular, specular, specular, 1}}
        .set(0);
    LightSource{toward(0.85, -0.05, 0.42), true, BLACK, {0.20F, 0.23F, 0.29F, 1}, BLACK}.set(1);
    // The order of corners in files is unreliable, so a face is lit on the side that is seen.
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
}

}  // namespace vellum::toolkit
