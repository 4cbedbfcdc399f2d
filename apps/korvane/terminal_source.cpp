#include "apps/korvane/terminal_source.h"

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "host/commands/completion.h"

namespace korvane {
namespace {

constexpr int kHistoryLines = 1000;
constexpr int kWaitMilliseconds = 100;

volatile std::sig_atomic_t g_interrupted = 0;  // set by the signal handler, which can reach nothing else

void onInterrupt(int) {
  g_interrupted = 1;
}

}  // namespace

struct TerminalSource::LineEditor {
  LineEditor(std::function<void()> waiting, std::string file, Completer words)
      : whileWaiting(std::move(waiting)), historyFile(std::move(file)), completer(std::move(words)) {
    history = history_init();
    HistEvent event;
    ::history(history, &event, H_SETSIZE, kHistoryLines);
    ::history(history, &event, H_SETUNIQUE, 1);
    ::history(history, &event, H_LOAD, historyFile.c_str());
    editLine = el_init("korvane", stdin, stdout, stderr);
    el_set(editLine, EL_CLIENTDATA, this);
    el_set(editLine, EL_PROMPT, &LineEditor::promptText);
    el_set(editLine, EL_EDITOR, "emacs");
    el_set(editLine, EL_HIST, ::history, history);
    el_set(editLine, EL_GETCFN, &LineEditor::nextCharacter);
    el_set(editLine, EL_ADDFN, "korvane-complete", "Complete the word", &LineEditor::complete);
    el_set(editLine, EL_BIND, "^I", "korvane-complete", nullptr);
    el_source(editLine, nullptr);
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigaction(SIGINT, &action, nullptr);
  }
  ~LineEditor() {
    HistEvent event;
    ::history(history, &event, H_SAVE, historyFile.c_str());
    el_end(editLine);
    history_end(history);
  }

  static LineEditor* self(EditLine* editLine) {
    LineEditor* own = nullptr;
    el_get(editLine, EL_CLIENTDATA, &own);
    return own;
  }

  /// Bound to the tabulator key.
  static unsigned char complete(EditLine* editLine, int) {
    const LineEditor* own = self(editLine);
    const LineInfo* line = el_line(editLine);
    std::string start(line->buffer, line->cursor);
    start.erase(0, start.find_last_of(" \t") + 1);
    const CString typed = platform::wideFromUtf8(start);
    const std::vector<CString> words = own->completer(own->question, typed);
    if (words.empty()) return CC_ERROR;
    // No blank behind it: a blank is an answer's end, and Enter would be the next answer.
    const CString common = kvcmdCommonStart(words);
    if (common.GetLength() > typed.GetLength()) {
      el_deletestr(editLine, typed.GetLength());
      return el_insertstr(editLine, platform::utf8From(common).c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    std::string list = "\n";
    for (const CString& word : words) list += platform::utf8From(word) + "  ";
    ::fputs((list + "\n").c_str(), stdout);
    return CC_REDISPLAY;
  }

  static char* promptText(EditLine* editLine) { return self(editLine)->prompt.data(); }

  /// One character; timers fire while none comes. -1 after Ctrl-C.
  static int nextCharacter(EditLine* editLine, wchar_t* character) {
    LineEditor* own = self(editLine);
    for (;;) {
      if (g_interrupted) return -1;
      pollfd ready{STDIN_FILENO, POLLIN, 0};
      if (poll(&ready, 1, kWaitMilliseconds) > 0) break;
      own->whileWaiting();
    }
    return own->readUtf8(character);
  }

  int readUtf8(wchar_t* character) const {
    std::string bytes;
    for (;;) {
      char byte = 0;
      if (::read(STDIN_FILENO, &byte, 1) != 1) return bytes.empty() ? 0 : -1;
      bytes += byte;
      const auto lead = static_cast<unsigned char>(bytes.front());
      const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      if (bytes.size() >= length) break;
    }
    *character = platform::wideFromUtf8(bytes).GetAt(0);
    // The end of input, typed in the instant in which the terminal still gathered lines, comes as nothing.
    constexpr wchar_t kEndOfInput = 4;
    if (bytes.front() == '\0') *character = kEndOfInput;
    // Escape alone cancels; keys that send more begin with it and are followed at once.
    constexpr wchar_t kEscape = 27;
    constexpr int kKeyMilliseconds = 50;
    pollfd more{STDIN_FILENO, POLLIN, 0};
    if (*character == kEscape && poll(&more, 1, kKeyMilliseconds) == 0) {
      g_interrupted = 1;
      return -1;
    }
    return 1;
  }

  std::function<void()> whileWaiting;
  std::string historyFile;
  Completer completer;
  std::string prompt;
  CString question;  // what is asked now
  History* history = nullptr;
  EditLine* editLine = nullptr;
};

TerminalSource::TerminalSource(std::function<void()> whileWaiting, std::string historyFile,
                               Completer completer)
    : editor_(std::make_unique<LineEditor>(std::move(whileWaiting), std::move(historyFile),
                                           std::move(completer))) {}

TerminalSource::~TerminalSource() = default;

bool TerminalSource::readLine(const CString& prompt) {
  editor_->question = prompt;
  editor_->prompt = platform::utf8From(CString(prompt).TrimLeft(L"\r\n"));
  int length = 0;
  const char* line = el_gets(editor_->editLine, &length);
  if (!line || length <= 0) return false;
  const std::string text(line, static_cast<std::size_t>(length));
  if (text.find_first_not_of(" \t\r\n") != std::string::npos) {
    HistEvent event;
    ::history(editor_->history, &event, H_ENTER, text.c_str());
  }
  // Blanks at the end would each be an empty answer, which nobody means who sees a line.
  CString answers = platform::wideFromUtf8(text);
  reader_.feed(answers.TrimRight(L" \t\r\n").view(), false);
  reader_.feed(L"\n", true);
  return true;
}

KvEdToken TerminalSource::read(KvEdReadMode mode, const CString& prompt) {
  CString answer;
  while (!reader_.next(mode, answer)) {
    if (readLine(prompt)) {
      hasEnded_ = false;
      continue;
    }
    if (!g_interrupted) {
      // The end of input asks for the program's end as QUIT does, so that nothing is lost by a slip; a second
      // one, or a terminal that is gone, is the end.
      if (hasEnded_) return KvEdToken::of(KvEdToken::Kind::End);
      const bool isIdle = prompt == kKvCommandPrompt;
      hasEnded_ = isIdle;
      ::fputs(isIdle ? "QUIT\n" : "*Cancel*\n", stdout);
      el_reset(editor_->editLine);
      return isIdle ? KvEdToken::ofText(L"QUIT") : KvEdToken::of(KvEdToken::Kind::Cancel);
    }
    g_interrupted = 0;
    el_reset(editor_->editLine);
    ::fputs("*Cancel*\n", stdout);
    return KvEdToken::of(KvEdToken::Kind::Cancel);
  }
  return KvEdToken::ofText(std::move(answer));
}

bool isTerminal() {
  return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO);
}

}  // namespace korvane
