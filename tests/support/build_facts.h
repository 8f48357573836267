#pragma once

/// \file
/// How the code under test was built. Functions, since the objects of the tests are the same in every build.
///
///     if (isAddressSanitized() || isThreadSanitized()) { GTEST_SKIP() << "..."; }

/// Whether the address sanitizer runs in this process.
bool isAddressSanitized();

/// Whether the thread sanitizer runs in this process.
bool isThreadSanitized();

/// Whether the libraries end the process at a misuse, see vl_raster_gl/src/internal/misuse.h.
bool areLifetimesChecked();
