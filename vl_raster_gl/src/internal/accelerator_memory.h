#pragma once

namespace vellum {

/// Replaces `kilobytes` by the free video memory of the operating system's accelerator statistics, if there
/// are any; otherwise does not change it. If several accelerators report, the last one counts.
void readAcceleratorFreeMemory(int& kilobytes);

}  // namespace vellum
