#pragma once
// The settings file of the symbols: which layer a kind stands on, and what the layers of each standard look
// like. A profile that people edit:
//
//   [General]
//   Standard=GB                                        the standard of drawings that name none
//   [Kinds]
//   CON1=Outline                                       sub-layer key or number; /Part: the twin for parts
//   [GB]                                               one section for each standard
//   Outline=GB Outline, 7, Continuous, 0.50, plot      name, colour, linetype, width in mm, plot or noplot
//   PartSuffix=-Part                                   what a twin's name ends with
//
// Lines that begin with `;` are comments. Each part of a row that can't be used is a fault, and the built-in
// value stands in its place.
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/symbols/layer_table.h"

namespace kmsymb {

struct SettingsFault {
  int line = 0;
  CString text;
};

/// A layer's look, and the line that says so; 0 for the built-in one.
struct LayerSetting {
  LayerLook look;
  int line = 0;
};

struct SymbolSettings {
  SymbolSettings();
  Standard standard = Standard::Gb;
  std::map<int, LayerId> layerOfKind;
  std::array<std::vector<LayerSetting>, kStandardCount> layers;  ///< by row of layerRows()
  std::array<CString, kStandardCount> partSuffixes;

  const LayerSetting& layer(Standard of, int row) const {
    return layers[static_cast<std::size_t>(of)][static_cast<std::size_t>(row)];
  }
  /// The name of a kind's layer; empty for a kind that is none.
  CString nameOf(Standard of, LayerId id) const;
};

/// UTF-8, UTF-16 with its mark, or the system's code page. Faults are appended.
SymbolSettings parseSettings(std::string_view bytes, std::vector<SettingsFault>& faults);
/// A file that says what is built in, UTF-8 with its mark.
std::string formatBuiltInSettings();

/// The settings in force: the user's file, else the installed one, else what is built in. The user's file is
/// copied from the installed one where the user has a folder for it and it is missing there. Each fault is
/// told once on the command line, with file and line.
const SymbolSettings& currentSettings();
/// The file that the settings in force come from; empty when there is none.
const CString& currentSettingsFile();
/// Tells a fault of a settings file, once for each host.
void tellFault(const CString& file, const SettingsFault& fault);

/// The product's root, two folders above this module's; empty when that can't be told.
CString productRoot();

}  // namespace kmsymb
