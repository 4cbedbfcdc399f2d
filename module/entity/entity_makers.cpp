#include "module/entity/entity_makers.h"

#include "host/database/entcalls.h"
#include "host/geometry/line.h"
#include "module/toolkit/inputs.h"
#include "module/toolkit/rbchains.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kMessageLength = 256, kBlockNameLength = 131;
constexpr int kColorCode = 62;
constexpr double kQuarterTurn = 1.5707963267948966;
constexpr const wchar_t* kStyle = L"STANDARD";

// Messages by number. Filled shapes and wide lines share that of the line.
constexpr unsigned int kLineMessage = 1176, kCircleMessage = 1177, kArcMessage = 1178, kTextMessage = 1179,
                       kBlockMessage = 1180, kBlockEndMessage = 1181, kInsertMessage = 1182,
                       kAttributeMessage = 1183, kSequenceEndMessage = 1184;

int fail(unsigned int message) {
  kvdbFail(IM_GetStringFromRc(message, kMessageLength));
  return RTERROR;
}

/// Hands the chain to the host and frees it. 5100 when the host answered as expected.
int make(resbuf* chain, unsigned int message, int expected = RTNORM) {
  if (!chain) return fail(message);
  const int status = kvdbEntMake(chain);
  kvutRelRb(chain);
  return status == expected ? RTNORM : fail(message);
}

bool isGiven(const double* point) {
  return point != nullptr;
}
bool isGiven(const wchar_t* text) {
  return text != nullptr;
}
bool isGiven(int) {
  return true;
}
bool isGiven(double) {
  return true;
}

/// A chain of points, texts and numbers by group code; null when one of the pointers is.
template <class... Args>
resbuf* record(const wchar_t* type, const Args&... rest) {
  return (isGiven(rest) && ...) ? kvutBuildList(RTDXF0, type, rest..., 0) : nullptr;
}

resbuf* colored(resbuf* chain, int color) {
  if (chain) IM_AddRbToTail(chain, kvutBuildList(kColorCode, color, 0));
  return chain;
}

resbuf* circle(const double* center, double radius) {
  return record(L"CIRCLE", 10, center, 40, radius);
}
resbuf* arc(const double* center, double radius, double startAngle, double endAngle) {
  return record(L"ARC", 10, center, 40, radius, 50, startAngle, 51, endAngle);
}
resbuf* solid(const double* p1, const double* p2, const double* p3, const double* p4) {
  return record(L"SOLID", 10, p1, 11, p2, 12, p3, 13, p4);
}
resbuf* text(const double* point, double height, double rotation, const wchar_t* value) {
  return record(L"TEXT", 1, value, 7, kStyle, 10, point, 40, height, 50, rotation);
}
resbuf* justified(const double* point, double height, double rotation, const wchar_t* value, int horizontal,
                  int vertical) {
  return record(L"TEXT", 1, value, 7, kStyle, 10, point, 40, height, 50, rotation, 72, horizontal, 73,
                vertical, 11, point);
}
resbuf* blockHead(const wchar_t* name, const double* basePoint) {
  const int flags = name && name[0] == L'*' ? 1 : 0;
  return record(L"BLOCK", 2, name, 10, basePoint, 70, flags);
}
resbuf* attribute(const double* point, double height, double rotation, const wchar_t* value,
                  const wchar_t* tag, int flags) {
  return record(L"ATTRIB", 10, point, 40, height, 50, rotation, 1, value, 2, tag, 70, flags);
}
resbuf* definition(const double* point, double height, double rotation, const wchar_t* value,
                   const wchar_t* tag, const wchar_t* prompt, int flags) {
  return record(L"ATTDEF", 10, point, 40, height, 50, rotation, 1, value, 2, tag, 3, prompt, 70, flags);
}

/// The shape of an arrow under another type.
resbuf* arrow(const wchar_t* type, const double* tip, const double* base, double width) {
  if (!tip || !base) return nullptr;
  const double direction = kvutAngle(tip, base);
  kvds_point wings[2];
  kvutPolar(base, direction + kQuarterTurn, width / 2, wings[0]);
  kvutPolar(base, direction - kQuarterTurn, width / 2, wings[1]);
  const double *first = wings[0], *second = wings[1];
  return record(type, 10, first, 11, second, 12, tip, 13, tip);
}

int makeVertices(const double* p1, const double* p2) {
  const int status = make(record(L"VERTEX", 10, p1), kLineMessage);
  return status == RTNORM ? make(record(L"VERTEX", 10, p2), kLineMessage) : status;
}

}  // namespace

int md_line(const double p1[3], const double p2[3]) {
  return make(record(L"LINE", 100, L"AcDbEntity", 100, L"AcDbLine", 10, p1, 11, p2), kLineMessage);
}
int md_line_color(const double p1[3], const double p2[3], int color) {
  return make(colored(record(L"LINE", 10, p1, 11, p2), color), kLineMessage);
}

int md_circle(const double center[3], double radius) {
  return make(circle(center, radius), kCircleMessage);
}
int md_circle_color(const double center[3], double radius, int color) {
  return make(colored(circle(center, radius), color), kCircleMessage);
}

int md_arc(const double center[3], double radius, double startAngle, double endAngle) {
  return make(arc(center, radius, startAngle, endAngle), kArcMessage);
}
int md_arc_color(const double center[3], double radius, double startAngle, double endAngle, int color) {
  return make(colored(arc(center, radius, startAngle, endAngle), color), kArcMessage);
}

int md_solid(const double p1[3], const double p2[3], const double p3[3], const double p4[3]) {
  return make(solid(p1, p2, p3, p4), kLineMessage);
}
int md_solid_color(const double p1[3], const double p2[3], const double p3[3], const double p4[3],
                   int color) {
  return make(colored(solid(p1, p2, p3, p4), color), kLineMessage);
}

int md_arrow(const double tip[3], const double base[3], double width) {
  return make(arrow(L"SOLID", tip, base, width), kLineMessage);
}
int md_arrow_color(const double tip[3], const double base[3], double width, int color) {
  return make(colored(arrow(L"LINE", tip, base, width), color), kLineMessage);
}

int md_text(const double point[3], double height, double rotation, const wchar_t* value) {
  return make(text(point, height, rotation, value), kTextMessage);
}
int md_text_color(const double point[3], double height, double rotation, const wchar_t* value, int color) {
  return make(colored(text(point, height, rotation, value), color), kTextMessage);
}
int md_text_j(const double point[3], double height, double rotation, const wchar_t* value, int horizontal,
              int vertical) {
  return make(justified(point, height, rotation, value, horizontal, vertical), kTextMessage);
}
int md_text_j_color(const double point[3], double height, double rotation, const wchar_t* value,
                    int horizontal, int vertical, int color) {
  return make(colored(justified(point, height, rotation, value, horizontal, vertical), color), kTextMessage);
}

int md_block_head(const wchar_t* name, const double basePoint[3]) {
  return make(blockHead(name, basePoint), kBlockMessage);
}
int md_block_head_color(const wchar_t* name, const double basePoint[3], int color) {
  return make(colored(blockHead(name, basePoint), color), kBlockMessage);
}

int md_block_end() {
  // The host answers a finished block by a number of its own.
  return make(record(L"ENDBLK"), kBlockEndMessage, RTKWORD);
}
int md_block_end(wchar_t* name) {
  const int status = md_block_end();
  if (status != RTNORM) return status;
  return IM_EdGetInput(name, kBlockNameLength) == RTNORM ? RTNORM : fail(kBlockEndMessage);
}

int md_insert(const wchar_t* name, const double point[3], double angle, int attributesFollow) {
  return make(record(L"INSERT", 2, name, 10, point, 50, angle, 66, attributesFollow), kInsertMessage);
}
int md_insert_color(const wchar_t* name, const double point[3], int attributesFollow, int color) {
  return make(colored(record(L"INSERT", 2, name, 10, point, 66, attributesFollow), color), kInsertMessage);
}

int md_attrib(const double point[3], double height, double rotation, const wchar_t* value, const wchar_t* tag,
              int flags) {
  return make(attribute(point, height, rotation, value, tag, flags), kAttributeMessage);
}
int md_attrib_color(const double point[3], double height, double rotation, const wchar_t* value,
                    const wchar_t* tag, int flags, int color) {
  return make(colored(attribute(point, height, rotation, value, tag, flags), color), kAttributeMessage);
}
int md_attdef(const double point[3], double height, double rotation, const wchar_t* value, const wchar_t* tag,
              const wchar_t* prompt, int flags) {
  return make(definition(point, height, rotation, value, tag, prompt, flags), kAttributeMessage);
}
int md_attdef_color(const double point[3], double height, double rotation, const wchar_t* value,
                    const wchar_t* tag, const wchar_t* prompt, int flags, int color) {
  return make(colored(definition(point, height, rotation, value, tag, prompt, flags), color),
              kAttributeMessage);
}

int md_seqend() {
  return make(record(L"SEQEND"), kSequenceEndMessage);
}

int md_wide_line(const double p1[3], const double p2[3], double width) {
  if (!p1 || !p2) return fail(kLineMessage);
  const int status = make(record(L"POLYLINE", 40, width, 41, width, 66, 1), kLineMessage);
  return status == RTNORM ? makeVertices(p1, p2) : status;
}
int md_wide_line_color(const double p1[3], const double p2[3], double width, int color) {
  if (!p1 || !p2) return fail(kLineMessage);
  const int status = make(record(L"POLYLINE", 40, width, 41, width, kColorCode, color, 66, 1), kLineMessage);
  return status == RTNORM ? makeVertices(p1, p2) : status;
}
int md_vertex_pair(const double p1[3], const double p2[3]) {
  if (!p1 || !p2) return fail(kLineMessage);
  return makeVertices(p1, p2);
}
