// VTK, as its user writes it: vtkPolyData in a vtkOpenGLPolyDataMapper, drawn by a
// vtkGenericOpenGLRenderWindow into the context that is current.

#include "Peer.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkGenericOpenGLRenderWindow.h>
#include <vtkIdTypeArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkUnsignedCharArray.h>
#include <vtk_glew.h>

#include <cmath>
#include <cstring>

namespace vellum::benchmarks {
namespace {

class VtkPeer : public Peer {
public:
    explicit VtkPeer(std::vector<float> const& positions) {
        places->SetDataTypeToFloat();
        places->SetNumberOfPoints(static_cast<vtkIdType>(positions.size() / 3));
        std::memcpy(places->GetVoidPointer(0), positions.data(), positions.size() * sizeof(float));
        data->SetPoints(places);
        mapper->SetInputData(data);
        actor->SetMapper(mapper);
        renderer->AddActor(actor);
        renderer->SetBackground(0, 0, 0);
        vtkCamera* const camera = renderer->GetActiveCamera();
        camera->SetPosition(double{EYE[0]}, double{EYE[1]}, double{EYE[2]});
        camera->SetFocalPoint(0, 0, 0);
        camera->SetViewUp(0, 0, 1);
        camera->SetViewAngle(FIELD_DEGREES);
        camera->SetClippingRange(NEAR_PLANE, FAR_PLANE);
        window->SetSize(PEER_SIDE, PEER_SIDE);
        window->SetMultiSamples(0);
        window->SetReadyForRendering(true);
        window->SetIsCurrent(true);
        window->SetSupportsOpenGL(true);
        window->InitializeFromCurrentContext();
        window->SetFrameBlitModeToBlitToCurrent();
        window->AddRenderer(renderer);
    }
    void move(float time) override {
        auto* const p = static_cast<float*>(places->GetVoidPointer(0));
        vtkIdType const count = places->GetNumberOfPoints();
        for (vtkIdType i = 0; i < count; ++i) {
            p[i * 3 + 2] += 0.01F * std::sin(time);
        }
    }
    void markMoved() override {
        places->Modified();
        if (vtkDataArray* const normals = data->GetPointData()->GetNormals()) {
            normals->Modified();
        }
        data->Modified();
    }
    void draw() override { window->Render(); }

    vtkNew<vtkPoints> places;
    vtkNew<vtkPolyData> data;
    vtkNew<vtkPolyDataMapper> mapper;
    vtkNew<vtkActor> actor;
    vtkNew<vtkRenderer> renderer;
    vtkNew<vtkGenericOpenGLRenderWindow> window;
};

/// Cells of equal size over consecutive indices.
void fillCells(vtkCellArray* cells, vtkIdType count, vtkIdType size, unsigned int const* indices) {
    vtkNew<vtkIdTypeArray> offsets;
    vtkNew<vtkIdTypeArray> connections;
    offsets->SetNumberOfValues(count + 1);
    connections->SetNumberOfValues(count * size);
    for (vtkIdType cell = 0; cell <= count; ++cell) {
        offsets->SetValue(cell, cell * size);
    }
    for (vtkIdType i = 0; i < count * size; ++i) {
        connections->SetValue(i, indices == nullptr ? i : static_cast<vtkIdType>(indices[i]));
    }
    cells->SetData(offsets, connections);
}

}  // namespace

std::unique_ptr<Peer> makePeer(PlainPoints const& points) {
    auto peer = std::make_unique<VtkPeer>(points.positions);
    vtkNew<vtkCellArray> cells;
    fillCells(cells, static_cast<vtkIdType>(points.count()), 1, nullptr);
    peer->data->SetVerts(cells);
    vtkNew<vtkUnsignedCharArray> colors;
    colors->SetNumberOfComponents(3);
    colors->SetNumberOfTuples(static_cast<vtkIdType>(points.count()));
    for (std::size_t i = 0; i < points.velocities.size(); ++i) {
        colors->SetValue(static_cast<vtkIdType>(i),
                         static_cast<unsigned char>(127 + 127 * points.velocities[i]));
    }
    peer->data->GetPointData()->SetScalars(colors);
    peer->actor->GetProperty()->SetPointSize(1);
    peer->actor->GetProperty()->LightingOff();
    return peer;
}

std::unique_ptr<Peer> makePeer(PlainSurface const& surface) {
    auto peer = std::make_unique<VtkPeer>(surface.positions);
    vtkNew<vtkCellArray> cells;
    fillCells(cells, static_cast<vtkIdType>(surface.triangleCount()), 3, surface.corners.data());
    peer->data->SetPolys(cells);
    vtkNew<vtkFloatArray> normals;
    normals->SetNumberOfComponents(3);
    normals->SetNumberOfTuples(static_cast<vtkIdType>(surface.vertexCount()));
    std::memcpy(normals->GetVoidPointer(0), surface.normals.data(), surface.normals.size() * sizeof(float));
    peer->data->GetPointData()->SetNormals(normals);
    return peer;
}

}  // namespace vellum::benchmarks
