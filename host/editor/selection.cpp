#include "host/editor/selection.h"

#include <algorithm>
#include <utility>

#include "host/base/context.h"
#include "host/database/names.h"
#include "host/editor/editor.h"

namespace {

/// The second word of a set's name; no drawing has this number.
constexpr long long kSetTag = -5007;

KvEdSelections* selections() {
  KvEdEditor* editor = KvHostContext::current().editor;
  return editor ? &editor->selections() : nullptr;
}

KvEdPicks* picksOf(const long long* set) {
  KvEdSelections* all = selections();
  return all && set ? all->find(set) : nullptr;
}

bool isNone(const long long* name) {
  return !name || kvds_isNull(name);
}

KvEdPicks::iterator memberOf(KvEdPicks& picks, KvDbObjectId id) {
  return std::find_if(picks.begin(), picks.end(), [&](const KvEdPick& pick) { return pick.id == id; });
}

/// Writes a chain node by node.
class Chain {
 public:
  void add(int type) { append(type); }
  void addShort(long value) { append(RTSHORT)->resval.rint = static_cast<std::int16_t>(value); }
  void addPoint(const KvGePoint3d& p) {
    resbuf* node = append(RT3DPOINT);
    node->resval.rpoint[0] = p.x;
    node->resval.rpoint[1] = p.y;
    node->resval.rpoint[2] = p.z;
  }
  void addName(KvDbObjectId id) { kvdbGetKvdsName(append(RTENAME)->resval.rlname, id); }
  void addPointGroup(const KvGePoint3d& p, const KvGeVector3d& direction) {
    add(RTLB);
    addShort(0);
    addPoint(p);
    if (!direction.isCodirectionalTo(KvGeVector3d::kZAxis)) addPoint(KvGePoint3d::kOrigin + direction);
    add(RTLE);
  }
  resbuf* take() { return std::exchange(head_, nullptr); }

 private:
  resbuf* append(int type) {
    resbuf* node = kvutNewRb(type);
    (last_ ? last_->rbnext : head_) = node;
    last_ = node;
    return node;
  }
  resbuf *head_ = nullptr, *last_ = nullptr;
};

class NameXWriter {
 public:
  explicit NameXWriter(const KvGeVector3d& direction) : direction_(direction) {}

  void item(const KvEdPick& pick) {
    chain_.add(RTLB);
    chain_.addShort(static_cast<long>(pick.method));
    chain_.addName(pick.id);
    chain_.addShort(pick.marker);
    if (pick.method == KvEdPickMethod::Window || pick.method == KvEdPickMethod::Crossing)
      chain_.addShort(numberOf(pick.window));
    if (pick.method == KvEdPickMethod::Point || pick.method == KvEdPickMethod::Fence)
      for (const KvGePoint3d& point : pick.points) chain_.addPointGroup(point, direction_);
    if (pick.isNested) {
      KvGePoint3d origin;
      KvGeVector3d axes[3];
      pick.transform.getCoordSystem(origin, axes[0], axes[1], axes[2]);
      for (const KvGeVector3d& axis : axes) chain_.addPoint({axis.x, axis.y, axis.z});
      chain_.addPoint(origin);
      for (const KvDbObjectId container : pick.containers) chain_.addName(container);
    }
    chain_.add(RTLE);
  }

  resbuf* finish() {
    for (std::size_t i = 0; i < windows_.size(); ++i) {
      chain_.add(RTLB);
      chain_.addShort(-static_cast<long>(i) - 1);
      if (windows_[i])
        for (const KvGePoint3d& corner : *windows_[i]) chain_.addPointGroup(corner, direction_);
      chain_.add(RTLE);
    }
    return chain_.take();
  }

 private:
  long numberOf(const std::shared_ptr<const KvEdPickWindow>& window) {
    auto found = std::find(windows_.begin(), windows_.end(), window);
    if (found == windows_.end()) found = windows_.insert(found, window);
    return -static_cast<long>(found - windows_.begin()) - 1;
  }

  KvGeVector3d direction_;
  Chain chain_;
  std::vector<std::shared_ptr<const KvEdPickWindow>> windows_;
};

}  // namespace

void KvEdSelections::add(KvEdPicks picks, long long* set) {
  set[0] = ++lastNumber_;
  set[1] = kSetTag;
  sets_[set[0]] = std::move(picks);
}

KvEdPicks* KvEdSelections::find(const long long* set) {
  if (!set || set[1] != kSetTag) return nullptr;
  const auto found = sets_.find(set[0]);
  return found == sets_.end() ? nullptr : &found->second;
}

bool KvEdSelections::free(const long long* set) {
  return find(set) && sets_.erase(set[0]) > 0;
}

int kvedSSAdd(const long long* name, const long long* set, long long* result) {
  KvEdSelections* all = selections();
  if (!all || !result) return RTERROR;
  KvDbObjectId id;
  if (!isNone(name) && (kvdbGetObjectId(id, name) != Kvad::eOk || id.isErased())) return RTERROR;
  if (isNone(set)) {
    KvEdPicks picks;
    if (!id.isNull()) picks.push_back(KvEdPick::of(id));
    all->add(std::move(picks), result);
    return RTNORM;
  }
  KvEdPicks* picks = all->find(set);
  if (!picks || id.isNull()) return RTERROR;
  if (memberOf(*picks, id) == picks->end()) picks->push_back(KvEdPick::of(id));
  const kvds_name same = {set[0], set[1]};
  kvds_copy(same, result);
  return RTNORM;
}

int kvedSSDel(const long long* name, const long long* set) {
  KvEdPicks* picks = picksOf(set);
  KvDbObjectId id;
  if (!picks || kvdbGetObjectId(id, name) != Kvad::eOk) return RTERROR;
  const auto member = memberOf(*picks, id);
  if (member == picks->end()) return RTERROR;
  picks->erase(member);
  return RTNORM;
}

int kvedSSMemb(const long long* name, const long long* set) {
  KvEdPicks* picks = picksOf(set);
  KvDbObjectId id;
  if (!picks || kvdbGetObjectId(id, name) != Kvad::eOk) return RTERROR;
  return memberOf(*picks, id) != picks->end() ? RTNORM : RTERROR;
}

int kvedSSName(const long long* set, long index, long long* name) {
  const KvEdPicks* picks = picksOf(set);
  if (!picks || !name || index < 0 || index >= static_cast<long>(picks->size())) return RTERROR;
  return kvdbGetKvdsName(name, (*picks)[static_cast<std::size_t>(index)].id) == Kvad::eOk ? RTNORM : RTERROR;
}

int kvedSSLength(const long long* set, long* length) {
  const KvEdPicks* picks = picksOf(set);
  if (!picks || !length) return RTERROR;
  *length = static_cast<long>(picks->size());
  return RTNORM;
}

int kvedSSFree(const long long* set) {
  KvEdSelections* all = selections();
  return all && set && all->free(set) ? RTNORM : RTERROR;
}

int kvedSSGetFirst(resbuf** grips, resbuf** implied) {
  if (grips) *grips = nullptr;
  if (implied) *implied = nullptr;
  KvEdSelections* all = selections();
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!all || !database) return RTERROR;
  KvEdPicks picks = all->implied(database->serial());
  std::erase_if(picks, [](const KvEdPick& pick) { return !pick.id.isValid(); });
  if (picks.empty()) return RTERROR;
  for (resbuf** wanted : {grips, implied}) {
    if (!wanted) continue;
    *wanted = kvutNewRb(RTPICKS);
    all->add(picks, (*wanted)->resval.rlname);
  }
  return RTNORM;
}

int kvedSSSetFirst(const long long* implied, const long long* grips) {
  KvEdSelections* all = selections();
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!all || !database) return RTERROR;
  const long long* wanted = isNone(implied) ? grips : implied;
  if (isNone(wanted)) {
    all->implied(database->serial()).clear();
    return RTNORM;
  }
  const KvEdPicks* picks = all->find(wanted);
  if (!picks) return RTERROR;
  all->implied(database->serial()) = *picks;
  return RTNORM;
}

int kvedSSNameX(resbuf** chain, const long long* set, long index) {
  if (!chain) return RTERROR;
  *chain = nullptr;
  const KvEdPicks* picks = picksOf(set);
  if (!picks || picks->empty() || index < -1 || index >= static_cast<long>(picks->size())) return RTERROR;
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  NameXWriter writer(database ? kvedViewOf(*database).direction : KvGeVector3d::kZAxis);
  if (index >= 0)
    writer.item((*picks)[static_cast<std::size_t>(index)]);
  else
    for (const KvEdPick& pick : *picks) writer.item(pick);
  *chain = writer.finish();
  return RTNORM;
}

Kvad::ErrorStatus kvedSetPreviousSelection(KvDbDatabase* database, const long long* set) {
  database = kvdbDatabaseOrWorking(database);
  const KvEdPicks* picks = picksOf(set);
  if (!database) return Kvad::eNoDatabase;
  if (!picks) return Kvad::eKeyNotFound;
  selections()->previous(database->serial()) = *picks;
  return Kvad::eOk;
}

KvDbObjectIdArray KvEdSelectionSetService::candidates() const {
  KvDbObjectIdArray ids;
  for (const KvEdPick& pick : picks_) ids.append(pick.id);
  return ids;
}

Kvad::ErrorStatus KvEdSelectionSetService::remove(KvDbObjectId id) {
  return std::erase_if(picks_, [&](const KvEdPick& pick) { return pick.id == id; }) > 0 ? Kvad::eOk
                                                                                        : Kvad::eKeyNotFound;
}

Kvad::ErrorStatus addSSgetFilterInputContextReactor(KvApDocument* document, KvEdSSGetFilter* filter,
                                                    int mask) {
  KvEdSelections* all = selections();
  if (!all || !filter) return Kvad::eNullObjectPointer;
  for (const auto& row : all->filters)
    if (row.document == document && row.filter == filter) return Kvad::eDuplicateKey;
  all->filters.push_back({document, filter, mask});
  return Kvad::eOk;
}

Kvad::ErrorStatus removeSSgetFilterInputContextReactor(KvApDocument* document, KvEdSSGetFilter* filter, int) {
  KvEdSelections* all = selections();
  if (!all) return Kvad::eKeyNotFound;
  const auto isMeant = [&](const KvEdSelections::Filter& row) {
    return row.document == document && row.filter == filter;
  };
  return std::erase_if(all->filters, isMeant) > 0 ? Kvad::eOk : Kvad::eKeyNotFound;
}
