#include "host/database/undo.h"

#include <algorithm>

#include "host/database/database.h"

namespace {

/// Files into and out of a step's own bytes, which it holds while it lives: no copy for each object.
class StateFiler : public KvDbMemoryFiler {
 public:
  explicit StateFiler(std::vector<std::byte>& bytes) : KvDbMemoryFiler(Purpose::Undo), home_(bytes) {
    bytes_.swap(home_);
  }
  ~StateFiler() override { bytes_.swap(home_); }
  StateFiler(const StateFiler&) = delete;
  StateFiler& operator=(const StateFiler&) = delete;

  std::uint32_t size() const { return static_cast<std::uint32_t>(bytes_.size()); }
  /// Puts the object's state at the end; its length.
  std::uint32_t keep(const KvDbObject& object) {
    const std::uint32_t before = size();
    object.dwgOutFields(*this);
    return size() - before;
  }
  void putBack(KvDbObject& object, std::uint32_t offset) {
    at_ = offset;
    object.dwgInFields(*this);
  }

 private:
  std::vector<std::byte>& home_;
};

}  // namespace

void KvDbUndoRecorder::beginGroup() {
  if (depth_++ > 0) return;
  current_ = Group();
  ++serial_;
}

void KvDbUndoRecorder::endGroup(bool keep) {
  if (depth_ == 0 || --depth_ > 0) return;
  savePoints_.clear();
  if (!keep) current_ = Group();
  if (current_.entries.empty()) return;
  current_.bytes.shrink_to_fit();
  current_.entries.shrink_to_fit();
  done_.push_back(std::move(current_));
  current_ = Group();
  undone_.clear();
  keepToLimit();
}

void KvDbUndoRecorder::keepToLimit() {
  if (limit_ < 0 || done_.size() <= static_cast<std::size_t>(limit_)) return;
  const std::size_t gone = done_.size() - static_cast<std::size_t>(limit_);
  done_.erase(done_.begin(), done_.begin() + static_cast<std::ptrdiff_t>(gone));
  for (std::size_t& mark : marks_) mark = mark > gone ? mark - gone : 0;
  if (gatheredFrom_) gatheredFrom_ = *gatheredFrom_ > gone ? *gatheredFrom_ - gone : 0;
}

void KvDbUndoRecorder::setLimit(int steps) {
  limit_ = steps;
  if (limit_ == 0) undone_.clear();
  keepToLimit();
}

void KvDbUndoRecorder::setSavePoint() {
  savePoints_.push_back({current_.entries.size(), current_.bytes.size()});
  ++serial_;  // what changes from here on keeps its state once more
}

void KvDbUndoRecorder::releaseSavePoint() {
  if (!savePoints_.empty()) savePoints_.pop_back();
}

void KvDbUndoRecorder::rollBack() {
  if (savePoints_.empty()) return;
  const SavePoint point = savePoints_.back();
  savePoints_.pop_back();
  Group tail;
  const auto from = current_.entries.begin() + static_cast<std::ptrdiff_t>(point.entries);
  tail.entries.assign(from, current_.entries.end());
  tail.bytes = current_.bytes;
  current_.entries.erase(from, current_.entries.end());
  current_.bytes.resize(point.bytes);
  exchange(tail, true);
  ++serial_;
}

void KvDbUndoRecorder::noteChange(KvDbStub& stub) {
  if (depth_ == 0 || stub.undoSerial == serial_) return;
  stub.undoSerial = serial_;
  const auto offset = static_cast<std::uint32_t>(current_.bytes.size());
  const std::uint32_t size = StateFiler(current_.bytes).keep(*stub.object);
  current_.entries.push_back({&stub, offset, size, false, stub.isErased});
}

void KvDbUndoRecorder::noteCreation(KvDbStub& stub) {
  if (depth_ == 0) return;
  stub.undoSerial = serial_;
  current_.entries.push_back({&stub, static_cast<std::uint32_t>(current_.bytes.size()), 0, true, true});
}

/// Puts the kept states back and keeps the present ones in their place.
void KvDbUndoRecorder::exchange(Group& group, bool backwards) {
  Group present;
  present.entries.reserve(group.entries.size());
  present.bytes.reserve(group.bytes.size());
  {
    StateFiler from(group.bytes), to(present.bytes);
    const auto swapOne = [&](const Entry& entry) {
      KvDbStub& stub = *entry.stub;
      if (stub.database) stub.database->tellObservers(stub);
      Entry fresh{&stub, to.size(), 0, entry.isCreation, stub.isErased};
      if (!entry.isCreation) {
        fresh.size = to.keep(*stub.object);
        from.putBack(*stub.object, entry.offset);
      }
      stub.isErased = entry.wasErased;
      present.entries.push_back(fresh);
    };
    if (backwards)
      std::for_each(group.entries.rbegin(), group.entries.rend(), swapOne);
    else
      std::for_each(group.entries.begin(), group.entries.end(), swapOne);
  }
  // Kept in the order of the changes, whichever way it was walked.
  if (backwards) std::reverse(present.entries.begin(), present.entries.end());
  group = std::move(present);
}

bool KvDbUndoRecorder::undo() {
  if (depth_ > 0 || done_.empty()) return false;
  exchange(done_.back(), true);
  undone_.push_back(std::move(done_.back()));
  done_.pop_back();
  while (!marks_.empty() && marks_.back() > done_.size()) marks_.pop_back();
  if (gatheredFrom_ && *gatheredFrom_ > done_.size()) gatheredFrom_.reset();
  return true;
}

bool KvDbUndoRecorder::redo() {
  if (depth_ > 0 || undone_.empty()) return false;
  exchange(undone_.back(), false);
  done_.push_back(std::move(undone_.back()));
  undone_.pop_back();
  return true;
}

void KvDbUndoRecorder::mark() {
  marks_.push_back(done_.size());
}

int KvDbUndoRecorder::undoToMark() {
  if (depth_ > 0) return 0;
  const std::size_t before = done_.size(), target = marks_.empty() ? 0 : marks_.back();
  if (!marks_.empty()) marks_.pop_back();
  while (done_.size() > target) undo();
  return static_cast<int>(before - target);
}

bool KvDbUndoRecorder::beginGathering() {
  if (depth_ > 0 || gatheredFrom_) return false;
  gatheredFrom_ = done_.size();
  return true;
}

void KvDbUndoRecorder::join(Group& group, const Group& behind) {
  const auto offset = static_cast<std::uint32_t>(group.bytes.size());
  group.bytes.insert(group.bytes.end(), behind.bytes.begin(), behind.bytes.end());
  for (Entry entry : behind.entries) {
    entry.offset += offset;
    group.entries.push_back(entry);
  }
}

bool KvDbUndoRecorder::endGathering() {
  if (depth_ > 0 || !gatheredFrom_) return false;
  const std::size_t first = *gatheredFrom_;
  gatheredFrom_.reset();
  if (done_.size() <= first + 1) return true;
  for (std::size_t i = first + 1; i < done_.size(); ++i) join(done_[first], done_[i]);
  done_.resize(first + 1);
  // Marks that stood between the steps have no place any more.
  std::erase_if(marks_, [&](std::size_t mark) { return mark > first + 1; });
  return true;
}

void KvDbUndoRecorder::clear() {
  done_.clear();
  undone_.clear();
  marks_.clear();
  gatheredFrom_.reset();
}

std::size_t KvDbUndoRecorder::memory() const {
  std::size_t total = 0;
  for (const auto* groups : {&done_, &undone_})
    for (const Group& group : *groups)
      total += group.bytes.capacity() + group.entries.capacity() * sizeof(Entry);
  return total;
}
