#pragma once
// A dialog as data: numbered controls with their state.
#include <filesystem>
#include <optional>
#include <vector>

#include "platform/text/cstring.h"

namespace platform {

enum class ControlKind {
  Static,
  Picture,
  Button,
  Check,
  Radio,
  Edit,
  Combo,
  List,
  Spin,
  Progress,
  Group,
  Grid
};

/// Place and size in dialog units: a quarter of the mean character width, an eighth of its height.
struct DialogRect {
  int x = 0, y = 0, width = 0, height = 0;
};

/// One control: what its template says, and its state from then on. Fields that a kind has no use for stay as
/// they are.
struct Control {
  ControlKind kind = ControlKind::Static;
  int id = -1;        ///< -1: nobody asks for it
  CString text = {};  ///< label, content of an edit, choice of a combo, what a picture shows in words
  std::optional<DialogRect> rect = {};
  bool enabled = true;
  bool visible = true;
  bool isDefault = false;                        ///< button: pressed by an empty answer
  bool readOnly = false;                         ///< edit, grid
  bool digitsOnly = false;                       ///< edit: refuses everything else
  bool freeText = false;                         ///< combo: takes texts that aren't among its items
  bool multiple = false;                         ///< list, grid: several may be selected
  bool checked = false;                          ///< check, radio
  int group = 0;                                 ///< radio: those of one group exclude each other
  int buddy = 0;                                 ///< spin: id of the edit that shows its position
  int minimum = 0, maximum = 100, position = 0;  ///< spin, progress
  std::filesystem::path picture = {};            ///< a PNG file
  std::vector<CString> items = {};               ///< list, combo
  std::vector<CString> columns = {};             ///< grid
  std::vector<std::vector<CString>> rows = {};   ///< grid
  std::vector<int> selected = {};                ///< list, grid: indices in ascending order
};

struct DialogTemplate {
  int id = 0;
  CString title = {};
  std::vector<Control> controls = {};
  int width = 0, height = 0;  ///< dialog units; 0: as its controls need
  CString font = {};
  int fontPoints = 0;
};

}  // namespace platform
