#pragma once
// From a shape's bytes to strokes.
#include "host/lettering/shapes.h"

/// Fills a fresh glyph. Damaged shapes give what was drawn up to the damage.
void kvltTraceShape(const KvLtShapeFile& file, int number, KvLtGlyph& glyph);
