#pragma once
// Annotative objects: texts and dimensions whose size on paper stays the same.
#include "host/database/database.h"
#include "module/core/export.h"

class KvDbDimension;

/// Makes an object annotative, or no longer so; it must be able to be and open for write (the form with an id
/// opens it). Enabling answers 1 when it is annotative afterwards, disabling 0 when it still is.
MEK_API int IM_EnableObjectAnnotation(KvDbObject* object, int enable);
MEK_API int IM_EnableObjectAnnotation(KvDbObjectId id, int enable);
/// 0 also for null and for objects that can't be annotative.
MEK_API int IM_IsObjectAnnotative(KvDbObject* object);
MEK_API int IM_IsObjectAnnotative(KvDbObjectId id);
/// Makes an object annotative and attaches it to the drawing's scale of that name. 0 when the object can't be
/// annotative, isn't open for write, or the drawing has no such scale.
MEK_API int IM_SetObjectAnnotation(KvDbObject* object, CString scaleName);
MEK_API int IM_SetObjectAnnotation(KvDbObjectId id, CString scaleName);
/// Draws an annotative dimension anew at the first scale that it is attached to. It must be open for write
/// and in a drawing: 0. One that isn't annotative stays as it is: 1.
MEK_API int IM_AutoAnnotationDimension(KvDbDimension* dimension);
