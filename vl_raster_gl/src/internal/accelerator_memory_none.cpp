#include "internal/accelerator_memory.h"

namespace vellum {

// Systems without IOKit have no such statistics; the value of the GL extensions stays.
void readAcceleratorFreeMemory(int& /*kilobytes*/) {}

}  // namespace vellum
