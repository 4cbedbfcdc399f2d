#pragma once
// The rows of a query's answer and a cursor over them.
#include <memory>
#include <vector>

#include "module/core/export.h"
#include "module/data/ado_fields.h"

class _Connection;

class MEK_API _Recordset {
 public:
  /// No rows, the cursor at the end. The connection is asked for types of fields when rows are sorted; it
  /// isn't owned, may be null and must outlive the sorting.
  _Recordset(_Connection* connection, CString table);

  long MoveFirst();
  /// One row further, whatever the flag says; stays behind the last row.
  long MoveNext();
  /// Behind the last row, so that no row can be read: the way to the end, not to the last row.
  long MoveLast();
  /// -1 at the end, else 0; as the last move left it.
  short GetadoEOF() const;
  long GetRecordCount();
  /// The value at a position (VT_I2, VT_I4, VT_INT) or of a name (VT_BSTR, no regard to case) in the current
  /// row; empty when there is none, at the end, and for every other kind of index.
  _variant_t GetCollect(const _variant_t& index);
  /// The current row, for the questions that go to a row (GetItem, GetTableProperty); null at the end. It
  /// stays valid until the rows change.
  const _adoFields* CurrentRow() const;
  /// Sorts by a comma list of fields, always ascending: " desc" at the very end is accepted and has no
  /// effect. Fields of type int, long and real compare as numbers that differ by 1e-10 at least, others by
  /// character code; rows without the field come first. Rows that compare equal keep their order. The cursor
  /// stays where it is.
  void PutSort(_bstr_t text);
  /// Appends a row. The cursor and the flag stay: call MoveFirst before reading.
  void PushBack(_adoFields row);
  /// Takes the current row out. The cursor then stands on the next row; the flag stays, even behind the last
  /// row.
  void Erase();
  void EraseAll();
  /// Appends one field for each distinct name (case counts) in the rows, in order of first appearance.
  void GetadoFields(std::vector<_adoFields>& out);

 private:
  friend class _Connection;  // its passes over the rows of an answer
  std::vector<_adoFields> takeRows();

  std::size_t current_ = 0;  ///< position, so that appending and copying leave it valid
  short endOfFile_ = VARIANT_TRUE;
  std::vector<_adoFields> rows_;
  CString table_;
  _Connection* connection_;
};
