#pragma once

#include "viewport/text/Fault.h"

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

namespace vellum::viewport {

/// Writes the content of a file. Gives what went wrong, or an empty text; where nothing else is known, errno
/// says it.
using WriteContent = std::function<std::string(std::FILE*)>;

/// Writes a file. It appears under its name complete or not at all: it is written to a temporary file in the
/// same folder, which is then renamed and, on a failure, removed. An existing file is replaced, but only one
/// that the user may write; through a symbolic link the file that it points to. Interrupts wait until it is
/// done. What cannot be replaced is written straight (see isWrittenStraight()). Folders and block devices are
/// never written. Gives the fault that kept it from being written, or nothing.
std::optional<Fault> writeOutput(std::string const& path, WriteContent const& write);

/// Whether the path means a stream: "-" and /dev/stdout (standard output), /dev/stderr, /dev/fd/N; or else a
/// pipe or a character device that exists.
bool isWrittenStraight(std::string const& path);

/// Whether the path means standard output.
bool isStandardOutput(std::string const& path);

}  // namespace vellum::viewport
