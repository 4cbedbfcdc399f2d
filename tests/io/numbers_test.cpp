#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>
#include <string>

#include "host/io/internal/dxf_tokens.h"
#include "host/io/internal/dxf_writer.h"

namespace {

double readBack(const std::string& text) {
  const std::string bytes = " 40\n" + text + "\n";
  kvio::DxfTokens tokens(bytes);
  kvio::RawGroup group;
  EXPECT_TRUE(tokens.next(group)) << text;
  return group.real;
}

/// The shortest form, with a point where it lacks both point and exponent.
std::string shortest(double value) {
  char digits[40];
  std::string text(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
  return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

void expectExact(double value) {
  kvio::DxfByteWriter writer(KvIoForm::Text, {}, KvDbFileVersion::R2018);
  writer.real(40, value);
  EXPECT_EQ(writer.takeBytes(), " 40\r\n" + shortest(value) + "\r\n");
  const double back = readBack(shortest(value));
  EXPECT_EQ(back, value);
  EXPECT_EQ(std::signbit(back), std::signbit(value));
}

TEST(Numbers, AreWrittenInTheirShortestForm) {
  for (double value :
       {0.0, -0.0, 1.0, 10.0, 100.0, 1e5, 123400.0, 1e9, 999999999.999999, 0.1, 0.099999, 0.000001, 1.0 / 3,
        1e22, 1e-22, 5e-324, 0.1 + 0.2, 123456789.123456, 4503599627370497.5})
    for (double sign : {1.0, -1.0}) expectExact(sign * value);
  std::mt19937_64 random(7);
  const double scales[] = {1, 10, 1e3, 1e6, 1e7, 1e12};
  for (int i = 0; i < 20'000; ++i) {
    const auto whole = static_cast<double>(static_cast<std::int64_t>(random() % 2'000'000'000'000'000) -
                                           1'000'000'000'000'000);
    expectExact(std::trunc(whole / std::pow(10, static_cast<double>(random() % 14))) /
                scales[random() % std::size(scales)]);
    expectExact(std::ldexp(whole, -static_cast<int>(random() % 80)));
  }
}

TEST(Numbers, AreReadInEveryForm) {
  const struct {
    const char* text;
    double value;
  } rows[] = {{"1", 1},
              {"-1.", -1},
              {".5", .5},
              {"-.5", -.5},
              {"+2.5", 2.5},
              {"  7.25 ", 7.25},
              {"1e3", 1000},
              {"1E-3", 0.001},
              {"000000000000000000001", 1},
              {"0.1000000000000000055511151231257827", 0.1},
              {"-0", -0.0},
              {"123456789012345", 123456789012345.0},
              {"9007199254740993", 9007199254740992.0},
              {".123456789012345", .123456789012345}};
  for (const auto& row : rows) EXPECT_EQ(readBack(row.text), row.value) << row.text;
  for (const char* text : {"", "-", ".", "-.", "1.2.3", "1,5", "--1", "1-", "nan", "inf", "x"}) {
    const std::string bytes = std::string(" 40\n") + text + "\n";
    kvio::DxfTokens tokens(bytes);
    kvio::RawGroup group;
    EXPECT_FALSE(tokens.next(group) && !tokens.hasFailed()) << text;
  }
}

}  // namespace
