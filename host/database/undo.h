#pragma once
// Undo and redo by groups: what one command changed is one step.
//
// Before an object is changed for the first time inside a group, its state is kept; undoing a group puts the
// states back and keeps the present ones for redo. Objects that came into being are erased by undo and
// brought back by redo; they stay in memory, so their ids stay good. Changes outside a group make no step.
#include <cstdint>
#include <optional>
#include <vector>

#include "host/database/dbobject.h"

class KvDbUndoRecorder {
 public:
  /// Groups nest; the outermost one is the step. An empty group makes none. A new step ends what could be
  /// redone. With `keep` false the changes of the outermost group stay but make no step.
  void beginGroup();
  void endGroup(bool keep = true);
  bool isInGroup() const { return depth_ > 0; }

  /// A place inside the open group to which changes can be taken back. Save points nest; the group must be
  /// open.
  void setSavePoint();
  /// Keeps what was changed since the last one.
  void releaseSavePoint();
  /// Takes back what was changed since the last one.
  void rollBack();
  bool hasSavePoint() const { return !savePoints_.empty(); }

  /// Steps that can be undone and redone.
  int undoCount() const { return static_cast<int>(done_.size()); }
  int redoCount() const { return static_cast<int>(undone_.size()); }
  /// False when there is nothing to do, or inside a group.
  bool undo();
  bool redo();
  /// A place to come back to; undoToMark undoes all steps since the last one and takes it away. Without a
  /// mark it undoes everything.
  void mark();
  /// The number of steps that it took back.
  int undoToMark();
  /// Marks that stand now.
  int markCount() const { return static_cast<int>(marks_.size()); }
  /// From here on steps are gathered; the end makes one step of them. Undoing past the beginning ends the
  /// gathering. False when steps are being gathered already, or are not; inside a group.
  bool beginGathering();
  bool endGathering();
  bool isGathering() const { return gatheredFrom_.has_value(); }
  /// How many steps are kept at most, the oldest go first; 0 keeps none. Below 0: all.
  void setLimit(int steps);
  int limit() const { return limit_; }
  /// Forgets all steps.
  void clear();
  /// Bytes that the kept states take.
  std::size_t memory() const;

  /// Called by objects before a change, and by the drawing for a new object.
  void noteChange(KvDbStub& stub);
  void noteCreation(KvDbStub& stub);

 private:
  struct Entry {
    KvDbStub* stub;
    std::uint32_t offset, size;  // of the kept state in the group's bytes
    bool isCreation;
    bool wasErased;
  };
  struct Group {
    std::vector<Entry> entries;
    std::vector<std::byte> bytes;
  };
  struct SavePoint {
    std::size_t entries, bytes;
  };
  static void exchange(Group& group, bool backwards);
  /// The group behind another one, as one.
  static void join(Group& group, const Group& behind);
  void keepToLimit();

  std::vector<Group> done_, undone_;
  std::vector<std::size_t> marks_;  // numbers of steps at the marks
  Group current_;
  std::vector<SavePoint> savePoints_;
  std::optional<std::size_t> gatheredFrom_;  // the number of steps where gathering began
  int limit_ = -1;
  std::uint32_t serial_ = 0;
  int depth_ = 0;
};
