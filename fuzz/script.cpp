// Scripts of any bytes, against all commands of the host and some that ask for each kind of answer and run
// one another. What waits or reaches for files is left out.
#include <cstdint>
#include <string_view>

#include "host/app/hostapp.h"
#include "host/editor/prompts.h"
#include "platform/text/utf.h"

namespace {

void ask() {
  double real = 0;
  int whole = 0;
  CString text;
  kvedInitGet(KVED_NOZERO | KVED_NONEG, L"Up Down");
  kvedGetReal(L"Real: ", &real);
  kvedInitGet(KVED_ARBITRARY, L"Left LEFTmost");
  kvedGetInt(L"Whole: ", &whole);
  kvedInitGet(KVED_NONULL, L"Yes No");
  kvedGetKword(L"Word: ", text);
}

void words() {
  CString text;
  kvedGetString(1, L"Line: ", text);
  kvedCommandS(RTSTR, text, RTSTR, L"\\", RTNONE);
  kvedCommandS(RTSTR, L"ASK", RTREAL, 2.5, RTNONE);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KvHostApp app({});
  app.editor().commands().addCommand(L"F", L"ASK", L"ASK", 0, ask);
  app.editor().commands().addCommand(L"F", L"WORDS", L"WORDS", 0, words);
  for (const wchar_t* name : {L"DELAY", L"SCRIPT", L"SCR", L"SAVE", L"QSAVE", L"SAVEAS", L"END", L"OPEN",
                              L"WBLOCK", L"W", L"-WBLOCK"})
    app.editor().commands().removeCmd(L"HOST", name);
  app.newDocument();
  app.editor().pushSource(std::make_unique<KvEdScriptSource>(
      CString(platform::fromUtf8({reinterpret_cast<const char*>(data), size}))));
  app.run();
  return 0;
}
