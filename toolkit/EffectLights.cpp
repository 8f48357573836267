#include "toolkit/EffectLights.h"
