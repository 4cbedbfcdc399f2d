#include "module/toolkit/test_time.h"

#include "host/editor/editor.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/system/clock.h"
#include "platform/text/utf.h"

int ImTestTimeDisabler::s_bIsEnabled = 1;
int ImTestTime::g_nLevel = 0;
std::FILE* ImTestTime::s_file = nullptr;

namespace {

constexpr const wchar_t* kFile = L"D:\\ImTestTime.txt";
constexpr const wchar_t* kIndent = L"    ";
constexpr double kMilliseconds = 1000;

std::FILE* openAtEnd() {
  const std::filesystem::path path = platform::toNative(kFile);
  platform::createFolders(path.parent_path());
  std::FILE* file = std::fopen(path.c_str(), "r+b");
  if (!file) file = std::fopen(path.c_str(), "w+b");
  if (file) std::fseek(file, 0, SEEK_END);
  return file;
}

}  // namespace

ImTestTime::ImTestTime(CString title) : m_strTitle(title) {
  m_bDisabled = !ImTestTimeDisabler::s_bIsEnabled;
  if (m_bDisabled) return;
  if (g_nLevel == 0) s_file = openAtEnd();
  m_nFrequency = platform::highResolutionFrequency();
  m_bDisabled = m_nFrequency <= 0;
  if (m_bDisabled) return;
  for (int level = 0; level < g_nLevel; ++level) m_strIndent += kIndent;
  CString line;
  line.Format(L"%s%s Begin", m_strIndent, m_strTitle);
  output(line);
  ++g_nLevel;
  m_nMark = platform::highResolutionCounter();
}

ImTestTime::~ImTestTime() {
  if (!m_bDisabled) end();
}

void ImTestTime::step(CString name, bool print) {
  if (m_bDisabled) return;
  const std::int64_t now = platform::highResolutionCounter();
  const double seconds = static_cast<double>(now - m_nMark) / static_cast<double>(m_nFrequency);
  m_dTotal += seconds;
  m_nMark = now;
  if (!print) return;
  CString line;
  if (name.IsEmpty())
    line.Format(L"%sStep %d: %.2f", m_strIndent, m_nStep, seconds * kMilliseconds);
  else
    line.Format(L"%sStep %d(%s): %.2f", m_strIndent, m_nStep, name, seconds * kMilliseconds);
  output(line);
  ++m_nStep;
}

void ImTestTime::last(CString name) {
  step(name, true);
  m_nStep = 0;
}

void ImTestTime::end() {
  if (m_bDisabled) return;
  constexpr int kSecondStep = 2;
  step(L"", m_nStep >= kSecondStep);
  CString line;
  line.Format(L"%s%s End: %.2f", m_strIndent, m_strTitle, m_dTotal * kMilliseconds);
  output(line);
  m_bDisabled = true;
  if (--g_nLevel > 0 || !s_file) return;
  std::fclose(s_file);
  s_file = nullptr;
}

void ImTestTime::output(CString text) {
  kvutPrintf(L"\n%s", text);
  if (!s_file) return;
  const std::string bytes = platform::toUtf16Bytes((text + L"\r\n").view());
  std::fwrite(bytes.data(), 1, bytes.size(), s_file);
}
