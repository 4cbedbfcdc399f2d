#pragma once
// A table of standard parts of any size, the same on every machine for a seed.
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Part {
  int id;
  int d;
  int length;
  std::string pitch, width, grade, name, standard;
};

/// d goes round fifteen sizes; parts of size 8 are all longer than 20, so "d=8 and L>20" takes a fifteenth.
inline std::vector<Part> makeParts(int count, std::uint32_t seed = 20260101) {
  static constexpr int kSizes[] = {3, 4, 5, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 27, 30};
  static constexpr int kLengths[] = {10, 12, 16, 20, 25, 30, 35, 40, 45, 50, 60, 70, 80};
  static constexpr const char* kGrades[] = {"8.8", "10.9", "12.9"};
  const auto next = [&seed](std::uint32_t below) {
    seed = seed * 1664525u + 1013904223u;
    return (seed >> 8) % below;
  };
  const auto decimals = [](int hundredths) {
    std::string digits = std::to_string(hundredths);
    while (digits.size() < 3) digits.insert(0, "0");
    return digits.insert(digits.size() - 2, ".");
  };
  std::vector<Part> parts;
  parts.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const int d = kSizes[i % 15];
    const int length = kLengths[d == 8 ? 4 + next(9) : next(13)];
    parts.push_back({i, d, length, decimals(d * 100 / 8), decimals(d * 150), kGrades[next(3)],
                     "hexagon M" + std::to_string(d) + "x" + std::to_string(length), "GB/T 5782"});
  }
  return parts;
}

inline std::string partsXml(const std::vector<Part>& parts) {
  std::string out =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<dataroot "
      "xmlns:od=\"urn:schemas-microsoft-com:officedata\" "
      "generated=\"2026-01-01T00:00:00\">\n";
  for (const Part& part : parts) {
    out += "<T><ID>" + std::to_string(part.id) + "</ID><d>" + std::to_string(part.d) + "</d><L>" +
           std::to_string(part.length);
    out += "</L><P>" + part.pitch + "</P><S>" + part.width + "</S><Grade>" + part.grade + "</Grade><Name>" +
           part.name;
    out += "</Name><Std>" + part.standard + "</Std></T>\n";
  }
  return out + "</dataroot>\n";
}

inline std::string partsXsd() {
  std::string out =
      "<xsd:schema xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
      "xmlns:od=\"urn:schemas-microsoft-com:officedata\">\n"
      "<xsd:element name=\"T\"><xsd:complexType><xsd:sequence>\n";
  for (const char* field : {"ID:int", "d:real", "L:real", "P:real", "S:real", "Grade:nvarchar",
                            "Name:nvarchar", "Std:nvarchar"}) {
    const std::string text(field);
    const std::size_t colon = text.find(':');
    out += "<xsd:element name=\"" + text.substr(0, colon) + "\" minOccurs=\"0\" od:sqlSType=\"" +
           text.substr(colon + 1) + "\"/>\n";
  }
  return out + "</xsd:sequence></xsd:complexType></xsd:element></xsd:schema>\n";
}

inline std::string partsCsv(const std::vector<Part>& parts) {
  std::string out = "ID,d,L,P,S,Grade,Name,Std\n";
  for (const Part& part : parts)
    out += std::to_string(part.id) + "," + std::to_string(part.d) + "," + std::to_string(part.length) + "," +
           part.pitch + "," + part.width + "," + part.grade + "," + part.name + "," + part.standard + "\n";
  return out;
}

}  // namespace bench
