#pragma once
// The stream of input: where the answers to prompts come from.
#include <cstdint>
#include <memory>

#include "platform/text/cstring.h"

/// One answer: a text that was typed or stood in a script, or a value handed over by a program.
struct KvEdToken {
  enum class Kind : std::uint8_t {
    Text,  ///< typed text; empty: plain Enter
    Whole,
    Real,
    Angle,
    Point,
    Name,
    PickSet,
    ListBegin,
    ListEnd,  ///< handed over by kvedCommandS
    Pause,    ///< the user answers this one
    Cancel,   ///< the running command is to end
    End,      ///< no more input
  };
  Kind kind = Kind::Text;
  CString text;
  int whole = 0;
  double numbers[3] = {0, 0, 0};
  int dimensions = 0;  ///< of a point: 2 or 3
  long long name[2] = {0, 0};
  bool isTracking = false;  ///< of a point: the cursor moves there, it isn't an answer
  /// Who gave it. A front end marks the points of its cursor: they were meant roughly, and running object
  /// snaps, the snap's grid and ORTHO make them exact. Everything else is told by the editor.
  enum class Origin : std::uint8_t { Program, Script, Keyboard, Cursor };
  Origin origin = Origin::Program;

  static KvEdToken ofText(CString text);
  static KvEdToken of(Kind kind);
};

/// Whether a prompt wants to know where the cursor moves.
enum class KvEdTracking : std::uint8_t { Skipped, Wanted };

/// How far one answer reaches: to the next blank, or to the end of the line.
enum class KvEdReadMode : std::uint8_t { Word, Line };

class KvEdInputSource {
 public:
  virtual ~KvEdInputSource() = default;
  /// The next answer; End when the source is used up. `prompt` is what the user is asked.
  virtual KvEdToken read(KvEdReadMode mode, const CString& prompt) = 0;
  /// True when a person sits at the other end: prompts aren't echoed then, since the source shows them.
  virtual bool isInteractive() const { return false; }
  /// Line of the answer read last, counted from 1; 0 where there are no lines.
  virtual int line() const { return 0; }
  /// A command went wrong: what a person has typed on for it in the same line has no meaning any more.
  virtual void dropLine() {}
};

/// Cuts text into answers by the rules of scripts: each line end or blank ends an answer (in Line mode only
/// the line end does), a line that begins with `;` is a comment, a word in double quotes may hold blanks.
class KvEdLineReader {
 public:
  /// More text; a line without an end is taken as ended when `isLast`.
  void feed(std::wstring_view text, bool isLast);
  /// False when no whole answer is there yet.
  bool next(KvEdReadMode mode, CString& answer);
  bool isUsedUp() const { return at_ >= text_.size(); }
  /// Forgets what has not been read.
  void drop() { at_ = text_.size(); }
  int line() const { return answerLine_; }

 private:
  void skipComments();

  std::wstring text_;
  std::size_t at_ = 0;
  int line_ = 1;
  int answerLine_ = 0;
  bool atLineStart_ = true;
};

/// A script held as text.
class KvEdScriptSource : public KvEdInputSource {
 public:
  explicit KvEdScriptSource(const CString& text);
  KvEdToken read(KvEdReadMode mode, const CString& prompt) override;
  int line() const override { return reader_.line(); }

 private:
  KvEdLineReader reader_;
};
