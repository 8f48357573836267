#include "toolkit/Framing.h"
