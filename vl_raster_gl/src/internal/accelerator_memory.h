#pragma once

namespace vellum {

/// Replaces `kilobytes` by the free video memory that the operating system's accelerator statistics tell,
/// where it keeps any; leaves it alone otherwise. Where several accelerators report, the last one counts.
void readAcceleratorFreeMemory(int& kilobytes);

}  // namespace vellum
