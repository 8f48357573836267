#include "tests/viewport/program/program_runner.h"

char const* const VL_VIEWPORT_PROGRAM = VL_VIEWPORT_PROGRAM_FILE;
