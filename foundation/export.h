#pragma once

/// \file
/// Marks what the foundation library exports; everything else in it is hidden.

#if defined(_WIN32)
#if defined(VL_FOUNDATION_BUILD)
#define VL_FOUNDATION_EXPORT __declspec(dllexport)
#else
#define VL_FOUNDATION_EXPORT __declspec(dllimport)
#endif
#else
#define VL_FOUNDATION_EXPORT __attribute__((visibility("default")))
#endif
