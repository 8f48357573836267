#include "toolkit/internal/ImpostorView.h"
