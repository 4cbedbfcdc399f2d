#pragma once
// Curves beside other curves where no curve of the same kind is exact.
#include <memory>

#include "host/entities/curve.h"
#include "host/entities/spline.h"

namespace kvcmd {

/// A spline at a distance on the left of a curve (on the right when negative), seen along the user system's Z
/// axis, through points at exactly that distance; `tolerance` (drawing units) is asked for, and tells by how
/// much the spline deviates at most between them. Null for a curve that doesn't lie parallel to the user
/// system's plane, for a distance at which the new curve would turn back on itself, and when very many points
/// don't suffice.
std::unique_ptr<KvDbSpline> offsetAsSpline(const KvDbCurve& curve, double leftwards, double& tolerance);

}  // namespace kvcmd
