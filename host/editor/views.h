#pragma once
// What of the drawing is seen, and where on the screen: views by viewport number, device coordinates,
// temporary graphics, highlighting.
//
// Device coordinates are pixels, the origin at the lower left corner, Y upwards. View coordinates are world
// coordinates seen along the view direction, turned by the twist, with the target as their origin.
#include <map>
#include <memory>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "host/database/objectid.h"
#include "host/database/subentpath.h"
#include "host/geometry/matrix.h"

class KvDbDatabase;

struct KvEdScreenSize {
  int width = 1920, height = 1080;
};

/// What a viewport shows.
struct KvEdView {
  KvGePoint2d center;                             ///< view coordinates
  double height = 297;                            ///< of what is seen, in drawing units; above 0
  KvGeVector3d direction = KvGeVector3d::kZAxis;  ///< from the target to the eye
  KvGePoint3d target;
  double twist = 0;  ///< radians

  KvGeMatrix3d worldToView() const;
  KvGeMatrix3d viewToWorld() const { return worldToView().inverse(); }
  KvGeMatrix3d worldToDevice(const KvEdScreenSize& screen) const;
};

/// The view of the drawing's active viewport; where the record says nothing sensible, a plan view of the
/// limits. Layouts are seen in plan too.
KvEdView kvedViewOf(const KvDbDatabase& database);
/// eInvalidInput for a height that isn't above 0 or a number that isn't finite, eNullObjectId without the
/// record.
Kvad::ErrorStatus kvedSetViewOf(KvDbDatabase& database, const KvEdView& view);
/// 2 for model space, 1 for a layout.
int kvedCurrentViewport(const KvDbDatabase& database);

/// A viewport on the screen.
class KvGsView {
 public:
  KvGsView(int number, std::uint32_t drawing) : number_(number), drawing_(drawing) {}
  int viewportNumber() const { return number_; }
  /// The viewport in device coordinates.
  void getViewport(KvGePoint2d& lowerLeft, KvGePoint2d& upperRight) const;
  KvGeMatrix3d worldToDeviceMatrix() const;
  /// Marks the picture as out of date; `update` has it drawn by whoever shows it.
  void invalidate() { isValid_ = false; }
  void update();
  bool isValid() const { return isValid_; }
  int updateCount() const { return updates_; }

 private:
  int number_;
  std::uint32_t drawing_;
  bool isValid_ = true;
  int updates_ = 0;
};

/// A line that is on the screen until the next redraw; world coordinates.
struct KvEdTransientLine {
  KvGePoint3d from, to;
  int color = 7;
  bool isHighlighted = false;
};

/// A part of an entity, as highlighting names it: the row of objects from the outermost container down to the
/// entity, and the kind and number of the part (0 and 0: the whole).
struct KvEdHighlightPath {
  std::vector<KvDbObjectId> objects;
  int type = 0;
  long long index = 0;
  friend auto operator<=>(const KvEdHighlightPath&, const KvEdHighlightPath&) = default;
};

/// What is on the screen beside the drawing; a front end and tests read it.
class KvEdScreen {
 public:
  KvEdScreenSize size;
  std::vector<KvEdTransientLine> lines;
  int updates = 0;                      ///< calls of kvedUpdateDisplay
  class KvDbEntity* dragged = nullptr;  ///< what a jig shows at this moment; not owned
  int dragUpdates = 0;                  ///< how often a jig has had its entity shown

  static KvEdHighlightPath pathOf(KvDbObjectId entity, const KvDbFullSubentPath& path);
  void highlight(const KvEdHighlightPath& path);
  void unhighlight(const KvEdHighlightPath& path);
  bool isHighlighted(KvDbObjectId entity) const;
  std::vector<KvEdHighlightPath> highlighted() const;
  void setHidden(KvDbObjectId entity, bool isHidden);
  bool isHidden(KvDbObjectId entity) const;

  /// Null when the drawing is not a living one; with `create` made when missing.
  KvGsView* view(const KvDbDatabase& database, int number, bool create);
  void invalidateAll();

 private:
  std::map<KvEdHighlightPath, int> highlights_;  // with the number of calls that asked for it
  std::map<KvDbObjectId, bool> hidden_;
  std::map<std::pair<std::uint32_t, int>, std::unique_ptr<KvGsView>> views_;
};

/// The view of a viewport of the working drawing: always for the current one; others only when they were made
/// before or with `create`. Null otherwise.
KvGsView* kvgsGetGsView(int viewportNumber, bool create);

struct KvGsPixel {
  int x = 0, y = 0;
};
/// World coordinates of a pixel of the current viewport, on the plane through the target; the origin and
/// false without a drawing.
bool kvedCoordFromPixelToWorld(const KvGsPixel& pixel, double* world);
bool kvedCoordFromPixelToWorld(const KvGsPixel& pixel, KvGePoint3d& world);
/// The nearest pixel. False without a drawing or when the point lies too far off.
bool kvedCoordFromWorldToPixel(const double* world, KvGsPixel& pixel);

/// Has all views drawn.
void kvedUpdateDisplay();
/// A temporary line; user coordinates. A colour of -1 is that of the background's complement. RTERROR for
/// null or numbers that are not finite.
int kvedGrDraw(const double* from, const double* to, int color, int highlight);
/// Without a name: takes the temporary lines away and has all views drawn. With one: 1 shows it again, 2
/// hides it for the moment, 3 highlights, 4 ends that. RTERROR for an unknown name or mode.
int kvedRedraw(const long long* name, int mode);
/// The next input as it comes: the type is 2 (a key, an RTSHORT), 3 (a picked point) or 5 (with `track` a
/// point while the cursor moves), 12 is for other pick buttons. Points in user coordinates. RTCAN, RTERROR.
int kvedGrRead(int track, int* type, resbuf* result);
