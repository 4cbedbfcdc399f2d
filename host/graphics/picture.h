#pragma once
// Pictures of points that lie in drawings: PNG and JPEG.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct KvGrPicture {
  int width = 0, height = 0;
  /// Rows from the top; 0xAARRGGBB, the colours multiplied by the opacity.
  std::vector<std::uint32_t> pixels;
  bool isOpaque = true;
  std::string file;  ///< its bytes
  bool isJpeg = false;
  int components = 3;  ///< of a JPEG: 1 grey, 3 colours, 4 inks
};

/// Reads a file. Null, with words, for one that can't be read, is of another form, is damaged, or has more
/// than 64 million points.
std::shared_ptr<const KvGrPicture> kvgrReadPicture(const std::filesystem::path& file, std::string& error);
/// The same from bytes in memory.
std::shared_ptr<const KvGrPicture> kvgrParsePicture(std::string bytes, std::string& error);
