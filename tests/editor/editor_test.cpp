// Commands, the one stream of input, and commands that run inside others.
#include <gtest/gtest.h>

#include "host/base/context.h"
#include "host/base/wcmatch.h"
#include "host/editor/prompts.h"

namespace {

/// An editor that is the current one, with what it printed.
class EditorTest : public testing::Test {
 protected:
  EditorTest() : editor([this](const CString& text) { shown += text; }) {
    KvHostContext::current().editor = &editor;
    define(L"ECHO3", [] {
      for (int i = 0; i < 3; ++i) answer(L"e");
    });
    define(L"ECHO1", [] { answer(L"one"); });
    define(L"HOLDER", [] {
      // Starts ECHO3 with one answer only, and looks at it while it waits for more.
      log() += status(kvedCommandS(RTSTR, L"ECHO3", RTSTR, L"first", RTNONE));
      log() += KvHostContext::current().editor->commandNames() + L";";
      log() += status(kvedCommandS(RTSTR, L"second", RTNONE));
    });
    define(L"PAUSER", [] {
      log() += status(kvedCommandS(RTSTR, L"ECHO3", RTSTR, L"a", RTSTR, L"\\", RTSTR, L"c", RTNONE));
    });
    define(L"OUTERPAUSE", [] { log() += status(kvedCommandS(RTSTR, L"PAUSER", RTSTR, L"\\", RTNONE)); });
    define(L"CHAIN", [] {
      log() += status(kvedCommandS(RTSTR, L"ECHO1", RTSTR, L"x", RTSTR, L"ECHO1", RTSTR, L"y", RTNONE));
      log() += status(kvedCommandS(RTSTR, L"NOSUCH", RTNONE));
    });
    define(L"CANCELLER", [] {
      kvedCommandS(RTSTR, L"ECHO3", RTSTR, L"only", RTNONE);
      log() += status(kvedCommandS(RTNONE));
      log() += KvHostContext::current().editor->commandNames() + L";";
    });
    define(L"NEST", [] { kvedCommandS(RTSTR, L"NEST", RTNONE); });
    define(L"THROWS", [] { throw std::runtime_error("broken"); });
    define(L"ASK", [] {
      double value = 0;
      kvedInitGet(KVED_NOZERO | KVED_NONEG, L"Up DOwn");
      const int result = kvedGetReal(L"Value: ", &value);
      CString word;
      kvedGetInput(word);
      CString text;
      text.Format(L"%d %g %s;", result, value, result == RTKWORD ? word : CString());
      log() += text;
    });
    log().Empty();
  }
  ~EditorTest() override { KvHostContext::current().editor = nullptr; }

  static CString& log() {
    static CString text;
    return text;
  }
  static CString status(int value) {
    CString text;
    text.Format(L"<%d>", value);
    return text;
  }
  static void answer(const wchar_t* prompt) {
    CString text;
    log() += kvedGetString(0, prompt, text) == RTNORM ? text + L";" : CString(L"cancel;");
  }
  void define(const wchar_t* name, KvRxFunctionPtr function) {
    editor.commands().addCommand(L"TEST", name, name, 0, function);
  }
  CString run(const wchar_t* script) {
    log().Empty();
    editor.pushSource(std::make_unique<KvEdScriptSource>(CString(script)));
    KvEdOutcome outcome;
    while (editor.runNext(outcome)) outcomes.push_back(outcome);
    EXPECT_FALSE(editor.isCommandRunning());
    return log();
  }

  CString shown;
  std::vector<KvEdOutcome> outcomes;
  KvEdEditor editor;
};

TEST_F(EditorTest, ScriptsAnswerPromptsWordByWord) {
  EXPECT_EQ(run(L"ECHO3 a b\nc\n; a comment\nECHO1\n\"two words\"\n"), CString(L"a;b;c;two words;"));
  // The empty answer at the command line repeated the last command, which then found nobody to ask.
  EXPECT_EQ(run(L"echo1 x\n\nagain\n"), CString(L"x;again;"));
}

TEST_F(EditorTest, InnerCommandWaitsForMoreAndEndsOnTheOuterStream) {
  EXPECT_EQ(run(L"HOLDER\nfrom-script\nECHO1\nnext\n"),
            CString(L"first;<5100>HOLDERECHO3;second;<5100>from-script;next;"));
}

TEST_F(EditorTest, PauseFallsThroughOneLevelAtATime) {
  EXPECT_EQ(run(L"PAUSER\nuser\n"), CString(L"a;user;c;<5100>"));
  EXPECT_EQ(run(L"OUTERPAUSE\ndeep\n"), CString(L"a;deep;c;<5100><5100>"));
}

TEST_F(EditorTest, ListsRunSeveralCommandsAndStopAtUnknownOnes) {
  EXPECT_EQ(run(L"CHAIN\n"), CString(L"x;y;<5100><-5001>"));
  EXPECT_GE(shown.Find(L"Unknown command \"NOSUCH\""), 0);
}

TEST_F(EditorTest, CancelEndsTheWaitingCommandOnly) {
  EXPECT_EQ(run(L"CANCELLER\nECHO1\nz\n"), CString(L"only;cancel;cancel;<-5002>CANCELLER;z;"));
  EXPECT_EQ(run(L"ECHO3 a"), CString(L"a;cancel;cancel;"));
  EXPECT_EQ(outcomes.back(), KvEdOutcome::Cancelled);
}

TEST_F(EditorTest, RunawayNestingAndExceptionsStayInside) {
  run(L"NEST\nTHROWS\n");
  EXPECT_GE(shown.Find(L"nested too deeply"), 0);
  EXPECT_GE(shown.Find(L"broken"), 0);
  EXPECT_EQ(outcomes.back(), KvEdOutcome::Failed);
}

TEST_F(EditorTest, NumbersAreAskedForAgain) {
  EXPECT_EQ(run(L"ASK\nabc\n0\n-1\n2.5\nASK\ndo\nASK\nu\nASK\n\nASK d 7\n"),
            CString(L"5100 2.5 ;-5005 0 DOwn;-5005 0 Up;5000 0 ;5100 7 ;"));
}

TEST_F(EditorTest, VariablesKeepTheirType) {
  resbuf value{};
  value.restype = RTSHORT;
  value.resval.rint = 5;
  EXPECT_EQ(kvedSetVar(L"expert", &value), RTNORM);
  value.resval.rint = 6;
  EXPECT_EQ(kvedSetVar(L"EXPERT", &value), RTERROR);
  resbuf real{};
  real.restype = RTREAL;
  real.resval.rreal = 1;
  EXPECT_EQ(kvedSetVar(L"EXPERT", &real), RTERROR);
  EXPECT_EQ(kvedSetVar(L"CMDNAMES", &value), RTERROR);
  resbuf read{};
  ASSERT_EQ(kvedGetVar(L"EXPERT", &read), RTNORM);
  EXPECT_EQ(read.restype, RTSHORT);
  EXPECT_EQ(read.resval.rint, 5);
  EXPECT_EQ(kvedGetVar(L"NOSUCHVAR", &read), RTERROR);
}

TEST(WildCards, MatchLikeTheHostsPatterns) {
  struct Case {
    const wchar_t *text, *pattern;
    bool matches;
  };
  const Case cases[] = {
      {L"LINE", L"*LINE", true}, {L"XLINE", L"*LINE", true}, {L"LINES", L"*LINE", false},
      {L"", L"*", true},         {L"abc", L"a?c", true},     {L"a1", L"@#", true},
      {L"a-", L"@.", true},      {L"b", L"[a-c]", true},     {L"d", L"[~a-c]", true},
      {L"x", L"a,x", true},      {L"x", L"~x", false},       {L"a*b", L"a`*b", true},
      {L"aab", L"a*ab", true},   {L"a,b", L"a`,b", true},    {L"aXbXc", L"a*X*c", true},
      {L"中1", L"@#", true},     {L"[x", L"[x", true},       {L"abcabd", L"*ab*abc", false},
      {L"line", L"LINE", false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(kvutWcMatch(c.text, c.pattern), c.matches ? RTNORM : RTERROR)
        << CString(c.text).GetLength() << " " << platform::utf8From(c.pattern);
}

TEST(Chains, BuildByKindOfCode) {
  const double point[] = {1, 2};
  resbuf* chain =
      kvutBuildList(RTDXF0, L"LINE", 8, L"0", RTPOINT, point, 70, 3, 40, 1, RTLB, RTLE, 1071, 70000, 0);
  ASSERT_NE(chain, nullptr);
  std::string codes;
  for (resbuf* node = chain; node; node = node->rbnext) codes += std::to_string(node->restype) + " ";
  EXPECT_EQ(codes, "0 8 5002 70 40 5016 5017 1071 ");
  resbuf* copy = kvutCopyRb(chain);
  EXPECT_STREQ(copy->rbnext->resval.rstring, L"0");
  EXPECT_NE(copy->rbnext->resval.rstring, chain->rbnext->resval.rstring);
  kvutRelRb(copy);
  kvutRelRb(chain);
  EXPECT_EQ(kvutBuildList(8, L"0", 4999, 1, 0), nullptr);
}

}  // namespace
