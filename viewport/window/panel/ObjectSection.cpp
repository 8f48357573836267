#include "viewport/window/panel/sections.h"

#include <cmath>

namespace vellum::viewport {

namespace {

/// Three numbers that are typed or dragged.
bool triple(char const* label, Vector3<double>& values, double speed, char const* what) {
    bool const isChanged = ImGui::DragScalarN(label, ImGuiDataType_Double, &values.x, 3,
                                              static_cast<float>(speed), nullptr, nullptr, "%.4g");
    hint(what);
    return isChanged;
}

}  // namespace

void ObjectSection::draw(PanelContext& context) {
    Workspace& workspace = context.workspace;
    if (workspace.scene() == nullptr || objectCount(workspace.scene()->scene()) == 0 ||
        !sectionHeader("Object", false)) {
        return;
    }
    ImGui::PushID("object");
    Scene const& scene = workspace.scene()->scene();
    std::optional<std::size_t> const chosen = workspace.selected();
    if (ImGui::BeginCombo("Selected", chosen ? objectName(scene, *chosen).c_str() : "none")) {
        if (ImGui::Selectable("none", !chosen)) {
            workspace.select(std::nullopt);
        }
        for (std::size_t i = 0; i < objectCount(scene); ++i) {
            ImGui::PushID(static_cast<int>(i));
            if (ImGui::Selectable(objectName(scene, i).c_str(), chosen == i)) {
                workspace.select(i);
            }
            ImGui::PopID();
        }
        ImGui::EndCombo();
    } else {
        hint("The object that the gizmo is over");
    }
    if (workspace.selected()) {
        std::size_t const object = *workspace.selected();
        ObjectTransform transform = held.value_or(workspace.transform(object));
        Box3<double> const& box = objectBox(scene, object);
        double const size = length(box.max - box.min) / scene.unitsPerFileUnit();
        bool isChanged =
            triple("Move", transform.translation, size / 500, "--transform: in units of the files");
        bool isHeld = ImGui::IsItemActive();
        Vector3<double> degrees = transform.rotation.toDegrees();
        if (triple("Rotate", degrees, 0.5, "--transform: degrees about x, then y, then z")) {
            transform.rotation = Rotation::ofDegrees(degrees);
            isChanged = true;
        }
        isHeld = isHeld || ImGui::IsItemActive();
        isChanged =
            triple("Scale", transform.scale, 0.01, "--transform: factors along the object's own axes") ||
            isChanged;
        isHeld = isHeld || ImGui::IsItemActive();
        if (!transform.isValid()) {
            faultLine("numbers must be finite, and no scale 0");
        }
        if (ImGui::Button("Reset")) {
            transform = ObjectTransform();
            isChanged = true;
        }
        hint("Back to where the file has it");
        if (isChanged && isHeld) {
            held = transform;
            if (transform.isValid()) {
                workspace.preview(object, transform);
            }
        }
        // A drag is one step to be undone.
        if (!isHeld && (isChanged || held)) {
            if (transform != workspace.transform(object)) {
                workspace.setTransform(object, transform, "transform " + objectName(scene, object));
            }
            held.reset();
        }
        context.options.transforms = workspace.options().transforms;
        ImGui::SameLine();
    } else {
        held.reset();
    }
    ImGui::BeginDisabled(!workspace.canUndo());
    if (ImGui::Button("Undo")) {
        workspace.undo();
    }
    ImGui::EndDisabled();
    hint("Ctrl+Z: " + workspace.undoLabel());
    ImGui::SameLine();
    ImGui::BeginDisabled(!workspace.canRedo());
    if (ImGui::Button("Redo")) {
        workspace.redo();
    }
    ImGui::EndDisabled();
    hint("Ctrl+Shift+Z: " + workspace.redoLabel());
    context.options.transforms = workspace.options().transforms;
    ImGui::PopID();
}

}  // namespace vellum::viewport
