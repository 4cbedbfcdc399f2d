#include "siblings/symbols/records.h"

#include <cmath>
#include <memory>

#include "host/database/dictionary.h"
#include "host/database/names.h"
#include "siblings/symbols/settings.h"

namespace kmsymb {
namespace {

constexpr const wchar_t *kDictionary = L"KORVANE_SYMBOLS", *kStandard = L"STANDARD", *kScale = L"SCALE",
                        *kPoints = L"SYMBOL_POINTS";
constexpr int kTextCode = 1, kPaperCode = 40, kMeasureCode = 41, kPointCode = 330;

struct ChainCloser {
  void operator()(resbuf* chain) const { kvutRelRb(chain); }
};
using Chain = std::unique_ptr<resbuf, ChainCloser>;

KvDbObjectId entryOf(KvDbObjectId dictionary, const wchar_t* name) {
  KvDbObjectId id;
  KvDbDictionary* open = nullptr;
  if (dictionary.isNull() || kvdbOpenObject(open, dictionary, KvDb::kForRead) != Kvad::eOk) return id;
  if (open->getAt(name, id) != Kvad::eOk || !id.isValid()) id.setNull();
  open->close();
  return id;
}

Chain contentOf(const KvDbDatabase& drawing, const wchar_t* name) {
  const KvDbObjectId id = entryOf(entryOf(drawing.namedObjectsDictionaryId(), kDictionary), name);
  KvDbXrecord* record = nullptr;
  if (id.isNull() || kvdbOpenObject(record, id, KvDb::kForRead) != Kvad::eOk) return nullptr;
  resbuf* chain = nullptr;
  record->rbChain(&chain);
  record->close();
  return Chain(chain);
}

/// The entry of a dictionary, made when missing.
template <class T>
KvDbObjectId ensured(KvDbObjectId dictionary, const wchar_t* name) {
  KvDbObjectId id = entryOf(dictionary, name);
  if (!id.isNull()) return id;
  KvDbDictionary* open = nullptr;
  if (kvdbOpenObject(open, dictionary, KvDb::kForWrite) != Kvad::eOk) return id;
  auto made = std::make_unique<T>();
  if (open->setAt(name, made.get(), id) == Kvad::eOk)
    made.release()->close();
  else
    id.setNull();
  open->close();
  return id;
}

bool setContent(KvDbDatabase& drawing, const wchar_t* name, Chain chain) {
  const KvDbObjectId own = ensured<KvDbDictionary>(drawing.namedObjectsDictionaryId(), kDictionary);
  const KvDbObjectId id = own.isNull() ? own : ensured<KvDbXrecord>(own, name);
  KvDbXrecord* record = nullptr;
  if (id.isNull() || !chain || kvdbOpenObject(record, id, KvDb::kForWrite) != Kvad::eOk) return false;
  const bool isSet = record->setFromRbChain(*chain) == Kvad::eOk;
  record->close();
  return isSet;
}

bool isScale(double value) {
  return std::isfinite(value) && value > 0;
}

bool setPoints(KvDbDatabase& drawing, const KvDbObjectIdArray& points) {
  // The first node keeps the record from being empty, which a chain can't say.
  resbuf* head = kvutBuildList(70, points.length(), 0);
  resbuf* tail = head;
  for (KvDbObjectId id : points) {
    long long name[2] = {};
    if (kvdbGetKvdsName(name, id) != Kvad::eOk) continue;
    tail->rbnext = kvutBuildList(kPointCode, static_cast<const long long*>(name), 0);
    if (tail->rbnext) tail = tail->rbnext;
  }
  return setContent(drawing, kPoints, Chain(head));
}

}  // namespace

std::optional<Standard> standardOf(const KvDbDatabase& drawing) {
  const Chain chain = contentOf(drawing, kStandard);
  for (const resbuf* node = chain.get(); node; node = node->rbnext)
    if (node->restype == kTextCode && node->resval.rstring) return standardNamed(node->resval.rstring);
  return std::nullopt;
}

bool setStandard(KvDbDatabase& drawing, Standard standard) {
  return setContent(drawing, kStandard, Chain(kvutBuildList(kTextCode, rowOf(standard).name, 0)));
}

Standard standardInForce() {
  if (const KvDbDatabase* drawing = kvdbDatabaseOrWorking(nullptr))
    if (const auto standard = standardOf(*drawing)) return *standard;
  return currentSettings().standard;
}

SystemScale systemScaleOf(const KvDbDatabase& drawing) {
  SystemScale scale;
  const Chain chain = contentOf(drawing, kScale);
  for (const resbuf* node = chain.get(); node; node = node->rbnext) {
    if (node->restype == kPaperCode && isScale(node->resval.rreal)) scale.paper = node->resval.rreal;
    if (node->restype == kMeasureCode && isScale(node->resval.rreal)) scale.measure = node->resval.rreal;
  }
  return scale;
}

bool setSystemScale(KvDbDatabase& drawing, const SystemScale& scale) {
  return isScale(scale.paper) && isScale(scale.measure) &&
         setContent(drawing, kScale,
                    Chain(kvutBuildList(kPaperCode, scale.paper, kMeasureCode, scale.measure, 0)));
}

KvDbObjectIdArray recordedPoints(const KvDbDatabase& drawing) {
  KvDbObjectIdArray points;
  const Chain chain = contentOf(drawing, kPoints);
  for (const resbuf* node = chain.get(); node; node = node->rbnext) {
    KvDbObjectId id;
    if (node->restype != kPointCode || kvdbGetObjectId(id, node->resval.rlname) != Kvad::eOk) continue;
    if (id.isValid() && id.database() == &drawing && !points.contains(id)) points.append(id);
  }
  return points;
}

bool recordPoint(KvDbObjectId id) {
  if (!id.isValid()) return false;
  KvDbObjectIdArray points = recordedPoints(*id.database());
  if (points.contains(id)) return false;
  points.append(id);
  return setPoints(*id.database(), points);
}

bool unrecordPoint(KvDbObjectId id) {
  if (id.isNull() || !id.database()) return false;
  KvDbObjectIdArray points = recordedPoints(*id.database());
  return points.remove(id) && setPoints(*id.database(), points);
}

}  // namespace kmsymb
