#include "module/toolkit/annotation.h"

#include "host/entities/annotation.h"
#include "host/entities/dimension.h"

namespace {

/// Opens the object for the length of one call; 0 when it can't be opened.
template <class Call>
int withObject(KvDbObjectId id, KvDb::OpenMode mode, Call&& call) {
  KvDbObject* object = nullptr;
  if (kvdbOpenAny(object, id, mode) != Kvad::eOk) return 0;
  const int result = call(object);
  object->close();
  return result;
}

}  // namespace

int IM_EnableObjectAnnotation(KvDbObject* object, int enable) {
  const auto* service = kvdbAnnotativeObjectPE(object);
  if (!service || !kvdbObjectContextInterface(object)) return 0;
  const bool isWanted = enable != 0;
  if (service->annotative(object) != isWanted) service->setAnnotative(object, isWanted);
  return service->annotative(object) == isWanted;
}

int IM_EnableObjectAnnotation(KvDbObjectId id, int enable) {
  return withObject(id, KvDb::kForWrite,
                    [&](KvDbObject* object) { return IM_EnableObjectAnnotation(object, enable); });
}

int IM_IsObjectAnnotative(KvDbObject* object) {
  const auto* service = kvdbAnnotativeObjectPE(object);
  return service && service->annotative(object);
}

int IM_IsObjectAnnotative(KvDbObjectId id) {
  return withObject(id, KvDb::kForRead, [](KvDbObject* object) { return IM_IsObjectAnnotative(object); });
}

int IM_SetObjectAnnotation(KvDbObject* object, CString scaleName) {
  const auto* contexts = kvdbObjectContextInterface(object);
  if (!contexts || !object->database() || !IM_EnableObjectAnnotation(object, 1)) return 0;
  KvDbObjectContextManager manager(*object->database());
  const auto* scales = manager.contextCollection(kvdbAnnotationScaleCollectionName);
  return scales && contexts->addContext(object, scales->getContext(scaleName)) == Kvad::eOk;
}

int IM_SetObjectAnnotation(KvDbObjectId id, CString scaleName) {
  return withObject(id, KvDb::kForWrite,
                    [&](KvDbObject* object) { return IM_SetObjectAnnotation(object, scaleName); });
}

int IM_AutoAnnotationDimension(KvDbDimension* dimension) {
  if (!dimension || !dimension->database() || !dimension->isWriteEnabled()) return 0;
  const auto* contexts = kvdbObjectContextInterface(dimension);
  if (!contexts || !IM_IsObjectAnnotative(dimension)) return 1;
  for (KvDbObjectId id : contexts->contexts(dimension))
    if (const auto scale = kvdbAnnotationScaleOf(id)) {
      dimension->setVariable(KvDbDimVar::Scale, scale->drawingUnits / scale->paperUnits);
      break;
    }
  return dimension->recomputeDimBlock() == Kvad::eOk;
}
