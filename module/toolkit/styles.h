#pragma once
// Text styles, dimension styles and linetypes: their names by the standard in force, making sure that they
// are there, and what the symbol module tells of them. A null drawing is the working one.
//
// Flags of the name calls: 2 gives the name without making sure that it exists; 1 answers "Standard" when
// nothing can be had, not an empty text.
#include "host/base/resbuf.h"
#include "host/database/database.h"
#include "module/core/export.h"

class KvDbDimension;

/// 0 Standard, 2 the one built from the standard's name, any other the standard's current one.
using IM_TEXT_STYLE = int;
/// 0 Standard, any other the standard's current one.
using IM_DIM_STYLE = int;
/// 0 ByLayer, 1 ByBlock, 2 Continuous.
using IM_LINETYPE = int;

MEK_API CString IM_GetProDimStylePrefix();   ///< "AM_"
MEK_API CString IM_GetProTextStylePrefix();  ///< "AC"

/// The drafting standard in force, in upper case; empty without the symbol module.
MEK_API CString IM_GetStandardName();
MEK_API CString IM_GetStandardDimStyleName();   ///< "Standard" without the symbol module
MEK_API CString IM_GetStandardTextStyleName();  ///< "Standard" without the symbol module

MEK_API CString IM_GetTextStyleName(IM_TEXT_STYLE style, unsigned int flags);
MEK_API CString IM_GetDimStyleName(IM_DIM_STYLE style, unsigned int flags);
MEK_API KvDbObjectId IM_GetTextStyleId(IM_TEXT_STYLE style, unsigned int flags, KvDbDatabase* database);
MEK_API KvDbObjectId IM_GetDimStyleId(IM_DIM_STYLE style, unsigned int flags, KvDbDatabase* database);
/// With flag 1 the style "Standard" stands for an empty or unknown name, else null.
MEK_API KvDbObjectId IM_GetTextStyleId(CString name, unsigned int flags, KvDbDatabase* database);
MEK_API KvDbObjectId IM_GetDimStyleId(CString name, unsigned int flags, KvDbDatabase* database);
inline KvDbObjectId IM_GetTextStyleId(const wchar_t* name, unsigned int flags, KvDbDatabase* database) {
  return IM_GetTextStyleId(CString(name), flags, database);
}
inline KvDbObjectId IM_GetDimStyleId(const wchar_t* name, unsigned int flags, KvDbDatabase* database) {
  return IM_GetDimStyleId(CString(name), flags, database);
}
MEK_API KvDbObjectId IM_GetTextStyleStandardId(KvDbDatabase* database);
MEK_API KvDbObjectId IM_GetDimStyleStandardId(KvDbDatabase* database);
MEK_API KvDbObjectId IM_GetLinetypeContinuousId(KvDbDatabase* database);

/// 1 when the working drawing has the style, or has it after the import from the template. Otherwise 0, and
/// `name` becomes "Standard". After the import of a dimension style the text styles are looked through: that
/// asymmetry is kept, since callers know it.
MEK_API int IM_EnsureStyleExist(CString& name, int isDimStyle);
/// Copies styles from the template drawing into the working one, keeping those of the same name: the one
/// named, or all for an empty name. `reserved` has no effect. 5100 or -5001.
MEK_API int IM_ImportStyleFromTemplate(int textStyle, int reserved, CString name);
/// The linetype's name, loaded from the linetype file of the drawing's measurement when it was missing;
/// "ByLayer" when it can't be had. Flag 16 loads it anew: what had it gets the new one; when the file doesn't
/// have it, the old one stays.
MEK_API CString IM_EnsureLineTypeExist(CString name, unsigned int flags);
MEK_API CString IM_GetLineTypeName(IM_LINETYPE type, unsigned int flags);
/// With flag 0 CONTINUOUS stands for a missing name, else null.
MEK_API KvDbObjectId IM_GetLineTypeId(CString name, KvDbDatabase* database, int flag);
MEK_API KvDbObjectId IM_GetLineTypeId(IM_LINETYPE type, unsigned int flags);

/// 1 when the current dimension variables differ from the record of the current style.
MEK_API int IM_IsDimStyleOverrided(KvDbDatabase* database);
/// With `force` 0 and overrides present nothing is done: 0.
MEK_API int IM_SetCurrentDimStyle(KvDbObjectId style, int force);
MEK_API int IM_SetCurrentDimStyle(CString name, int force);
inline int IM_SetCurrentDimStyle(const wchar_t* name, int force) {
  return IM_SetCurrentDimStyle(CString(name), force);
}

// --- Handed on to the symbol module; false or null without it.

MEK_API bool IM_SetDimensionProperty(KvDbDimension* dimension);
MEK_API KvDbObjectId IM_GetDimensionStyle(KvRxClass* type, KvDbDatabase* database);
MEK_API bool IM_GetDimensionStyleVariable(LPCWSTR name, resbuf* value, KvRxClass* type,
                                          KvDbDatabase* database);
MEK_API void IM_RecordGeniusPoint(KvDbObjectId id);
MEK_API void IM_UnrecordGeniusPoint(KvDbObjectId id);
/// How far a centre line reaches beyond its outline of that size; 0.0 without the symbol module.
MEK_API double IM_Centerline_GetCenterExt(double size, double scale);

// --- Arrows

/// The block of an arrow's display name, without regard to case; empty for an unknown one.
MEK_API CString IM_GetArrowHeadBlockName(CString displayName);
/// The display name of a block's first row; that of no arrow for an unknown one.
MEK_API CString IM_GetArrowNameFromBlock(CString blockName);
/// Makes sure that the working drawing has the block GENDOT, a filled dot with a tail. 1 when it is there.
MEK_API int IM_EnsureGenDotArrow();
