// Settings, translation and text helpers per second, each beside a plain alternative where there is one.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "host/app/hostapp.h"
#include "module/core/numbers.h"
#include "module/core/settings.h"
#include "module/core/text.h"
#include "module/core/translate.h"
#include "platform/files/paths.h"
#include "platform/xml/dom.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kMessages = 5000;
constexpr int kProfileKeys = 200;

std::filesystem::path scratch() {
  const auto folder = std::filesystem::temp_directory_path() / "korvane-bench";
  std::filesystem::create_directories(folder);
  return folder;
}

void translation(benchmark::State& state) {
  CString content = L"/lg CHS ENU\r\n";
  for (int i = 0; i < kMessages; ++i) content.AppendFormat(L"%d \"零件 %d\" \"part %d\"\r\n", i, i, i);
  mek::addTranslations(L"PARTS", content);
  g_eSoftLanguage = 3;
  int number = 0;
  for (auto _ : state) {
    CString macro;
    macro.Format(L"(GENMSG PARTS %d)", number++ % kMessages);
    benchmark::DoNotOptimize(IM_TranslateGenMsg(macro, nullptr));
  }
  mek::releaseTranslations();
}
BENCHMARK(translation);

CString profileFile() {
  const auto file = scratch() / "bench.ini";
  std::ofstream out(file, std::ios::binary);
  for (int section = 0; section < 10; ++section) {
    out << "[Section" << section << "]\r\n";
    for (int key = 0; key < kProfileKeys / 10; ++key) out << "Key" << key << "=value " << key << "\r\n";
  }
  return platform::fromNative(file);
}

void profileRead(benchmark::State& state) {
  const CString file = profileFile();
  for (auto _ : state)
    benchmark::DoNotOptimize(IM_GetPrivateProfileString(L"Section9", L"Key19", L"", file, 256));
}
BENCHMARK(profileRead);

/// The alternative: getline over a stream, no encodings, no case rules.
void profileReadPlainStream(benchmark::State& state) {
  const auto file = platform::toNative(profileFile());
  for (auto _ : state) {
    std::ifstream in(file);
    std::string line, section, value;
    while (std::getline(in, line)) {
      if (line.starts_with("["))
        section = line.substr(1, line.find(']') - 1);
      else if (section == "Section9" && line.starts_with("Key19="))
        value = line.substr(6);
    }
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(profileReadPlainStream);

void xmlSettingRead(benchmark::State& state) {
  const auto file = scratch() / "StartupConfig.xml";
  std::ofstream(file) << "<StartupInfor><About><Title>T</Title><Version>1.0</Version></"
                         "About><System><DETAILTEXT>1</DETAILTEXT></System></StartupInfor>";
  const CString path = platform::fromNative(file);
  for (auto _ : state) {
    const auto document = IM_LoadXmlFromFile(path);
    benchmark::DoNotOptimize(document->selectSingleNode(L"StartupInfor//System//DETAILTEXT").text());
  }
}
BENCHMARK(xmlSettingRead);

void split(benchmark::State& state) {
  CString text;
  for (int i = 0; i < 100; ++i) text += L"field,";
  for (auto _ : state) {
    CStringArray parts;
    benchmark::DoNotOptimize(IM_SplitString(text, L",", parts));
  }
  state.SetItemsProcessed(state.iterations() * 101);
}
BENCHMARK(split);

void splitPlainStream(benchmark::State& state) {
  std::wstring text;
  for (int i = 0; i < 100; ++i) text += L"field,";
  for (auto _ : state) {
    std::vector<std::wstring> parts;
    std::wistringstream in(text);
    for (std::wstring part; std::getline(in, part, L',');) parts.push_back(part);
    benchmark::DoNotOptimize(parts);
  }
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(splitPlainStream);

const wchar_t* const kNumbers[] = {L"12.5", L"-3", L"１２．５", L"1e5",
                                   L"abc",  L"+7", L"0.000001", L"99999999"};

void numberRecognition(benchmark::State& state) {
  for (auto _ : state)
    for (const wchar_t* text : kNumbers) benchmark::DoNotOptimize(IM_IsStringReal(text, 0, 1, 1));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(std::size(kNumbers)));
}
BENCHMARK(numberRecognition);

void numberRecognitionRegex(benchmark::State& state) {
  const std::wregex pattern(L"[-+－＋]?[0-9０-９]*[.．]?[0-9０-９]*");
  for (auto _ : state)
    for (const wchar_t* text : kNumbers) benchmark::DoNotOptimize(std::regex_match(text, pattern));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(std::size(kNumbers)));
}
BENCHMARK(numberRecognitionRegex);

}  // namespace
