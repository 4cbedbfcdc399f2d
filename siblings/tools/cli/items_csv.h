#pragma once
// The list of frames to nest, as a table of comma- or semicolon-separated values.
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

struct CsvItem {
  std::string name;  ///< empty when the table gives none
  double width = 0, height = 0;
  int line = 0;  ///< in the file, from 1
};

/// Most items of one table, repeats counted.
inline constexpr int kMostCsvItems = 100000;

/// Reads one item for each row, or as many as its count says. A first row without numbers names the columns:
/// `width` and `height`, and if wanted `count` and `name`, in any order and case; others are passed over.
/// Without it the columns are width, height, count, name; or name, width, height, count when the first field
/// is no number. Fields may stand in quotes; the separator is a semicolon when the first row has one outside
/// quotes. Blank rows and rows that begin with # are passed over. Sizes must be finite and above 0, counts
/// whole and at least 1. False with "line 3: expected the width, found \"x\"" in `error`; `items` is
/// untouched then.
bool readItemsCsv(std::string_view text, std::vector<CsvItem>& items, std::string& error);

}  // namespace korvane
