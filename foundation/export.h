#pragma once

/// \file
/// Marks the symbols that the foundation library exports; all others are hidden.

#if defined(_WIN32)
#if defined(VL_FOUNDATION_BUILD)
#define VL_FOUNDATION_EXPORT __declspec(dllexport)
#else
#define VL_FOUNDATION_EXPORT __declspec(dllimport)
#endif
#else
#define VL_FOUNDATION_EXPORT __attribute__((visibility("default")))
#endif
