#include "internal/accelerator_memory.h"

namespace vellum {

// Systems without IOKit keep no such statistics; what the GL extensions tell stands.
void readAcceleratorFreeMemory(int& /*kilobytes*/) {}

}  // namespace vellum
