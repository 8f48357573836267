#include "viewport/playback/FrameSequence.h"

#include "viewport/files/common/InputFile.h"
#include "viewport/files/mesh/Textures.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr double MOST_POSES = 1e9;

template <class T, class Allocator>
std::uint64_t sizeOf(std::vector<T, Allocator> const& list) {
    return static_cast<std::uint64_t>(list.capacity()) * sizeof(T);
}

std::uint64_t sizeOf(LoadedFrame const& loaded) {
    ParticleFrame const& frame = loaded.frame;
    std::uint64_t size = sizeOf(frame.positions) + sizeOf(loaded.timesteps) + sizeOf(loaded.times);
    for (ParticleChannel const& channel : frame.channels) {
        size += sizeOf(channel.values);
    }
    for (ParticleVector const& vector : frame.vectors) {
        size += sizeOf(vector.lengths);
    }
    for (ParticleLabels const& labels : frame.labels) {
        size += sizeOf(labels.indices) + sizeOf(labels.words);
    }
    return size;
}

std::uint64_t sizeOf(MeshData const& mesh) {
    std::uint64_t size = sizeOf(mesh.positions) + sizeOf(mesh.triangles) + sizeOf(mesh.lines) +
                         sizeOf(mesh.points) + sizeOf(mesh.normals) + sizeOf(mesh.colors) +
                         sizeOf(mesh.textureCoordinates) + sizeOf(mesh.triangleMaterials);
    for (MeshScalar const& scalar : mesh.scalars) {
        size += sizeOf(scalar.values);
    }
    return size;
}

/// A frame of particles without the lists of the others, which the sequence has once for all.
Result<SequenceFrame> ownFrame(Result<LoadedFrame> loaded) {
    if (!loaded.isOk()) {
        return loaded.fault();
    }
    loaded.value().timesteps = {};
    loaded.value().times = {};
    return SequenceFrame(std::move(loaded.value()));
}

}  // namespace

std::uint64_t bytesOf(SequenceFrame const& frame) {
    return sizeof frame + std::visit([](auto const& one) { return sizeOf(one); }, frame);
}

FrameSequence::FrameSequence(FrameList list, bool isReadAhead,
                             std::function<Result<SequenceFrame>(std::size_t, Progress const&)> read)
    : list(std::move(list)), isReadAhead(isReadAhead), read(std::move(read)) {}

Result<FrameSequence> FrameSequence::ofFile(ParticleFile const& file, Progress const& progress) {
    Result<FrameList> list = file.frames(progress);
    if (!list.isOk()) {
        return list.fault();
    }
    return FrameSequence(std::move(list.value()), true, [file](std::size_t frame, Progress const& progress) {
        return ownFrame(file.load(frame, progress));
    });
}

FrameSequence FrameSequence::ofSeries(ParticleSeries const& series, std::optional<ParticleFormat> format) {
    FrameList list;
    list.count = series.files().size();
    return {std::move(list), true, [series, format](std::size_t frame, Progress const& progress) {
                return ownFrame(series.load(frame, progress, format));
            }};
}

FrameSequence FrameSequence::ofAnimation(MeshFile const& file, ImportLimits const& limits, double duration,
                                         double framesPerSecond) {
    // A duration of whole frames is rarely one in binary.
    constexpr double SLACK = 1e-6;
    FrameList list;
    list.count =
        1 + static_cast<std::size_t>(std::clamp(duration * framesPerSecond + SLACK, 0.0, MOST_POSES));
    return {std::move(list), false,
            [=](std::size_t frame, Progress const& progress) -> Result<SequenceFrame> {
                MeshOptions const at{static_cast<double>(frame) / framesPerSecond};
                Result<MeshData> mesh = file.load(limits, at, progress);
                if (!mesh.isOk()) {
                    return mesh.fault();
                }
                return SequenceFrame(std::move(mesh.value()));
            }};
}

FrameSequence FrameSequence::ofMeshes(std::vector<std::string> const& files,
                                      std::optional<std::string> const& format, ImportLimits const& limits,
                                      bool isTextured) {
    FrameList list;
    list.count = files.size();
    return {std::move(list), false,
            [=](std::size_t frame, Progress const& progress) -> Result<SequenceFrame> {
                Result<InputFile> const file = InputFile::open(files[frame], progress);
                if (!file.isOk()) {
                    return file.fault();
                }
                MeshFile const source(file.value(), format);
                Result<MeshData> mesh = source.load(limits, {}, progress);
                if (!mesh.isOk()) {
                    return mesh.fault();
                }
                if (isTextured) {
                    // What is missing has been said of the first frame.
                    static_cast<void>(loadTextures(source.place(), mesh.value(), progress));
                }
                return SequenceFrame(std::move(mesh.value()));
            }};
}

Result<SequenceFrame> FrameSequence::load(std::size_t frame, Progress const& progress) const {
    if (frame >= list.count) {
        return Fault{{},
                     "there is no frame " + std::to_string(frame) + "; the last one is " +
                         std::to_string(list.count - 1)};
    }
    return read(frame, progress);
}

}  // namespace vellum::viewport
