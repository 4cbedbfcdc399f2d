#pragma once
// Pictures compared with accepted ones.
//
// A picture (PNG) is reduced to the ink of a grid of 64 by 64 cells, 0 (the colour of its first pixel) to
// 255, and held as text: 64 rows of 64 two-digit hexadecimal numbers. Other smoothing of edges, and lines
// that move by less than a cell, pass; an entity that is missing, added or moved fails.
//
// With KORVANE_ACCEPT_PICTURES=1 in the environment the picture becomes the accepted one. A test program
// links this by `korvane_pictures(TARGET)`.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

namespace test {

struct InkGrid {
  static constexpr int kSide = 64;
  std::array<double, kSide * kSide> cells{};
  double at(int row, int column) const { return cells[static_cast<std::size_t>(row * kSide + column)]; }
  double sum() const;
};

/// False for what is no PNG.
bool readInk(const std::filesystem::path& png, InkGrid& grid);
std::string formatInk(const InkGrid& grid);
/// False for a text of another form.
bool parseInk(const std::string& text, InkGrid& grid);

/// What is different, in words; empty when the pictures agree:
/// - each cell has the ink of some cell beside it (or its own) in the other picture, within 10 of 255;
/// - each eighth of the sides squared, and the whole, has the same ink within a fiftieth and 40 of 255.
std::string inkDifference(const InkGrid& is, const InkGrid& accepted);

/// Fails with the difference, and with the name of the picture, which stays where it is.
testing::AssertionResult comparePicture(const std::filesystem::path& png,
                                        const std::filesystem::path& accepted);

}  // namespace test
