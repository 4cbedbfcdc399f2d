#pragma once
// What all spring views share: the host commands in their exact argument order, the layers, sets of new
// entities, the centre lines, and the making of a block.
//
// Views reckon in their own plane: the placement point is the origin, X runs along the axis. A frame may turn
// what it draws by half a turn about a point of the axis, so that one end of a spring serves for the other.
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

#include "host/base/kvds.h"
#include "host/geometry/point.h"

namespace mek {

inline constexpr double kPi = std::numbers::pi;

/// The point at a distance and bearing.
inline KvGePoint2d polar(const KvGePoint2d& from, double bearing, double distance) {
  return {from.x + distance * std::cos(bearing), from.y + distance * std::sin(bearing)};
}

struct Segment {
  KvGePoint2d from, to;
};

/// Where two segments cross; determinants below 1e-10 count as parallel, and 1e-7 of a segment's length
/// beyond its ends still counts as on it.
std::optional<KvGePoint2d> crossing(const Segment& a, const Segment& b);
/// The same for the lines through them.
std::optional<KvGePoint2d> lineCrossing(const Segment& a, const Segment& b);

/// The name of an entity.
struct EntityName {
  kvds_name name = {0, 0};
};

/// A selection set that frees itself.
class EntitySet {
 public:
  EntitySet() = default;
  ~EntitySet();
  EntitySet(EntitySet&& other) noexcept;
  EntitySet& operator=(EntitySet&& other) noexcept;
  EntitySet(const EntitySet&) = delete;
  EntitySet& operator=(const EntitySet&) = delete;
  const long long* name() const { return name_; }
  long long* edit() { return name_; }
  void add(const EntityName& entity);

 private:
  kvds_name name_ = {0, 0};
};

class SpringFrame {
 public:
  explicit SpringFrame(const double* point);

  /// From here on everything is turned by half a turn about (x, 0).
  void turnAbout(double x) { turn_ = x; }
  void turnBack() { turn_.reset(); }

  // Layers of the standard, made current.
  void thick();
  void center();
  void hatchLayer();

  // One command each.
  void line(const KvGePoint2d& from, const KvGePoint2d& to);
  void line(const Segment& segment) { line(segment.from, segment.to); }
  /// Counter-clockwise from start to end, at most half a turn. Half a chord that is longer than the radius by
  /// less than 1e-5 becomes the radius, so that rounding can't have the host refuse a half circle.
  void arc(const KvGePoint2d& start, const KvGePoint2d& end, double radius);
  void arcAbout(const KvGePoint2d& center, const KvGePoint2d& start, const KvGePoint2d& end);
  void circle(const KvGePoint2d& center, double radius);
  /// Past the commands: a record. The user system's point is brought to the world and the circle into its
  /// plane, as commands do by themselves.
  void recordCircle(const KvGePoint2d& center, double radius);
  /// Cuts the entity at the set's entities, away from the point.
  void trim(const EntitySet& edges, const EntityName& entity, const KvGePoint2d& removed);
  /// ANSI31 in the outlines of a set.
  void hatch(const EntitySet& outlines);
  void eraseLast();

  /// The newest entity. When there is none, or none since the frame was made, it is reported, and the frame
  /// fails: what stood there before belongs to no spring.
  EntityName last();
  bool hasFailed() const { return hasFailed_; }
  /// The next entity that is drawn is the first of a set; `collected` gives it with all that came after it.
  void collect() { isCollecting_ = true; }
  EntitySet collected();
  /// The entity and all that came after it.
  EntitySet from(const EntityName& marker);
  static EntitySet of(const EntityName& entity);

  /// The axis and, with rows, the lines through the wires' centres at +row and -row, each reaching by 1/40 of
  /// the length beyond it. Ends on the layer THICK.
  void centerLines(double length, std::optional<double> row);

  /// All entities from the marker on become the block SpringBlockName, which is placed and turned by the
  /// user. Its base is `point`, taken as one of the world; it comes back as one of the user system. False
  /// when the block can't be made or the user gives no place: nothing more is done then, since what is newest
  /// would be somebody else's.
  bool makeBlock(const EntityName& marker, double* point);

 private:
  KvGePoint3d at(const KvGePoint2d& local) const;
  void layer(const wchar_t* kind);
  /// After each entity: the first of a set that is being collected is its marker.
  void drawn();

  KvGePoint3d point_;
  std::optional<double> turn_;
  bool hasFailed_ = false, isCollecting_ = false;
  EntityName before_, marker_;
};

/// Whether a block can have the name in SpringBlockName.
bool isBlockNameGood();
/// What every view refuses: numbers that are not finite, or more coils than anyone can draw.
bool areSizesFinite(std::initializer_list<double> sizes);
inline constexpr double kMostCoils = 100'000;

inline constexpr int kDone = 5100, kRefused = -5001;

}  // namespace mek
