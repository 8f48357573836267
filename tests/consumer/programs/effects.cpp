#include "common.h"
int main() {
    Screen const screen(600, 400);
    Torus const torus(96, 48);
    Mesh mesh;
    setPositions(mesh, torus.positions);
    setTriangles(mesh, torus.corners);
    setTextureCoordinates(mesh, "uv", torus.coordinates);
    prepareMesh(mesh);
    RenderSession session;
    Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
    CameraController controls(session.camera());
    controls.fit(mesh.box());
    auto const frame = [&](char const* file, Mesh_RL_Shader& effect) {
        screen.clear();
        View const view = controls.load(screen.viewport);
        {
            Lit const lit(view);
            session.layer().setColor({0.8F, 0.3F, 0.2F, 1});
            session.layer().renderBox3({-0.5F, -0.7F, -0.5F}, 0.5F);
            session.layer().renderSphere({0.6F, 0, 0.3F}, 0.3F);
        }
        setEffectLights(effect, {}, view);
        setEffectMaterial(0.6F, 40);
        MeshStyle style;
        style.textureChannel = "uv";
        drawWith(effect, [&] { drawMesh(renderer, style); });
        screen.save(file);
    };
    writeImages();
    auto& glass = session.add<Glass_shader>();
    glass.setBaseColor(0.6F, 0.8F, 0.9F, 1);
    frame("effects_glass_alone.png", glass);
    glass.setEnvironmentTexture("room.png");
    frame("effects_glass.png", glass);
    auto& wax = session.add<SSScattering_shader>();
    wax.setBaseColor(0.9F, 0.7F, 0.5F, 1);
    wax.setMaterialThickness(0.6F);
    frame("effects_wax.png", wax);
    auto& bumps = session.add<Displacement_shader>();
    bumps.setDisplacementTexture(VL_String("bumps.png"));
    bumps.setScale(0, 20, 0);
    bumps.setBaseColor(0.9F, 0.8F, 0.4F, 1);
    frame("effects_bumps.png", bumps);
    bumps.tesselate(true);
    bumps.setDepth(3);
    frame("effects_fine_bumps.png", bumps);
    auto& user = session.add<UserEffect>(session.layer());
    user.setFloatVar(5, 0);
    user.setBaseColor({0.2F, 0.5F, 0.3F, 1});
    for (std::string const fragment : {"good.frag", "bad.frag", "missing.frag", "unlinkable.frag"}) {
        for (StageReport const& report : user.load({STAGES "/good.vert", STAGES "/" + fragment, ""})) {
            std::printf("%s", toText(report).c_str());
        }
        frame(("effects_" + fragment + ".png").c_str(), user);
    }
}
