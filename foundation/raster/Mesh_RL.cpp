#include "foundation/raster/Mesh_RL.h"

namespace vellum {

Mesh_RL::Mesh_RL(Mesh* mesh) : mesh(mesh) {}

Mesh_RL::~Mesh_RL() = default;

}  // namespace vellum
