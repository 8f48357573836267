#pragma once

#include "foundation/export.h"

namespace vellum {

/// The base of the renderers that draw one kind of object.
///
/// It has no data and no operations of its own: it says which objects a renderer is for (`Object`), and lets
/// an application keep and delete the renderers of one kind alike. Whether a renderer is given its object
/// once or with every drawing is up to the renderer. Objects are never owned.
template <class T>
class VL_FOUNDATION_EXPORT Service_RL {
public:
    using Object = T;  ///< What is drawn.

    virtual ~Service_RL() = default;

protected:
    Service_RL() = default;
    Service_RL(Service_RL const&) = default;
    Service_RL& operator=(Service_RL const&) = default;
};

}  // namespace vellum
