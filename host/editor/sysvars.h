#pragma once
// System variables: each with one fixed type, a scope and, where it has them, limits.
#include <functional>
#include <map>
#include <variant>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/resbuf.h"

/// How the value stands in a `resbuf`: RTSHORT, RTLONG, RTREAL, RTPOINT, RT3DPOINT, RTSTR.
using KvEdVarType = int;

/// Three doubles serve both kinds of points.
struct KvEdVarPoint {
  double x = 0, y = 0, z = 0;
  friend bool operator==(const KvEdVarPoint&, const KvEdVarPoint&) = default;
};

using KvEdVarValue = std::variant<int, double, KvEdVarPoint, CString>;

/// Where a variable's value lives.
enum class KvEdVarScope : std::uint8_t {
  Session,   ///< here, as long as the host runs
  User,      ///< in the user's settings
  Drawing,   ///< in the header of the working drawing
  Computed,  ///< nowhere
};

/// One variable. A computed one has `read` (and `write`, when it may be set), one of a drawing too; the
/// others hold their value here.
struct KvEdVariable {
  CString name;
  KvEdVarScope scope = KvEdVarScope::Session;
  KvEdVarType type = RTSHORT;
  KvEdVarValue value = 0;
  bool readOnly = false;
  double lowest = 0, highest = 0;  ///< numbers only; equal: no limits
  CString saved;                   ///< how the value stands in the settings
  std::function<KvEdVarValue()> read;
  std::function<bool(const KvEdVarValue&)> write;
};

class KvEdSysVars {
 public:
  /// With the variables of the session, of the user and of drawings.
  KvEdSysVars();

  /// Adds a variable or replaces the one of the same name.
  void define(KvEdVariable variable);
  /// Without regard to case; null when there is none.
  const KvEdVariable* find(const wchar_t* name) const;
  std::vector<const KvEdVariable*> all() const;

  /// eKeyNotFound.
  Kvad::ErrorStatus get(const wchar_t* name, KvEdVarValue& value) const;
  /// eKeyNotFound, eNotApplicable for a read-only one, eInvalidInput for another type or a number that is not
  /// finite, eOutOfRange. A whole number is taken for a real variable.
  Kvad::ErrorStatus set(const wchar_t* name, const KvEdVarValue& value);

  /// The user's variables from and to the settings of the current environment; a value there that doesn't fit
  /// is passed over, and only what has changed is written.
  void loadSettings();
  void saveSettings();

  /// For the host itself: past the read-only mark and the limits. False when there is none of this name and
  /// type.
  bool setInternally(const wchar_t* name, const KvEdVarValue& value);

 private:
  std::map<CString, KvEdVariable> variables_;  // by upper-case name
};

/// The variables of drawings: every header variable under its name without the `$`, and what is worked out
/// from the drawing and its view.
void kvedDefineDrawingVariables(KvEdSysVars& variables);
class KvEdEditor;
/// The variables that tell of an editor: commands, the last point, the screen.
void kvedDefineEditorVariables(KvEdSysVars& variables, KvEdEditor& editor);

/// The value of a variable in the type that the host keeps it in; a text is allocated with malloc and belongs
/// to the caller. RTERROR for an unknown name or without a host: `result` is untouched.
int kvedGetVar(const wchar_t* name, resbuf* result);
/// RTERROR for an unknown or read-only name, a value of another type, or one out of range.
int kvedSetVar(const wchar_t* name, const resbuf* value);
