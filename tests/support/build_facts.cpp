#include "tests/support/build_facts.h"

#if defined(__has_feature)
#define VL_HAS_FEATURE(name) __has_feature(name)
#else
#define VL_HAS_FEATURE(name) 0
#endif

bool isAddressSanitized() {
#if defined(__SANITIZE_ADDRESS__) || VL_HAS_FEATURE(address_sanitizer)
    return true;
#else
    return false;
#endif
}

bool isThreadSanitized() {
#if defined(__SANITIZE_THREAD__) || VL_HAS_FEATURE(thread_sanitizer)
    return true;
#else
    return false;
#endif
}

bool areLifetimesChecked() {
#if defined(VL_CHECK_LIFETIMES)
    return true;
#else
    return false;
#endif
}
