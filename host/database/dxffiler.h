#pragma once
// The group-code filer: an object's state as the groups of a drawing file (code and value), for files and for
// chains of resbuf.
//
// A writer is handed groups in their order. A reader hands out one object's groups: points come whole (10,
// 20, 30 as one group 10). Angles are in degrees on this side, as in files.
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/database/objectid.h"
#include "host/database/sharedtext.h"
#include "host/geometry/point.h"

/// How the value of a group is held; follows from its code alone.
enum class KvDxfKind : std::uint8_t { Text, Point, Real, Int16, Int32, Int64, Bool, Handle, Binary };

/// The kind that follows a group code, also for the codes of extended data. Unknown codes count as text.
KvDxfKind kvdxfKind(int code);

/// One group. Texts are wide and belong to whoever made the group; the reader's live as long as the object is
/// being read.
struct KvDxfGroup {
  std::int16_t code = 0;
  KvDxfKind kind = KvDxfKind::Text;
  std::uint8_t dimensions = 3;  ///< of a point: how many coordinates stood in the file
  std::wstring_view text;       ///< Text; also Binary's bytes, one character each
  KvGePoint3d point;            ///< Point; Real in x
  std::int64_t integer = 0;     ///< Int16, Int32, Int64, Bool; the value of a Handle

  double real() const { return point.x; }
  int asInt() const { return static_cast<int>(integer); }
};

/// Degrees and back without loss: of the numbers of degrees that give these radians, the one with the fewest
/// digits.
double kvdxfDegrees(double radians);
double kvdxfRadians(double degrees);

class KvDxfWriter {
 public:
  virtual ~KvDxfWriter() = default;
  virtual void text(int code, std::wstring_view value) = 0;
  virtual void real(int code, double value) = 0;
  /// 16, 32, 64 bits or a truth value, by the code.
  virtual void integer(int code, std::int64_t value) = 0;
  /// A reference by handle; 0 stands for none.
  virtual void handleValue(int code, std::uint64_t handle) = 0;
  virtual void point(int code, const KvGePoint3d& value) = 0;
  virtual void point2d(int code, const KvGePoint2d& value) = 0;
  virtual void binary(int code, std::span<const std::uint8_t> bytes) = 0;
  /// True where objects have subclass markers, handles and references (every form but the oldest file
  /// version).
  virtual bool hasMarkers() const { return true; }
  /// True where a modeller's data stand among an entity's groups as text (R2000 to R2010).
  virtual bool hasModelerText() const { return false; }
  /// True when the groups go to a chain of resbuf, whose entity records leave some groups out.
  virtual bool isForChain() const { return false; }

  void handle(int code, KvDbObjectId id) { handleValue(code, id.handle().value()); }
  /// A subclass marker, where the form has them.
  void marker(std::wstring_view name);
  /// What was done for the present object: the marker written last, and the sections whose kept groups are
  /// written.
  void beginObject();
  std::wstring_view lastMarker() const { return lastMarker_; }
  void noteFlushed(std::wstring_view marker) { flushed_.push_back(marker); }
  bool isFlushed(std::wstring_view marker) const;
  void vector(int code, const KvGeVector3d& value) { point(code, {value.x, value.y, value.z}); }
  void angle(int code, double radians) { real(code, kvdxfDegrees(radians)); }
  /// A group as it was read.
  void group(const KvDxfGroup& group);

 private:
  // They live in the classes or in the object that is being written.
  std::wstring_view lastMarker_;
  std::vector<std::wstring_view> flushed_;
};

/// The names and references of one drawing while it is being read: what a group's text or handle stands for.
class KvDxfResolver {
 public:
  virtual ~KvDxfResolver() = default;
  /// The object of a handle, which may be read later; null for handle 0.
  virtual KvDbObjectId object(std::int64_t handle) = 0;
  /// Records by name; null when there is none (the reader reports it).
  virtual KvDbObjectId layer(std::wstring_view name) = 0;
  virtual KvDbObjectId linetype(std::wstring_view name) = 0;
  virtual KvDbObjectId textStyle(std::wstring_view name) = 0;
  virtual KvDbObjectId dimStyle(std::wstring_view name) = 0;
  virtual KvDbObjectId block(std::wstring_view name) = 0;
  /// True once a name was asked for that no table has and that doesn't come into being.
  virtual bool hasMissingName() const { return false; }
  /// A name that other objects may bear too: one text for all of them.
  virtual KvDbSharedText shared(std::wstring_view name) { return KvDbSharedText(name); }
};

/// One object's groups, in order.
class KvDxfReader {
 public:
  KvDxfReader(std::span<const KvDxfGroup> groups, KvDxfResolver& resolver)
      : groups_(groups), resolver_(resolver) {}
  KvDxfResolver& resolver() { return resolver_; }

  bool atEnd() const { return at_ >= groups_.size(); }
  const KvDxfGroup& peek() const { return groups_[at_]; }
  const KvDxfGroup& next() { return groups_[at_++]; }
  /// Up to but without the next marker.
  std::span<const KvDxfGroup> all() const { return groups_; }

 private:
  std::span<const KvDxfGroup> groups_;
  KvDxfResolver& resolver_;
  std::size_t at_ = 0;
};
