#pragma once

/// \file
/// Marks the symbols that the library exports; all others are hidden.

#if defined(_WIN32)
#if defined(VL_RASTER_GL_BUILD)
#define VL_RASTER_GL_EXPORT __declspec(dllexport)
#else
#define VL_RASTER_GL_EXPORT __declspec(dllimport)
#endif
#else
#define VL_RASTER_GL_EXPORT __attribute__((visibility("default")))
#endif
