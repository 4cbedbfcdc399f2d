#pragma once
// A field, a row or a group of rows of a query's result, all one class; and images kept in text fields.
#include <memory>
#include <vector>

#include "module/core/export.h"
#include "platform/text/cstring.h"
#include "platform/text/variant.h"

/// A named value that may have children: the fields of a row, or the rows of a group. A deep copy copies all
/// of them.
class MEK_API _adoFields {
 public:
  _adoFields() = default;
  _adoFields(_bstr_t fieldName, _variant_t fieldValue)
      : value(std::move(fieldValue)), name(std::move(fieldName)) {}

  std::vector<_adoFields> children;
  _variant_t value;
  _bstr_t name;
  /// Number of children, kept by whoever appends to them: readers go by it and not by the size of `children`.
  int count = 0;

  /// A copy of the value and name of the first child of that name (no regard to case), without its children.
  /// Null when there is none.
  std::shared_ptr<_adoFields> GetItem(CString name) const;
  /// What a schema row tells: `TABLE_NAME` gives this object's name; `TABLE_TYPE` gives "TABLE" when the name
  /// isn't empty. An empty value for any other key (no regard to case). Never null.
  std::shared_ptr<_adoFields> GetTableProperty(CString key) const;

  /// Appends a child and counts it.
  void append(_adoFields child) {
    children.push_back(std::move(child));
    ++count;
  }
  /// The child that GetItem copies, itself. Null when there is none.
  const _adoFields* find(std::wstring_view childName) const;
  /// The first `count` children, or as many as there are.
  std::size_t readable() const;
};

/// Writes the bytes of a field to a file in the temporary folder. The field's text holds them as pairs of
/// hexadecimal digits with blanks between; `transform`, when given, gets the address of the buffer and its
/// length and may change the bytes in place. Gives the file's path; an empty text when the field is null or
/// holds nothing, when writing fails, or when `fileName` has path parts (nothing is written outside the
/// temporary folder). A part that is no number counts as 0.
MEK_API CString GetImageFromADO(CString fileName, std::shared_ptr<_adoFields> field,
                                int (*transform)(char**, long));
/// Stores nothing; always 0.
MEK_API int PutImageInADO(CString fileName, std::shared_ptr<_adoFields> field);
