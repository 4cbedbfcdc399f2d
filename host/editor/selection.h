#pragma once
// Selection sets, how their members were picked, and picking entities one by one.
//
// A set is named by two words; it belongs to whoever asked for it and is given back with kvedSSFree. Sets
// keep members that were erased. Statuses: RTNORM, RTERROR (nothing selected, wrong arguments), RTCAN. After
// an empty reply the variable ERRNO is 52, after a pick that hit nothing 7.
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "host/database/objectid.h"
#include "host/geometry/matrix.h"

class KvApDocument;
class KvEdSSGetFilter;

inline constexpr int kKvedErrnoMiss = 7;
inline constexpr int kKvedErrnoEmpty = 52;

enum class KvEdPickMethod { None = 0, Point = 1, Window = 2, Crossing = 3, Fence = 4, Subentity = 5 };

/// A window, a polygon or a rectangle that caught entities; world coordinates.
using KvEdPickWindow = std::vector<KvGePoint3d>;

/// One member of a set and how it was picked.
struct KvEdPick {
  KvDbObjectId id;  ///< in a nested pick the innermost entity
  KvEdPickMethod method = KvEdPickMethod::None;
  long marker = -1;                              ///< the part that was hit; -1: none is told
  std::vector<KvGePoint3d> points;               ///< of a pick or a fence, world coordinates
  std::shared_ptr<const KvEdPickWindow> window;  ///< of a window or crossing
  bool isNested = false;
  KvGeMatrix3d transform;                ///< from the entity to the world
  std::vector<KvDbObjectId> containers;  ///< innermost first

  /// Without a word how it was picked.
  static KvEdPick of(KvDbObjectId id) {
    KvEdPick pick;
    pick.id = id;
    return pick;
  }
};

using KvEdPicks = std::vector<KvEdPick>;

/// All selection sets of one host, the previous and the implied selection of each drawing, and the filters.
class KvEdSelections {
 public:
  /// A new set; its name goes to `set`.
  void add(KvEdPicks picks, long long* set);
  /// Null for a name that no set bears.
  KvEdPicks* find(const long long* set);
  bool free(const long long* set);
  /// Sets that nobody has freed.
  int count() const { return static_cast<int>(sets_.size()); }

  KvEdPicks& previous(std::uint32_t drawing) { return previous_[drawing]; }
  KvEdPicks& implied(std::uint32_t drawing) { return implied_[drawing]; }

  struct Filter {
    const KvApDocument* document;
    KvEdSSGetFilter* filter;
    int mask;
  };
  std::vector<Filter> filters;
  /// Told by whoever has documents; null: there are none.
  std::function<const KvApDocument*()> currentDocument;

 private:
  std::map<long long, KvEdPicks> sets_;
  long long lastNumber_ = 0;
  std::map<std::uint32_t, KvEdPicks> previous_, implied_;
};

/// Selects entities of the current space and makes a set of them. `mode` is a method and behind colons flags,
/// both without regard to case; an underscore before it changes nothing; anything else is RTERROR.
///
///   (none)   the user selects; with `first`, a point: what lies under the pick box there
///   +. + .   the user picks
///   A        everything but what stands on frozen layers
///   X        everything in the drawing's spaces
///   L P I    the last entity that can be seen; the previous set; the implied one
///   W C      in, or in and across, the window between the points `first` and `second`
///   WP CP F  a polygon or a fence: `first` is a chain of points
///
///   :S  one successful pick or window ends it    :N  nested: picks tell the innermost entity and its
///   containers :E  everything under the pick box            :D  an entity may be there more than once :L
///   nothing on locked layers                 :$  `first` is an array of two texts: the prompts for adding
///                                                    and for removing
///
/// Points are in user coordinates. `filter` may be null; see ss_filter.h. Entities of selectable groups bring
/// their whole group along where PICKSTYLE is 1 or 3.
int kvedSSGet(const wchar_t* mode, const void* first, const void* second, const resbuf* filter,
              long long* set);

/// Without name and set: a new empty set. Without a set: a new one of the entity. Else adds the entity; the
/// result is the same set, which may be `result` itself. (0,0) counts as null.
int kvedSSAdd(const long long* name, const long long* set, long long* result);
/// RTERROR when it isn't in the set.
int kvedSSDel(const long long* name, const long long* set);
/// RTNORM when the entity is in the set.
int kvedSSMemb(const long long* name, const long long* set);
int kvedSSName(const long long* set, long index, long long* name);
int kvedSSLength(const long long* set, long* length);
int kvedSSFree(const long long* set);
/// The implied selection as a set of its own in a chain of one RTPICKS node, both to be freed by the caller;
/// RTERROR and null when there is none. Either argument may be null.
int kvedSSGetFirst(resbuf** grips, resbuf** implied);
/// Makes a copy of the set the implied selection; null clears it.
int kvedSSSetFirst(const long long* implied, const long long* grips);
/// How members were picked, as a chain owned by the caller: -1 tells of all. For each RTLB, method, name,
/// marker, then for windows the window's number (below 0), for points and fences their points (RTLB, 0, the
/// point, for views that aren't in plan the direction, RTLE), for nested picks the three axes and the origin
/// of the transform and the containers, RTLE; behind all members each window that is named: RTLB, its number,
/// its corners as points, RTLE. World coordinates.
int kvedSSNameX(resbuf** chain, const long long* set, long index);
/// Makes a copy of the set the previous selection of a drawing (null: of the working one).
Kvad::ErrorStatus kvedSetPreviousSelection(class KvDbDatabase* database, const long long* set);

/// An entity and the point by which it was picked, in user coordinates. A name or the list of a name and a
/// point from a program will do, and `L` for the last entity. RTKWORD after kvedInitGet.
int kvedEntSel(const wchar_t* prompt, long long* name, double* point);
/// The innermost entity under a point, the map from it to the world, rows of X, Y, Z axis and origin, and the
/// names of its containers, innermost first, as a chain of the caller's (null: it isn't nested).
int kvedNEntSel(const wchar_t* prompt, long long* name, double* point, double (*matrix)[3],
                resbuf** containers);
/// The same with a map whose columns are the axes and the origin; with `pickFlag` at `point`, without asking.
int kvedNEntSelP(const wchar_t* prompt, long long* name, double* point, int pickFlag, double (*matrix)[4],
                 resbuf** containers);

/// What a filter may do to entities that are about to be selected.
class KvEdSelectionSetService {
 public:
  explicit KvEdSelectionSetService(KvEdPicks& picks) : picks_(picks) {}
  KvDbObjectIdArray candidates() const;
  /// eKeyNotFound.
  Kvad::ErrorStatus remove(KvDbObjectId id);

 private:
  KvEdPicks& picks_;
};

class KvEdSSGetFilter {
 public:
  virtual ~KvEdSSGetFilter() = default;
  virtual void ssgetAddFilter(KvEdSelectionSetService& service) = 0;
};

/// Has a filter look at all selections in a document (null: in every one). Not owned. The mask tells on what
/// occasions: 1 implied selection, 2 picks, 4 windows, 8 lists. eNullObjectPointer, eDuplicateKey.
Kvad::ErrorStatus addSSgetFilterInputContextReactor(KvApDocument* document, KvEdSSGetFilter* filter,
                                                    int mask = 15);
/// eKeyNotFound.
Kvad::ErrorStatus removeSSgetFilterInputContextReactor(KvApDocument* document, KvEdSSGetFilter* filter,
                                                       int mask = 15);
