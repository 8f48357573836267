#include "foundation/basic/lifetimes.h"

#if defined(VL_CHECK_LIFETIMES)

#include <mutex>
#include <unordered_set>

namespace vellum::lifetimes {

namespace {

struct Living {
    std::mutex mutex;
    std::unordered_set<void const*> objects;
};

/// Never destroyed: objects with static storage end after everything else.
Living& living() {
    static auto* const all = new Living;
    return *all;
}

}  // namespace

void begin(void const* object) {
    std::lock_guard<std::mutex> const lock(living().mutex);
    living().objects.insert(object);
}

void end(void const* object) {
    std::lock_guard<std::mutex> const lock(living().mutex);
    living().objects.erase(object);
}

bool isAlive(void const* object) {
    std::lock_guard<std::mutex> const lock(living().mutex);
    return living().objects.count(object) != 0;
}

}  // namespace vellum::lifetimes

#endif
