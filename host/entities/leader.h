#pragma once
// Leaders: a line with an arrow that leads to a note.
#include <map>
#include <set>

#include "host/database/database.h"
#include "host/entities/dimvars.h"
#include "host/entities/keptentity.h"

/// Points are in world coordinates. The look follows a dimension style and overrides, as with dimensions.
class KvDbLeader : public KvDbPartsEntity {
  KVRX_DECLARE(KvDbLeader)
 public:
  KvDbLeader() : KvDbPartsEntity(L"LEADER", L"AcDbLeader") {}
  int numVertices() const { return static_cast<int>(all(10).size()); }
  /// eInvalidIndex.
  Kvad::ErrorStatus getVertexAt(int index, KvGePoint3d& vertex) const;
  Kvad::ErrorStatus setVertexAt(int index, const KvGePoint3d& vertex);
  Kvad::ErrorStatus appendVertex(const KvGePoint3d& vertex);
  bool hasArrowHead() const { return whole(71, 1) != 0; }
  Kvad::ErrorStatus setHasArrowHead(bool has) { return putWhole(71, has); }
  /// A smooth curve through the vertices, which leaves the first and reaches the last along the straight
  /// segments there.
  bool isSplined() const { return whole(72) != 0; }
  Kvad::ErrorStatus setSplined(bool isSplined) { return putWhole(72, isSplined); }
  /// The last segment is the level piece in front of the text.
  bool hasHookLine() const { return whole(75) != 0; }
  /// The text, tolerance or block that it leads to; null for none.
  KvDbObjectId annotationId() const;
  /// Links the leader to a paragraph text, tolerance or block reference of the same drawing, which learns of
  /// it (as one more of its reactors), or with a null id to none. What the record tells of the note (its
  /// size, where it stands from the last vertex) is set too. eInvalidInput for an id of another class.
  Kvad::ErrorStatus attachAnnotation(KvDbObjectId annotation);
  /// The note has gone that way (world coordinates): the last vertex goes along, with the level piece in
  /// front of it, and the record tells the note's present size.
  Kvad::ErrorStatus followAnnotation(const KvGeVector3d& by);
  KvDbObjectId dimensionStyle() const;
  /// eInvalidInput for an id that is no dimension style's.
  Kvad::ErrorStatus setDimensionStyle(KvDbObjectId style);
  KvDbDimVars dimVars() const { return KvDbDimVars::ofEntity(*this, dimensionStyle()); }
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  Parts makeParts() const override;

 private:
  std::vector<KvGePoint3d> path(const KvDbDimVars& vars, double scale) const;
  void noteSize(const KvDbEntity& note);
};

/// Lets the leaders of a drawing follow their notes: it sees what changes while it lives, and settle() moves
/// the leaders whose notes have gone elsewhere. Leaders that were changed themselves stay, and so does all
/// that is only taken back or brought again. It must not outlive the drawing, unless that is told by
/// forget().
class KvDbLeaderFollower : public KvDbChangeObserver {
 public:
  explicit KvDbLeaderFollower(KvDbDatabase& database);
  ~KvDbLeaderFollower() override;
  KvDbLeaderFollower(const KvDbLeaderFollower&) = delete;
  KvDbLeaderFollower& operator=(const KvDbLeaderFollower&) = delete;
  void objectChanges(KvDbStub& stub) override;
  void settle();
  void forget() { database_ = nullptr; }

 private:
  KvDbDatabase* database_;
  std::map<KvDbStub*, KvGePoint3d> notes_;  // where they stood before
  std::set<KvDbStub*> leaders_;
};
