#include "viewport/files/mesh/gltf_weights.h"

#include "viewport/files/common/binary_numbers.h"

#include <cstddef>
#include <cstdint>

#include <nlohmann/json.hpp>

namespace vellum::viewport {

namespace {

using Json = nlohmann::json;

/// The text of a GLB file is its first chunk.
std::string_view textOf(std::string_view bytes) {
    constexpr std::string_view SIGNATURE = "glTF";
    constexpr std::size_t LENGTH = 12;
    constexpr std::size_t TEXT = 20;
    if (bytes.substr(0, SIGNATURE.size()) != SIGNATURE || bytes.size() < TEXT) {
        return bytes;
    }
    return bytes.substr(TEXT, binaryNumber<std::uint32_t>(bytes.data() + LENGTH, false));
}

std::string nameOf(Json const& node, std::size_t index) {
    auto const name = node.find("name");
    bool const isNamed =
        name != node.end() && name->is_string() && !name->get_ref<std::string const&>().empty();
    return isNamed ? name->get<std::string>() : "nodes[" + std::to_string(index) + "]";
}

}  // namespace

NodeWeights gltfNodeWeights(std::string_view bytes) {
    std::string_view const text = textOf(bytes);
    Json const file = Json::parse(text.begin(), text.end(), nullptr, false);
    NodeWeights all;
    auto const nodes = file.is_object() ? file.find("nodes") : file.end();
    if (!file.is_object() || nodes == file.end() || !nodes->is_array()) {
        return all;
    }
    for (std::size_t i = 0; i < nodes->size(); ++i) {
        Json const& node = (*nodes)[i];
        auto const weights = node.is_object() ? node.find("weights") : node.end();
        if (!node.is_object() || weights == node.end() || !weights->is_array()) {
            continue;
        }
        std::vector<double>& own = all[nameOf(node, i)];
        own.clear();
        for (Json const& weight : *weights) {
            own.push_back(weight.is_number() ? weight.get<double>() : 0.0);
        }
    }
    return all;
}

}  // namespace vellum::viewport
