#pragma once

#include "viewport/editing/ObjectTransform.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace vellum::viewport {

/// One change of an object's transform, such as a whole drag.
struct TransformStep {
    std::size_t object = 0;
    std::string label;  ///< what was done, for a menu
    ObjectTransform before;
    ObjectTransform after;
};

/// What was done to the objects of a scene, to be taken back and done again.
///
///     undo.push({object, "Move", before, after});
///     if (std::optional<TransformStep> const step = undo.undo()) { viewer.setTransform(step->object, step->before); }
class UndoStack {
public:
    /// Older steps than these are forgotten.
    static constexpr std::size_t LIMIT = 1000;

    /// Adds what was done. What had been taken back cannot be done again then. A step that changes nothing is
    /// left out.
    void push(TransformStep step);

    /// Takes the last step back: the caller gives the object the transform `before`. Nothing where there is
    /// none.
    std::optional<TransformStep> undo();

    /// Does again what was taken back last: the caller gives the object the transform `after`.
    std::optional<TransformStep> redo();

    /// What undo() or redo() would return next, null where there is none; valid until the next change.
    TransformStep const* nextUndo() const { return done > 0 ? &steps[done - 1] : nullptr; }
    TransformStep const* nextRedo() const { return done < steps.size() ? &steps[done] : nullptr; }

    /// Forgets everything, as for another scene.
    void clear();

private:
    std::deque<TransformStep> steps;
    std::size_t done = 0;  // steps from here on have been taken back
};

}  // namespace vellum::viewport
