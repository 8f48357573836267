#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <cstdint>
#include <string>

namespace vellum::viewport {

/// Watches Content::load() and Subject::prepare(), and can stop them. The command line prints what it is
/// told, a window shows it; a LoadObserver itself takes no notice and never stops anything.
///
/// All calls come on the thread that loads. None may throw.
class LoadObserver {
public:
    LoadObserver() = default;
    virtual ~LoadObserver() = default;
    LoadObserver(LoadObserver const&) = delete;
    LoadObserver& operator=(LoadObserver const&) = delete;

    /// What the user is to know, although the file is read.
    virtual void note(Fault const& /*what*/) {}

    /// How far the reading of a file is. The first call for a file has 0 bytes of 0; further ones come at
    /// least every few milliseconds, so they must be cheap. \param file as the user named it \param all
    /// bytes, a compressed file's twice; 0: not known
    virtual void progress(std::string const& /*file*/, std::uint64_t /*done*/, std::uint64_t /*all*/) {}

    /// Whether nobody wants the content any more. Asked wherever progress is told.
    virtual bool isCancelled() { return false; }

    /// A mesh is read, with its textures.
    virtual void meshRead(std::string const& /*file*/, MeshData const& /*mesh*/) {}

    /// Particles are read. The frame is complete only during the call.
    virtual void particlesRead(LoadedFrame const& /*loaded*/) {}
};

}  // namespace vellum::viewport
