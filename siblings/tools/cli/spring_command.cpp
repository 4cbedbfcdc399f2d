#include "siblings/tools/cli/spring_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <ostream>

#include "host/app/document.h"
#include "host/base/context.h"
#include "host/database/database.h"
#include "host/editor/editor.h"
#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "siblings/tools/cli/command_output.h"
#include "siblings/tools/springs.h"

namespace {

using namespace korvane;

struct Options {
  std::string family = "compression", standard = "YI";
  std::vector<std::string> outputs;
  std::vector<double> at = {0, 0};
  SpringRequest request;
};

bool isDrawing(const std::filesystem::path& file) {
  return file.extension() == ".dxf" || file.extension() == ".dwg";
}

bool write(KvDbDatabase& database, const std::string& output, std::ostream& err) {
  std::string error;
  bool isWritten = false;
  if (isDrawing(output)) {
    KvIoReport report;
    isWritten = kvdbSaveDrawing(database, output, report, kvdbSaveOptionsFor(output)) == Kvad::eOk;
    error = platform::utf8From(report.error.describe());
  } else {
    isWritten = kvgrPlotToFile(database, KvPlotOptions(), output, error);
  }
  if (!isWritten) err << "korvane: " << error << "\n";
  return isWritten;
}

/// A drawing of its own for the spring, current while this lives.
class OwnDrawing {
 public:
  OwnDrawing() : document_(kvDocManagerPtr()->add(std::make_unique<KvDbDatabase>(), L"Spring.dwg")) {}
  ~OwnDrawing() { kvDocManagerPtr()->close(document_); }
  OwnDrawing(const OwnDrawing&) = delete;
  OwnDrawing& operator=(const OwnDrawing&) = delete;
  KvDbDatabase& database() const { return *document_->database(); }

 private:
  KvApDocument* document_;
};

int run(Options& options, std::ostream& out, std::ostream& err) {
  options.request.standard = platform::wideFromUtf8(options.standard);
  if (const CString why = whyNoSpring(options.request); !why.IsEmpty()) {
    err << "korvane: " << platform::utf8From(why) << "\n";
    return kWrongUse;
  }
  const OwnDrawing own;
  // Standard forms ask where to stand and how to be turned.
  CString answers;
  answers.Format(L"%.15g,%.15g\n0\n", options.at[0], options.at[1]);
  KvEdEditor& editor = *KvHostContext::current().editor;
  editor.pushSource(std::make_unique<KvEdScriptSource>(answers));
  const double point[3] = {options.at[0], options.at[1], 0};
  const CString why = drawSpring(options.request, point);
  editor.dropInput();
  if (!why.IsEmpty()) {
    err << "korvane: " << platform::utf8From(why) << "\n";
    return kWorkFailed;
  }
  for (const std::string& output : options.outputs)
    if (!write(own.database(), output, err)) return kWorkFailed;
  for (const std::string& output : options.outputs) out << output << "\n";
  return kSuccess;
}

}  // namespace

int runSpringCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  Options options;
  SpringRequest& request = options.request;
  CLI::App app("Draws one spring: a picture or a drawing.", "korvane spring");
  app.add_option("--family", options.family,
                 "compression, extension, torsion, end (of a torsion spring), standard")
      ->type_name("NAME");
  app.add_option("--form", request.form,
                 "1 to 5: full view, the same, section, the same, simplified; of standard forms "
                 "1 half-section, 2 end view")
      ->type_name("NUMBER");
  app.add_option("--standard", options.standard, "YI, YII, YIII, RYI, RYII (GB/T 1239)")->type_name("FORM");
  app.add_option("-d", request.d, "Wire diameter")->type_name("MM");
  app.add_option("-D", request.D, "Coil diameter to the wire's centre; outside of standard forms")
      ->type_name("MM");
  app.add_option("--H0", request.H0, "Overall length; first arm of an end view")->type_name("MM");
  app.add_option("-n", request.n, "Active coils; second arm of an end view")->type_name("COUNT");
  app.add_option("--angle", request.angle, "Degrees between the arms of an end view")->type_name("DEGREES");
  app.add_option("--at", options.at, "Placement point")->expected(2)->delimiter(',')->type_name("X Y");
  app.add_option("-o,--output", options.outputs, "OUT.svg, OUT.pdf, OUT.png, OUT.dxf; may come several times")
      ->required()
      ->type_name("FILE");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kSuccess : kWrongUse;
  }
  if (!springFamilyOf(platform::wideFromUtf8(options.family), request.family)) {
    err << "korvane: \"" << options.family
        << "\" is no family: compression, extension, torsion, end, standard\n";
    return kWrongUse;
  }
  return run(options, out, err);
}
