#include "host/database/oldsections.h"

#include <algorithm>

namespace {

/// One section: its marker, and the codes that go there. The last section of a type takes what no other
/// claims.
struct Section {
  const wchar_t* marker;
  std::initializer_list<int> codes;
};

struct Division {
  const wchar_t* type;
  int flag, flagMask;  ///< of group 70: the row is for entities with (flags & mask) == flag
  std::initializer_list<Section> sections;
};

// Source: the published description of the sections of each entity.
const Division kDivisions[] = {
    {L"POINT", 0, 0, {{L"AcDbPoint", {}}}},
    {L"SOLID", 0, 0, {{L"AcDbTrace", {}}}},
    {L"TRACE", 0, 0, {{L"AcDbTrace", {}}}},
    {L"3DFACE", 0, 0, {{L"AcDbFace", {}}}},
    {L"SHAPE", 0, 0, {{L"AcDbShape", {}}}},
    {L"VIEWPORT", 0, 0, {{L"AcDbViewport", {}}}},
    {L"INSERT", 0, 0, {{L"AcDbBlockReference", {}}}},
    {L"LINE", 0, 0, {{L"AcDbLine", {}}}},
    {L"CIRCLE", 0, 0, {{L"AcDbCircle", {}}}},
    {L"ARC", 0, 0, {{L"AcDbCircle", {39, 10, 40, 210}}, {L"AcDbArc", {}}}},
    {L"TEXT", 0, 0, {{L"AcDbText", {39, 10, 40, 1, 50, 41, 51, 7, 71, 72, 11, 210}}, {L"AcDbText", {}}}},
    {L"ATTRIB",
     0,
     0,
     {{L"AcDbText", {39, 10, 40, 1, 50, 41, 51, 7, 71, 72, 11, 210}}, {L"AcDbAttribute", {}}}},
    {L"ATTDEF",
     0,
     0,
     {{L"AcDbText", {39, 10, 40, 1, 50, 41, 51, 7, 71, 72, 11, 210}}, {L"AcDbAttributeDefinition", {}}}},
    {L"POLYLINE", 8, 8, {{L"AcDb3dPolyline", {}}}},
    {L"POLYLINE", 16, 16, {{L"AcDbPolygonMesh", {}}}},
    {L"POLYLINE", 64, 64, {{L"AcDbPolyFaceMesh", {}}}},
    {L"POLYLINE", 0, 0, {{L"AcDb2dPolyline", {}}}},
    {L"VERTEX", 192, 192, {{L"AcDbVertex", {0}}, {L"AcDbPolyFaceMeshVertex", {}}}},
    {L"VERTEX", 128, 128, {{L"AcDbFaceRecord", {}}}},
    {L"VERTEX", 64, 64, {{L"AcDbVertex", {0}}, {L"AcDbPolygonMeshVertex", {}}}},
    {L"VERTEX", 32, 32, {{L"AcDbVertex", {0}}, {L"AcDb3dPolylineVertex", {}}}},
    {L"VERTEX", 0, 0, {{L"AcDbVertex", {0}}, {L"AcDb2dVertex", {}}}},
    {L"DIMENSION",
     0,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}},
      {L"AcDbAlignedDimension", {}},
      {L"AcDbRotatedDimension", {0}}}},
    {L"DIMENSION",
     1,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}}, {L"AcDbAlignedDimension", {}}}},
    {L"DIMENSION",
     2,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}},
      {L"AcDb2LineAngularDimension", {}}}},
    {L"DIMENSION",
     3,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}},
      {L"AcDbDiametricDimension", {}}}},
    {L"DIMENSION",
     4,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}}, {L"AcDbRadialDimension", {}}}},
    {L"DIMENSION",
     5,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}},
      {L"AcDb3PointAngularDimension", {}}}},
    {L"DIMENSION",
     6,
     7,
     {{L"AcDbDimension", {2, 10, 11, 70, 1, 71, 72, 41, 42, 53, 51, 210, 3}},
      {L"AcDbOrdinateDimension", {}}}},
};

bool claims(const Section& section, int code) {
  return std::find(section.codes.begin(), section.codes.end(), code) != section.codes.end();
}

const Division* divisionOf(std::wstring_view type, int flags) {
  for (const Division& division : kDivisions)
    if (type == division.type && (flags & division.flagMask) == division.flag) return &division;
  return nullptr;
}

/// The section that takes what no other claims: the last one that doesn't name its codes.
std::size_t openSection(const Division& division) {
  std::size_t open = 0;
  for (std::size_t i = 0; i < division.sections.size(); ++i)
    if (division.sections.begin()[i].codes.size() == 0) open = i;
  return open;
}

}  // namespace

std::vector<KvDbUnknownSection> kvdbDivideOldGroups(std::wstring_view type, const KvDbGroupList& groups) {
  const auto flags =
      std::find_if(groups.begin(), groups.end(), [](const KvDxfGroup& group) { return group.code == 70; });
  const Division* division = divisionOf(type, flags == groups.end() ? 0 : (*flags).asInt());
  std::vector<KvDbUnknownSection> sections;
  if (!division) {
    sections.push_back({KvDbSharedText(), groups});
    return sections;
  }
  for (const Section& section : division->sections) sections.push_back({KvDbSharedText(section.marker), {}});
  for (const KvDxfGroup& group : groups) {
    std::size_t place = openSection(*division);
    for (std::size_t i = 0; i < division->sections.size(); ++i)
      if (claims(division->sections.begin()[i], group.code)) {
        place = i;
        break;
      }
    sections[place].groups.append(group);
  }
  return sections;
}
