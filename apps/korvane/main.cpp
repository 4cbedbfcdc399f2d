// The program `korvane`: drafting from a command line, a script, or a shell.
#include <CLI/CLI.hpp>

#include "apps/korvane/drawing_commands.h"
#include "apps/korvane/help_command.h"
#include "apps/korvane/module_commands.h"
#include "apps/korvane/plot_command.h"
#include "apps/korvane/session.h"

namespace {

constexpr int kWrongUse = 2;

void addPlotOptions(CLI::App& plot, korvane::PlotCommandOptions& options) {
  plot.add_option("IN", options.inputs, "Drawing files")->required();
  plot.add_option("-o,--output", options.output,
                  "OUT.svg, OUT.pdf or OUT.png; for one file each DIR/ (PDF) or a pattern: DIR/{}.svg")
      ->required()
      ->type_name("OUT");
  plot.add_option("--paper", options.paper, "A5 to A0, ANSI_A to ANSI_E, letter, legal, or WxH in mm")
      ->type_name("NAME");
  plot.add_option("--scale", options.scale, "1:5, 2:1, or millimetres for one drawing unit")
      ->type_name("SCALE");
  plot.add_flag("--fit", options.fit, "As large as the sheet allows (without --scale always so)");
  plot.add_flag("--landscape", options.landscape, "The sheet lies; without it, as the drawing wants");
  plot.add_flag("--portrait", options.portrait, "The sheet stands");
  plot.add_flag("--monochrome", options.monochrome, "All in black");
  plot.add_flag("--hidden-layers", options.hiddenLayers,
                "In PDF, with the layers that are off, switched off");
  plot.add_option("--layer", options.layers, "Only layers that match a pattern; may come several times")
      ->type_name("PATTERN");
  plot.add_option("--layout", options.layout, "A layout by name, * for the first; model space without it")
      ->type_name("NAME");
  plot.add_option("--window", options.window, "Only a window: two corners")
      ->expected(4)
      ->delimiter(',')
      ->type_name("X1 Y1 X2 Y2");
  plot.add_option("--resolution", options.resolution, "Points per inch of a PNG (150)")->type_name("DPI");
  plot.add_option("--margin", options.margin, "Millimetres kept clear round the drawing (10)")
      ->type_name("MM");
  plot.add_option("--background", options.background, "white, black, or #RRGGBB")->type_name("COLOUR");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && korvane::isModuleCommand(argv[1])) return korvane::runModuleCommand(argc - 1, argv + 1);
  CLI::App app("Korvane Mechanical: drafts from a command line, a script, or a shell.", "korvane");
  app.set_version_flag("--version", "korvane 0.1.0");
  app.footer(
      "More sub-commands, each with --help: query (ask a folder of standard tables),\n"
      "nest (lay frames out on sheets), pack (pack boxes into bins), spring (draw a spring).\n"
      "Without --script and --command it reads commands from the terminal, or from standard input.\n"
      "Exit code: 0 success, 1 the work failed, 2 wrong use.");

  korvane::SessionOptions options;
  using Kind = korvane::SessionInput::Kind;
  const auto add = [&](Kind kind) {
    return [&options, kind](const std::string& value) { options.inputs.push_back({kind, value}); };
  };
  app.add_option_function<std::string>("--script", add(Kind::ScriptFile),
                                       "Run a script: a line or blank ends each input, ';' starts a comment")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse();
  app.add_option_function<std::string>("--command", add(Kind::Text),
                                       "Run a command with its answers, as typed")
      ->type_name("TEXT")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse();
  app.add_option("DRAWING", options.drawing, "The drawing to open; a new one without it")->type_name("");
  app.add_option("--save", options.save, "Save the drawing when all is done")->type_name("FILE");
  app.add_option("--save-version", options.version,
                 "Version of the saved file, R2000 to R2018; the drawing's own without it")
      ->type_name("NAME")
      ->check(CLI::IsMember({"R2000", "R2004", "R2007", "R2010", "R2013", "R2018"}, CLI::ignore_case));
  app.add_option("--plot", options.plot, "Plot the drawing then: FILE.svg, FILE.pdf or FILE.png")
      ->type_name("FILE");
  app.add_option("--module", options.modules, "Load a further module: a .kvx file, or the bare name of one")
      ->type_name("MODULE");
  app.add_flag("--keep-going", options.keepGoing, "Go on after a command that failed");

  korvane::InfoOptions infoOptions;
  CLI::App* info = app.add_subcommand("info", "Tell what stands in a drawing file");
  info->add_option("DRAWING", infoOptions.drawing, "A drawing file, text or binary")->required();
  info->add_flag("--json", infoOptions.json, "For programs to read");

  korvane::AuditOptions auditOptions;
  CLI::App* audit = app.add_subcommand("audit", "List the faults of a drawing file, and mend them");
  audit->add_option("DRAWING", auditOptions.drawing, "A drawing file, text or binary")->required();
  CLI::Option* output = audit->add_option("-o,--output", auditOptions.output, "Where the mended drawing goes")
                            ->type_name("FILE");
  audit->add_flag("--json", auditOptions.json, "For programs to read");
  audit->add_flag("--fix", auditOptions.fix, "Mend, and write the drawing")->needs(output);

  korvane::PlotCommandOptions plotOptions;
  CLI::App* plot = app.add_subcommand("plot", "Plot drawings to SVG, PDF or PNG");
  addPlotOptions(*plot, plotOptions);

  korvane::HelpOptions helpOptions;
  CLI::App* help = app.add_subcommand("help", "Tell of the commands, or of one and its prompts");
  help->add_option("NAME", helpOptions.name, "A command or one of its short names");
  help->add_flag("--markdown", helpOptions.markdown, "All commands as a page of the documents")
      ->excludes("NAME");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUse;
  }
  if (info->parsed()) return korvane::runInfo(infoOptions);
  if (audit->parsed()) return korvane::runAudit(auditOptions);
  if (plot->parsed()) return korvane::runPlot(plotOptions);
  if (help->parsed()) return korvane::runHelp(helpOptions);
  return korvane::runSession(options);
}
