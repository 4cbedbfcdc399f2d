#pragma once
// The layers of the standard in force, in drawings. A null drawing is the working one.
#include "host/database/entity.h"
#include "siblings/symbols/standards.h"

namespace kmsymb {

/// The name of a kind's layer; empty for a kind that is none.
CString layerNameOf(int kind);
/// A kind's layer, made with its linetype when missing; one that is there stays as it is. Null for a kind
/// that is none, without a drawing, or when the layer table can't be written.
KvDbObjectId ensureLayer(int kind, KvDbDatabase* drawing);
KvDbObjectId ensureLayer(int kind, KvDbDatabase& drawing, Standard standard);
/// A linetype, loaded from the file of the drawing's measurement when missing; null when it can't be had.
KvDbObjectId ensureLinetype(const CString& name, KvDbDatabase& drawing);
/// Layer of the kind; colour, linetype and width by layer. The entity must be open for write.
bool setPropertiesByKind(KvDbEntity* entity, int kind);

}  // namespace kmsymb
