#pragma once
// The code pages that codepage.cpp knows. Sources: Microsoft's code page reference (numbers, lead-byte
// ranges, user-defined areas, single bytes mapped to the private use area); names are those of the C
// library's iconv.
#include <cstdint>

namespace platform {

struct ByteRange {
  unsigned first = 0, last = 0;
};

/// How drawing files spell the page's name.
enum class DrawingFamily { None, Ansi, Dos, Iso };

struct CodePage {
  std::uint32_t number;
  const char* charset;
  DrawingFamily drawing = DrawingFamily::None;
  ByteRange lead[3] = {};
  bool stream = false;  ///< more than two bytes a character: converted by iconv itself
};

inline constexpr std::uint32_t kIsoBase = 28590;

inline constexpr CodePage kCodePages[] = {
    {20127, "ASCII"},
    {936, "CP936", DrawingFamily::Ansi, {{0x81, 0xFE}}},
    {950, "CP950", DrawingFamily::Ansi, {{0x81, 0xFE}}},
    {932, "CP932", DrawingFamily::Ansi, {{0x81, 0x9F}, {0xE0, 0xFC}}},
    {949, "CP949", DrawingFamily::Ansi, {{0x81, 0xFE}}},
    {1361, "JOHAB", DrawingFamily::Ansi, {{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}}},
    {874, "CP874", DrawingFamily::Ansi},
    {1250, "CP1250", DrawingFamily::Ansi},
    {1251, "CP1251", DrawingFamily::Ansi},
    {1252, "CP1252", DrawingFamily::Ansi},
    {1253, "CP1253", DrawingFamily::Ansi},
    {1254, "CP1254", DrawingFamily::Ansi},
    {1255, "CP1255", DrawingFamily::Ansi},
    {1256, "CP1256", DrawingFamily::Ansi},
    {1257, "CP1257", DrawingFamily::Ansi},
    {1258, "CP1258", DrawingFamily::Ansi},
    {437, "CP437", DrawingFamily::Dos},
    {737, "CP737", DrawingFamily::Dos},
    {775, "CP775", DrawingFamily::Dos},
    {850, "CP850", DrawingFamily::Dos},
    {852, "CP852", DrawingFamily::Dos},
    {855, "CP855", DrawingFamily::Dos},
    {857, "CP857", DrawingFamily::Dos},
    {858, "CP858", DrawingFamily::Dos},
    {860, "CP860", DrawingFamily::Dos},
    {861, "CP861", DrawingFamily::Dos},
    {862, "CP862", DrawingFamily::Dos},
    {863, "CP863", DrawingFamily::Dos},
    {864, "CP864", DrawingFamily::Dos},
    {865, "CP865", DrawingFamily::Dos},
    {866, "CP866", DrawingFamily::Dos},
    {869, "CP869", DrawingFamily::Dos},
    {10000, "MACINTOSH"},
    {20866, "KOI8-R"},
    {21866, "KOI8-U"},
    {28591, "ISO-8859-1", DrawingFamily::Iso},
    {28592, "ISO-8859-2", DrawingFamily::Iso},
    {28593, "ISO-8859-3", DrawingFamily::Iso},
    {28594, "ISO-8859-4", DrawingFamily::Iso},
    {28595, "ISO-8859-5", DrawingFamily::Iso},
    {28596, "ISO-8859-6", DrawingFamily::Iso},
    {28597, "ISO-8859-7", DrawingFamily::Iso},
    {28598, "ISO-8859-8", DrawingFamily::Iso},
    {28599, "ISO-8859-9", DrawingFamily::Iso},
    {28603, "ISO-8859-13"},
    {28605, "ISO-8859-15"},
    {28606, "ISO-8859-16"},
    {51932, "EUC-JP", DrawingFamily::None, {}, true},
    {51936, "GB2312", DrawingFamily::None, {}, true},
    {51949, "EUC-KR", DrawingFamily::None, {}, true},
    {54936, "GB18030", DrawingFamily::None, {}, true},
};

/// User-defined characters: every lead byte from first to last with every trail byte, counted on from
/// `start`.
struct UserArea {
  std::uint32_t codePage;
  unsigned firstLead, lastLead;
  ByteRange trail[2];
  unsigned start;
};

inline constexpr UserArea kUserAreas[] = {
    {932, 0xF0, 0xF9, {{0x40, 0x7E}, {0x80, 0xFC}}, 0xE000},
    {936, 0xAA, 0xAF, {{0xA1, 0xFE}, {}}, 0xE000},
    {936, 0xF8, 0xFE, {{0xA1, 0xFE}, {}}, 0xE234},
    {936, 0xA1, 0xA7, {{0x40, 0x7E}, {0x80, 0xA0}}, 0xE4C6},
    {949, 0xC9, 0xC9, {{0xA1, 0xFE}, {}}, 0xE000},
    {949, 0xFE, 0xFE, {{0xA1, 0xFE}, {}}, 0xE05E},
    {950, 0xFA, 0xFE, {{0x40, 0x7E}, {0xA1, 0xFE}}, 0xE000},
    {950, 0x8E, 0xA0, {{0x40, 0x7E}, {0xA1, 0xFE}}, 0xE311},
    {950, 0x81, 0x8D, {{0x40, 0x7E}, {0xA1, 0xFE}}, 0xEEB8},
    {950, 0xC6, 0xC6, {{0xA1, 0xFE}, {}}, 0xF6B1},
    {950, 0xC7, 0xC8, {{0x40, 0x7E}, {0xA1, 0xFE}}, 0xF70F},
};

/// Single bytes that iconv's tables lack.
struct PrivateByte {
  std::uint32_t codePage;
  unsigned byte;
  unsigned character;
};

inline constexpr PrivateByte kPrivateBytes[] = {
    {874, 0xDB, 0xF8C1},  {874, 0xDC, 0xF8C2},  {874, 0xDD, 0xF8C3},  {874, 0xDE, 0xF8C4},
    {874, 0xFC, 0xF8C5},  {874, 0xFD, 0xF8C6},  {874, 0xFE, 0xF8C7},  {874, 0xFF, 0xF8C8},
    {932, 0xA0, 0xF8F0},  {932, 0xFD, 0xF8F1},  {932, 0xFE, 0xF8F2},  {932, 0xFF, 0xF8F3},
    {936, 0xFF, 0xF8F5},  {949, 0xFF, 0xF8F7},  {950, 0xFF, 0xF8F8},  {1253, 0xAA, 0xF8F9},
    {1253, 0xD2, 0xF8FA}, {1253, 0xFF, 0xF8FB}, {1255, 0xD9, 0xF88D}, {1255, 0xDA, 0xF88E},
    {1255, 0xDB, 0xF88F}, {1255, 0xDC, 0xF890}, {1255, 0xDD, 0xF891}, {1255, 0xDE, 0xF892},
    {1255, 0xDF, 0xF893}, {1255, 0xFB, 0xF894}, {1255, 0xFC, 0xF895}, {1255, 0xFF, 0xF896},
    {1255, 0xCA, 0x05BA}, {1257, 0xA1, 0xF8FC}, {1257, 0xA5, 0xF8FD},
};

/// Names in drawing files that don't follow the pattern of a family. `written`: the name that we write.
struct DrawingName {
  const char* name;
  std::uint32_t codePage;
  bool written = false;
};

inline constexpr DrawingName kDrawingNames[] = {
    {"ASCII", 20127, true}, {"MACINTOSH", 10000, true},
    {"MAC-ROMAN", 10000},   {"BIG5", 950},
    {"GB2312", 936},        {"KSC5601", 949},
    {"JOHAB", 1361, true},  {"ANSI_1200", 65001},
    {"UTF-8", 65001, true}, {"UTF8", 65001},
};

}  // namespace platform
