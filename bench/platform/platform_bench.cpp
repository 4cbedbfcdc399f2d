// Code pages beside iconv called directly, profile files beside a plain scan, and file search.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <fstream>

#include "platform/files/files.h"
#include "platform/files/profile.h"
#include "platform/system/registry.h"
#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace {

constexpr int kRepeats = 1000;

std::wstring mixedText() {
  std::wstring text;
  for (int i = 0; i < kRepeats; ++i) text += L"技术要求 M12x40 未注圆角 R3; ";
  return text;
}

void codePageDecode(benchmark::State& state) {
  const std::string bytes = platform::toCodePage(mixedText(), 936);
  for (auto _ : state) benchmark::DoNotOptimize(platform::fromCodePage(bytes, 936));
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(codePageDecode);

void codePageDecodeIconv(benchmark::State& state) {
  const std::string bytes = platform::toCodePage(mixedText(), 936);
  const iconv_t handle = iconv_open("WCHAR_T", "CP936");
  for (auto _ : state) {
    std::wstring text(bytes.size(), L'\0');
    char* in = const_cast<char*>(bytes.data());
    std::size_t inLeft = bytes.size(), outLeft = text.size() * sizeof(wchar_t);
    char* out = reinterpret_cast<char*>(text.data());
    iconv(handle, &in, &inLeft, &out, &outLeft);
    text.resize(text.size() - outLeft / sizeof(wchar_t));
    benchmark::DoNotOptimize(text);
  }
  iconv_close(handle);
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(codePageDecodeIconv);

void codePageEncode(benchmark::State& state) {
  const std::wstring text = mixedText();
  for (auto _ : state) benchmark::DoNotOptimize(platform::toCodePage(text, 936));
  state.SetItemsProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(codePageEncode);

void codePageEncodeIconv(benchmark::State& state) {
  const std::wstring text = mixedText();
  const iconv_t handle = iconv_open("CP936", "WCHAR_T");
  for (auto _ : state) {
    std::string bytes(text.size() * 2, '\0');
    char* in = reinterpret_cast<char*>(const_cast<wchar_t*>(text.data()));
    std::size_t inLeft = text.size() * sizeof(wchar_t), outLeft = bytes.size();
    char* out = bytes.data();
    iconv(handle, &in, &inLeft, &out, &outLeft);
    bytes.resize(bytes.size() - outLeft);
    benchmark::DoNotOptimize(bytes);
  }
  iconv_close(handle);
  state.SetItemsProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(codePageEncodeIconv);

/// A label as drawings hold them: short, where opening a converter for each would cost most.
void codePageShortText(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(platform::fromCodePage("\xCD\xBC\xB2\xE3", 936));
}
BENCHMARK(codePageShortText);

void codePageShortTextIconv(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(platform::fromCharset("\xCD\xBC\xB2\xE3", "CP936"));
}
BENCHMARK(codePageShortTextIconv);

std::string profileText() {
  std::string text;
  for (int section = 0; section < 10; ++section) {
    text += "[Section" + std::to_string(section) + "]\r\n";
    for (int key = 0; key < 20; ++key)
      text += "Key" + std::to_string(key) + " = value " + std::to_string(key) + "\r\n";
  }
  return text;
}

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& content) { platform::writeFile(path_, content); }
  ~ScratchFile() { platform::deleteFile(path_); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_ = std::filesystem::temp_directory_path() / "korvane-bench-file";
};

void profileRead(benchmark::State& state) {
  const ScratchFile file(profileText());
  const CString name = platform::fromNative(file.path());
  wchar_t buffer[256];
  for (auto _ : state)
    benchmark::DoNotOptimize(GetPrivateProfileStringW(L"Section9", L"Key19", L"", buffer, 256, name));
}
BENCHMARK(profileRead);

/// The least that a reader can do: lines of a stream, compared byte by byte.
void profileReadStream(benchmark::State& state) {
  const ScratchFile file(profileText());
  for (auto _ : state) {
    std::ifstream in(file.path());
    std::string line, value;
    bool inside = false;
    while (std::getline(in, line)) {
      if (line.starts_with('[')) inside = line.starts_with("[Section9]");
      if (inside && line.starts_with("Key19 =")) value = line.substr(8);
    }
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(profileReadStream);

void profileWholeSection(benchmark::State& state) {
  const ScratchFile file(profileText());
  const CString name = platform::fromNative(file.path());
  wchar_t buffer[2000];
  for (auto _ : state) benchmark::DoNotOptimize(GetPrivateProfileSectionW(L"Section9", buffer, 2000, name));
}
BENCHMARK(profileWholeSection);

void profileChangeInMemory(benchmark::State& state) {
  const std::string text = profileText();
  for (auto _ : state) {
    platform::Profile profile{std::string(text)};
    benchmark::DoNotOptimize(profile.set(L"Section9", L"Key19", L"other"));
  }
}
BENCHMARK(profileChangeInMemory);

void registryParse(benchmark::State& state) {
  platform::RegistryText text;
  for (int i = 0; i < 1000; ++i)
    text.set(HKEY_CURRENT_USER, L"Software\\Korvasoft\\" + std::to_wstring(i / 10), std::to_wstring(i),
             platform::RegistryValue::ofText(L"value 图"));
  const std::string content = text.content();
  for (auto _ : state) benchmark::DoNotOptimize(platform::RegistryText(content));
  state.SetBytesProcessed(static_cast<std::int64_t>(content.size()) * state.iterations());
}
BENCHMARK(registryParse);

}  // namespace
