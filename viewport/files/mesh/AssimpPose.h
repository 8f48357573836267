#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/mesh/gltf_weights.h"

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

template <typename T>
class aiMatrix4x4t;

struct aiMesh;
struct aiNode;
struct aiScene;

namespace vellum::viewport {

/// Where the nodes of a scene stand: as the file has them at rest, or as its first animation has them at a
/// time.
///
///     AssimpPose const pose(scene, 1.5);
///     for (AssimpPose::Place const& place : pose.places())
///         ... place.node, place.transform ...
///
/// Positions, scales and weights run straight between keys, rotations along the shortest arc. The scene must
/// outlive it.
class AssimpPose {
public:
    struct Place {
        aiNode const* node;
        Matrix4<double> transform;  ///< to the frame of the file
    };

    /// The vertices of a mesh.
    struct Shape {
        std::vector<Vector3<double>> places;
        std::vector<Vector3<double>> normals;  ///< empty: those of the mesh
    };

    /// \param time seconds, 0 or more; later than the animation: its end. Nothing: at rest
    /// \param weights of nodes, in place of those of their meshes
    AssimpPose(aiScene const& scene, std::optional<double> time, NodeWeights weights = {});

    /// All nodes, parents before their children, children in their order.
    std::vector<Place> const& places() const { return all; }

    /// The matrix of each vertex of a mesh that bones move: the mean of those of its bones by their weights.
    /// Vertices without bones move with the mesh's node. Empty for meshes without bones.
    std::vector<Matrix4<double>> vertexTransforms(aiMesh const& mesh, Matrix4<double> const& ofNode) const;

    /// The vertices of a mesh as its morph targets change it where a node shows it. Empty where they do not.
    Shape morphed(aiMesh const& mesh, aiNode const& node) const;

    /// Whether the animation's weights are as many as the mesh has targets, if it has any: the importer
    /// confuses those of splines. Such weights are not taken.
    bool hasSoundWeights(aiMesh const& mesh, aiNode const& node) const;

private:
    std::vector<double> _weightsOf(aiMesh const& mesh, aiNode const& node) const;

    std::vector<Place> all;
    std::unordered_map<std::string, std::size_t> byName;  // the first node of a name, in `all`
    NodeWeights weights;                                  // at rest
    NodeWeights weightsAtTime;
};

/// The animations of a scene, with their durations in seconds.
std::vector<MeshAnimation> animationsOf(aiScene const& scene);

/// Assimp's matrix as ours.
Matrix4<double> matrixOf(aiMatrix4x4t<float> const& m);

}  // namespace vellum::viewport
