#include "module/nest/internal/pack_general.h"

#include <algorithm>
#include <array>
#include <bit>

namespace mek::pack {
namespace {

constexpr int kAxes = 3;
constexpr int kAllRelations = 0x3f;
/// Box 0 left of, under or in front of box 1: the mirror images are equivalent.
constexpr int kUnmirrored = 1 << kLeft | 1 << kUnder | 1 << kFront;

using Set = std::array<std::uint64_t, kWords>;

bool has(const std::uint64_t* set, int bit) {
  return set[bit / 64] >> (bit % 64) & 1;
}
void add(Set& set, int bit) {
  set[at(bit / 64)] |= std::uint64_t{1} << (bit % 64);
}

/// Depth-first over the pairs. After each decision everything that it excludes is taken out of the domains,
/// so that a relation that is still allowed always fits when it is tried.
class GeneralSearch {
 public:
  GeneralSearch(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit)
      : a_(a),
        t_(relationTables()),
        boxes_(boxes),
        n_(count(boxes.size())),
        words_((n_ + 63) / 64),
        nodeLimit_(nodeLimit),
        limit_{a.W, a.H, a.D} {}

  Answer run();

 private:
  bool start();
  void openPair(int depth, int i, int j);
  bool nextRelation(int depth);

  bool decide(int i, int j, int relation);
  bool settle();
  bool addEdge(int axis, int first, int second);
  void closeOver(int axis, int first, int second);
  /// Longest chains in one direction: their lengths and the relations that they follow.
  struct Chain {
    std::int32_t (&values)[3][kTableSide];
    const std::uint64_t (&links)[3][kTableSide][kWords];
    Cell cell;
  };
  void push(const Chain& chain, int axis, int box, int value);
  void forbidMisfits(int axis, const Set& heads, const Set& tails);
  void forbid(int axis, int first, int second);
  bool fits(int axis, int first, int second) const;

  void save(Cell cell, int axis, int row, int column, std::uint64_t old);
  void undoTo(int mark);
  void link(Cell cell, std::uint64_t (&sets)[3][kTableSide][kWords], int axis, int row, int bit);

  template <class Visit>
  void each(const std::uint64_t* set, Visit visit) const {
    for (int word = 0; word < words_; ++word)
      for (std::uint64_t bits = set[word]; bits; bits &= bits - 1) visit(word * 64 + std::countr_zero(bits));
  }

  AllInfo3D& a_;
  RelationTables& t_;
  std::span<Box3D> boxes_;
  int n_, words_, nodeLimit_;
  std::array<int, kAxes> limit_;
  Chain heads_{t_.head, t_.next, Cell::Head}, tails_{t_.tail, t_.prev, Cell::Tail};
  int nodes_ = 0, top_ = 0, forced_ = 0;
  bool contradiction_ = false, aborted_ = false;
};

void GeneralSearch::save(Cell cell, int axis, int row, int column, std::uint64_t old) {
  if (top_ < kUndoCapacity) {
    t_.undo[top_++] = {old, toShort(row), toShort(column), cell, static_cast<std::uint8_t>(axis)};
    return;
  }
  if (!aborted_) report("stack filled\n");
  aborted_ = a_.stopped = true;
}

void GeneralSearch::undoTo(int mark) {
  while (top_ > mark) {
    const Change& change = t_.undo[--top_];
    const auto row = static_cast<std::size_t>(change.row), column = static_cast<std::size_t>(change.column);
    switch (change.cell) {
      case Cell::Relation:
        t_.relation[row][column] = static_cast<std::int16_t>(change.old);
        break;
      case Cell::Domain:
        t_.domain[row][column] = static_cast<std::uint8_t>(change.old);
        break;
      case Cell::Head:
        t_.head[change.axis][row] = static_cast<std::int32_t>(change.old);
        break;
      case Cell::Tail:
        t_.tail[change.axis][row] = static_cast<std::int32_t>(change.old);
        break;
      case Cell::Next:
        t_.next[change.axis][row][column] = change.old;
        break;
      case Cell::Prev:
        t_.prev[change.axis][row][column] = change.old;
        break;
      case Cell::After:
        t_.after[change.axis][row][column] = change.old;
        break;
      case Cell::Before:
        t_.before[change.axis][row][column] = change.old;
        break;
    }
  }
}

void GeneralSearch::link(Cell cell, std::uint64_t (&sets)[3][kTableSide][kWords], int axis, int row,
                         int bit) {
  std::uint64_t& word = sets[axis][row][bit / 64];
  save(cell, axis, row, bit / 64, word);
  word |= std::uint64_t{1} << (bit % 64);
}

bool GeneralSearch::fits(int axis, int first, int second) const {
  return t_.head[axis][first] + t_.size[axis][first] + t_.tail[axis][second] <= limit_[at(axis)] &&
         !has(t_.after[axis][second], first);
}

/// Takes "first before second along axis" out of the pair's domain.
void GeneralSearch::forbid(int axis, int first, int second) {
  const int i = std::min(first, second), j = std::max(first, second);
  if (t_.relation[i][j] != kUndecided) return;
  const int old = t_.domain[i][j], left = old & ~(1 << (2 * axis + (first > second)));
  if (left == old) return;
  save(Cell::Domain, 0, i, j, static_cast<std::uint64_t>(old));
  t_.domain[i][j] = static_cast<std::uint8_t>(left);
  if (left == 0) contradiction_ = true;
  if (std::has_single_bit(static_cast<unsigned>(left))) t_.forced[forced_++] = {toShort(i), toShort(j)};
}

/// Whatever leads to `first` now leads to whatever follows `second`.
void GeneralSearch::closeOver(int axis, int first, int second) {
  if (has(t_.after[axis][first], second)) return;
  Set sources{}, targets{};
  std::copy_n(t_.before[axis][first], words_, sources.begin());
  std::copy_n(t_.after[axis][second], words_, targets.begin());
  add(sources, first);
  add(targets, second);
  each(sources.data(), [&](int u) {
    Set fresh{};
    for (int word = 0; word < words_; ++word) {
      std::uint64_t& set = t_.after[axis][u][word];
      fresh[at(word)] = targets[at(word)] & ~set;
      if (!fresh[at(word)]) continue;
      save(Cell::After, axis, u, word, set);
      set |= fresh[at(word)];
    }
    each(fresh.data(), [&](int v) {
      link(Cell::Before, t_.before, axis, v, u);
      forbid(axis, v, u);
    });
  });
}

/// Raises the value of `box` on `chain`, and those of the boxes that follow on it.
void GeneralSearch::push(const Chain& chain, int axis, int box, int value) {
  if (value <= chain.values[axis][box]) return;
  Set changed{}, isOpen{};
  std::array<std::int16_t, kTableSide> open;
  int opened = 0;
  const auto raise = [&](int v, int newValue) {
    if (newValue <= chain.values[axis][v]) return;
    save(chain.cell, axis, v, 0, static_cast<std::uint64_t>(chain.values[axis][v]));
    chain.values[axis][v] = newValue;
    add(changed, v);
    if (has(isOpen.data(), v)) return;
    add(isOpen, v);
    open[at(opened++)] = toShort(v);
  };
  raise(box, value);
  while (opened > 0) {
    const int u = open[at(--opened)];
    isOpen[at(u / 64)] &= ~(std::uint64_t{1} << (u % 64));
    each(chain.links[axis][u],
         [&](int v) { raise(v, chain.values[axis][u] + t_.size[axis][chain.cell == Cell::Head ? u : v]); });
  }
  if (chain.cell == Cell::Head)
    forbidMisfits(axis, changed, Set{});
  else
    forbidMisfits(axis, Set{}, changed);
}

/// Only a box whose head or tail has moved can have lost a relation on the axis.
void GeneralSearch::forbidMisfits(int axis, const Set& heads, const Set& tails) {
  const int limit = limit_[at(axis)];
  each(heads.data(), [&](int u) {
    const int room = limit - t_.head[axis][u] - t_.size[axis][u];
    for (int v = 0; v < n_; ++v)
      if (v != u && t_.tail[axis][v] > room) forbid(axis, u, v);
  });
  each(tails.data(), [&](int v) {
    const int room = limit - t_.tail[axis][v];
    for (int u = 0; u < n_; ++u)
      if (u != v && t_.head[axis][u] + t_.size[axis][u] > room) forbid(axis, u, v);
  });
}

bool GeneralSearch::addEdge(int axis, int first, int second) {
  if (!fits(axis, first, second)) return false;
  link(Cell::Next, t_.next, axis, first, second);
  link(Cell::Prev, t_.prev, axis, second, first);
  closeOver(axis, first, second);
  push(heads_, axis, second, t_.head[axis][first] + t_.size[axis][first]);
  push(tails_, axis, first, t_.tail[axis][second] + t_.size[axis][first]);
  return !contradiction_ && !aborted_;
}

bool GeneralSearch::decide(int i, int j, int relation) {
  save(Cell::Relation, 0, i, j, static_cast<std::uint64_t>(t_.relation[i][j]));
  t_.relation[i][j] = toShort(relation);
  const bool turned = relation % 2 != 0;
  return addEdge(relation / 2, turned ? j : i, turned ? i : j);
}

/// Decides the pairs that have one relation left, until none is. False on a contradiction.
bool GeneralSearch::settle() {
  while (forced_ > 0 && !contradiction_ && !aborted_) {
    const auto [i, j] = t_.forced[--forced_];
    if (t_.relation[i][j] != kUndecided) continue;
    if (!decide(i, j, std::countr_zero(static_cast<unsigned>(t_.domain[i][j])))) break;
  }
  const bool good = forced_ == 0 && !contradiction_ && !aborted_;
  forced_ = 0;
  contradiction_ = false;
  return good;
}

bool GeneralSearch::start() {
  for (int i = 0; i < n_; ++i) {
    const Box3D& box = boxes_[at(i)];
    const std::array<int, kAxes> size = {box.w, box.h, box.d};
    for (int axis = 0; axis < kAxes; ++axis) {
      t_.size[axis][i] = t_.tail[axis][i] = size[at(axis)];
      t_.head[axis][i] = 0;
      for (auto* set : {t_.next[axis][i], t_.prev[axis][i], t_.after[axis][i], t_.before[axis][i]})
        std::fill_n(set, words_, 0);
    }
    std::fill_n(t_.relation[i], n_, kUndecided);
    std::fill_n(t_.domain[i], n_, static_cast<std::uint8_t>(kAllRelations));
  }
  t_.domain[0][1] = kUnmirrored;
  Set all{};
  for (int i = 0; i < n_; ++i) add(all, i);
  for (int axis = 0; axis < kAxes; ++axis) forbidMisfits(axis, all, Set{});
  return settle();
}

void GeneralSearch::openPair(int depth, int i, int j) {
  if (depth > 0) {
    const auto& before = t_.frames[depth - 1];
    if (t_.relation[before.i][before.j] == kUndecided) report("relation error %d %d\n", before.i, before.j);
  }
  t_.frames[depth] = {top_, toShort(i), toShort(j), 0, t_.relation[i][j] != kUndecided};
}

/// Undoes the pair's last relation and goes on to the next one that fits. False when none is left.
bool GeneralSearch::nextRelation(int depth) {
  auto& frame = t_.frames[depth];
  if (frame.decided) return frame.tried++ == 0;
  undoTo(frame.mark);
  while (frame.tried < kRelations && !a_.stopped) {
    const int relation = frame.tried++;
    if (!(t_.domain[frame.i][frame.j] >> relation & 1)) continue;
    countIteration(a_);
    if (++nodes_ > nodeLimit_ && nodeLimit_ != 0) aborted_ = true;
    if (aborted_ || a_.stopped) return false;
    if (decide(frame.i, frame.j, relation) && settle()) return true;
    forced_ = 0;
    contradiction_ = false;
    if (aborted_) return false;
    undoTo(frame.mark);
  }
  return false;
}

Answer GeneralSearch::run() {
  if (!start()) return aborted_ ? Answer::Cut : Answer::No;
  int depth = 0;
  openPair(0, 0, 1);
  while (depth >= 0) {
    if (!nextRelation(depth)) {
      if (aborted_ || a_.stopped) return Answer::Cut;
      --depth;
      continue;
    }
    const auto [i, j] = std::pair(t_.frames[depth].i, t_.frames[depth].j);
    if (i == n_ - 2) break;
    ++depth;
    if (j + 1 < n_)
      openPair(depth, i, j + 1);
    else
      openPair(depth, i + 1, i + 2);
  }
  if (depth < 0) return Answer::No;
  for (int i = 0; i < n_; ++i) {
    boxes_[at(i)].x = toShort(t_.head[0][i]);
    boxes_[at(i)].y = toShort(t_.head[1][i]);
    boxes_[at(i)].z = toShort(t_.head[2][i]);
  }
  return Answer::Yes;
}

}  // namespace

Answer generalTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit) {
  GeneralSearch search(a, boxes, nodeLimit);
  return search.run();
}

}  // namespace mek::pack
