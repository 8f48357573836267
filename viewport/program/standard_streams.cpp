#include "viewport/program/standard_streams.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace vellum::viewport {

void openStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            // The lowest free descriptor is this one. If it cannot be opened, nothing can.
            static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY));
        }
    }
}

}  // namespace vellum::viewport
