#pragma once
// The text and dimension styles of the standards, in drawings, and dimensions that follow them.
#include "host/entities/dimension.h"
#include "siblings/symbols/standards.h"

namespace kmsymb {

/// The standard's style, made when missing; one that is there stays as it is. Null when the table can't be
/// written.
KvDbObjectId ensureTextStyle(KvDbDatabase& drawing, Standard standard);
KvDbObjectId ensureDimStyle(KvDbDatabase& drawing, Standard standard);
/// What the standard says of dimensions of a class in that style: values of angles stand upright.
void applyClass(KvDbDimVars& variables, const KvRxClass* type);
/// True for null (any dimension), for classes of dimensions and for leaders.
bool isDimensionClass(const KvRxClass* type);
/// Layer, style, what the class asks for, and the drawing's scale. The dimension must be open for write.
bool setDimensionProperties(KvDbDimension* dimension);
/// A variable of the style, for a class, as the value of a resbuf: numbers, texts, names of records.
bool dimensionVariable(const wchar_t* name, resbuf* value, const KvRxClass* type, KvDbDatabase* drawing);

}  // namespace kmsymb
