#include "foundation/raster/MeshImporter_RL.h"

namespace vellum {

MeshImporter_RL::MeshImporter_RL() = default;

MeshImporter_RL::~MeshImporter_RL() = default;

}  // namespace vellum
