#pragma once

#include "toolkit/export.h"

#include <functional>
#include <vector>

namespace vellum::toolkit {

/// A thing at a place of the screen.
struct PickHit {
    unsigned int name;  ///< the one that Core_RL::loadName() gave it
    double depth;       ///< of its nearest point within reach; 0 at the near clipping plane, 1 at the far one
    double farthestDepth;  ///< of its farthest point within reach
};

/// What is within reach of a point of the viewport, the nearest first; each name once. Things at the same
/// depth are in the order of drawing.
///
///     auto const hits = pick(mouseX, mouseY, 3, [&] {
///         layer.loadName(7);
///         layer.renderSphere(center, 1);
///     });
///     if (!hits.empty() && hits.front().name == 7) ...
///
/// `draw` draws the candidates with their names, in GL's selection mode: nothing gets on the screen. The
/// names are initialized, so loadName() may come first; what is drawn before it belongs to no name and is not
/// reported. Every name can be used but 0xFFFFFFFF, which means "no name". Selection knows the shapes that
/// are sent to GL, so particles drawn by an effect are found at their centers, and nothing that a shader
/// moves.
///
/// The projection shows only the surroundings of the point while `draw` runs. It stays so when the render
/// layer's camera loads its matrices, as it does for Core_RL::setZBias(); to load them itself, `draw` calls
/// `VL_Raster->getCamera()`, not a camera that it holds. That camera has the parameters of the layer's own
/// one, and passes its calls on to it.
///
/// `draw` runs again where there are more hits than expected. An exception that it throws is passed on, after
/// everything is restored.
///
/// Nothing is found, and `draw` does not run, where there is no render layer, where a number is not finite or
/// `reach` is not above 0, where the viewport is empty, and where GL selects already (a pick within `draw`)
/// or does not begin to. More than 16 million hits are not found either.
///
/// \param x, y pixels from the left and the top edge of the viewport, as window systems count; 0.5 is the middle of the
///     first pixel.
/// \param reach pixels on each side of the point, above 0.
/// GL: glGetIntegerv(GL_RENDER_MODE), the calls of View::current(); then glSelectBuffer,
/// glRenderMode(GL_SELECT), glGetIntegerv(GL_RENDER_MODE), glInitNames, glPushName, glMatrixMode,
/// glLoadMatrixd, glMatrixMode, those of `draw`, glRenderMode(GL_RENDER), glMatrixMode and glLoadMatrixd x 2.
/// State: both matrices are restored, GL_MODELVIEW selected; the layer's camera is restored unless `draw` has
/// set another.
VL_TOOLKIT_EXPORT std::vector<PickHit> pick(double x, double y, double reach,
                                            std::function<void()> const& draw);

}  // namespace vellum::toolkit
