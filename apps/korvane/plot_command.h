#pragma once
// `korvane plot`: drawings to SVG, PDF, PNG.
#include <string>
#include <vector>

class KvDbDatabase;

namespace korvane {

struct PlotCommandOptions {
  std::vector<std::string> inputs;
  std::string
      output;         ///< a file, a folder (with `/` at its end), or a pattern with `{}` for the input's name
  std::string paper;  ///< empty: the layout's own, or A4
  std::string scale;  ///< empty: as large as fits
  bool fit = false, landscape = false, portrait = false, monochrome = false;
  bool hiddenLayers = false;  ///< in PDF: layers that are off come too, switched off
  std::vector<std::string> layers;
  std::string layout;  ///< empty: model space; "*": the first sheet
  std::vector<double> window;
  double resolution = 150;  ///< points per inch, PNG only
  double margin = 10;
  std::string background = "white";
};

/// Exit code: 0 all plotted, 1 some work failed, 2 wrong use. Several inputs to one PDF are its pages; to SVG
/// and PNG they need an output for each.
int runPlot(const PlotCommandOptions& options);

/// Plots a drawing that is open, by the ending of the file's name. False, with words on standard error, when
/// it fails.
bool plotDrawing(KvDbDatabase& database, const std::string& output);

}  // namespace korvane
