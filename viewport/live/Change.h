#pragma once

#include "viewport/content/Options.h"

namespace vellum::viewport {

/// How much must be done again after options have changed. Each step includes those before it.
enum class Change {
    NOTHING,
    CAMERA,  ///< the same drawing from elsewhere
    LOOK,    ///< the same scene, drawn otherwise
    SUBJECT,  ///< the same contents of the files, prepared otherwise: other particles, colors of values, an effect
    FRAME,  ///< another frame of the same files
    FILES   ///< other files, or read otherwise
};

/// What separates two sets of options; of their pictures only the first one is compared.
Change changeBetween(Options const& before, Options const& after);

}  // namespace vellum::viewport
