#pragma once
// The kinds of drawn lines and the layers on which they stand.
//
// Several kinds share a layer; parts from catalogues have layers of their own beside them. Colours and
// layers follow GB/T 14665 (outline white, thin lines green, dashed yellow, chain red, double chain magenta),
// widths the standard's line group.
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "siblings/symbols/standards.h"

namespace kmsymb {

/// A layer by what stands on it; an index into layerRows().
struct LayerId {
  int row = 0;
  bool isPart = false;  ///< the twin for parts from catalogues
  friend bool operator==(LayerId, LayerId) = default;
};

/// What a layer is made of.
struct LayerLook {
  CString name;
  int color = 7;  ///< 1 to 255
  CString linetype = L"Continuous";
  int lineWeight = 25;  ///< hundredths of a millimetre
  bool isPlotted = true;
  friend bool operator==(const LayerLook&, const LayerLook&) = default;
};

struct LayerRow {
  const wchar_t* key;  ///< in the settings file
  enum Width { Thick, Medium, Thin, Text70, Text50, Text35, Text25, Text18 } width;
  const wchar_t* linetype;
  int colorGb, colorElsewhere;
  bool isPlotted;
  const wchar_t *chinese, *english, *german, *japanese, *czech;
};

struct KindRow {
  int kind;
  const wchar_t* key;  ///< the sub-layer key; the number for a kind that has none
  LayerId layer;
};

std::span<const LayerRow> layerRows();
/// All kinds that have a layer, by number.
std::span<const KindRow> kindRows();
/// Null for a kind that is none.
const KindRow* kindRow(int kind);
/// By sub-layer key or number, without regard to case.
const KindRow* kindNamed(std::wstring_view key);
std::optional<int> layerNamed(std::wstring_view key);

/// Appended to a layer's name for the twin.
const wchar_t* partSuffix(Standard standard);
/// The built-in look of a layer, without the suffix.
LayerLook builtInLook(Standard standard, int row);

/// Line weights that drawing files know.
bool isLineWeight(int hundredths);

}  // namespace kmsymb
