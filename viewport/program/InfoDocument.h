#pragma once

#include "viewport/drawing/Picked.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/program/Description.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace vellum::viewport {

/// What the program knows about files, pictures and driver, as JSON for other programs. Lengths are in units
/// of the files. What is not known or not finite is null.
class InfoDocument {
public:
    InfoDocument();
    ~InfoDocument();
    InfoDocument(InfoDocument&& other) noexcept;
    InfoDocument& operator=(InfoDocument&& other) noexcept;

    void addMesh(std::string const& path, MeshData const& mesh);
    void addParticles(LoadedFrame const& loaded);

    /// \param out the picture's file; empty: none
    /// \param camera the options that give it; empty: it has one of its own
    void addPicture(std::string const& out, int width, int height, std::string const& camera);

    /// Says what is at a pixel of a picture that was added; null where there is nothing. Pictures in which
    /// nothing is picked have no such key. \param picture counted from 0
    void setPick(std::size_t picture, std::optional<Picked> const& picked);

    void setDriver(DriverFacts const& driver);

    /// The whole document with a line's end.
    std::string toText() const;

private:
    std::unique_ptr<nlohmann::json> document;
};

}  // namespace vellum::viewport
