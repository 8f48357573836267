#include "toolkit/internal/PickCamera.h"
