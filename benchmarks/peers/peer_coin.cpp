// Coin, as its user writes it: an SoSceneManager that renders a separator with coordinates and one shape.

#include "Peer.h"

#include <Inventor/SbViewportRegion.h>
#include <Inventor/SoDB.h>
#include <Inventor/SoInteraction.h>
#include <Inventor/SoSceneManager.h>
#include <Inventor/nodekits/SoNodeKit.h>
#include <Inventor/nodes/SoCoordinate3.h>
#include <Inventor/nodes/SoDirectionalLight.h>
#include <Inventor/nodes/SoIndexedFaceSet.h>
#include <Inventor/nodes/SoLightModel.h>
#include <Inventor/nodes/SoMaterialBinding.h>
#include <Inventor/nodes/SoNormal.h>
#include <Inventor/nodes/SoNormalBinding.h>
#include <Inventor/nodes/SoPackedColor.h>
#include <Inventor/nodes/SoPerspectiveCamera.h>
#include <Inventor/nodes/SoPointSet.h>
#include <Inventor/nodes/SoSeparator.h>
#include <Inventor/nodes/SoShapeHints.h>

#include <cmath>
#include <cstdint>

#include <GL/gl.h>

namespace vellum::benchmarks {
namespace {

/// Nothing of Coin may be constructed before.
bool start() {
    SoDB::init();
    SoNodeKit::init();
    SoInteraction::init();
    return true;
}

void setVectors(SoMFVec3f& field, std::vector<float> const& numbers) {
    field.setValues(0, static_cast<int>(numbers.size() / 3),
                    reinterpret_cast<float const(*)[3]>(numbers.data()));
}

class CoinPeer : public Peer {
public:
    explicit CoinPeer(std::vector<float> const& positions) {
        root = new SoSeparator;
        auto* const camera = new SoPerspectiveCamera;
        camera->position = SbVec3f(EYE[0], EYE[1], EYE[2]);
        camera->pointAt(SbVec3f(0, 0, 0), SbVec3f(0, 0, 1));
        camera->heightAngle = static_cast<float>(FIELD_DEGREES * M_PI / 180);
        camera->nearDistance = static_cast<float>(NEAR_PLANE);
        camera->farDistance = static_cast<float>(FAR_PLANE);
        root->addChild(camera);
        root->addChild(new SoDirectionalLight);
        coordinates = new SoCoordinate3;
        setVectors(coordinates->point, positions);
        manager.setWindowSize(SbVec2s(PEER_SIDE, PEER_SIDE));
        manager.setViewportRegion(SbViewportRegion(PEER_SIDE, PEER_SIDE));
        manager.setBackgroundColor(SbColor(0, 0, 0));
    }
    /// Call it once, with all nodes in place.
    void show() { manager.setSceneGraph(root); }

    void move(float time) override {
        // Without notification; markMoved() touches the field.
        coordinates->point.enableNotify(false);
        SbVec3f* const p = coordinates->point.startEditing();
        for (int i = 0; i < coordinates->point.getNum(); ++i) {
            p[i][2] += 0.01F * std::sin(time);
        }
        coordinates->point.finishEditing();
        coordinates->point.enableNotify(true);
    }
    void markMoved() override {
        coordinates->point.touch();
        if (normals != nullptr) {
            normals->vector.touch();
        }
    }
    void draw() override {
        glEnable(GL_DEPTH_TEST);
        manager.render();
    }

    bool isStarted = start();
    SoSceneManager manager;
    SoSeparator* root = nullptr;  // the manager's
    SoCoordinate3* coordinates = nullptr;
    SoNormal* normals = nullptr;
};

}  // namespace

std::unique_ptr<Peer> makePeer(PlainPoints const& points) {
    auto peer = std::make_unique<CoinPeer>(points.positions);
    auto* const light = new SoLightModel;
    light->model = SoLightModel::BASE_COLOR;
    auto* const colors = new SoPackedColor;
    colors->orderedRGBA.setNum(static_cast<int>(points.count()));
    std::uint32_t* const packed = colors->orderedRGBA.startEditing();
    for (std::size_t i = 0; i < points.count(); ++i) {
        auto const level = [&](std::size_t k) {
            return static_cast<std::uint32_t>(127 + 127 * points.velocities[i * 3 + k]);
        };
        packed[i] = level(0) << 24U | level(1) << 16U | level(2) << 8U | 255U;
    }
    colors->orderedRGBA.finishEditing();
    auto* const binding = new SoMaterialBinding;
    binding->value = SoMaterialBinding::PER_VERTEX;
    for (SoNode* const node :
         {static_cast<SoNode*>(light), static_cast<SoNode*>(colors), static_cast<SoNode*>(binding),
          static_cast<SoNode*>(peer->coordinates), static_cast<SoNode*>(new SoPointSet)}) {
        peer->root->addChild(node);
    }
    peer->show();
    return peer;
}

std::unique_ptr<Peer> makePeer(PlainSurface const& surface) {
    auto peer = std::make_unique<CoinPeer>(surface.positions);
    peer->normals = new SoNormal;
    setVectors(peer->normals->vector, surface.normals);
    auto* const binding = new SoNormalBinding;
    binding->value = SoNormalBinding::PER_VERTEX_INDEXED;
    auto* const hints = new SoShapeHints;
    hints->vertexOrdering =
        SoShapeHints::COUNTERCLOCKWISE;  // with an unknown type of shape: both sides are lit
    auto* const faces = new SoIndexedFaceSet;
    faces->coordIndex.setNum(static_cast<int>(surface.triangleCount() * 4));
    std::int32_t* index = faces->coordIndex.startEditing();
    for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            *index++ = static_cast<std::int32_t>(surface.corners[i + corner]);
        }
        *index++ = -1;
    }
    faces->coordIndex.finishEditing();
    for (SoNode* const node :
         {static_cast<SoNode*>(hints), static_cast<SoNode*>(peer->coordinates),
          static_cast<SoNode*>(peer->normals), static_cast<SoNode*>(binding), static_cast<SoNode*>(faces)}) {
        peer->root->addChild(node);
    }
    peer->show();
    return peer;
}

}  // namespace vellum::benchmarks
