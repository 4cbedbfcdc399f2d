#include "siblings/tools/cli/command_output.h"

#include <algorithm>
#include <array>

#include "platform/text/format.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"

namespace korvane {
namespace {

constexpr double kMarginShare = 0.03;
constexpr double kStrokeShare = 0.001;
constexpr double kLargestLabelShare = 0.02;
constexpr double kSmallestLabelShare = 0.003;
constexpr double kCharacterWidth = 0.6;  // of the text's height, for sans-serif letters

/// Hundredths are finer than any line drawn.
std::string number(double value) {
  return platform::shortest(
      static_cast<double>(static_cast<long long>(value * 1000 + (value < 0 ? -0.5 : 0.5))) / 1000);
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const wchar_t c : platform::fromUtf8(text)) {
    if (c == L'&')
      result += "&amp;";
    else if (c == L'<')
      result += "&lt;";
    else if (c == L'>')
      result += "&gt;";
    else
      result += c < L' ' ? std::string(" ") : platform::toUtf8(std::wstring_view(&c, 1));
  }
  return result;
}

}  // namespace

std::string jsonText(std::string_view text) {
  std::string result = "\"";
  for (const wchar_t c : platform::fromUtf8(text)) {
    if (c == L'"' || c == L'\\')
      result += {'\\', static_cast<char>(c)};
    else if (c < L' ')
      result += platform::formatText<char>("\\u%04x", {static_cast<int>(c)});
    else
      result += platform::toUtf8(std::wstring_view(&c, 1));
  }
  return result + "\"";
}

SvgPage::SvgPage(double width, double height) : width_(width), height_(height) {}

void SvgPage::rectangle(double x, double y, double width, double height, std::string_view fill) {
  body_ += "<rect x=\"" + number(x) + "\" y=\"" + number(up(y + height)) + "\" width=\"" + number(width) +
           "\" height=\"" + number(height) + "\" fill=\"" + std::string(fill) + "\"/>\n";
}

void SvgPage::frame(double x, double y, double width, double height) {
  const double dash = std::max(width_, height_) * 4 * kStrokeShare;
  body_ += "<rect x=\"" + number(x) + "\" y=\"" + number(up(y + height)) + "\" width=\"" + number(width) +
           "\" height=\"" + number(height) + "\" fill=\"none\" stroke-dasharray=\"" + number(dash) + "\"/>\n";
}

void SvgPage::label(double x, double y, double width, double height, std::string_view text) {
  const double side = std::max(width_, height_);
  const double length = static_cast<double>(platform::fromUtf8(text).size()) * kCharacterWidth;
  const double size =
      std::min({side * kLargestLabelShare, height * 0.8, width * 0.9 / std::max(length, 1.0)});
  if (size < side * kSmallestLabelShare) return;
  body_ += "<text x=\"" + number(x) + "\" y=\"" + number(up(y) + size * 0.35) + "\" font-size=\"" +
           number(size) + "\" text-anchor=\"middle\">" + escaped(text) + "</text>\n";
}

void SvgPage::caption(double x, double y, double size, std::string_view text) {
  body_ += "<text x=\"" + number(x) + "\" y=\"" + number(up(y)) + "\" font-size=\"" + number(size) + "\">" +
           escaped(text) + "</text>\n";
}

std::string SvgPage::text() const {
  const double side = std::max(width_, height_), margin = side * kMarginShare;
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" + number(-margin) + " " + number(-margin) +
         " " + number(width_ + 2 * margin) + " " + number(height_ + 2 * margin) +
         "\">\n<g stroke=\"#333\" stroke-width=\"" + number(side * kStrokeShare) +
         "\">\n<style>text{font-family:" + "sans-serif;fill:#222;stroke:none}</style>\n" + body_ +
         "</g>\n</svg>\n";
}

std::string_view fillColour(int index) {
  static constexpr std::array<std::string_view, 8> kColours = {"#cfe2f3", "#d9ead3", "#fff2cc", "#f4cccc",
                                                               "#d9d2e9", "#fce5cd", "#d0e0e3", "#ead1dc"};
  return kColours[static_cast<std::size_t>(index) % kColours.size()];
}

}  // namespace korvane
