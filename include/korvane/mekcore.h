#pragma once
// The exported toolkit of Korvane Mechanical, for add-ons that link against it.
#include "module/core/mekcore.h"
