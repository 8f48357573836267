#include "toolkit/ViewKind.h"

namespace vellum::toolkit {

ScreenAxes screenAxes(ViewKind kind) {
    switch (kind) {
    case ViewKind::BACK:
        return {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    case ViewKind::TOP:
        return {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}};
    case ViewKind::BOTTOM:
        return {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
    case ViewKind::LEFT:
        return {{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}};
    case ViewKind::RIGHT:
        return {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}};
    case ViewKind::FRONT:
    case ViewKind::PERSPECTIVE:
        break;
    }
    return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
}

}  // namespace vellum::toolkit
