#pragma once

/// \file
/// Marks the symbols that the toolkit exports; all others are hidden.

#if defined(_WIN32)
#if defined(VL_TOOLKIT_BUILD)
#define VL_TOOLKIT_EXPORT __declspec(dllexport)
#else
#define VL_TOOLKIT_EXPORT __declspec(dllimport)
#endif
#else
#define VL_TOOLKIT_EXPORT __attribute__((visibility("default")))
#endif
