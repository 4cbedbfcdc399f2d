#include "host/graphics/picture.h"

#include <cairo.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include "platform/files/files.h"

namespace {

constexpr std::int64_t kMostPoints = 64'000'000;
constexpr std::string_view kPngSign("\x89PNG\r\n\x1A\n", 8), kJpegSign("\xFF\xD8\xFF", 3);

bool isSizeSound(std::int64_t width, std::int64_t height, std::string& error) {
  if (width >= 1 && height >= 1 && width * height <= kMostPoints && width <= 0xFFFF && height <= 0xFFFF)
    return true;
  error = "the picture has no points, or more than 64 million";
  return false;
}

std::int64_t bigEndian(const std::string& bytes, std::size_t at) {
  std::int64_t value = 0;
  for (std::size_t i = at; i < at + 4; ++i) value = value * 256 + static_cast<unsigned char>(bytes[i]);
  return value;
}

bool decodePng(KvGrPicture& picture, std::string& error) {
  // The size stands in the first chunk; it is looked at before anything of that size is made.
  constexpr std::size_t kWidthAt = 16, kHeaderEnd = 24;
  if (picture.file.size() < kHeaderEnd) {
    error = "the picture ends in its header";
    return false;
  }
  if (!isSizeSound(bigEndian(picture.file, kWidthAt), bigEndian(picture.file, kWidthAt + 4), error))
    return false;
  struct Source {
    const std::string& bytes;
    std::size_t at;
  } source{picture.file, 0};
  const auto read = [](void* from, unsigned char* to, unsigned int length) {
    auto& s = *static_cast<Source*>(from);
    if (s.bytes.size() - s.at < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(to, s.bytes.data() + s.at, length);
    s.at += length;
    return CAIRO_STATUS_SUCCESS;
  };
  cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(read, &source);
  const cairo_format_t format = cairo_image_surface_get_format(surface);
  const bool isRead = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS &&
                      (format == CAIRO_FORMAT_ARGB32 || format == CAIRO_FORMAT_RGB24);
  if (isRead) {
    picture.width = cairo_image_surface_get_width(surface);
    picture.height = cairo_image_surface_get_height(surface);
    picture.isOpaque = format == CAIRO_FORMAT_RGB24;
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < picture.height; ++y) {
      const auto* row = reinterpret_cast<const std::uint32_t*>(data + y * stride);
      picture.pixels.insert(picture.pixels.end(), row, row + picture.width);
    }
    if (picture.isOpaque)
      for (std::uint32_t& pixel : picture.pixels) pixel |= 0xFF000000u;
  } else {
    error = "the picture is damaged";
  }
  cairo_surface_destroy(surface);
  return isRead;
}

struct JpegError {
  jpeg_error_mgr manager;
  std::jmp_buf back;
};

/// One row of a JPEG's bytes as points.
void takeRow(const jpeg_decompress_struct& jpeg, const unsigned char* at, std::uint32_t* pixels) {
  const unsigned flip = jpeg.saw_Adobe_marker ? 0 : 255;
  const int step = jpeg.output_components;
  for (unsigned x = 0; x < jpeg.output_width; ++x, at += step) {
    unsigned r = at[0], g = step > 1 ? at[1] : r, b = step > 1 ? at[2] : r;
    if (step == 4) {
      // Adobe's files hold inks inverted: 255 is none.
      const unsigned black = at[3] ^ flip;
      r = (r ^ flip) * black / 255, g = (g ^ flip) * black / 255, b = (b ^ flip) * black / 255;
    }
    pixels[x] = 0xFF000000u | r << 16 | g << 8 | b;
  }
}

/// Reads rows into `pixels`, which has room for all; only plain data here, since errors jump.
bool decodeRows(jpeg_decompress_struct& jpeg, JpegError& failure, std::uint32_t* const pixels,
                unsigned char* const row) {
  if (setjmp(failure.back) != 0) return false;
  while (jpeg.output_scanline < jpeg.output_height) {
    unsigned char* rows[] = {row};
    const std::size_t from = static_cast<std::size_t>(jpeg.output_scanline) * jpeg.output_width;
    jpeg_read_scanlines(&jpeg, rows, 1);
    takeRow(jpeg, row, pixels + from);
  }
  jpeg_finish_decompress(&jpeg);
  return true;
}

bool beginJpeg(jpeg_decompress_struct& jpeg, JpegError& failure, const std::string& bytes) {
  if (setjmp(failure.back) != 0) return false;
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return jpeg_read_header(&jpeg, TRUE) == JPEG_HEADER_OK;
}

bool startJpeg(jpeg_decompress_struct& jpeg, JpegError& failure) {
  if (setjmp(failure.back) != 0) return false;
  if (jpeg.num_components == 4) jpeg.out_color_space = JCS_CMYK;
  return jpeg_start_decompress(&jpeg) == TRUE;
}

bool decodeJpeg(KvGrPicture& picture, std::string& error) {
  jpeg_decompress_struct jpeg{};
  JpegError failure{};
  jpeg.err = jpeg_std_error(&failure.manager);
  failure.manager.error_exit = [](j_common_ptr common) {
    std::longjmp(reinterpret_cast<JpegError*>(common->err)->back, 1);
  };
  failure.manager.output_message = [](j_common_ptr) {};
  bool isRead = beginJpeg(jpeg, failure, picture.file);
  if (isRead && !isSizeSound(jpeg.image_width, jpeg.image_height, error)) isRead = false;
  if (isRead) {
    picture.components = jpeg.num_components;
    isRead = startJpeg(jpeg, failure);
  }
  if (isRead) {
    picture.width = static_cast<int>(jpeg.output_width);
    picture.height = static_cast<int>(jpeg.output_height);
    picture.pixels.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
    std::vector<unsigned char> row(static_cast<std::size_t>(jpeg.output_width) *
                                   static_cast<std::size_t>(jpeg.output_components));
    isRead = decodeRows(jpeg, failure, picture.pixels.data(), row.data());
  }
  jpeg_destroy_decompress(&jpeg);
  if (!isRead && error.empty()) error = "the picture is damaged";
  return isRead;
}

}  // namespace

std::shared_ptr<const KvGrPicture> kvgrParsePicture(std::string bytes, std::string& error) {
  error.clear();
  auto picture = std::make_shared<KvGrPicture>();
  picture->file = std::move(bytes);
  const std::string_view view = picture->file;
  if (view.starts_with(kPngSign)) return decodePng(*picture, error) ? picture : nullptr;
  picture->isJpeg = view.starts_with(kJpegSign);
  if (picture->isJpeg) return decodeJpeg(*picture, error) ? picture : nullptr;
  error = "only PNG and JPEG pictures can be shown";
  return nullptr;
}

std::shared_ptr<const KvGrPicture> kvgrReadPicture(const std::filesystem::path& file, std::string& error) {
  std::string bytes;
  if (const auto status = platform::readFile(file, bytes); !status) {
    error = status.message();
    return nullptr;
  }
  return kvgrParsePicture(std::move(bytes), error);
}
