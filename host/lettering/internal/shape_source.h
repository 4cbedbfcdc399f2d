#pragma once
// The text form of shape files.
#include "host/lettering/shapes.h"

/// Null, with line and reason, for what can't be read.
std::unique_ptr<KvLtShapeFile> kvltParseShapeSource(std::string_view text, KvLtShapeError& error);
