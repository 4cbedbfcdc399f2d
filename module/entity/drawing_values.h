#pragma once
// Small measures and settings of the drawing that older callers draw by. Angles in radians.
#include "host/base/kvds.h"
#include "module/core/export.h"

class KvGsView;

/// Distance in the XY plane; 0 for a null point, here and below.
MEK_API double distance(const double a[3], const double b[3]);
/// Distance in the XY plane of `p2` from the line through `p1` at `angle`.
MEK_API double dist(const double p1[3], double angle, const double p2[3]);
/// The height that a new text takes: the current style's or, where that has none, TEXTSIZE.
MEK_API double get_cur_text_h();
/// The printf form of a length or an angle with as many decimals as LUPREC or AUPREC says ("%.4f"). Null does
/// nothing.
MEK_API void luprec(wchar_t* out);
MEK_API void auprec(wchar_t* out);
/// Has a view drawn anew. Null does nothing.
MEK_API void refreshView(KvGsView* view);
/// A scale of a hatch in the drawing's system of units: itself where MEASUREMENT is 0, else divided by 25.4.
MEK_API double IM_GetHatchScale(double scale);
