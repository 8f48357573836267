#include "internal/misuse.h"

namespace {

struct Probe {
    Probe() {
        vellum::misuse::setContextProbe([] { return true; });
    }
};

Probe const PROBE;

}  // namespace
