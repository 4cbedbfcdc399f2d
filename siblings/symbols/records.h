#pragma once
// What the symbols keep in a drawing, in a dictionary below its root: the standard, the scale of the drawing
// and the record of symbol points. Saved with the drawing, undone with the command that changed it. Functions
// take the drawing itself, never null.
#include <optional>

#include "host/database/database.h"
#include "siblings/symbols/standards.h"

namespace kmsymb {

/// Nothing when the drawing names none.
std::optional<Standard> standardOf(const KvDbDatabase& drawing);
bool setStandard(KvDbDatabase& drawing, Standard standard);
/// The working drawing's standard, else that of the settings.
Standard standardInForce();

/// Paper: drawing units for one millimetre of paper (2: "1:2"); measure: factor of measured values. Both
/// above 0.
struct SystemScale {
  double paper = 1, measure = 1;
};
/// 1 for what the drawing doesn't say, or says wrongly.
SystemScale systemScaleOf(const KvDbDatabase& drawing);
/// False for a scale that isn't above 0 and finite.
bool setSystemScale(KvDbDatabase& drawing, const SystemScale& scale);

/// The symbol points that were recorded and aren't erased, each once, in the order of their recording.
KvDbObjectIdArray recordedPoints(const KvDbDatabase& drawing);
/// Of objects of an open drawing; false when nothing was to be done.
bool recordPoint(KvDbObjectId id);
bool unrecordPoint(KvDbObjectId id);

}  // namespace kmsymb
