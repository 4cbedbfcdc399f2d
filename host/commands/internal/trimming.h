#pragma once
// Cutting curves at other objects, for TRIM and its kin.
#include <functional>
#include <optional>
#include <vector>

#include "host/commands/internal/support.h"
#include "host/entities/curve.h"
#include "host/entities/polyline.h"

namespace kvcmd {

/// Where other objects meet a curve, seen along the user system's Z axis: parameters of the curve, in order.
std::vector<double> crossingParams(const KvDbCurve& curve, const KvDbObjectIdArray& edges,
                                   KvDb::Intersect type);
/// The objects that cut or bound: what is selected, or everything for an empty answer; none after a cancel.
std::optional<KvDbObjectIdArray> askEdges(const wchar_t* title);
/// Asks for objects one by one, or by fence or crossing, and lets `cut` work on each at a point (world) until
/// the user ends it; each piece of work can be taken back. `cut` answers whether it could; `refusal` tells
/// that not.
void cutRepeatedly(const wchar_t* verb, const wchar_t* refusal,
                   const std::function<bool(KvDbObjectId, const KvGePoint3d&)>& cut);
/// How edges count for TRIM and EXTEND: drawn out beyond their ends where EDGEMODE is 1.
KvDb::Intersect edgeType(bool extendsCurve);

/// Takes the part of a curve away on which a point (world) lies, up to the nearest edges on both sides. False
/// when no edge cuts it.
bool trimAt(KvDbObjectId id, const KvGePoint3d& picked, const KvDbObjectIdArray& edges);
/// Whether a point (world) lies on a curve, as far as people type and programs round.
bool liesOn(const KvDbCurve& piece, const KvGePoint3d& point);
/// What is left of a curve goes to its place: the first piece of its class keeps its name, the others are
/// new; without one it is erased.
void replaceByPieces(KvDbObjectId id, std::vector<std::unique_ptr<KvDbCurve>>& pieces);
/// Moves the end or the start of a polyline to a point (world) that lies on its last or first segment drawn
/// out or cut off.
void extendPolyline(KvDbPolyline& polyline, const KvGePoint3d& to, bool atEnd);
/// Puts an entity into the block of another one, with that one's layer, colour and the like.
KvDbObjectId addBeside(KvDbObjectId original, std::unique_ptr<KvDbEntity> entity);

}  // namespace kvcmd
