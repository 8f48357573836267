// OpenSceneGraph, as its user writes it: one osg::Geometry with vertex buffers, and the embedded window of
// osgViewer.

#include "Peer.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/LightModel>
#include <osg/Point>
#include <osgViewer/Viewer>

#include <cmath>

namespace vellum::benchmarks {
namespace {

osg::ref_ptr<osg::Vec3Array> arrayOf(std::vector<float> const& numbers) {
    osg::ref_ptr<osg::Vec3Array> const array = new osg::Vec3Array;
    array->reserve(numbers.size() / 3);
    for (std::size_t i = 0; i < numbers.size(); i += 3) {
        array->push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    }
    return array;
}

class OsgPeer : public Peer {
public:
    explicit OsgPeer(std::vector<float> const& numbers) : positions(arrayOf(numbers)) {
        geometry->setUseDisplayList(false);
        geometry->setUseVertexBufferObjects(true);
        geometry->setDataVariance(osg::Object::DYNAMIC);
        geometry->setVertexArray(positions);
    }
    /// Call it once, with all arrays in place.
    void show() {
        osg::ref_ptr<osg::Geode> const geode = new osg::Geode;
        geode->addDrawable(geometry);
        viewer.setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
        viewer.setUpViewerAsEmbeddedInWindow(0, 0, PEER_SIDE, PEER_SIDE);
        viewer.setSceneData(geode);
        osg::Camera& camera = *viewer.getCamera();
        camera.setClearColor({0, 0, 0, 1});
        camera.setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        camera.setProjectionMatrixAsPerspective(FIELD_DEGREES, 1, NEAR_PLANE, FAR_PLANE);
        camera.setViewMatrixAsLookAt({EYE[0], EYE[1], EYE[2]}, {0, 0, 0}, {0, 0, 1});
        viewer.realize();
    }
    void move(float time) override {
        for (osg::Vec3& p : *positions) {
            p.z() += 0.01F * std::sin(time);
        }
    }
    void markMoved() override {
        positions->dirty();
        if (osg::Array* const normals = geometry->getNormalArray()) {
            normals->dirty();
        }
        geometry->dirtyBound();
    }
    void draw() override { viewer.frame(); }

    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> positions;
    osgViewer::Viewer viewer;
};

}  // namespace

std::unique_ptr<Peer> makePeer(PlainPoints const& points) {
    auto peer = std::make_unique<OsgPeer>(points.positions);
    osg::ref_ptr<osg::Vec4ubArray> const colors = new osg::Vec4ubArray;
    colors->reserve(points.count());
    for (std::size_t i = 0; i < points.velocities.size(); i += 3) {
        auto const level = [&](std::size_t k) {
            return static_cast<unsigned char>(127 + 127 * points.velocities[i + k]);
        };
        colors->push_back({level(0), level(1), level(2), 255});
    }
    colors->setNormalize(true);
    peer->geometry->setColorArray(colors, osg::Array::BIND_PER_VERTEX);
    peer->geometry->addPrimitiveSet(new osg::DrawArrays(GL_POINTS, 0, static_cast<int>(points.count())));
    peer->geometry->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    peer->show();
    return peer;
}

std::unique_ptr<Peer> makePeer(PlainSurface const& surface) {
    auto peer = std::make_unique<OsgPeer>(surface.positions);
    peer->geometry->setNormalArray(arrayOf(surface.normals), osg::Array::BIND_PER_VERTEX);
    peer->geometry->addPrimitiveSet(new osg::DrawElementsUInt(
        GL_TRIANGLES, static_cast<unsigned int>(surface.corners.size()), surface.corners.data()));
    osg::ref_ptr<osg::LightModel> const model = new osg::LightModel;
    model->setTwoSided(true);
    peer->geometry->getOrCreateStateSet()->setAttributeAndModes(model);
    peer->show();
    return peer;
}

}  // namespace vellum::benchmarks
