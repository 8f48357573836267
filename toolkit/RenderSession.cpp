#include "toolkit/RenderSession.h"
