#pragma once
// What the packing solver works on: boxes, layers, the context of a run, the fixed tables, counters and
// limits. Everything lives in one place (pack_state.cpp), is reset by resetPackState, and is used by one run
// at a time.
#include <chrono>
#include <cstdint>
#include <span>

#include "module/nest/pack_boxes.h"
#include "platform/text/format.h"

namespace mek::pack {

/// Side of the tables: box numbers run from 1, so one row more than there are boxes.
inline constexpr int kTableSide = kPackMaxBoxes + 1;
inline constexpr int kMaxSide = 32767;
inline constexpr int kThousand = 1000;

enum PackType : std::int16_t { kGeneralPacking = 0, kRobotPacking = 1 };

struct Box3D {
  std::int16_t no;       ///< number in the input, from 1
  std::int16_t w, h, d;  ///< size
  std::int16_t x, y, z;  ///< lower corner in its bin
  std::int16_t bno;      ///< bin from 1, 0 while unassigned
  std::int16_t k;        ///< 1 once placed in the current packing
  std::int32_t vol;
  Box3D* ref;  ///< in a working copy, the box it stands for; not owned
};

struct Layer3D {
  std::int32_t no;
  std::int32_t d;     ///< depth
  std::int32_t bno;   ///< bin in the assignment being tried
  std::int32_t z;     ///< offset in its bin
  std::int32_t best;  ///< bin in the best assignment
};

/// The context of one run. Ranges of boxes point into fixed arrays of pack_state.cpp.
struct AllInfo3D {
  std::int16_t W, H, D;
  std::int32_t BVOL;
  std::int16_t n;
  std::int16_t packtype;

  std::span<Box3D> boxes;      ///< the working array
  std::span<Box3D> incumbent;  ///< a solution under construction, in a heuristic
  std::span<Box3D> best;       ///< the best solution stored
  std::span<Box3D*> closing;   ///< room for the boxes of the bin that is being closed

  bool closed[kTableSide + 1];  ///< by bin number
  std::int16_t noc;             ///< count of closed bins
  std::int16_t maxclose;        ///< highest count of closed bins in the run

  std::int16_t z;   ///< best number of bins so far
  std::int16_t lb;  ///< bound at the root
  std::int16_t bound0, bound1, bound2;
  std::int16_t proven;  ///< no packing has fewer bins: lb, or more where the search has learnt it

  std::int64_t fillBest;  ///< best volume of the current single-bin fill
  int fillLimit;          ///< boxes tried at a corner, 0 for all
  int fillNodes;
  int fillNodeLimit;  ///< 0 for none

  int nodes, nodesLow;            ///< thousands, and the counter below them
  int iterations, iterationsLow;  ///< likewise
  int exactCalls;
  int maxTried;  ///< most boxes in one exact test

  int nodelimit, iterlimit, timelimit;
  std::chrono::steady_clock::time_point start;
  double totalTime, boundTime, layerTime, searchTime;  ///< seconds
  bool stopped;                                        ///< a limit was met
};

/// The relation of a pair (a, b), a before b in the list.
enum Relation : std::int16_t {
  kLeft = 0,  ///< x[a] + w[a] <= x[b]
  kRight = 1,
  kUnder = 2,  ///< y[a] + h[a] <= y[b]
  kAbove = 3,
  kFront = 4,  ///< z[a] + d[a] <= z[b]
  kBehind = 5,
  kUndecided = 6,
};
inline constexpr int kRelations = 6;
inline constexpr int kWords = (kTableSide + 63) / 64;
inline constexpr int kMaxPairs = kPackMaxBoxes * (kPackMaxBoxes - 1) / 2;

/// One change on the undo stack: a cell of one of the tables below, and what stood in it.
enum class Cell : std::uint8_t { Relation, Domain, Head, Tail, Next, Prev, After, Before };
struct Change {
  std::uint64_t old;
  std::int16_t row, column;  ///< the column of a set is a word
  Cell cell;
  std::uint8_t axis;
};
inline constexpr int kUndoCapacity = 1 << 20;

/// Tables of the general test. `domain` holds for each pair the relations still allowed as a mask of six
/// bits.
struct RelationTables {
  std::int16_t relation[kTableSide][kTableSide];
  std::uint8_t domain[kTableSide][kTableSide];

  // By axis. head: longest chain of boxes before a box, which is its position. tail: longest chain from a box
  // on, itself included. A relation a -> b fits exactly when head[a] + size[a] + tail[b] does and b doesn't
  // lead to a.
  std::int32_t size[3][kTableSide], head[3][kTableSide], tail[3][kTableSide];
  std::uint64_t next[3][kTableSide][kWords], prev[3][kTableSide][kWords];     ///< decided relations
  std::uint64_t after[3][kTableSide][kWords], before[3][kTableSide][kWords];  ///< and what follows from them

  Change undo[kUndoCapacity];
  struct Frame {
    std::int32_t mark;  ///< height of the undo stack before this pair
    std::int16_t i, j;  ///< the pair
    std::int8_t tried;  ///< relations tried so far
    bool decided;       ///< by forward checking, before its turn
  } frames[kMaxPairs];
  struct Pair {
    std::int16_t i, j;
  } forced[kMaxPairs];  ///< pairs that came down to one relation and wait to be decided, a stack
};

/// The answer of a search within a number of nodes. Cut: it ended before it knew.
enum class Answer { No, Yes, Cut };

struct Corner3D {
  std::int16_t x, y, z;
};
/// A box at a corner: one step of the robot test.
struct Step3D {
  std::int16_t box;
  Corner3D at;
};
inline constexpr int kCornerCapacity = 1 << 19;
inline constexpr int kStepCapacity = 1 << 19;

/// Room of the robot test, used as stacks by its levels.
struct RobotTables {
  Corner3D corners[kCornerCapacity];
  Step3D steps[kStepCapacity];
};

/// Answers of single-bin tests already made, for runs of up to 64 boxes: a set of boxes is a mask by number.
/// A set that falls on another's slot replaces it.
inline constexpr int kMemoBits = 16;
inline constexpr int kMemoBoxes = 64;
struct FitMemo {
  std::uint64_t sets[1 << kMemoBits];
  bool fits[1 << kMemoBits];

  static std::size_t slot(std::uint64_t set) { return set * 0x9e3779b97f4a7c15u >> (64 - kMemoBits); }
  bool knows(std::uint64_t set) const { return set != 0 && sets[slot(set)] == set; }
  bool answer(std::uint64_t set) const { return fits[slot(set)]; }
  void keep(std::uint64_t set, bool answer) {
    sets[slot(set)] = set;
    fits[slot(set)] = answer;
  }
};

FitMemo& fitMemo();
/// Sets whose short test was cut; the answers don't count.
FitMemo& cutMemo();
RelationTables& relationTables();
RobotTables& robotTables();
/// Working copies for a single-bin test.
std::span<Box3D> scratchBoxes();
std::span<Layer3D> layerTable();

/// The one context, cleared, with its ranges set for `n` boxes; n must lie within 0 and kPackMaxBoxes.
AllInfo3D& resetPackState(int n);

/// Sends the message, a line end and "IRREGULAR PROGRAM TERMINATION\n" to the debug sink, and returns.
void reportText(const std::string& text);
template <class... Args>
void report(const char* format, const Args&... args) {
  reportText(platform::formatText<char>(format, {platform::FormatArg(args)...}));
}

double secondsSince(std::chrono::steady_clock::time_point start);

/// Counts a node of the search; sets `stopped` when a limit is met.
void countNode(AllInfo3D& a);
/// Counts an iteration of a single-bin test; the limits are tested once in a thousand.
void countIteration(AllInfo3D& a);
/// Sets `stopped` when the node, iteration or time limit is met, and says so once.
void testLimits(AllInfo3D& a);

inline std::int16_t toShort(int value) {
  return static_cast<std::int16_t>(value);
}
inline std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}
inline int count(std::size_t size) {
  return static_cast<int>(size);
}

}  // namespace mek::pack
