#pragma once
// Drawings in a few words, for tests: one entity a line. Points stand as `x,y` (`x,y,z` off the XY plane),
// numbers are rounded to six decimals.
//
//   point 1,2                        line 0,0 10,0
//   circle 5,5 r3                    arc 0,0 r5 0..90             (degrees, counter-clockwise)
//   ellipse 0,0 10,0 q0.5            (centre, major axis, ratio; `0..90` behind it for a part)
//   pline 0,0 10,0 b1 10,10 closed   (b: the bulge behind a point; w1/2 its widths)
//   ray 0,0 1,0    xline 0,0 0,1     (a point and the direction)
//   spline 0,0 5,5 10,0              (fit points)
//   solid 0,0 10,0 0,5 10,5          (corners as files have them)
//   text 0,0 h2.5 "words"            mtext 0,0 h2.5 "words"
//   insert 0,0 "name"                hatch ANSI31                 dimension 10
//
// Behind any of them: `turn=30` (degrees), `layer=X` unless 0, `color=1` unless by layer, `linetype=X`
// likewise. What is none of these prints its type in files.
#include <string>

#include "host/database/database.h"

namespace test {

/// The entities of a block (null: of the current space) in order, one a line.
std::string notationOf(const KvDbDatabase& database, KvDbObjectId block = {});
/// Makes point, line, circle, arc, pline, text entities at the end of the current space; missing layers come
/// into being. The line that can't be read, or an empty text.
std::string addNotation(KvDbDatabase& database, const std::string& text);
/// Without the blanks at the beginnings of lines and the empty lines, for raw strings in tests.
std::string tidied(const std::string& text);

}  // namespace test
