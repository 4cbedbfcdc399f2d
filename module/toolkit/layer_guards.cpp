// Guards of layers, layouts and new entities.
#include "host/app/hostapp.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/tables.h"
#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"
#include "module/toolkit/guards.h"
#include "platform/ui/user_interface.h"

namespace {

bool isLocked(const KvDbLayerTableRecord& layer) {
  return layer.isLocked();
}
void setLocked(KvDbLayerTableRecord& layer, bool state) {
  layer.setIsLocked(state);
}
bool isOff(const KvDbLayerTableRecord& layer) {
  return layer.isOff();
}
void setOff(KvDbLayerTableRecord& layer, bool state) {
  layer.setIsOff(state);
}

KvDbObjectIdArray listOf(KvDbObjectId layer) {
  KvDbObjectIdArray list;
  list.append(layer);
  return list;
}

constexpr const wchar_t* kModel = L"Model";

}  // namespace

// --- Layers

ImLayerStateGuard::~ImLayerStateGuard() {
  for (const auto& [id, state] : m_mapSaved) {
    KvDbLayerTableRecord* layer = nullptr;
    if (kvdbOpenObject(layer, id, KvDb::kForWrite) != Kvad::eOk) continue;
    m_set(*layer, state);
    layer->close();
  }
}

void ImLayerStateGuard::Change(KvDbObjectIdArray const& layers, bool state) {
  for (KvDbObjectId id : layers)
    if (!ChangeOne(id, state)) return;
}

void ImLayerStateGuard::ChangeAll(bool state) {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  KvDbLayerTable* table = nullptr;
  if (!database || kvdbOpenObject(table, database->layerTableId(), KvDb::kForRead) != Kvad::eOk) return;
  const KvDbObjectIdArray layers = table->records();
  table->close();
  for (KvDbObjectId id : layers) ChangeOne(id, state);
}

bool ImLayerStateGuard::ChangeOne(KvDbObjectId id, bool state) {
  KvDbLayerTableRecord* layer = nullptr;
  if (kvdbOpenObject(layer, id, KvDb::kForWrite) != Kvad::eOk) return false;
  // A layer that stands twice in a list keeps the state that it came with.
  m_mapSaved.try_emplace(id, m_get(*layer));
  m_set(*layer, state);
  layer->close();
  return true;
}

ImLayerLocker::ImLayerLocker(bool state) : ImLayerStateGuard(isLocked, setLocked) {
  ChangeAll(state);
}
ImLayerLocker::ImLayerLocker(KvDbObjectId layer, bool state) : ImLayerStateGuard(isLocked, setLocked) {
  Change(listOf(layer), state);
}
ImLayerLocker::ImLayerLocker(KvDbObjectIdArray layers, bool state) : ImLayerStateGuard(isLocked, setLocked) {
  Change(layers, state);
}

ImLayerOffer::ImLayerOffer(bool state) : ImLayerStateGuard(isOff, setOff) {
  ChangeAll(state);
}
ImLayerOffer::ImLayerOffer(KvDbObjectId layer, bool state) : ImLayerStateGuard(isOff, setOff) {
  Change(listOf(layer), state);
}
ImLayerOffer::ImLayerOffer(KvDbObjectIdArray layers, bool state) : ImLayerStateGuard(isOff, setOff) {
  Change(layers, state);
}

ImEntityLayerUnlocker::ImEntityLayerUnlocker(KvDbObjectId id) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return;
  const KvDbObjectId layerId = entity->layerId();
  KvDbLayerTableRecord* layer = nullptr;
  if (kvdbOpenObject(layer, layerId, KvDb::kForWrite) == Kvad::eOk) {
    if (layer->isLocked()) {
      layer->setIsLocked(false);
      m_idLayer = layerId;
    }
    layer->close();
  }
  entity->close();
}

ImEntityLayerUnlocker::~ImEntityLayerUnlocker() {
  KvDbLayerTableRecord* layer = nullptr;
  if (m_idLayer.isNull() || kvdbOpenObject(layer, m_idLayer, KvDb::kForWrite) != Kvad::eOk) return;
  layer->setIsLocked(true);
  layer->close();
}

// --- Layouts

KvDbObjectId IM_GetLayoutIdByName(CString name) {
  const KvDbLayoutManager* manager = kvdbLayoutManagerPtr();
  return manager ? manager->layoutId(name) : KvDbObjectId();
}

ImLayoutSwitcher::ImLayoutSwitcher(int modelSpace, CString layout, int restore)
    : m_pManager(kvdbLayoutManagerPtr()), m_bRestore(restore != 0) {
  if (!m_pManager) return;
  if (m_bRestore && !FindSaved()) return;
  if (!FindTarget(modelSpace, layout)) return;
  const bool isThere = m_idTarget == m_idSaved;
  m_nStatus = isThere || m_pManager->setCurrentLayoutId(m_idTarget) == Kvad::eOk ? 0 : 3;
}

bool ImLayoutSwitcher::FindSaved() {
  const CString current = m_pManager->currentLayoutName();
  m_idSaved = current == kModel ? m_pManager->modelLayoutId() : IM_GetLayoutIdByName(current);
  if (!m_idSaved.isNull()) return true;
  m_nStatus = 2;
  return false;
}

bool ImLayoutSwitcher::FindTarget(int modelSpace, const CString& layout) {
  m_idTarget = modelSpace ? m_pManager->modelLayoutId() : IM_GetLayoutIdByName(layout);
  if (!m_idTarget.isNull()) return true;
  if (modelSpace) return false;
  CString question;
  question.Format(L"没有发现布局 \"%s\", 要创建它吗?", layout);
  if (MessageBoxW(static_cast<HWND>(kdsw_kvadMainWnd()), question, L"创建布局", MB_YESNO) != IDYES) {
    m_nStatus = 1;
    return false;
  }
  return m_pManager->createLayout(layout, m_idTarget) == Kvad::eOk;
}

ImLayoutSwitcher::~ImLayoutSwitcher() {
  if (m_nStatus != 0 || !m_bRestore) return;
  if (!m_idSaved.isNull() && !m_idTarget.isNull() && m_idSaved != m_idTarget)
    m_pManager->setCurrentLayoutId(m_idSaved);
}

// --- New entities

namespace {

template <class T>
bool setThicknessOf(KvDbEntity& entity, double thickness) {
  T* object = T::cast(&entity);
  if (object) object->setThickness(thickness);
  return object != nullptr;
}

/// The classes that take the drawing's thickness. The drawing's lettering shapes are kept as their groups and
/// have none to set.
constexpr bool (*kThick[])(KvDbEntity&, double) = {
    setThicknessOf<KvDb2dPolyline>, setThicknessOf<KvDbArc>,   setThicknessOf<KvDbCircle>,
    setThicknessOf<KvDbLine>,       setThicknessOf<KvDbPoint>, setThicknessOf<KvDbPolyline>,
    setThicknessOf<KvDbTrace>,      setThicknessOf<KvDbText>};

void giveDefaults(const kvds_name name) {
  KvDbObjectId id;
  KvDbEntity* entity = nullptr;
  if (kvdbGetObjectId(id, name) != Kvad::eOk || kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk)
    return;
  for (const auto set : kThick)
    if (set(*entity, entity->database()->thickness())) break;
  entity->setDatabaseDefaults(entity->database());
  entity->close();
}

}  // namespace

ImLastEntDefault::ImLastEntDefault() {
  kvds_setNull(m_name);
  kvdbEntLast(m_name);
}

ImLastEntDefault::~ImLastEntDefault() {
  Apply();
}

Kvad::ErrorStatus ImLastEntDefault::Apply() {
  kvds_name last, next;
  if (kvdbEntLast(last) != RTNORM || kvds_equal(last, m_name)) return Kvad::eNothingHappened;
  while (kvdbEntNext(kvds_isNull(m_name) ? nullptr : m_name, next) == RTNORM) {
    kvds_copy(next, m_name);
    giveDefaults(next);
  }
  return Kvad::eOk;
}
