#include "tests/support/picture.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace test {
namespace {

constexpr int kSide = InkGrid::kSide;
constexpr double kCellTolerance = 10;
constexpr int kBlock = kSide / 8;
constexpr double kBlockShare = 0.02, kBlockTolerance = 40;

constexpr char kHex[] = "0123456789abcdef";

/// Least and greatest ink of a cell and those beside it.
std::pair<double, double> around(const InkGrid& grid, int row, int column) {
  double least = 255, greatest = 0;
  for (int r = std::max(0, row - 1); r <= std::min(kSide - 1, row + 1); ++r)
    for (int c = std::max(0, column - 1); c <= std::min(kSide - 1, column + 1); ++c) {
      least = std::min(least, grid.at(r, c));
      greatest = std::max(greatest, grid.at(r, c));
    }
  return {least, greatest};
}

double blockInk(const InkGrid& grid, int top, int left) {
  double sum = 0;
  for (int r = top; r < top + kBlock; ++r)
    for (int c = left; c < left + kBlock; ++c) sum += grid.at(r, c);
  return sum;
}

}  // namespace

double InkGrid::sum() const {
  double sum = 0;
  for (double cell : cells) sum += cell;
  return sum;
}

bool readInk(const std::filesystem::path& png, InkGrid& grid) {
  cairo_surface_t* surface = cairo_image_surface_create_from_png(png.c_str());
  const bool isRead = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
  const int width = isRead ? cairo_image_surface_get_width(surface) : 0;
  const int height = isRead ? cairo_image_surface_get_height(surface) : 0;
  if (width < kSide || height < kSide) {
    cairo_surface_destroy(surface);
    return false;
  }
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface);
  const auto pixel = [&](int x, int y) {
    return reinterpret_cast<const std::uint32_t*>(data + y * stride)[x] & 0xFFFFFFu;
  };
  const std::uint32_t ground = pixel(0, 0);
  const auto ink = [&](std::uint32_t color) {
    int most = 0;
    for (int shift : {0, 8, 16})
      most = std::max(most, std::abs(static_cast<int>((color >> shift) & 0xFFu) -
                                     static_cast<int>((ground >> shift) & 0xFFu)));
    return most;
  };
  grid = InkGrid();
  std::array<int, kSide * kSide> counts{};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const auto cell = static_cast<std::size_t>(static_cast<std::int64_t>(y) * kSide / height * kSide +
                                                 static_cast<std::int64_t>(x) * kSide / width);
      grid.cells[cell] += ink(pixel(x, y));
      ++counts[cell];
    }
  for (std::size_t i = 0; i < grid.cells.size(); ++i) grid.cells[i] = std::round(grid.cells[i] / counts[i]);
  cairo_surface_destroy(surface);
  return true;
}

std::string formatInk(const InkGrid& grid) {
  std::string text;
  for (int r = 0; r < kSide; ++r) {
    for (int c = 0; c < kSide; ++c) {
      const auto value = static_cast<unsigned>(grid.at(r, c));
      text += kHex[value / 16];
      text += kHex[value % 16];
    }
    text += '\n';
  }
  return text;
}

bool parseInk(const std::string& text, InkGrid& grid) {
  std::size_t cell = 0;
  int high = -1;
  for (char c : text) {
    if (c == '\n' || c == '\r') continue;
    const char* digit = std::find(kHex, kHex + 16, c);
    if (digit == kHex + 16 || cell >= grid.cells.size()) return false;
    const int value = static_cast<int>(digit - kHex);
    if (high < 0) {
      high = value;
      continue;
    }
    grid.cells[cell++] = high * 16 + value;
    high = -1;
  }
  return cell == grid.cells.size() && high < 0;
}

std::string inkDifference(const InkGrid& is, const InkGrid& accepted) {
  constexpr int kMostTold = 8;
  std::ostringstream told;
  int count = 0;
  const auto tell = [&](const std::string& where, double now, double then) {
    if (++count <= kMostTold) told << where << ": ink " << now << ", accepted " << then << '\n';
  };
  for (int r = 0; r < kSide; ++r)
    for (int c = 0; c < kSide; ++c) {
      const auto fits = [&](double value, const InkGrid& other) {
        const auto [least, greatest] = around(other, r, c);
        return value >= least - kCellTolerance && value <= greatest + kCellTolerance;
      };
      if (!fits(is.at(r, c), accepted) || !fits(accepted.at(r, c), is))
        tell("row " + std::to_string(r) + " column " + std::to_string(c), is.at(r, c), accepted.at(r, c));
    }
  const auto isFar = [](double now, double then) {
    return std::fabs(now - then) > kBlockTolerance + kBlockShare * std::max(now, then);
  };
  // A line on the border of two blocks may change sides; with its neighbours a block still agrees.
  for (int r = 0; r + kBlock <= kSide; r += kBlock)
    for (int c = 0; c + kBlock <= kSide; c += kBlock) {
      const double now = blockInk(is, r, c), then = blockInk(accepted, r, c);
      if (!isFar(now, then)) continue;
      double nowAround = 0, thenAround = 0;
      for (int y = std::max(0, r - 1); y < std::min(kSide, r + kBlock + 1); ++y)
        for (int x = std::max(0, c - 1); x < std::min(kSide, c + kBlock + 1); ++x) {
          nowAround += is.at(y, x);
          thenAround += accepted.at(y, x);
        }
      if (isFar(nowAround, thenAround))
        tell("cells from row " + std::to_string(r) + " column " + std::to_string(c), now, then);
    }
  if (isFar(is.sum(), accepted.sum())) tell("the whole picture", is.sum(), accepted.sum());
  if (count > kMostTold) told << "and " << count - kMostTold << " more\n";
  return told.str();
}

testing::AssertionResult comparePicture(const std::filesystem::path& png,
                                        const std::filesystem::path& accepted) {
  InkGrid is, held;
  if (!readInk(png, is)) return testing::AssertionFailure() << png << " is no picture of 64 points a side";
  if (const char* accept = std::getenv("KORVANE_ACCEPT_PICTURES"); accept && *accept && *accept != '0') {
    std::filesystem::create_directories(accepted.parent_path());
    std::ofstream out(accepted, std::ios::binary);
    out << formatInk(is);
    out.close();
    return out ? testing::AssertionSuccess() : testing::AssertionFailure() << "cannot write " << accepted;
  }
  std::ifstream in(accepted, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!parseInk(text, held))
    return testing::AssertionFailure() << accepted << " holds no accepted picture; look at " << png
                                       << ", then run with KORVANE_ACCEPT_PICTURES=1";
  const std::string difference = inkDifference(is, held);
  if (difference.empty()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << png << " differs from " << accepted << '\n' << difference;
}

}  // namespace test
