#include "viewport/program/InfoDocument.h"

#include "viewport/files/mesh/Textures.h"

#include <cstdint>
#include <map>
#include <optional>

#include <nlohmann/json.hpp>

namespace vellum::viewport {

namespace {

using Json = nlohmann::json;

Json toJson(Vector3<double> const& p) {
    return Json::array({p.x, p.y, p.z});
}

Json toJson(Box3<double> const& box) {
    return {{"from", toJson(box.min)}, {"to", toJson(box.max)}};
}

Json orNull(std::string const& text) {
    return text.empty() ? Json() : Json(text);
}

Json toJson(Material const& material, std::string const& meshPath) {
    Json texture;
    if (!material.texture.empty() || !material.textureBytes.empty()) {
        bool const isEmbedded = !material.textureBytes.empty();
        std::optional<std::string> const file =
            isEmbedded ? std::nullopt : findTexture(meshPath, material.texture);
        texture = {{"name", orNull(material.texture)},
                   {"embedded", isEmbedded},
                   {"found", isEmbedded || file.has_value()},
                   {"file", file ? Json(*file) : Json()}};
    }
    Color4<float> const& tint = material.tint;
    return {{"name", orNull(material.name)},
            {"color", Json::array({tint.r, tint.g, tint.b, tint.a})},
            {"opacity", material.opacity},
            {"texture", texture},
            {"opacityTexture", orNull(material.opacityTexture)}};
}

Json toJson(ParticleChannel const& channel) {
    ValueFacts const facts = factsOf(channel.values.data(), channel.values.size());
    bool const hasValues = facts.finiteCount > 0;
    return {{"name", channel.name},
            {"unit", orNull(channel.unit)},
            {"minimum", hasValues ? Json(facts.minimum) : Json()},
            {"maximum", hasValues ? Json(facts.maximum) : Json()},
            {"mean", hasValues ? Json(facts.mean) : Json()},
            {"undefined", facts.undefinedCount},
            {"infinite", facts.infiniteCount}};
}

Json toJson(MeshScalar const& scalar) {
    ValueFacts const facts = factsOf(scalar.values.data(), scalar.values.size());
    bool const hasValues = facts.finiteCount > 0;
    return {{"name", scalar.name},
            {"unit", orNull(scalar.unit)},
            {"minimum", hasValues ? Json(facts.minimum) : Json()},
            {"maximum", hasValues ? Json(facts.maximum) : Json()},
            {"mean", hasValues ? Json(facts.mean) : Json()},
            {"undefined", facts.undefinedCount},
            {"infinite", facts.infiniteCount}};
}

Json toJson(ParticleLabels const& labels) {
    return {{"name", labels.name}, {"words", labels.words}, {"elements", labels.areElements}};
}

/// As pairs, since numbers are no keys of an object.
Json toJson(std::map<std::int64_t, std::string> const& typeNames) {
    Json types = Json::array();
    for (auto const& [number, name] : typeNames) {
        types.push_back({{"type", number}, {"name", name}});
    }
    return types;
}

Json toJson(double number) {
    return number;
}

Json toJson(std::string const& word) {
    return word;
}

Json toJson(std::vector<PickedValue> const& values) {
    Json list = Json::array();
    for (PickedValue const& value : values) {
        list.push_back({{"name", value.name},
                        {"unit", orNull(value.unit)},
                        {"value", std::visit([](auto const& each) { return toJson(each); }, value.value)},
                        {"meaning", orNull(value.meaning)}});
    }
    return list;
}

Json toJson(PickedParticle const& particle) {
    return {{"index", particle.index},
            {"id", particle.id ? Json(*particle.id) : Json()},
            {"position", toJson(particle.position)},
            {"shownAt", toJson(particle.shownAt)},
            {"values", toJson(particle.values)}};
}

Json toJson(PickedElement const& element) {
    char const* const kinds[] = {"triangle", "line", "point"};
    return {{"kind", kinds[static_cast<int>(element.kind)]},
            {"index", element.index},
            {"position", toJson(element.position)},
            {"vertex", element.vertex},
            {"vertexPosition", toJson(element.vertexPosition)},
            {"material", orNull(element.material)},
            {"values", toJson(element.values)}};
}

Json timesOf(LoadedFrame const& loaded) {
    Json times = Json::array();
    for (std::optional<double> const& time : loaded.times) {
        times.push_back(time ? Json(*time) : Json());
    }
    return times;
}

}  // namespace

InfoDocument::InfoDocument()
    : document(std::make_unique<Json>(
          Json{{"files", Json::array()}, {"pictures", Json::array()}, {"driver", nullptr}})) {}

InfoDocument::~InfoDocument() = default;
InfoDocument::InfoDocument(InfoDocument&& other) noexcept = default;
InfoDocument& InfoDocument::operator=(InfoDocument&& other) noexcept = default;

void InfoDocument::addMesh(std::string const& path, MeshData const& mesh) {
    Json materials = Json::array();
    for (Material const& material : mesh.materials) {
        materials.push_back(toJson(material, path));
    }
    Json scalars = Json::array();
    for (MeshScalar const& scalar : mesh.scalars) {
        scalars.push_back(toJson(scalar));
    }
    Json animations = Json::array();
    for (MeshAnimation const& animation : mesh.animations) {
        animations.push_back({{"name", orNull(animation.name)}, {"seconds", animation.duration}});
    }
    (*document)["files"].push_back({{"file", path},
                                    {"kind", "mesh"},
                                    {"up", wordOf(mesh.up)},
                                    {"lines", mesh.lines.size()},
                                    {"points", mesh.points.size()},
                                    {"scalars", scalars},
                                    {"animations", animations},
                                    {"notes", mesh.notes},
                                    {"triangles", mesh.triangles.size()},
                                    {"vertices", mesh.positions.size()},
                                    {"parts", mesh.partCount},
                                    {"missingNormals", mesh.missingNormalCount()},
                                    {"vertexColors", mesh.hasVertexColors},
                                    {"textureCoordinates", !mesh.textureCoordinates.empty()},
                                    {"bounds", toJson(mesh.box())},
                                    {"materials", materials}});
}

void InfoDocument::addParticles(LoadedFrame const& loaded) {
    ParticleFrame const& frame = loaded.frame;
    Json channels = Json::array();
    for (ParticleChannel const& channel : frame.channels) {
        channels.push_back(toJson(channel));
    }
    Json labels = Json::array();
    for (ParticleLabels const& each : frame.labels) {
        labels.push_back(toJson(each));
    }
    Json vectors = Json::array();
    for (ParticleVector const& vector : frame.vectors) {
        vectors.push_back(vector.name);
    }
    Json box;
    if (frame.box) {
        box = {{"origin", toJson(frame.box->origin)},
               {"edges",
                {toJson(frame.box->edges[0]), toJson(frame.box->edges[1]), toJson(frame.box->edges[2])}},
               {"periodic", frame.box->isPeriodic}};
    }
    std::optional<Box3<double>> const bounds = boundsOf(frame);
    (*document)["files"].push_back({{"file", frame.file},
                                    {"kind", "particles"},
                                    {"frames", loaded.count},
                                    {"frame", loaded.number},
                                    {"timestep", frame.timestep},
                                    {"time", frame.time ? Json(*frame.time) : Json()},
                                    {"timesteps", loaded.timesteps},
                                    {"times", timesOf(loaded)},
                                    {"up", "z"},
                                    {"labels", labels},
                                    {"vectors", vectors},
                                    {"types", toJson(frame.typeNames)},
                                    {"colors", frame.colors.has_value()},
                                    {"sizes", frame.sizes.has_value()},
                                    {"particles", frame.positions.size()},
                                    {"velocities", frame.velocity() != nullptr},
                                    {"channels", channels},
                                    {"box", box},
                                    {"bounds", bounds ? toJson(*bounds) : Json()},
                                    {"notes", frame.notes},
                                    {"warning", orNull(loaded.warning)}});
}

void InfoDocument::addPicture(std::string const& out, int width, int height, std::string const& camera) {
    (*document)["pictures"].push_back(
        {{"file", orNull(out)}, {"width", width}, {"height", height}, {"camera", orNull(camera)}});
}

void InfoDocument::setPick(std::size_t picture, std::optional<Picked> const& picked) {
    Json pick;
    if (picked) {
        pick = {{"name", picked->name},
                {"owner", picked->owner},
                {"particle", picked->particle ? toJson(*picked->particle) : Json()},
                {"element", picked->element ? toJson(*picked->element) : Json()}};
    }
    (*document)["pictures"].at(picture)["pick"] = pick;
}

void InfoDocument::setDriver(DriverFacts const& driver) {
    Json extensions = Json::object();
    for (auto const& [name, isSupported] : driver.extensions) {
        extensions[name] = isSupported;
    }
    auto const memory = [](unsigned int kilobytes) { return kilobytes == 0 ? Json() : Json(kilobytes); };
    (*document)["driver"] = {{"version", driver.version},
                             {"shadingLanguage", driver.shadingLanguage},
                             {"renderer", driver.renderer},
                             {"vendor", driver.vendor},
                             {"programs", driver.hasPrograms},
                             {"largestTexture", driver.largestTexture},
                             {"samplesPerPixel", driver.samples},
                             {"memoryKilobytes", memory(driver.memory)},
                             {"freeMemoryKilobytes", memory(driver.freeMemory)},
                             {"takenToBeFreeKilobytes", memory(driver.takenToBeFree)},
                             {"extensions", extensions}};
}

std::string InfoDocument::toText() const {
    // Names of files and columns may be no UTF-8.
    return document->dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vellum::viewport
