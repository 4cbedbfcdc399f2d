#include "tests/support/notation.h"

#include <charconv>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <vector>

#include "host/database/block.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/hatch.h"
#include "host/entities/mtext.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"
#include "host/entities/text.h"
#include "platform/text/number.h"

namespace test {
namespace {

constexpr double kDegrees = 180 / kvge::kPi;

std::string number(double value) {
  constexpr double kSteps = 1e6;
  const double rounded = std::round(value * kSteps) / kSteps;
  return platform::shortest(rounded == 0 ? 0 : rounded);
}
std::string at(const KvGePoint3d& p) {
  const std::string flat = number(p.x) + "," + number(p.y), height = number(p.z);
  return height == "0" ? flat : flat + "," + height;
}
std::string quoted(const CString& text) {
  return "\"" + platform::utf8From(text) + "\"";
}
std::string turn(double radians) {
  const std::string degrees = number(radians * kDegrees);
  return degrees == "0" ? "" : " turn=" + degrees;
}
std::string range(double from, double to) {
  return " " + number(from * kDegrees) + ".." + number(to * kDegrees);
}

std::string polylineText(const KvDbPolyline& polyline) {
  std::string text = "pline";
  for (int i = 0; i < polyline.numVerts(); ++i) {
    KvGePoint3d point;
    double bulge = 0, from = 0, to = 0;
    polyline.getPointAt(i, point);
    polyline.getBulgeAt(i, bulge);
    polyline.getWidthsAt(i, from, to);
    text += " " + at(point);
    if (number(bulge) != "0") text += " b" + number(bulge);
    if (from > 0 || to > 0) text += " w" + number(from) + "/" + number(to);
  }
  return polyline.isClosed() ? text + " closed" : text;
}

std::string splineText(const KvDbSpline& spline) {
  std::string text = "spline";
  for (int i = 0; i < spline.numFitPoints(); ++i) {
    KvGePoint3d point;
    spline.getFitPointAt(i, point);
    text += " " + at(point);
  }
  return text;
}

std::string cornersText(const KvDbTrace& trace) {
  std::string text = "solid";
  for (int i = 0; i < 4; ++i) {
    KvGePoint3d point;
    trace.getPointAt(i, point);
    text += " " + at(point);
  }
  return text;
}

std::string faceText(const KvDbFace& face) {
  std::string text = "face";
  for (int i = 0; i < 4; ++i) {
    KvGePoint3d point;
    bool isVisible = true;
    face.getVertexAt(i, point);
    face.isEdgeVisibleAt(i, isVisible);
    text += " " + at(point) + (isVisible ? "" : " hidden");
  }
  return text;
}

std::string geometryOf(const KvDbEntity& entity) {
  if (const auto* e = KvDbFace::cast(&entity)) return faceText(*e);
  if (const auto* e = KvDbPoint::cast(&entity)) return "point " + at(e->position());
  if (const auto* e = KvDbLine::cast(&entity)) return "line " + at(e->startPoint()) + " " + at(e->endPoint());
  if (const auto* e = KvDbCircle::cast(&entity))
    return "circle " + at(e->center()) + " r" + number(e->radius());
  if (const auto* e = KvDbArc::cast(&entity))
    return "arc " + at(e->center()) + " r" + number(e->radius()) + range(e->startAngle(), e->endAngle());
  if (const auto* e = KvDbEllipse::cast(&entity)) {
    const bool isWhole = e->endParam() - e->startParam() > kvge::kTwoPi - 1e-9;
    const KvGeVector3d axis = e->majorAxis();
    return "ellipse " + at(e->center()) + " " + at({axis.x, axis.y, axis.z}) + " q" +
           number(e->radiusRatio()) + (isWhole ? "" : range(e->startParam(), e->endParam()));
  }
  if (const auto* e = KvDbPolyline::cast(&entity)) return polylineText(*e);
  if (const auto* e = KvDbEndlessLine::cast(&entity)) {
    const KvGeVector3d d = e->unitDir();
    return std::string(KvDbRay::cast(&entity) ? "ray " : "xline ") + at(e->basePoint()) + " " +
           at({d.x, d.y, d.z});
  }
  if (const auto* e = KvDbSpline::cast(&entity)) return splineText(*e);
  if (const auto* e = KvDbTrace::cast(&entity)) return cornersText(*e);
  if (const auto* e = KvDbText::cast(&entity); e && entity.fileType() == L"TEXT")
    return "text " + at(e->position()) + " h" + number(e->height()) + " " + quoted(e->textString()) +
           turn(e->rotation());
  if (const auto* e = KvDbMText::cast(&entity))
    return "mtext " + at(e->location()) + " h" + number(e->textHeight()) + " " + quoted(e->contents()) +
           turn(e->rotation());
  if (const auto* e = KvDbBlockReference::cast(&entity))
    return "insert " + at(e->position()) + " " + quoted(kvdbRecordName(e->blockTableRecord())) +
           turn(e->rotation());
  if (const auto* e = KvDbHatch::cast(&entity)) return "hatch " + platform::utf8From(e->patternName());
  if (const auto* e = KvDbDimension::cast(&entity))
    return "dimension " + number(e->isAngular() ? e->measurement() * kDegrees : e->measurement());
  return platform::utf8From(entity.fileType());
}

std::string lineOf(const KvDbEntity& entity) {
  std::string text = geometryOf(entity);
  if (entity.layer() != L"0") text += " layer=" + platform::utf8From(entity.layer());
  if (entity.colorIndex() != kKvColorByLayer) text += " color=" + std::to_string(entity.colorIndex());
  const KvDbObjectId linetype = entity.linetypeId();
  if (!linetype.isNull() && linetype != entity.database()->byLayerLinetype())
    text += " linetype=" + platform::utf8From(entity.linetype());
  return text;
}

/// One line's words; what stands in quotes is one.
std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < line.size();) {
    if (line[i] == ' ') {
      ++i;
      continue;
    }
    std::size_t end = line.find(line[i] == '"' ? '"' : ' ', i + 1);
    if (end == std::string::npos) end = line.size();
    const bool isQuoted = line[i] == '"';
    words.push_back(line.substr(i, end - i));
    i = end + (isQuoted ? 1 : 0);
  }
  return words;
}

bool pointFrom(const std::string& word, KvGePoint3d& point) {
  double* const coordinates[] = {&point.x, &point.y, &point.z};
  std::istringstream stream(word);
  std::string part;
  int count = 0;
  while (std::getline(stream, part, ',')) {
    if (count == 3 || !platform::parseWhole(platform::wideFromUtf8(part).view(), *coordinates[count]))
      return false;
    ++count;
  }
  return count >= 2;
}

bool numberBehind(const std::string& word, char letter, double& value) {
  return word.size() > 1 && word[0] == letter &&
         platform::parseWhole(platform::wideFromUtf8(word.substr(1)).view(), value);
}

std::unique_ptr<KvDbEntity> polylineFrom(const std::vector<std::string>& words) {
  auto polyline = std::make_unique<KvDbPolyline>();
  for (std::size_t i = 1; i < words.size(); ++i) {
    KvGePoint3d point;
    double bulge = 0;
    if (pointFrom(words[i], point)) {
      polyline->addVertexAt(polyline->numVerts(), {point.x, point.y});
      polyline->setElevation(point.z);
    } else if (numberBehind(words[i], 'b', bulge)) {
      polyline->setBulgeAt(polyline->numVerts() - 1, bulge);
    } else if (words[i] == "closed") {
      polyline->setClosed(true);
    } else if (words[i].find('=') == std::string::npos) {
      return nullptr;
    }
  }
  return polyline->numVerts() > 0 ? std::move(polyline) : nullptr;
}

std::unique_ptr<KvDbEntity> entityFrom(const std::vector<std::string>& words) {
  KvGePoint3d a, b;
  double size = 0;
  const std::string& kind = words[0];
  if (kind == "pline") return polylineFrom(words);
  if (words.size() < 2 || !pointFrom(words[1], a)) return nullptr;
  if (kind == "point") return std::make_unique<KvDbPoint>(a);
  if (words.size() < 3) return nullptr;
  if (kind == "line") return pointFrom(words[2], b) ? std::make_unique<KvDbLine>(a, b) : nullptr;
  const bool hasSize = numberBehind(words[2], kind == "text" ? 'h' : 'r', size);
  if (!hasSize) return nullptr;
  if (kind == "circle") return std::make_unique<KvDbCircle>(a, KvGeVector3d::kZAxis, size);
  if (words.size() < 4) return nullptr;
  if (kind == "text")
    return std::make_unique<KvDbText>(a, platform::wideFromUtf8(words[3].substr(1)), KvDbObjectId(), size);
  const std::size_t dots = words[3].find("..");
  double from = 0, to = 0;
  if (kind != "arc" || dots == std::string::npos ||
      !platform::parseWhole(platform::wideFromUtf8(words[3].substr(0, dots)).view(), from) ||
      !platform::parseWhole(platform::wideFromUtf8(words[3].substr(dots + 2)).view(), to))
    return nullptr;
  return std::make_unique<KvDbArc>(a, KvGeVector3d::kZAxis, size, from / kDegrees, to / kDegrees);
}

bool addLine(KvDbDatabase& database, KvDbBlockTableRecord& space, const std::string& line) {
  const std::vector<std::string> words = wordsOf(line);
  auto entity = entityFrom(words);
  if (!entity) return false;
  entity->setDatabaseDefaults(&database);
  for (const std::string& word : words) {
    if (word.starts_with("color=")) entity->setColorIndex(std::atoi(word.c_str() + 6));
    if (word.starts_with("layer="))
      entity->setLayer(database.makeRecordAsRead(KvDbTable::Layer, platform::wideFromUtf8(word.substr(6))));
  }
  KvDbEntity* made = entity.release();
  KvDbObjectId id;
  if (space.appendKvDbEntity(id, made) != Kvad::eOk) return false;
  return made->close() == Kvad::eOk;
}

}  // namespace

std::string notationOf(const KvDbDatabase& database, KvDbObjectId block) {
  std::string text;
  if (block.isNull()) block = database.currentSpaceId();
  const auto* space = KvDbBlockTableRecord::cast(block.stub()->object);
  for (KvDbObjectId id : space->entities()) text += lineOf(*KvDbEntity::cast(id.stub()->object)) + "\n";
  return text;
}

std::string addNotation(KvDbDatabase& database, const std::string& text) {
  KvDbBlockTableRecord* space = nullptr;
  if (kvdbOpenObject(space, database.currentSpaceId(), KvDb::kForWrite) != Kvad::eOk) return "no space";
  std::istringstream lines(tidied(text));
  std::string line, wrong;
  while (wrong.empty() && std::getline(lines, line))
    if (!addLine(database, *space, line)) wrong = line;
  space->close();
  return wrong;
}

std::string tidied(const std::string& text) {
  std::istringstream lines(text);
  std::string line, result;
  while (std::getline(lines, line)) {
    const std::size_t from = line.find_first_not_of(' ');
    if (from == std::string::npos) continue;
    result += line.substr(from, line.find_last_not_of(' ') - from + 1) + "\n";
  }
  return result;
}

}  // namespace test
