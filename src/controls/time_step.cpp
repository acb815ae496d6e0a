#include "controls/time_step.h"

qint16 gTimeStep = 30;
