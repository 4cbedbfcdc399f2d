#pragma once
// How lengths and angles are told: the forms of the variables LUNITS and AUNITS.
#include "platform/text/cstring.h"

/// Decimals of the decimal forms, the power of two below a fraction.
inline constexpr int kKvedMostPlaces = 8;

/// By LUNITS: 1 scientific, 2 decimal, 3 feet and decimal inches, 4 feet and inches with a fraction, 5 a
/// fraction; one unit is an inch where there are feet. What rounds to 0 has no sign.
CString kvedLengthText(double value, int unit, int places);
/// By AUNITS: 0 degrees, 1 degrees, minutes and seconds, 2 grads, 3 radians, 4 from north or south towards
/// east or west.
CString kvedAngleText(double radians, int unit, int places);
