#include "toolkit/pick.h"

#include "foundation/raster/Core_RL.h"
#include "internal/misuse.h"
#include "toolkit/View.h"
#include "toolkit/internal/PickCamera.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <unordered_map>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

namespace {

constexpr unsigned int NO_NAME = 0xFFFFFFFF;

// Words of the selection buffer; a record of one name has four.
constexpr std::size_t FIRST_CAPACITY = 4096;
constexpr std::size_t LARGEST_CAPACITY = 1U << 26U;
constexpr std::size_t GROWTH = 4;

GLint renderMode() {
    GLint mode = 0;
    glGetIntegerv(GL_RENDER_MODE, &mode);
    return mode;
}

/// Scales clip space so that the surroundings of a point of the screen fill the viewport.
Matrix4<double> cropAround(Viewport const& viewport, double x, double y, double reach) {
    double const scaleX = viewport.width / (2 * reach);
    double const scaleY = viewport.height / (2 * reach);
    double const u = 2 * x / viewport.width - 1;
    double const v = 1 - 2 * y / viewport.height;
    return {{scaleX, 0, 0, 0, 0, scaleY, 0, 0, 0, 0, 1, 0, -scaleX * u, -scaleY * v, 0, 1}};
}

/// The selection mode while it lives: the names are initialized, and everything shows the crop alone.
class Selection {
public:
    Selection(Core_RL& layer, View const& view, Matrix4<double> const& crop, std::vector<GLuint>& buffer)
        : layer(layer), view(view) {
        glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
        glRenderMode(GL_SELECT);
        // A driver that refuses the buffer goes on drawing to the screen.
        isBegun = renderMode() != GL_RENDER;
        if (!isBegun) {
            return;
        }
        if (Camera_RL* const own = layer.getCamera()) {
            layerCamera = own;
            layer.setCamera(&camera.emplace(*own, crop));
        }
        glInitNames();
        glPushName(NO_NAME);
        Matrix4<double> const projection = crop * view.projection;
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(projection.e);
        glMatrixMode(GL_MODELVIEW);
    }

    ~Selection() { end(); }

    Selection(Selection const&) = delete;
    Selection& operator=(Selection const&) = delete;

    bool hasBegun() const { return isBegun; }

    /// \return the number of records; negative where the buffer is too small for them.
    int end() {
        if (!isBegun) {
            return 0;
        }
        isBegun = false;
        int const records = glRenderMode(GL_RENDER);
        if (camera && layer.getCamera() == &*camera) {
            layer.setCamera(layerCamera);
        }
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(view.projection.e);
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixd(view.modelView.e);
        return records;
    }

private:
    Core_RL& layer;
    View const& view;
    Camera_RL* layerCamera = nullptr;
    std::optional<PickCamera> camera;
    bool isBegun = false;
};

double depthOf(GLuint depth) {
    return static_cast<double>(depth) / static_cast<double>(std::numeric_limits<GLuint>::max());
}

/// A record is the number of names, the nearest and the farthest depth, and the names.
std::vector<PickHit> readRecords(std::vector<GLuint> const& buffer, int count) {
    std::vector<PickHit> hits;
    std::size_t at = 0;
    for (int i = 0; i < count && at + 3 < buffer.size(); ++i) {
        std::size_t const names = buffer[at];
        std::size_t const last = at + 2 + names;
        if (names > 0 && last < buffer.size() && buffer[last] != NO_NAME) {
            hits.push_back({buffer[last], depthOf(buffer[at + 1]), depthOf(buffer[at + 2])});
        }
        at += 3 + names;
    }
    return hits;
}

/// The nearest first. A thing that is drawn in several parts has several records, which become one.
std::vector<PickHit> merged(std::vector<PickHit> const& records) {
    std::vector<PickHit> hits;
    std::unordered_map<unsigned int, std::size_t> places;  // in `hits`, by name
    for (PickHit const& record : records) {
        auto const [place, isNew] = places.try_emplace(record.name, hits.size());
        if (isNew) {
            hits.push_back(record);
        } else {
            PickHit& hit = hits[place->second];
            hit.depth = std::min(hit.depth, record.depth);
            hit.farthestDepth = std::max(hit.farthestDepth, record.farthestDepth);
        }
    }
    std::stable_sort(hits.begin(), hits.end(),
                     [](PickHit const& a, PickHit const& b) { return a.depth < b.depth; });
    return hits;
}

}  // namespace

std::vector<PickHit> pick(double x, double y, double reach, std::function<void()> const& draw) {
    misuse::requireLayer("pick");
    if (VL_Raster == nullptr || !draw || !std::isfinite(x) || !std::isfinite(y) || !std::isfinite(reach) ||
        !(reach > 0)) {
        return {};
    }
    GLint const mode = renderMode();
    if (mode == GL_SELECT || mode == GL_FEEDBACK) {
        return {};
    }
    View const view = View::current();
    if (view.viewport.width < 1 || view.viewport.height < 1) {
        return {};
    }
    Matrix4<double> const crop = cropAround(view.viewport, x, y, reach);
    for (std::size_t capacity = FIRST_CAPACITY; capacity <= LARGEST_CAPACITY; capacity *= GROWTH) {
        std::vector<GLuint> buffer(capacity);
        Selection selection(*VL_Raster, view, crop, buffer);
        if (!selection.hasBegun()) {
            return {};
        }
        draw();
        int const count = selection.end();
        if (count >= 0) {
            return merged(readRecords(buffer, count));
        }
    }
    return {};
}

}  // namespace vellum::toolkit
