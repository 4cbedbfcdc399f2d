// Plots as files.
#include "host/graphics/plot.h"
#include "platform/files/files.h"

std::unique_ptr<KvGrCanvas> kvgrCanvasFor(const std::filesystem::path& file, double resolution) {
  std::string ending = file.extension().string();
  for (char& c : ending) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  if (ending == ".svg") return kvgrSvgCanvas();
  if (ending == ".pdf") return kvgrPdfCanvas();
  return ending == ".png" ? kvgrPngCanvas(resolution) : nullptr;
}

bool kvgrPlotToFile(KvDbDatabase& database, const KvPlotOptions& options, const std::filesystem::path& file,
                    std::string& error, std::vector<std::string>* warnings) {
  const auto canvas = kvgrCanvasFor(file);
  if (!canvas) {
    error = "\"" + file.string() + "\": the plot's name ends in .svg, .pdf or .png";
    return false;
  }
  KvPlotOptions titled = options;
  if (titled.title.IsEmpty()) titled.title = platform::wideFromUtf8(file.stem().string());
  const KvPlotResult result = kvgrPlot(database, titled, *canvas);
  if (warnings) *warnings = result.warnings;
  if (!result.isPlotted) {
    error = file.string() + ": " + result.error;
    return false;
  }
  const std::string bytes = canvas->finish(error);
  if (bytes.empty()) {
    error = file.string() + ": " + error;
    return false;
  }
  const auto status = platform::writeFile(file, bytes);
  if (!status) error = status.message();
  return static_cast<bool>(status);
}
