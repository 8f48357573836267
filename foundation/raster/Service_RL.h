#pragma once

#include "foundation/export.h"

namespace vellum {

/// The base of the renderers that draw one kind of object.
///
/// It has no data and no operations. It names the type of the drawn objects (`Object`) and lets an
/// application store and delete all renderers of one kind through a common base. A renderer receives its
/// object once or with every drawing, and never owns it.
template <class T>
class VL_FOUNDATION_EXPORT Service_RL {
public:
    using Object = T;  ///< Type of the drawn objects.

    virtual ~Service_RL() = default;

protected:
    Service_RL() = default;
    Service_RL(Service_RL const&) = default;
    Service_RL& operator=(Service_RL const&) = default;
};

}  // namespace vellum
