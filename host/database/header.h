#pragma once
// The variables that a drawing carries in its header: typed reading and setting by name. A variable that the
// drawing lacks has the value that new drawings begin with. Setting marks the drawing as changed and is taken
// back by undo.
//
// Names stand with their `$`. Angles are in radians on this side, in degrees in files.
#include <map>
#include <memory>
#include <span>
#include <string>

#include "host/database/database.h"

/// One known variable: the group under which its value stands in files, and the value of a new drawing
/// (millimetres, metric dimensions).
struct KvDbHeaderVariable {
  const wchar_t* name;
  std::int16_t code;        ///< 10: a point
  std::uint8_t dimensions;  ///< of a point
  double x, y, z;           ///< a number in x; an angle in degrees
  const wchar_t* text;
};

/// Null for a name that isn't known. Case counts: names are upper-case.
const KvDbHeaderVariable* kvdbHeaderVariable(std::wstring_view name);
std::span<const KvDbHeaderVariable> kvdbHeaderVariables();

class KvDbHeader {
 public:
  explicit KvDbHeader(KvDbDatabase& database);
  ~KvDbHeader();
  KvDbHeader(const KvDbHeader&) = delete;
  KvDbHeader& operator=(const KvDbHeader&) = delete;

  /// The value, or that of a new drawing when the drawing has none or none that is a number; 0 or empty for
  /// a name that isn't known.
  double real(const wchar_t* name) const;
  int whole(const wchar_t* name) const;
  CString text(const wchar_t* name) const;
  KvGePoint3d point(const wchar_t* name) const;
  /// Of a variable in degrees, in radians.
  double angle(const wchar_t* name) const;
  /// The record that a variable names; null when there is none.
  KvDbObjectId record(const wchar_t* name, KvDbTable table) const;

  /// eKeyNotFound for a name that is neither known nor in the drawing; eInvalidInput for another kind of
  /// value or a number that is not finite.
  Kvad::ErrorStatus setReal(const wchar_t* name, double value);
  Kvad::ErrorStatus setWhole(const wchar_t* name, int value);
  Kvad::ErrorStatus setText(const wchar_t* name, const wchar_t* value);
  Kvad::ErrorStatus setPoint(const wchar_t* name, const KvGePoint3d& value);
  Kvad::ErrorStatus setAngle(const wchar_t* name, double radians);
  /// eNullObjectId, eWrongDatabase, eWrongObjectType (of another table), eWasErased.
  Kvad::ErrorStatus setRecord(const wchar_t* name, KvDbTable table, KvDbObjectId id);

  /// A record of a table has got another name: variables that name it follow.
  void followRename(KvDbObjectId table, const CString& oldName, const CString& newName);

 private:
  class State;
  const KvDbStoredGroup* find(const wchar_t* name) const;
  /// The group to change, made when missing; null for an unknown name.
  KvDbStoredGroup* edit(const wchar_t* name);

  KvDbDatabase& database_;
  std::unique_ptr<KvDbStub> stub_;  // through which undo keeps the header's state
  std::unique_ptr<State> state_;
  mutable std::map<std::wstring, std::size_t, std::less<>> index_;
  mutable std::size_t indexedCount_ = 0;
};
