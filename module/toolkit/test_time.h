#pragma once
// A coarse profiler for developers: lines of times on the command line and in `D:\ImTestTime.txt`. It is on
// while ImTestTimeDisabler::s_bIsEnabled is set. Main thread only.
#include <cstdint>
#include <cstdio>

#include "module/core/export.h"
#include "platform/text/cstring.h"

class MEK_API ImTestTime {
 public:
  explicit ImTestTime(CString title);
  ~ImTestTime();
  ImTestTime(const ImTestTime&) = delete;
  ImTestTime& operator=(const ImTestTime&) = delete;

  /// The time since the last mark joins the total; with `print` it is told under the name or the step's
  /// number.
  void step(CString name, bool print);
  /// A step that is told, behind which the end's own step is silent.
  void last(CString name);
  /// Tells the total. The destructor calls it, unless it was called before.
  void end();
  /// One line on the command line and in the file.
  void output(CString text);

  static int g_nLevel;
  static std::FILE* s_file;

 private:
  std::int64_t m_nFrequency = 0, m_nMark = 0;
  double m_dTotal = 0;
  CString m_strTitle, m_strIndent;
  bool m_bDisabled = false;
  int m_nStep = 1;
};

/// Keeps ImTestTime silent for its lifetime.
class MEK_API ImTestTimeDisabler {
 public:
  ImTestTimeDisabler() { s_bIsEnabled = 0; }
  ~ImTestTimeDisabler() { s_bIsEnabled = 1; }
  ImTestTimeDisabler(const ImTestTimeDisabler&) = delete;
  ImTestTimeDisabler& operator=(const ImTestTimeDisabler&) = delete;

  static int s_bIsEnabled;
};
