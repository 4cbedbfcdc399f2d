#pragma once
// Writers of the query sub-command: one grid of texts, three forms.
#include <iosfwd>
#include <memory>
#include <vector>

#include "module/data/connection.h"

namespace tools {

struct GridColumn {
  CString name;
  bool isNumber = false;
};

/// An answer as it is written: values row by row, as many as there are columns.
struct Grid {
  std::vector<GridColumn> columns;
  std::vector<std::vector<_variant_t>> rows;
};

/// The columns are the names in the rows, in order of first appearance; a value that a row lacks is null. A
/// column is one of numbers when every text in it reads as one.
Grid gridOf(const std::shared_ptr<_Recordset>& answer);

CString tableOf(const Grid& grid);
/// RFC 4180 with a line of names and single line feeds. Null is nothing, the empty text is "".
void writeCsv(std::ostream& out, const Grid& grid);
/// An array of objects. Values of number columns that read as JSON numbers are written as they stand, others
/// as strings.
void writeJson(std::ostream& out, const Grid& grid);

}  // namespace tools
