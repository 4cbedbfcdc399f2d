#pragma once
// The area round a point, as the curves of the current space bound it.
#include <memory>
#include <optional>
#include <vector>

#include "host/commands/internal/support.h"
#include "host/entities/curve.h"

namespace kvcmd {

/// A closed way along pieces of curves, each from the end of the one before.
struct EnclosureLoop {
  struct Piece {
    std::shared_ptr<const KvDbCurve> curve;  ///< outside any drawing, world coordinates
    bool isBackwards = false;
    KvDbObjectId source;   ///< the entity of the space that it comes from
    bool isWhole = false;  ///< all of that entity
  };
  std::vector<Piece> pieces;
  double area = 0;  ///< seen along the user system's Z axis, above 0

  /// The entities, when the loop consists of whole ones; empty otherwise.
  KvDbObjectIdArray wholeSources() const;
  /// Copies of the pieces, in order.
  std::vector<std::unique_ptr<KvDbCurve>> curves() const;
};

struct Enclosure {
  EnclosureLoop outer;
  std::vector<EnclosureLoop> islands;  ///< what lies in it, each by its outermost way
};

/// The smallest area round a point (user coordinates), seen along the user system's Z axis: bounded by curves
/// on layers that are shown, also those in block references and regions. None, with the reason, when nothing
/// encloses the point or there are too many curves.
std::optional<Enclosure> enclosureAt(const KvGePoint3d& user, CString& reason);

}  // namespace kvcmd
