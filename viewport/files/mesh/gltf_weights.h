#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vellum::viewport {

/// How much of each morph target is seen, by the name of the node that shows them.
using NodeWeights = std::unordered_map<std::string, std::vector<double>>;

/// The weights that nodes of a glTF or GLB file have in place of those of their meshes. The importer does not
/// read them. Nodes without a name have the importer's, "nodes[3]". Empty where the bytes are no such file.
NodeWeights gltfNodeWeights(std::string_view bytes);

}  // namespace vellum::viewport
