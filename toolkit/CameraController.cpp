#include "toolkit/CameraController.h"
