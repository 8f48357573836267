#pragma once

#include "benchmarks/plain_scenes.h"

#include <memory>

namespace vellum::benchmarks {

constexpr int PEER_SIDE = 512;  ///< pixels of the square picture

/// The camera of all systems: a perspective from `EYE` to the origin, z up.
constexpr float EYE[3] = {1.8F, -3.6F, 2.8F};
constexpr double FIELD_DEGREES = 40;
constexpr double NEAR_PLANE = 0.5;
constexpr double FAR_PLANE = 10;

/// A scene of one system, in the current context. Each system has a source with makePeer(), and shares the
/// program.
class Peer {
public:
    Peer() = default;
    virtual ~Peer() = default;
    Peer(Peer const&) = delete;
    Peer& operator=(Peer const&) = delete;

    /// Where the system keeps its positions, changes all of them.
    virtual void move(float time) = 0;

    /// Tells the system that positions, and for a surface its normals, have changed.
    virtual void markMoved() = 0;

    /// Draws a frame, with its clear, as a program for the system does.
    virtual void draw() = 0;
};

/// A scene with points of one pixel, in colors.
std::unique_ptr<Peer> makePeer(PlainPoints const& points);

/// A scene with a smooth, lit surface.
std::unique_ptr<Peer> makePeer(PlainSurface const& surface);

}  // namespace vellum::benchmarks
