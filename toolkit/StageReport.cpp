#include "toolkit/StageReport.h"
