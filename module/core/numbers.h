#pragma once
// Recognising and converting numbers as people type them, full-width digits included.
//
// Full-width signs: digits U+FF10 to U+FF19, point U+FF0E, minus U+FF0D, plus U+FF0B. `firstFlag` has no
// effect; it is reserved and stands in the signatures for the callers' sake.
#include <vector>

#include "module/core/export.h"
#include "platform/text/cstring.h"

/// 1 for digits with at most one point and a sign at index 0 (`+` only with `allowPlus`); full-width forms
/// only with `allowFullWidth`. Empty, only a minus or only a point: 0.
MEK_API int IM_IsStringReal(CString text, int firstFlag, int allowPlus, int allowFullWidth);
/// The same without any point.
MEK_API int IM_IsStringInteger(CString text, int firstFlag, int allowPlus, int allowFullWidth);
/// Two whole numbers around one `/`, the second without sign. `value`, if given, gets the quotient (infinite
/// or not a number when the second is zero).
MEK_API int IM_IsStringFraction(CString text, double* value, int firstFlag, int allowPlus,
                                int allowFullWidth);
/// 1 if the text, in the system's 8-bit code page, holds a lead byte of that page.
MEK_API int IM_IsStringChinese(CString text);

/// Full-width digits become plain ones; full-width points and signs stay.
MEK_API CString Im_StringFullToHalf(CString text);
/// Full-width digits, point and minus are understood; otherwise as `_wtof`.
MEK_API double IM_tstof(CString text);
MEK_API int IM_StringToInt(CString const& text);
/// A fraction gives its quotient, anything else `_wtof` of the text.
MEK_API double IM_StringToDouble(CString const& text);
MEK_API CString IM_IntToString(int value);
/// `decimals` is brought to 0 to 9. With `keepZeros` 0 and a point present, trailing zeros and then the point
/// go.
MEK_API CString IM_DoubleToString(double value, int decimals, int keepZeros);
/// (value * 10^decimals + 0.5) cut toward zero, divided again: negative values round on the other side.
MEK_API double IM_TrimDouble(double value, int decimals);

/// A numeric text and the value that stands for it when it is no number.
class MEK_API CDoubleStringFormater {
 public:
  CDoubleStringFormater(CString const& text, double value) : m_strText(text), m_dValue(value) {}
  /// The text's value, digit by digit, by powers of ten; full-width forms count. The given value for any
  /// other text.
  double calculate() const;

 private:
  CString m_strText;
  double m_dValue;
};

/// Item numbers that are picked from a list.
class MEK_API CItemStringFormater {
 public:
  /// The list's first text stands for the number `first`, the next for `first + step`, and so on; a step of 0
  /// counts as 1.
  CItemStringFormater(std::vector<CString> const& list, int first, int step)
      : m_aryList(list), m_nFirst(first), m_nStep(step == 0 ? 1 : step) {}
  /// Empty for a number that the list doesn't reach or that lies between two steps.
  CString formatFromList(int number) const;

 private:
  std::vector<CString> m_aryList;
  int m_nFirst, m_nStep;
};

/// Tells whether a number is written in one width: both sides of its point half-width, or both full-width.
class MEK_API CSBCCaseMatch {
 public:
  /// Splits at the first point of either width. False without one: the whole text is then the left side.
  bool SplitStringAtDot(CString const& text);
  /// True when no character of one side is of another width than the rest; an empty side matches anything.
  bool IsSBCCaseMatch() const;
  const CString& left() const { return m_strLeft; }
  const CString& right() const { return m_strRight; }

 private:
  CString m_strLeft, m_strRight;
};
