#include "benchmarks/vl_raster_gl/passes_by_hand.h"

#include "Core_RL_GL.h"
#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using namespace benchmarks;

/// The benchmarks of effects compare passes of the library with passes by hand; both must make the same
/// calls.
class Passes_by_hand_calls_test : public testing::Test {
protected:
    Passes_by_hand_calls_test() { driver.integer(GL_VIEWPORT, {0, 0, 1000, 600}); }

    /// The calls of the second pass: the first has nothing kept to send.
    std::vector<std::string> secondPass(std::function<void()> const& pass) {
        pass();
        recording.clear();
        pass();
        return recording.texts();
    }

    static void pass(Base_shader& effect) {
        effect.preprocess();
        effect.postprocess();
        effect.cleanup();
    }

    /// The program that the last pass had in use.
    unsigned int programInUse() const {
        double program = 0;
        for (gl_spy::Call const& call : recording.named("glUseProgram")) {
            program = std::max(program, call.numbers.at(0));
        }
        return static_cast<unsigned int>(program);
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    Core_RL_GL layer;
    gl_spy::Recording recording;
};

TEST_F(Passes_by_hand_calls_test, displacementByHandMakesSameCalls) {
    for (bool const isDirty : {false, true}) {
        for (bool const isTesselated : {false, true}) {
            Displacement_shader effect;
            effect.tesselate(isTesselated);
            std::vector<std::string> const library = secondPass([&] {
                if (isDirty) {
                    effect.markDirty();
                }
                pass(effect);
            });
            std::vector<gl_spy::Call> const bindings = recording.named("glBindTexture");
            DisplacementByHand const byHand{programInUse(),
                                            static_cast<unsigned int>(bindings.at(0).numbers.at(0)),
                                            static_cast<unsigned int>(bindings.at(1).numbers.at(0)),
                                            {1, 1, 1, 1},
                                            {1, 1, 1},
                                            {1, 1},
                                            2,
                                            1};
            EXPECT_EQ(secondPass([&] {
                          openByHand(byHand, isDirty);
                          closeByHand();
                      }),
                      library);
        }
    }
}

TEST_F(Passes_by_hand_calls_test, oceanByHandMakesSameCalls) {
    Displacement_XZ_shader effect;
    std::vector<std::string> const library = secondPass([&] { pass(effect); });
    OceanByHand const byHand{programInUse(),
                             static_cast<unsigned int>(recording.named("glBindTexture").at(0).numbers.at(0)),
                             {1, 1, 0, 0},
                             {0.1F, 0.3F, 0.35F, 1},
                             1,
                             1,
                             1,
                             100,
                             100,
                             0,
                             512};
    EXPECT_EQ(secondPass([&] {
                  openByHand(byHand);
                  closeByHand();
              }),
              library);
}

TEST_F(Passes_by_hand_calls_test, glassByHandMakesSameCalls) {
    for (bool const isDirty : {false, true}) {
        Glass_shader effect;
        std::vector<std::string> const library = secondPass([&] {
            if (isDirty) {
                effect.markDirty();
            }
            pass(effect);
        });
        std::vector<gl_spy::Call> const bindings = recording.named("glBindTexture");
        GlassByHand const byHand{programInUse(),
                                 static_cast<unsigned int>(bindings.at(0).numbers.at(0)),
                                 static_cast<unsigned int>(bindings.at(1).numbers.at(0)),
                                 {0, 1, 0},
                                 {1, 1, 0},
                                 0.1F,
                                 1,
                                 1};
        EXPECT_EQ(secondPass([&] {
                      openByHand(byHand, isDirty);
                      closeByHand();
                      deleteByHand(byHand.refractionTexture);
                  }),
                  library);
    }
}

TEST_F(Passes_by_hand_calls_test, scatteringByHandMakesSameCalls) {
    for (bool const isDirty : {false, true}) {
        SSScattering_shader effect;
        recording.clear();
        effect.create();
        ScatteringByHand const byHand{programInUse(),        0.1F, 0.2F, {0.5F, 0.5F, 0.5F},
                                      {0.8F, 0.8F, 0.8F, 1}, 1};
        std::vector<std::string> const library = secondPass([&] {
            if (isDirty) {
                effect.markDirty();
                effect.setMaterialThickness(0.1F);
            }
            pass(effect);
        });
        EXPECT_EQ(secondPass([&] {
                      openByHand(byHand, isDirty);
                      closeByHand();
                  }),
                  library);
    }
}

TEST_F(Passes_by_hand_calls_test, userShaderByHandMakesSameCalls) {
    for (bool const isDirty : {false, true}) {
        Custom_shader effect;
        effect.setTexture("/no/first.png", 0);
        effect.setTexture("/no/second.png", 1);
        std::vector<std::string> const library = secondPass([&] {
            if (isDirty) {
                effect.markDirty();
            }
            pass(effect);
        });
        std::vector<gl_spy::Call> const bindings = recording.named("glBindTexture");
        CustomByHand const byHand{programInUse(),
                                  {static_cast<unsigned int>(bindings.at(0).numbers.at(0)),
                                   static_cast<unsigned int>(bindings.at(1).numbers.at(0))},
                                  static_cast<unsigned int>(bindings.at(2).numbers.at(0)),
                                  {},
                                  {},
                                  {},
                                  {0, 0, 0, 1},
                                  1};
        EXPECT_EQ(secondPass([&] {
                      openByHand(byHand, isDirty);
                      closeByHand();
                  }),
                  library);
    }
}

}  // namespace
}  // namespace vellum
