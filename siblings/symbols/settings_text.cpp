// The text of the settings file: reading and writing.
#include <cmath>
#include <optional>

#include "host/database/symboltable.h"
#include "platform/text/codepage.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"
#include "siblings/symbols/settings.h"

namespace kmsymb {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF", kUtf16Mark = "\xFF\xFE";
constexpr const wchar_t *kGeneral = L"General", *kKinds = L"Kinds", *kStandardKey = L"Standard",
                        *kSuffixKey = L"PartSuffix", *kPlot = L"plot", *kNoPlot = L"noplot",
                        *kPartMark = L"/Part";
constexpr int kMostColors = 255;
constexpr std::size_t kLongestSuffix = 32;
/// A file of nothing but faults is cut here.
constexpr std::size_t kMostFaults = 100;

std::wstring wideFrom(std::string_view bytes) {
  if (bytes.starts_with(kUtf16Mark)) return platform::fromUtf16Bytes(bytes.substr(kUtf16Mark.size()));
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  return platform::isUtf8(bytes) ? platform::fromUtf8(bytes) : platform::fromCodePage(bytes, 0);
}

std::wstring_view trimmed(std::wstring_view text) {
  constexpr std::wstring_view kBlanks = L" \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the part before the next `separator` off the text.
std::wstring_view takePart(std::wstring_view& text, wchar_t separator) {
  const std::size_t end = text.find(separator);
  const std::wstring_view part = trimmed(text.substr(0, end));
  text = end == text.npos ? std::wstring_view() : text.substr(end + 1);
  return part;
}

std::optional<int> wholeNumber(std::wstring_view text, int lowest, int highest) {
  double value = 0;
  if (!platform::parseWhole(text, value) || value != std::trunc(value) || value < lowest || value > highest)
    return std::nullopt;
  return static_cast<int>(value);
}

class Reader {
 public:
  Reader(SymbolSettings& settings, std::vector<SettingsFault>& faults)
      : settings_(settings), faults_(faults) {}

  void read(std::wstring_view text) {
    while (!text.empty() && faults_.size() < kMostFaults) {
      const std::size_t end = text.find(L'\n');
      ++line_;
      takeLine(trimmed(text.substr(0, end)));
      text = end == text.npos ? std::wstring_view() : text.substr(end + 1);
    }
  }

 private:
  enum class Section { None, General, Kinds, Layers };

  void fault(const wchar_t* what, std::wstring_view found) {
    faults_.push_back({line_, CString(what) + L" \"" + CString(found) + L"\""});
  }

  void takeLine(std::wstring_view line) {
    if (line.empty() || line.front() == L';') return;
    if (line.front() == L'[') return beginSection(line);
    const std::size_t equals = line.find(L'=');
    if (equals == line.npos) return fault(L"a key and a value expected, not", line);
    const std::wstring_view key = trimmed(line.substr(0, equals)), value = trimmed(line.substr(equals + 1));
    if (section_ == Section::General) takeGeneral(key, value);
    if (section_ == Section::Kinds) takeKind(key, value);
    if (section_ == Section::Layers) takeLayer(key, value);
  }

  void beginSection(std::wstring_view line) {
    const CString name(trimmed(line.substr(1, line.find(L']') - 1)));
    section_ = Section::None;
    if (name.CompareNoCase(kGeneral) == 0) section_ = Section::General;
    if (name.CompareNoCase(kKinds) == 0) section_ = Section::Kinds;
    if (const auto standard = standardNamed(name.view())) {
      section_ = Section::Layers;
      standard_ = *standard;
    }
    if (section_ == Section::None || line.find(L']') == line.npos) fault(L"unknown section", line);
  }

  void takeGeneral(std::wstring_view key, std::wstring_view value) {
    if (CString(key).CompareNoCase(kStandardKey) != 0) return fault(L"unknown key", key);
    if (const auto standard = standardNamed(value))
      settings_.standard = *standard;
    else
      fault(L"unknown standard", value);
  }

  void takeKind(std::wstring_view key, std::wstring_view value) {
    const KindRow* kind = kindNamed(key);
    if (!kind) return fault(L"unknown key", key);
    const std::size_t slash = value.find(L'/');
    LayerId id;
    id.isPart = slash != value.npos;
    const auto row = layerNamed(trimmed(value.substr(0, slash)));
    if (!row || (id.isPart && CString(value.substr(slash)).CompareNoCase(kPartMark) != 0))
      return fault(L"unknown layer", value);
    id.row = *row;
    settings_.layerOfKind[kind->kind] = id;
  }

  void takeLayer(std::wstring_view key, std::wstring_view value) {
    const auto standard = static_cast<std::size_t>(standard_);
    if (CString(key).CompareNoCase(kSuffixKey) == 0) {
      if (!value.empty() && value.size() <= kLongestSuffix && kvdbIsSymbolName(L"x" + std::wstring(value)))
        settings_.partSuffixes[standard] = CString(value);
      else
        fault(L"a name can't end with", value);
      return;
    }
    const auto row = layerNamed(key);
    if (!row) return fault(L"unknown key", key);
    LayerSetting& setting = settings_.layers[standard][static_cast<std::size_t>(*row)];
    setting.line = line_;
    takeLook(value, setting.look);
  }

  /// Parts that are left out keep what they have.
  void takeLook(std::wstring_view value, LayerLook& look) {
    std::wstring_view rest = value;
    if (const auto name = takePart(rest, L','); !name.empty()) {
      if (kvdbIsSymbolName(name) && name.size() + kLongestSuffix <= kLongestName)
        look.name = CString(name);
      else
        fault(L"no name of a layer:", name);
    }
    if (const auto color = takePart(rest, L','); !color.empty()) {
      if (const auto number = wholeNumber(color, 1, kMostColors))
        look.color = *number;
      else
        fault(L"unknown colour", color);
    }
    if (const auto linetype = takePart(rest, L','); !linetype.empty()) {
      if (kvdbIsSymbolName(linetype))
        look.linetype = CString(linetype);
      else
        fault(L"unknown linetype", linetype);
    }
    if (const auto width = takePart(rest, L','); !width.empty()) takeWidth(width, look);
    const std::wstring_view plot = takePart(rest, L',');
    if (CString(plot).CompareNoCase(kPlot) == 0 || CString(plot).CompareNoCase(kNoPlot) == 0)
      look.isPlotted = CString(plot).CompareNoCase(kPlot) == 0;
    else if (!plot.empty())
      fault(L"plot or noplot expected, not", plot);
    if (!rest.empty()) fault(L"five parts at most, not also", rest);
  }

  void takeWidth(std::wstring_view text, LayerLook& look) {
    double width = 0;
    constexpr double kHundredths = 100, kWidest = 2.11;
    const bool isNumber = platform::parseWhole(text, width) && width >= 0 && width <= kWidest;
    const int hundredths = isNumber ? static_cast<int>(std::lround(width * kHundredths)) : -1;
    if (isLineWeight(hundredths))
      look.lineWeight = hundredths;
    else
      fault(L"unknown line width", text);
  }

  static constexpr std::size_t kLongestName = 255;
  SymbolSettings& settings_;
  std::vector<SettingsFault>& faults_;
  int line_ = 0;
  Section section_ = Section::None;
  Standard standard_ = Standard::Gb;
};

CString layerKey(LayerId id) {
  return layerRows()[static_cast<std::size_t>(id.row)].key + CString(id.isPart ? kPartMark : L"");
}

}  // namespace

SymbolSettings::SymbolSettings() {
  for (const KindRow& kind : kindRows()) layerOfKind[kind.kind] = kind.layer;
  for (Standard one : kStandards) {
    const auto at = static_cast<std::size_t>(one);
    partSuffixes[at] = partSuffix(one);
    for (int row = 0; row < static_cast<int>(layerRows().size()); ++row)
      layers[at].push_back({builtInLook(one, row), 0});
  }
}

CString SymbolSettings::nameOf(Standard of, LayerId id) const {
  return layer(of, id.row).look.name + (id.isPart ? partSuffixes[static_cast<std::size_t>(of)] : CString());
}

SymbolSettings parseSettings(std::string_view bytes, std::vector<SettingsFault>& faults) {
  SymbolSettings settings;
  Reader(settings, faults).read(wideFrom(bytes));
  return settings;
}

std::string formatBuiltInSettings() {
  CString text =
      L"; Layers of the drafting standards. This file is copied to each user, whose copy may be edited.\n"
      L"; Kinds: sub-layer key or number = layer; /Part means its twin for parts from catalogues.\n"
      L"; Layers: name, colour 1 to 255, linetype, line width in millimetres, plot or noplot.\n"
      L"; What is left out, or can't be used, keeps its built-in "
      L"value.\n\n[General]\nStandard=GB\n\n[Kinds]\n";
  for (const KindRow& kind : kindRows()) text += CString(kind.key) + L"=" + layerKey(kind.layer) + L"\n";
  for (Standard one : kStandards) {
    text.AppendFormat(L"\n[%s]\nPartSuffix=%s\n", rowOf(one).name, partSuffix(one));
    for (int row = 0; row < static_cast<int>(layerRows().size()); ++row) {
      const LayerLook look = builtInLook(one, row);
      text.AppendFormat(L"%s=%s, %d, %s, %d.%02d, %s\n", layerRows()[static_cast<std::size_t>(row)].key,
                        look.name, look.color, look.linetype, look.lineWeight / 100, look.lineWeight % 100,
                        look.isPlotted ? kPlot : kNoPlot);
    }
  }
  return std::string(kUtf8Mark) + platform::utf8From(text);
}

}  // namespace kmsymb
