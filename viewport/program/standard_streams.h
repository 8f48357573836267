#pragma once

namespace vellum::viewport {

/// Opens those of standard input, output and error that are closed, as if they were redirected from and to
/// nothing. Otherwise the next files that are opened get their descriptors: a picture would receive the
/// notes, and the process that imports meshes would lose its pipe. To be called first in main().
void openStandardStreams();

}  // namespace vellum::viewport
