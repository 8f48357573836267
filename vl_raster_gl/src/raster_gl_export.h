#pragma once

/// \file
/// Marks what the library exports; everything else in it is hidden.

#if defined(_WIN32)
#if defined(VL_RASTER_GL_BUILD)
#define VL_RASTER_GL_EXPORT __declspec(dllexport)
#else
#define VL_RASTER_GL_EXPORT __declspec(dllimport)
#endif
#else
#define VL_RASTER_GL_EXPORT __attribute__((visibility("default")))
#endif
