#include "common.h"
int main() {
    Screen const screen(600, 400);
    Torus torus(48, 24);
    Mesh mesh;
    setPositions(mesh, torus.positions);
    setTriangles(mesh, torus.corners);
    prepareMesh(mesh, 6);
    RenderSession session;
    Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
    CameraController controls(session.camera());
    controls.fit(mesh.box());
    auto const frame = [&](char const* file, Mesh_RL_GL& shown, Shading shading, Edges edges) {
        screen.clear();
        Lit const lit(controls.load(screen.viewport));
        drawMesh(shown, {shading, {0.9F, 0.6F, 0.2F, 1}, edges, {1, 1, 0, 1}});
        screen.save(file);
    };
    frame("mesh_smooth.png", renderer, Shading::SMOOTH, Edges::NONE);
    frame("mesh_faceted.png", renderer, Shading::FACETED, Edges::NONE);
    frame("mesh_edges.png", renderer, Shading::SMOOTH, Edges::HARD);
    frame("mesh_shining.png", renderer, Shading::SMOOTH, Edges::SHINING);
    frame("mesh_wire.png", renderer, Shading::WIREFRAME, Edges::NONE);
    frame("mesh_box.png", renderer, Shading::BOX, Edges::NONE);
    torus.positions[6] = {1, 1.5, 0};
    setPositions(mesh, torus.positions);
    frame("mesh_moved.png", renderer, Shading::SMOOTH, Edges::NONE);
    frame("mesh_second.png", session.addMeshRenderer(mesh), Shading::SMOOTH, Edges::NONE);
}
