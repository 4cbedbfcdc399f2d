// The program `korvane`: drafting from a command line, a script, or a shell.
#include <CLI/CLI.hpp>

#include "apps/korvane/session.h"

namespace {

constexpr int kWrongUse = 2;

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Korvane Mechanical: drafts from a command line, a script, or a shell.", "korvane");
  app.set_version_flag("--version", "korvane 0.1.0");
  app.footer("Without --script and --command it reads commands from the terminal, or from standard input.\n"
             "Exit code: 0 success, 1 the work failed, 2 wrong use.");

  korvane::SessionOptions options;
  using Kind = korvane::SessionInput::Kind;
  const auto add = [&](Kind kind) { return [&options, kind](const std::string& value) { options.inputs.push_back({kind, value}); }; };
  app.add_option_function<std::string>("--script", add(Kind::ScriptFile), "Run a script: a line or blank ends each input, ';' starts a comment")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse();
  app.add_option_function<std::string>("--command", add(Kind::Text), "Run a command with its answers, as typed")
      ->type_name("TEXT")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse();
  app.add_option("DRAWING", options.drawing, "The drawing to open; a new one without it")->type_name("");
  app.add_option("--save", options.save, "Save the drawing when all is done")->type_name("FILE");
  app.add_option("--module", options.modules, "Load a further module: a .kvx file, or the bare name of one")->type_name("MODULE");
  app.add_flag("--keep-going", options.keepGoing, "Go on after a command that failed");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUse;
  }
  return korvane::runSession(options);
}
