#include "host/database/worlddraw.h"

bool KvGiDrawable::worldDraw(KvGiWorldDraw*) { return false; }
