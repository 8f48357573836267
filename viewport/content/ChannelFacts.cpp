#include "viewport/content/ChannelFacts.h"

#include "viewport/scene/ParticlePlaces.h"
#include "viewport/scene/Quantity.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace vellum::viewport {

namespace {

/// Somebody who cancels waits for no more than so many values.
constexpr std::size_t BETWEEN_LOOKS = 1 << 16;

/// Passes on all values of a name; false where it was cancelled.
template <class Use>
bool forEachValue(Content const& content, std::string const& name, std::atomic<bool> const& isCancelled,
                  Use const& use) {
    auto const pass = [&](auto const& values, std::size_t count, std::string const& unit) {
        for (std::size_t i = 0; i < count; ++i) {
            if (i % BETWEEN_LOOKS == 0 && isCancelled) {
                return false;
            }
            use(values[i], unit);
        }
        return true;
    };
    for (ParticleFrame const& frame : content.particles) {
        ParticlePlaces const places(frame, false);
        std::optional<Quantity> const quantity = Quantity::find(frame, places, name);
        if (quantity && !pass(*quantity, frame.positions.size(), quantity->unit())) {
            return false;
        }
    }
    for (MeshData const& mesh : content.meshes) {
        for (MeshScalar const& scalar : mesh.scalars) {
            if (scalar.name == name && !pass(scalar.values, scalar.values.size(), scalar.unit)) {
                return false;
            }
        }
    }
    return true;
}

std::string extensionOf(std::string const& name) {
    std::string const extension = std::filesystem::path(name).extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

template <class Places>
std::optional<Box3<double>> boundsOf(Places const& places, std::atomic<bool> const& isCancelled) {
    std::optional<Box3<double>> box;
    for (std::size_t i = 0; i < places.size() && !(i % BETWEEN_LOOKS == 0 && isCancelled); ++i) {
        Vector3<double> const& p = places[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
            continue;
        }
        if (!box) {
            box = Box3<double>{p, p};
        }
        box->min = {std::min(box->min.x, p.x), std::min(box->min.y, p.y), std::min(box->min.z, p.z)};
        box->max = {std::max(box->max.x, p.x), std::max(box->max.y, p.y), std::max(box->max.z, p.z)};
    }
    return box;
}

}  // namespace

std::optional<ChannelFacts> ChannelFacts::of(Content const& content, std::string const& name,
                                             std::atomic<bool> const& isCancelled) {
    ChannelFacts facts;
    facts.name = name;
    bool const isMeasured =
        forEachValue(content, name, isCancelled, [&facts](double value, std::string const& unit) {
            if (facts.unit.empty()) {
                facts.unit = unit;
            }
            if (!std::isfinite(value)) {
                ++facts.undefinedCount;
                return;
            }
            facts.least = facts.count == 0 ? value : std::min(facts.least, value);
            facts.most = facts.count == 0 ? value : std::max(facts.most, value);
            ++facts.count;
        });
    if (!isMeasured || facts.count + facts.undefinedCount == 0) {
        return std::nullopt;
    }
    // The difference of two doubles can be larger than any double; that of their halves cannot.
    double const extent = facts.most / 2 - facts.least / 2;
    bool const isCounted = forEachValue(content, name, isCancelled, [&](double value, std::string const&) {
        if (std::isfinite(value)) {
            double const place = extent > 0 ? (value / 2 - facts.least / 2) / extent : 0;
            ++facts.bins[std::min(static_cast<std::size_t>(place * BINS), BINS - 1)];
        }
    });
    return isCounted ? std::optional<ChannelFacts>(std::move(facts)) : std::nullopt;
}

std::size_t ChannelFacts::fullestBin() const {
    return *std::max_element(bins.begin(), bins.end());
}

std::vector<FileFacts> factsOfFiles(Content const& content, std::atomic<bool> const& isCancelled) {
    std::vector<FileFacts> files;
    for (MeshData const& mesh : content.meshes) {
        FileFacts file;
        file.name = mesh.name;
        file.extension = extensionOf(mesh.name);
        file.triangleCount = mesh.triangles.size();
        file.vertexCount = mesh.positions.size();
        file.lineCount = mesh.lines.size();
        file.pointCount = mesh.points.size();
        file.bounds = boundsOf(mesh.positions, isCancelled);
        files.push_back(std::move(file));
    }
    for (std::size_t i = 0; i < content.particles.size(); ++i) {
        ParticleFrame const& frame = content.particles[i];
        FileFacts file;
        file.name = std::filesystem::path(frame.file).filename().string();
        file.extension = extensionOf(file.name);
        file.isMesh = false;
        file.particleCount = frame.positions.size();
        file.frameCount = i < content.frameCounts.size() ? content.frameCounts[i] : 1;
        file.timestep = frame.timestep;
        file.time = frame.time;
        file.bounds = boundsOf(frame.positions, isCancelled);
        files.push_back(std::move(file));
    }
    return files;
}

std::vector<std::string> channelNames(Content const& content) {
    std::vector<std::string> names;
    auto const add = [&names](std::vector<std::string> const& more) {
        for (std::string const& name : more) {
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
    };
    for (ParticleFrame const& frame : content.particles) {
        add(Quantity::suitableNames(frame));
    }
    for (MeshData const& mesh : content.meshes) {
        for (MeshScalar const& scalar : mesh.scalars) {
            add({scalar.name});
        }
    }
    for (ParticleFrame const& frame : content.particles) {
        add(Quantity::names(frame));
    }
    return names;
}

}  // namespace vellum::viewport
