#pragma once
// The exported toolkit of Korvane Mechanical, for add-ons that link against it.
#include "module/core/mekcore.h"
#include "module/data/ado_fields.h"
#include "module/data/connection.h"
#include "module/data/recordset.h"
#include "module/data/xml_file.h"
#include "module/nest/nester_frame.h"
#include "module/toolkit/geometry.h"
#include "module/toolkit/guards.h"
#include "module/toolkit/layers.h"
#include "module/toolkit/rbchains.h"
#include "module/toolkit/styles.h"
#include "module/toolkit/test_time.h"
