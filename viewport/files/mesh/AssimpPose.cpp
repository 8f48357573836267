#include "viewport/files/mesh/AssimpPose.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <assimp/anim.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

namespace vellum::viewport {

namespace {

/// Ticks are what importers count in; some say 0 where the file does not say how long one is.
double ticksPerSecond(aiAnimation const& animation) {
    constexpr double USUAL = 25;
    double const ticks = animation.mTicksPerSecond;
    return std::isfinite(ticks) && ticks > 0 ? ticks : USUAL;
}

double durationOf(aiAnimation const& animation) {
    double const seconds = animation.mDuration / ticksPerSecond(animation);
    return std::isfinite(seconds) && seconds > 0 ? seconds : 0;
}

aiVector3D between(aiVector3D const& a, aiVector3D const& b, float part) {
    return a + (b - a) * part;
}

aiQuaternion between(aiQuaternion const& a, aiQuaternion const& b, float part) {
    aiQuaternion middle;
    aiQuaternion::Interpolate(middle, a, b, part);
    return middle.Normalize();
}

/// The value of keys at a time; that of the nearest key before the first and after the last one.
template <class Key>
auto valueAt(Key const* keys, unsigned int count, double ticks) {
    Key const* const end = keys + count;
    Key const* const next =
        std::upper_bound(keys, end, ticks, [](double time, Key const& key) { return time < key.mTime; });
    if (next == keys) {
        return keys->mValue;
    }
    Key const& before = *(next - 1);
    double const span = next != end ? next->mTime - before.mTime : 0;
    return span > 0 ? between(before.mValue, next->mValue, static_cast<float>((ticks - before.mTime) / span))
                    : before.mValue;
}

/// The local matrix of a node that a channel moves.
aiMatrix4x4 matrixAt(aiNodeAnim const& channel, aiNode const& node, double ticks) {
    aiVector3D scale;
    aiVector3D place;
    aiQuaternion rotation;
    node.mTransformation.Decompose(scale, rotation, place);
    if (channel.mNumPositionKeys > 0) {
        place = valueAt(channel.mPositionKeys, channel.mNumPositionKeys, ticks);
    }
    if (channel.mNumRotationKeys > 0) {
        rotation = valueAt(channel.mRotationKeys, channel.mNumRotationKeys, ticks);
    }
    if (channel.mNumScalingKeys > 0) {
        scale = valueAt(channel.mScalingKeys, channel.mNumScalingKeys, ticks);
    }
    return {scale, rotation, place};
}

/// The weights of morph targets at a time, as valueAt() has values.
std::vector<double> weightsAt(aiMeshMorphAnim const& channel, double ticks) {
    aiMeshMorphKey const* const first = channel.mKeys;
    aiMeshMorphKey const* const end = first + channel.mNumKeys;
    aiMeshMorphKey const* next = std::upper_bound(
        first, end, ticks, [](double time, aiMeshMorphKey const& key) { return time < key.mTime; });
    aiMeshMorphKey const& before = next == first ? *next : *(next - 1);
    next = next == end ? end - 1 : next;
    double const span = next->mTime - before.mTime;
    double const part = span > 0 ? (ticks - before.mTime) / span : 0;
    std::vector<double> weights(before.mNumValuesAndWeights, 0.0);
    for (auto const& [key, share] : {std::pair(&before, 1 - part), std::pair(next, part)}) {
        for (unsigned int i = 0; share > 0 && i < key->mNumValuesAndWeights; ++i) {
            if (key->mValues[i] < weights.size()) {
                weights[key->mValues[i]] += share * key->mWeights[i];
            }
        }
    }
    return weights;
}

using Channels = std::unordered_map<std::string, aiNodeAnim const*>;

}  // namespace

Matrix4<double> matrixOf(aiMatrix4x4 const& m) {
    return {{m.a1, m.b1, m.c1, m.d1, m.a2, m.b2, m.c2, m.d2, m.a3, m.b3, m.c3, m.d3, m.a4, m.b4, m.c4, m.d4}};
}

AssimpPose::AssimpPose(aiScene const& scene, std::optional<double> time, NodeWeights weights)
    : weights(std::move(weights)) {
    if (scene.mRootNode == nullptr) {
        return;
    }
    Channels channels;
    double ticks = 0;
    if (time && scene.mNumAnimations > 0) {
        aiAnimation const& animation = *scene.mAnimations[0];
        ticks = std::min(*time, durationOf(animation)) * ticksPerSecond(animation);
        for (unsigned int i = 0; i < animation.mNumChannels; ++i) {
            channels.emplace(animation.mChannels[i]->mNodeName.C_Str(), animation.mChannels[i]);
        }
        for (unsigned int i = 0; i < animation.mNumMorphMeshChannels; ++i) {
            aiMeshMorphAnim const& channel = *animation.mMorphMeshChannels[i];
            if (channel.mNumKeys > 0) {
                weightsAtTime.emplace(channel.mName.C_Str(), weightsAt(channel, ticks));
            }
        }
    }
    auto const localOf = [&](aiNode const& node) {
        auto const channel = channels.find(node.mName.C_Str());
        return matrixOf(channel != channels.end() ? matrixAt(*channel->second, node, ticks)
                                                  : node.mTransformation);
    };
    // Not recursive: a file may nest its nodes deeper than the call stack reaches.
    std::vector<Place> open{{scene.mRootNode, localOf(*scene.mRootNode)}};
    while (!open.empty()) {
        Place const place = open.back();
        open.pop_back();
        byName.emplace(place.node->mName.C_Str(), all.size());
        all.push_back(place);
        for (unsigned int i = place.node->mNumChildren; i-- > 0;) {
            aiNode const* const child = place.node->mChildren[i];
            open.push_back({child, place.transform * localOf(*child)});
        }
    }
}

std::vector<Matrix4<double>> AssimpPose::vertexTransforms(aiMesh const& mesh,
                                                          Matrix4<double> const& ofNode) const {
    std::vector<Matrix4<double>> transforms;
    if (mesh.mNumBones == 0) {
        return transforms;
    }
    Matrix4<double> none{};
    std::fill(std::begin(none.e), std::end(none.e), 0.0);
    transforms.assign(mesh.mNumVertices, none);
    std::vector<double> sums(mesh.mNumVertices, 0.0);
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        aiBone const& bone = *mesh.mBones[b];
        auto const node = byName.find(bone.mName.C_Str());
        if (node == byName.end()) {
            continue;
        }
        Matrix4<double> const toFile = all[node->second].transform * matrixOf(bone.mOffsetMatrix);
        for (unsigned int w = 0; w < bone.mNumWeights; ++w) {
            unsigned int const vertex = bone.mWeights[w].mVertexId;
            double const weight = static_cast<double>(bone.mWeights[w].mWeight);
            if (vertex >= mesh.mNumVertices || !std::isfinite(weight) || weight <= 0) {
                continue;
            }
            for (int i = 0; i < 16; ++i) {
                transforms[vertex].e[i] += weight * toFile.e[i];
            }
            sums[vertex] += weight;
        }
    }
    for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
        if (sums[v] > 0) {
            for (double& element : transforms[v].e) {
                element /= sums[v];
            }
        } else {
            transforms[v] = ofNode;
        }
    }
    return transforms;
}

bool AssimpPose::hasSoundWeights(aiMesh const& mesh, aiNode const& node) const {
    auto const moved = weightsAtTime.find(node.mName.C_Str());
    return mesh.mNumAnimMeshes == 0 || moved == weightsAtTime.end() ||
           moved->second.size() == mesh.mNumAnimMeshes;
}

std::vector<double> AssimpPose::_weightsOf(aiMesh const& mesh, aiNode const& node) const {
    auto const moved = weightsAtTime.find(node.mName.C_Str());
    if (moved != weightsAtTime.end() && moved->second.size() == mesh.mNumAnimMeshes) {
        return moved->second;
    }
    auto const own = weights.find(node.mName.C_Str());
    std::vector<double> atRest = own != weights.end() ? own->second : std::vector<double>();
    for (std::size_t i = atRest.size(); i < mesh.mNumAnimMeshes; ++i) {
        atRest.push_back(own != weights.end() ? 0.0 : static_cast<double>(mesh.mAnimMeshes[i]->mWeight));
    }
    return atRest;
}

AssimpPose::Shape AssimpPose::morphed(aiMesh const& mesh, aiNode const& node) const {
    Shape shape;
    if (mesh.mNumAnimMeshes == 0) {
        return shape;
    }
    std::vector<double> const shares = _weightsOf(mesh, node);
    auto const toVector = [](aiVector3D const& v) { return Vector3<double>{v.x, v.y, v.z}; };
    // The importer has added the mesh's own vertices to those of a target.
    auto const add = [&](aiVector3D const* from, aiVector3D const* to, double share,
                         std::vector<Vector3<double>>& sum) {
        if (from == nullptr || to == nullptr) {
            return;
        }
        for (unsigned int v = 0; v < mesh.mNumVertices && sum.size() < mesh.mNumVertices; ++v) {
            sum.push_back(toVector(from[v]));
        }
        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            sum[v] = sum[v] + (toVector(to[v]) - toVector(from[v])) * share;
        }
    };
    for (unsigned int t = 0; t < mesh.mNumAnimMeshes; ++t) {
        aiAnimMesh const& target = *mesh.mAnimMeshes[t];
        bool const isSeen = std::isfinite(shares[t]) && shares[t] != 0;
        if (isSeen && target.mNumVertices == mesh.mNumVertices) {
            add(mesh.mVertices, target.mVertices, shares[t], shape.places);
            add(mesh.mNormals, target.mNormals, shares[t], shape.normals);
        }
    }
    return shape;
}

std::vector<MeshAnimation> animationsOf(aiScene const& scene) {
    std::vector<MeshAnimation> animations;
    for (unsigned int i = 0; i < scene.mNumAnimations; ++i) {
        aiAnimation const& animation = *scene.mAnimations[i];
        animations.push_back({animation.mName.C_Str(), durationOf(animation)});
    }
    return animations;
}

}  // namespace vellum::viewport
