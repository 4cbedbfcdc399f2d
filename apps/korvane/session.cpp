#include "apps/korvane/session.h"

#include <iostream>
#include <iterator>

#include "apps/korvane/plot_command.h"
#include "apps/korvane/terminal_source.h"
#include "host/app/hostapp.h"
#include "host/commands/completion.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/text/codepage.h"
#include "platform/text/utf.h"
#include "platform/ui/terminal_ui.h"

namespace korvane {
namespace {

constexpr const wchar_t* kProductModules[] = {L"MekCore.kvx", L"KmTools.kvx"};
/// Layers and styles by standard; without it the toolkit falls back to plain ones.
constexpr const wchar_t* kSymbolModule = L"KmSymbb.kvx";

void showError(const CString& text) {
  std::cerr << "korvane: " << platform::utf8From(text) << "\n";
}

/// A script's text: UTF-16 or UTF-8 by its mark, UTF-8 where it is valid, else the system's 8-bit code page.
CString decodeScript(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return platform::fromUtf16Bytes(bytes.substr(2));
  if (bytes.starts_with("\xEF\xBB\xBF")) return platform::fromUtf8(bytes.substr(3));
  return platform::isUtf8(bytes) ? platform::fromUtf8(bytes)
                                 : platform::fromCodePage(bytes, platform::kSystemCodePage);
}

/// Answers to dialogs come from the one stream of input.
class HostInput : public platform::LineInput {
 public:
  explicit HostInput(KvEdEditor& editor) : editor_(editor) {}
  Result next(std::string& line, std::optional<std::chrono::milliseconds>) override {
    const auto answer = editor_.readLine(L"> ");
    if (answer) line = platform::utf8From(*answer);
    return answer ? Result::Line : Result::End;
  }

 private:
  KvEdEditor& editor_;
};

class Session {
 public:
  explicit Session(const SessionOptions& options)
      : options_(options), app_(hostOptions()), input_(app_.editor()), ui_(input_, std::cout, uiTexts()) {
    app_.environment().userInterface = &ui_;
  }
  ~Session() { app_.environment().userInterface = nullptr; }

  int run() {
    if (!loadModules() || !openDrawing()) return 1;
    bool allWell = true;
    if (options_.inputs.empty() && options_.save.empty() && options_.plot.empty()) return runTerminal();
    for (const SessionInput& input : options_.inputs) {
      allWell = runInput(input) && allWell;
      if (!allWell && !options_.keepGoing) break;
    }
    std::cout.flush();
    if (allWell && !options_.save.empty()) allWell = saveDrawing();
    if (allWell && !options_.plot.empty())
      allWell = hasDrawing() && plotDrawing(*app_.documents().curDocument()->database(), options_.plot);
    return allWell ? 0 : 1;
  }

 private:
  bool openDrawing() {
    if (options_.drawing.empty()) return app_.newDocument() != nullptr;
    KvIoReport report;
    if (app_.openDocument(std::filesystem::absolute(options_.drawing), report)) return true;
    showError(platform::wideFromUtf8(options_.drawing) + L": " + report.error.describe());
    showError(L"\"korvane audit --fix -o MENDED\" saves what can be saved");
    return false;
  }

  /// A script may have closed everything.
  bool hasDrawing() {
    if (app_.documents().curDocument()) return true;
    showError(L"no drawing is open any more");
    return false;
  }

  bool saveDrawing() {
    if (!hasDrawing()) return false;
    KvIoReport report;
    KvIoSaveOptions options = kvdbSaveOptionsFor(options_.save);
    options.version = kvdbVersionNamed(options_.version);
    if (kvdbSaveDrawing(*app_.documents().curDocument()->database(), options_.save, report, options) ==
        Kvad::eOk)
      return true;
    showError(report.error.text);
    return false;
  }

  static KvHostOptions hostOptions() {
    KvHostOptions options;
    options.output = [](const CString& text) { std::cout << platform::utf8From(text); };
    return options;
  }

  bool loadModules() {
    // The modules make the folders below it; where it can't be made they do without.
    platform::createFolders(app_.environment().settingsRoot);
    if (CString error; !app_.loadModule(kSymbolModule, error)) showError(error);
    std::vector<CString> names(std::begin(kProductModules), std::end(kProductModules));
    for (const std::string& module : options_.modules) {
      // What is written with a separator is a file; a bare name is searched where the product's modules lie.
      const bool isFile = module.find('/') != std::string::npos;
      names.push_back(isFile ? platform::fromNative(std::filesystem::absolute(module))
                             : platform::wideFromUtf8(module));
    }
    for (const CString& name : names) {
      CString error;
      if (app_.loadModule(name, error)) continue;
      showError(error);
      return false;
    }
    return true;
  }

  int runTerminal() {
    if (isTerminal()) {
      const auto history = app_.environment().settingsRoot / "history";
      std::error_code ignored;
      std::filesystem::create_directories(history.parent_path(), ignored);
      app_.editor().pushSource(
          std::make_unique<TerminalSource>([this] { app_.pump(); }, history.string(),
                                           [this](const CString& prompt, const CString& start) {
                                             return kvcmdCompletions(app_.editor(), prompt, start);
                                           }));
      app_.run();
      std::cout << "\n";
      return 0;
    }
    const std::string bytes{std::istreambuf_iterator<char>(std::cin), {}};
    return runText(decodeScript(bytes), "standard input") ? 0 : 1;
  }

  bool runInput(const SessionInput& input) {
    if (input.kind == SessionInput::Kind::Text) return runText(platform::wideFromUtf8(input.value), "");
    std::string bytes;
    if (const auto status = platform::readFile(std::filesystem::path(input.value), bytes); !status) {
      showError(platform::wideFromUtf8(status.message()));
      return false;
    }
    return runText(decodeScript(bytes), input.value);
  }

  /// False when a command failed; without --keep-going the text ends there.
  bool runText(const CString& text, const std::string& name) {
    bool allWell = true;
    app_.editor().pushSource(std::make_unique<KvEdScriptSource>(text));
    app_.run([&](KvEdOutcome outcome) {
      if (outcome == KvEdOutcome::Done) return false;
      allWell = false;
      std::cout.flush();
      CString message;
      const wchar_t* what = outcome == KvEdOutcome::Unknown     ? L"unknown command"
                            : outcome == KvEdOutcome::Cancelled ? L"the command was cancelled"
                                                                : L"the command failed";
      if (name.empty())
        message = what;
      else
        message.Format(L"%S:%d: %s", name, app_.editor().currentLine(), what);
      showError(message);
      if (options_.keepGoing) return false;
      app_.editor().dropInput();
      return true;
    });
    return allWell;
  }

  /// The stream shows the prompt itself.
  static platform::TerminalTexts uiTexts() {
    platform::TerminalTexts texts;
    texts.prompt = L"";
    return texts;
  }

  const SessionOptions& options_;
  KvHostApp app_;
  HostInput input_;
  platform::TerminalUi ui_;
};

}  // namespace

int runSession(const SessionOptions& options) {
  return Session(options).run();
}

}  // namespace korvane
