#pragma once

/// \file
/// What the fragments of the guide may use without saying where it comes from. They are compiled and never
/// run.

#include "toolkit/toolkit.h"

#include <GLFW/glfw3.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

struct Surroundings {
    GLFWwindow* window;
    Mesh mesh;
    ParticleSystem_v2 system;
    RenderSession session;
    Layer& layer;
    Mesh_RL_GL& renderer;
    ParticleRenderer& particles;
    CameraController& controls;
    View view;
    MeshStyle style;
    ParticleLook look;
};

/// The members as names of their own.
#define VL_SURROUNDINGS(all)                                                                                 \
    [[maybe_unused]] GLFWwindow* const window = (all).window;                                                \
    [[maybe_unused]] Mesh& mesh = (all).mesh;                                                                \
    [[maybe_unused]] ParticleSystem_v2& system = (all).system;                                               \
    [[maybe_unused]] RenderSession& session = (all).session;                                                 \
    [[maybe_unused]] Layer& layer = (all).layer;                                                             \
    [[maybe_unused]] Mesh_RL_GL& renderer = (all).renderer;                                                  \
    [[maybe_unused]] ParticleRenderer& particles = (all).particles;                                          \
    [[maybe_unused]] CameraController& controls = (all).controls;                                            \
    [[maybe_unused]] View& view = (all).view;                                                                \
    [[maybe_unused]] MeshStyle& style = (all).style;                                                         \
    [[maybe_unused]] ParticleLook& look = (all).look;
