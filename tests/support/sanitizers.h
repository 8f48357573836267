#pragma once

/// The sanitizers that a test program is built with, under one name for GCC and Clang: 1 where it runs, else 0.
///
///     if (VL_ADDRESS_SANITIZER || VL_THREAD_SANITIZER) { GTEST_SKIP() << "..."; }

#if defined(__has_feature)
#define VL_HAS_FEATURE(name) __has_feature(name)
#else
#define VL_HAS_FEATURE(name) 0
#endif

#if defined(__SANITIZE_ADDRESS__) || VL_HAS_FEATURE(address_sanitizer)
#define VL_ADDRESS_SANITIZER 1
#else
#define VL_ADDRESS_SANITIZER 0
#endif

#if defined(__SANITIZE_THREAD__) || VL_HAS_FEATURE(thread_sanitizer)
#define VL_THREAD_SANITIZER 1
#else
#define VL_THREAD_SANITIZER 0
#endif
