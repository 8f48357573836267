#include "toolkit/ParticleRenderer.h"
