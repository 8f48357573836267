#include "viewport/files/mesh/GuardedImport.h"

#include "viewport/files/mesh/MeshTransfer.h"

#include <optional>
#include <utility>
#include <vector>

namespace vellum::viewport {

Result<MeshData> importGuarded(std::string const& file, std::function<Result<MeshData>()> const& import,
                               ImportLimits const& limits, Progress const& progress) {
    MeshData imported;
    GuardedRun run;
    run.file = file;
    run.work = [&import](PutBytes const& put) {
        Result<MeshData> const mesh = import();
        if (mesh.isOk()) {
            encodeMesh(mesh.value(), put);
        } else {
            std::vector<unsigned char> const fault = encodeFault(mesh.fault().message);
            put(fault.data(), fault.size());
        }
    };
    run.encodeFault = encodeFault;
    run.take = [&](unsigned char const* bytes, std::size_t size) -> std::optional<Fault> {
        Result<MeshData> mesh = decodeMesh(bytes, size, file);
        if (!mesh.isOk()) {
            return mesh.fault();
        }
        imported = std::move(mesh.value());
        return std::nullopt;
    };
    if (std::optional<Fault> const fault = runGuarded(run, limits, progress)) {
        return *fault;
    }
    return imported;
}

}  // namespace vellum::viewport
