#include "viewport/program/ConsoleObserver.h"

#include "viewport/program/Console.h"
#include "viewport/program/Description.h"

#include <iostream>
#include <utility>

#include <unistd.h>

namespace vellum::viewport {

ConsoleObserver::ConsoleObserver(Options const& options, std::function<void()> whenFileIsOpen)
    : options(options), whenFileIsOpen(std::move(whenFileIsOpen)) {}

void ConsoleObserver::note(Fault const& what) {
    bar.reset();
    viewport::note(options, what);
}

void ConsoleObserver::progress(std::string const& file, std::uint64_t done, std::uint64_t all) {
    if (!bar || file != shownFile) {
        // The line of the file before is erased first.
        bar.reset();
        bar.emplace(std::cerr, isatty(STDERR_FILENO) != 0 && !options.isQuiet, file);
        shownFile = file;
        whenFileIsOpen();
    }
    if (all > 0) {
        bar->show(done, all);
    }
}

void ConsoleObserver::meshRead(std::string const& file, MeshData const& mesh) {
    bar.reset();
    if (options.info == InfoForm::TEXT) {
        texts += describeMesh(file, mesh);
    } else if (options.info == InfoForm::JSON) {
        document.addMesh(file, mesh);
    }
}

void ConsoleObserver::particlesRead(LoadedFrame const& loaded) {
    bar.reset();
    if (options.info == InfoForm::TEXT) {
        texts += describeParticles(loaded);
    } else if (options.info == InfoForm::JSON) {
        document.addParticles(loaded);
    }
}

}  // namespace vellum::viewport
