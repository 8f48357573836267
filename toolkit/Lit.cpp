#include "toolkit/Lit.h"
