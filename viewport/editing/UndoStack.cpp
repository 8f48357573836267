#include "viewport/editing/UndoStack.h"

#include <utility>

namespace vellum::viewport {

void UndoStack::push(TransformStep step) {
    if (step.before == step.after) {
        return;
    }
    steps.resize(done);
    steps.push_back(std::move(step));
    if (steps.size() > LIMIT) {
        steps.pop_front();
    }
    done = steps.size();
}

std::optional<TransformStep> UndoStack::undo() {
    if (done == 0) {
        return std::nullopt;
    }
    --done;
    return steps[done];
}

std::optional<TransformStep> UndoStack::redo() {
    if (done == steps.size()) {
        return std::nullopt;
    }
    ++done;
    return steps[done - 1];
}

void UndoStack::clear() {
    steps.clear();
    done = 0;
}

}  // namespace vellum::viewport
