#pragma once
// The arrow heads of dimensions and leaders: standard shapes, drawn here, and blocks of the user's own.
#include <memory>
#include <vector>

#include "host/database/entity.h"

class KvDbArrowHead {
 public:
  /// `block` names a standard shape (its record need not exist anywhere), or is drawn as it is, one unit
  /// being the arrow's size, pointing along X. Null: closed and filled.
  KvDbArrowHead(KvDbObjectId block, double size);
  /// An oblique stroke.
  static KvDbArrowHead tick(double size);

  double size() const { return size_; }
  bool isTick() const;
  /// A stroke across the line's end, or nothing: it needs no room along the line.
  bool isStroke() const;
  /// How much shorter the line is for its arrow.
  double cut() const;
  /// The entities that make it up, with its tip at a point, pointing along a direction (length 1) in the
  /// plane of a normal. World coordinates; without layer and colour.
  std::vector<std::unique_ptr<KvDbEntity>> parts(const KvGePoint3d& tip, const KvGeVector3d& direction,
                                                 const KvGeVector3d& normal) const;

 private:
  struct Shape;
  KvDbArrowHead(const Shape* shape, double size) : size_(size), shape_(shape) {}
  static const Shape* shapeNamed(const CString& name);

  KvDbObjectId block_;
  double size_;
  const Shape* shape_ = nullptr;  ///< null: the block
};
