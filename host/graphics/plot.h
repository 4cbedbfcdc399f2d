#pragma once
// Plots: a drawing's model space, a window of it, or a layout with its viewports, to scale on a page.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/database/database.h"
#include "host/graphics/canvas.h"

/// A sheet, in millimetres, upright.
struct KvPlotPaper {
  double width = 210, height = 297;
};
/// "A4" to "A0", "ANSI_A" to "ANSI_E" ("letter" and "legal" as well), or "WxH" in millimetres; no regard to
/// case. None for anything else, and for sheets below 1 mm or above 20 m.
std::optional<KvPlotPaper> kvgrPaperNamed(std::string_view name);

/// "1:5", "2:1", or a number: millimetres of paper for one drawing unit. None for what is no scale above 0.
std::optional<double> kvgrScaleNamed(std::string_view text);

struct KvPlotOptions {
  /// Empty: model space. "*": the first layout in tab order that is a sheet.
  CString layout;
  /// Lower left and upper right corner in world coordinates; without one everything that shows.
  struct Window {
    KvGePoint2d low, high;
  };
  std::optional<Window> window;
  /// None: the layout's own sheet, else A4.
  std::optional<KvPlotPaper> paper;
  enum class Turn { Auto, Portrait, Landscape } turn = Turn::Auto;
  /// Millimetres of paper for one drawing unit; 0: as large as fits. Layouts have their own scale unless this
  /// is given.
  double scale = 0;
  double margin = 10;  ///< millimetres; layouts have their own
  bool isMonochrome = false;
  std::uint32_t background = 0xFFFFFF;
  /// Patterns of names; a layer that none of them matches isn't plotted. Empty: all.
  std::vector<CString> layers;
  double defaultLineWeight = 0.25;  ///< millimetres
  CString title;                    ///< of the document, for forms that have one
  /// In forms with layers, those that are off come too, switched off.
  bool withHiddenLayers = false;
};

/// What became of one plot.
struct KvPlotResult {
  bool isPlotted = false;
  std::string error;                  ///< when it isn't
  std::vector<std::string> warnings;  ///< pictures that can't be shown, and why
  double width = 0, height = 0;       ///< of the page, millimetres
  double scale = 0;                   ///< millimetres for one drawing unit
  KvGePoint2d origin;                 ///< of the drawing, in millimetres on the page
};

/// Draws one page on the canvas. Fails, with words, for an unknown layout, an empty drawing, a window without
/// extent, a second page on a canvas that has one; nothing is begun then.
KvPlotResult kvgrPlot(KvDbDatabase& database, const KvPlotOptions& options, KvGrCanvas& canvas);

/// The form that goes with a file's name: ".svg", ".pdf", ".png" (at that many points per inch). Null for any
/// other ending.
std::unique_ptr<KvGrCanvas> kvgrCanvasFor(const std::filesystem::path& file, double resolution = 150);
/// One plot as a file, whole or not at all. False, with words, for another ending and for all that kvgrPlot
/// refuses. `warnings`, where given, gets those of the plot.
bool kvgrPlotToFile(KvDbDatabase& database, const KvPlotOptions& options, const std::filesystem::path& file,
                    std::string& error, std::vector<std::string>* warnings = nullptr);

/// The names of the layouts, in tab order, "Model" left out.
std::vector<CString> kvgrLayoutNames(const KvDbDatabase& database);
