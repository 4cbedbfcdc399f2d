#include "host/entities/multileader.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <variant>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/arrowhead.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/mtext.h"
#include "host/entities/spline.h"

KVRX_DEFINE(KvDbMLeader, KvDbPartsEntity, L"MULTILEADER")

namespace {

/// Where a group stands: the record is nested by texts with braces.
enum class Level : std::uint8_t { Own, Context, Leader, Line };

Level levelBehind(Level level, const KvDxfGroup& group) {
  constexpr int kBeginContext = 300, kEndContext = 301, kBeginLeader = 302, kEndLeader = 303,
                kBeginLine = 304, kEndLine = 305;
  switch (group.code) {
    case kBeginContext:
      return level == Level::Own && group.text == L"CONTEXT_DATA{" ? Level::Context : level;
    case kEndContext:
      return Level::Own;
    case kBeginLeader:
      return level == Level::Context && group.text == L"LEADER{" ? Level::Leader : level;
    case kEndLeader:
      return level == Level::Leader ? Level::Context : level;
    case kBeginLine:
      return level == Level::Leader && group.text == L"LEADER_LINE{" ? Level::Line : level;
    case kEndLine:
      return level == Level::Line ? Level::Leader : level;
    default:
      return level;
  }
}

/// A colour as the record packs it: the highest byte tells the kind.
KvCmEntityColor unpacked(std::int32_t packed) {
  const auto bits = static_cast<std::uint32_t>(packed);
  constexpr std::uint32_t kByLayer = 0xC0, kRgb = 0xC2, kIndexed = 0xC3;
  switch (bits >> 24) {
    case kByLayer:
      return KvCmEntityColor::ofIndex(kKvColorByLayer);
    case kRgb:
      return KvCmEntityColor::ofRgb(bits & 0xFFFFFFu);
    case kIndexed:
      return KvCmEntityColor::ofIndex(static_cast<int>(std::min(bits & 0xFFFFu, 256u)));
    default:
      return KvCmEntityColor::ofIndex(kKvColorByBlock);
  }
}

void paint(KvDbEntity& part, std::int32_t packed) {
  const KvCmEntityColor color = unpacked(packed);
  if (color.colorMethod() != KvCmEntityColor::kByBlock) part.setColor(color);
}

KvGePoint3d pointOf(const KvGeVector3d& v) {
  return {v.x, v.y, v.z};
}

constexpr std::int32_t kByBlock = static_cast<std::int32_t>(0xC1000000u);
constexpr std::size_t kMostParts = 100000;  // of leaders, lines, vertices: more is no drawing

}  // namespace

struct KvDbMLeader::Record {
  // The context.
  double scale = 1, textHeight = 0, arrowSize = 0, gap = 0;
  int left = 1, right = 1, top = 9, bottom = 9;
  KvGeVector3d planeX = KvGeVector3d::kXAxis, planeY = KvGeVector3d::kYAxis;
  bool hasText = false, hasBlock = false;
  // Its text.
  CString contents;
  KvGeVector3d textNormal = KvGeVector3d::kZAxis, textDirection = KvGeVector3d::kXAxis;
  KvGePoint3d textAt;
  double textWidth = 0, spacing = 1, fillScale = 1.5;
  int alignment = 1, spacingStyle = 1;
  std::int32_t textColor = kByBlock, fillColor = kByBlock;
  bool hasFill = false, isFillGround = false;
  std::int64_t textStyle = 0;
  // Its block.
  std::int64_t block = 0;
  KvGeVector3d blockNormal = KvGeVector3d::kZAxis;
  KvGePoint3d blockAt, blockScale{1, 1, 1};
  double blockRotation = 0;
  std::int32_t blockColor = kByBlock;
  // The entity's own part.
  int leaderType = kStraightLeader;
  std::int32_t lineColor = kByBlock;
  std::int64_t linetype = 0, arrow = 0;
  int lineWeight = KvDb::kLnWtByBlock;
  bool hasDogleg = true, hasFrame = false;
  std::map<int, std::int64_t> arrows;  ///< of single lines
  struct Attribute {
    std::int64_t definition = 0;
    CString text;
  };
  std::vector<Attribute> attributes;
  std::vector<Leader> leaders;

  void take(Level level, const KvDxfGroup& group);
  KvGeVector3d normal() const {
    const KvGeVector3d across = planeX.crossProduct(planeY);
    return across.isZeroLength() ? KvGeVector3d::kZAxis : across.normal();
  }

 private:
  void takeLine(const KvDxfGroup& group);
  void takeOfList(const KvDxfGroup& group);

  int arrowIndex_ = 0, breakSegment_ = 0;
  KvGePoint3d breakBegin_;
};

namespace {

/// A group's code and the member that takes its value.
template <class T>
struct Slot {
  int code;
  std::variant<double T::*, int T::*, bool T::*, std::int64_t T::*, KvGePoint3d T::*, KvGeVector3d T::*,
               CString T::*>
      member;
};

template <class T, std::size_t Count>
void takeInto(T& object, const Slot<T> (&slots)[Count], const KvDxfGroup& group) {
  const auto set = [&](auto member) {
    auto& place = object.*member;
    using Value = std::remove_reference_t<decltype(place)>;
    if constexpr (std::is_same_v<Value, double>)
      place = group.real();
    else if constexpr (std::is_same_v<Value, bool>)
      place = group.integer != 0;
    else if constexpr (std::is_integral_v<Value>)
      place = static_cast<Value>(group.integer);
    else if constexpr (std::is_same_v<Value, KvGePoint3d>)
      place = group.point;
    else if constexpr (std::is_same_v<Value, KvGeVector3d>)
      place = group.point.asVector();
    else
      place = CString(group.text);
  };
  for (const Slot<T>& slot : slots)
    if (slot.code == group.code) std::visit(set, slot.member);
}

}  // namespace

void KvDbMLeader::Record::take(Level level, const KvDxfGroup& group) {
  using R = Record;
  static constexpr Slot<R> kContext[] = {
      {40, &R::scale},      {41, &R::textHeight},    {140, &R::arrowSize},    {145, &R::gap},
      {174, &R::left},      {175, &R::right},        {272, &R::bottom},       {273, &R::top},
      {111, &R::planeX},    {112, &R::planeY},       {290, &R::hasText},      {296, &R::hasBlock},
      {304, &R::contents},  {11, &R::textNormal},    {12, &R::textAt},        {13, &R::textDirection},
      {43, &R::textWidth},  {45, &R::spacing},       {90, &R::textColor},     {91, &R::fillColor},
      {141, &R::fillScale}, {170, &R::spacingStyle}, {171, &R::alignment},    {291, &R::isFillGround},
      {292, &R::hasFill},   {340, &R::textStyle},    {341, &R::block},        {14, &R::blockNormal},
      {15, &R::blockAt},    {16, &R::blockScale},    {46, &R::blockRotation}, {93, &R::blockColor},
  };
  static constexpr Slot<R> kOwn[] = {
      {170, &R::leaderType}, {91, &R::lineColor},  {341, &R::linetype}, {342, &R::arrow},
      {171, &R::lineWeight}, {291, &R::hasDogleg}, {292, &R::hasFrame},
  };
  static constexpr Slot<Leader> kLeader[] = {
      {10, &Leader::end},         {11, &Leader::dogleg},      {40, &Leader::doglegLength},
      {271, &Leader::isVertical}, {290, &Leader::isComplete}, {291, &Leader::hasDogleg},
  };
  switch (level) {
    case Level::Context:
      takeInto(*this, kContext, group);
      break;
    case Level::Leader:
      if (!leaders.empty()) takeInto(leaders.back(), kLeader, group);
      break;
    case Level::Line:
      takeLine(group);
      break;
    case Level::Own:
      takeInto(*this, kOwn, group);
      takeOfList(group);
  }
}

void KvDbMLeader::Record::takeLine(const KvDxfGroup& group) {
  if (leaders.empty() || leaders.back().lines.empty()) return;
  Line& line = leaders.back().lines.back();
  static constexpr Slot<Line> kLine[] = {{91, &Line::index}, {92, &Line::color}};
  takeInto(line, kLine, group);
  if (group.code == 10) line.vertices.push_back(group.point);
  if (group.code == 90) breakSegment_ = group.asInt();
  if (group.code == 11) breakBegin_ = group.point;
  if (group.code == 12) line.breaks.push_back({breakSegment_, {breakBegin_, group.point}});
}

/// Groups that come several times: arrows of single lines, values of attributes.
void KvDbMLeader::Record::takeOfList(const KvDxfGroup& group) {
  if (group.code == 94) arrowIndex_ = group.asInt();
  if (group.code == 345) arrows[arrowIndex_] = group.integer;
  if (group.code == 330) attributes.push_back({group.integer, {}});
  if (group.code == 302 && !attributes.empty()) attributes.back().text = CString(group.text);
}

KvDbMLeader::Record KvDbMLeader::record() const {
  Record record;
  const KvDbGroupList* groups = section();
  if (!groups) return record;
  Level level = Level::Own;
  std::size_t parts = 0;
  for (const KvDxfGroup& group : *groups) {
    const Level next = levelBehind(level, group);
    if (next > level && ++parts < kMostParts) {
      if (next == Level::Leader) record.leaders.emplace_back();
      if (next == Level::Line) {
        record.leaders.back().lines.emplace_back();
        record.leaders.back().lines.back().color = kByBlock;
      }
    }
    if (next == level) record.take(level, group);
    level = next;
  }
  for (Leader& leader : record.leaders) {
    leader.hasDogleg = leader.hasDogleg && record.hasDogleg;
    leader.dogleg = leader.dogleg.isZeroLength() ? KvGeVector3d::kXAxis : leader.dogleg.normal();
  }
  return record;
}

KvDbMLeader::LeaderType KvDbMLeader::leaderType() const {
  return static_cast<LeaderType>(std::clamp<int>(record().leaderType, kInvisibleLeader, kSplineLeader));
}

KvDbMLeader::ContentType KvDbMLeader::contentType() const {
  const Record own = record();
  return own.hasText ? kMTextContent : own.hasBlock ? kBlockContent : kNoneContent;
}

std::vector<KvDbMLeader::Leader> KvDbMLeader::leaders() const {
  return record().leaders;
}

std::unique_ptr<KvDbMText> KvDbMLeader::mtext() const {
  const Record own = record();
  if (!own.hasText || own.contents.IsEmpty() || !(own.textHeight > 0)) return nullptr;
  auto text = std::make_unique<KvDbMText>();
  text->setPropertiesFrom(this);
  paint(*text, own.textColor);
  if (database())
    if (const KvDbObjectId style =
            database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(own.textStyle)));
        style.isValid())
      text->setTextStyle(style);
  text->setContents(own.contents);
  text->setTextHeight(own.textHeight);
  text->setNormal(own.textNormal);
  text->setDirection(own.textDirection);
  text->setLocation(own.textAt);
  if (own.textWidth > 0) text->setWidth(own.textWidth * (own.scale > 0 ? own.scale : 1));
  text->setAttachment(static_cast<KvDbMText::AttachmentPoint>(std::clamp(own.alignment, 1, 3)));
  text->setLineSpacingFactor(own.spacing);
  text->setLineSpacingStyle(own.spacingStyle == KvDbMText::kExactly ? KvDbMText::kExactly
                                                                    : KvDbMText::kAtLeast);
  if (own.hasFill && own.isFillGround) text->setBackgroundFillAsGround(own.fillScale);
  if (own.hasFill && !own.isFillGround) text->setBackgroundFill(unpacked(own.fillColor), own.fillScale);
  return text;
}

std::unique_ptr<KvDbBlockReference> KvDbMLeader::blockReference() const {
  const Record own = record();
  if (!own.hasBlock || !database()) return nullptr;
  const KvDbObjectId block = database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(own.block)));
  if (!block.isValid() || !KvDbBlockTableRecord::cast(block.stub()->object)) return nullptr;
  auto reference = std::make_unique<KvDbBlockReference>(KvGePoint3d(), block);
  reference->setPropertiesFrom(this);
  paint(*reference, own.blockColor);
  reference->setNormal(own.blockNormal);
  reference->setPosition(own.blockAt);
  reference->setRotation(own.blockRotation);
  reference->setScaleFactors({own.blockScale.x, own.blockScale.y, own.blockScale.z});
  for (const Record::Attribute& value : own.attributes) {
    const KvDbObjectId id =
        database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(value.definition)));
    const auto* definition = id.isValid() ? KvDbAttributeDefinition::cast(id.stub()->object) : nullptr;
    auto attribute = std::make_unique<KvDbAttribute>();
    if (!definition || attribute->setAttributeFromBlock(definition, reference->blockTransform()) != Kvad::eOk)
      continue;
    attribute->setTextString(value.text);
    if (reference->appendAttribute(attribute.get()) == Kvad::eOk) attribute.release();
  }
  return reference;
}

// --- Drawing
// --------------------------------------------------------------------------------------------------------------------

void KvDbMLeader::addLine(Parts& parts, const Record& own, const Leader& leader, const Line& line) const {
  std::vector<KvGePoint3d> path;
  const auto reach = [&](const KvGePoint3d& p) {
    if (path.empty() || !path.back().isEqualTo(p)) path.push_back(p);
  };
  for (const KvGePoint3d& vertex : line.vertices) reach(vertex);
  // A smooth line goes to the content without a corner.
  if (own.leaderType != kSplineLeader) reach(leader.end);
  reach(leader.landing());
  if (path.size() < 2) return;
  const auto idOf = [&](std::int64_t handle) {
    return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(handle)))
                      : KvDbObjectId();
  };
  const auto add = [&](std::unique_ptr<KvDbEntity> part) {
    KvDbEntity& added = addPart(parts, std::move(part));
    paint(added, line.color == kByBlock ? own.lineColor : line.color);
    if (own.lineWeight != KvDb::kLnWtByBlock)
      added.setLineWeight(static_cast<KvDb::LineWeight>(own.lineWeight));
    const KvDbObjectId linetype = idOf(own.linetype);
    if (linetype.isValid() && linetype.objectClass() == KvDbLinetypeTableRecord::desc() &&
        kvdbRecordName(linetype).CompareNoCase(L"ByBlock") != 0)
      added.setLinetype(linetype);
  };
  const auto ownArrow = own.arrows.find(line.index);
  const KvDbArrowHead head(idOf(ownArrow != own.arrows.end() ? ownArrow->second : own.arrow), own.arrowSize);
  const KvGeVector3d out = (path[0] - path[1]).normal();
  const double cut = std::min(std::max(head.cut(), 0.0), path[0].distanceTo(path[1]));
  if (own.leaderType == kSplineLeader) {
    const KvGeVector3d end = leader.isVertical ? path.back() - path[path.size() - 2] : leader.dogleg;
    const auto curve = KvGeNurbCurve3d::interpolate(path, -out, end);
    double from = curve ? curve->startParam() : 0;
    if (curve && cut > 0) curve->paramAtLength(from, cut, from);
    const auto piece = curve ? curve->piece(from, curve->endParam()) : nullptr;
    if (auto spline = piece ? kvdbCurveOf(*piece) : nullptr) add(std::move(spline));
  } else {
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
      // Where the line was broken for what it crosses, it is left out.
      KvGePoint3d from = i == 0 ? path[0] - out * cut : path[i];
      for (const auto& [segment, gap] : line.breaks) {
        if (segment != static_cast<int>(i)) continue;
        if (!from.isEqualTo(gap.first)) add(std::make_unique<KvDbLine>(from, gap.first));
        from = gap.second;
      }
      if (!from.isEqualTo(path[i + 1])) add(std::make_unique<KvDbLine>(from, path[i + 1]));
    }
  }
  KvGeVector3d normal = own.normal();
  if (normal.isParallelTo(out)) normal = out.perpVector();
  for (auto& part : head.parts(path[0], out, normal)) add(std::move(part));
}

/// The line below (or above) the text, where the way of attachment has one.
void KvDbMLeader::addLeader(Parts& parts, const Record& own, const Leader& leader) const {
  for (const Line& line : leader.lines) addLine(parts, own, leader, line);
  const auto text = mtext();
  if (!text || leader.lines.empty()) return;
  enum { kUnderlineBottom = 5, kUnderlineTop = 6, kUnderlineAll = 8, kLineAcross = 10 };
  const KvGeVector3d along = text->direction();
  const double width = text->actualWidth();
  const auto add = [&](const KvGePoint3d& from, const KvGePoint3d& to) {
    paint(addPart(parts, std::make_unique<KvDbLine>(from, to)), own.lineColor);
  };
  if (leader.isVertical) {
    const KvGeVector3d up = text->normal().crossProduct(along);
    const bool isAbove = (leader.end - text->location()).dotProduct(up) > -text->textHeight() / 2;
    if ((isAbove ? own.top : own.bottom) == kLineAcross)
      add(leader.end - along * (width / 2), leader.end + along * (width / 2));
    return;
  }
  const KvGePoint3d landing =
      leader.hasDogleg ? leader.landing() : leader.end + leader.dogleg * leader.doglegLength;
  const bool goesRight = leader.dogleg.dotProduct(along) >= 0;
  const int attachment = goesRight ? own.left : own.right;
  if (attachment != kUnderlineBottom && attachment != kUnderlineTop && attachment != kUnderlineAll) return;
  add(landing, landing + along * ((width + own.gap) * (goesRight ? 1 : -1)));
}

void KvDbMLeader::addFrame(Parts& parts, const Record& own, const KvDbMText& text) const {
  const KvLtParagraphs laid = text.layout();
  const KvGeVector3d x = text.direction(), y = text.normal().crossProduct(x);
  const auto at = [&](double along, double up) { return text.location() + x * along + y * up; };
  const double gap = std::fabs(own.gap);
  const KvGePoint3d corners[] = {
      at(laid.low.x - gap, laid.low.y - gap), at(laid.high.x + gap, laid.low.y - gap),
      at(laid.high.x + gap, laid.high.y + gap), at(laid.low.x - gap, laid.high.y + gap)};
  for (int i = 0; i < 4; ++i)
    paint(addPart(parts, std::make_unique<KvDbLine>(corners[i], corners[(i + 1) % 4])), own.lineColor);
}

KvDbPartsEntity::Parts KvDbMLeader::makeParts() const {
  Parts parts;
  const Record own = record();
  if (own.leaderType != kInvisibleLeader)
    for (const Leader& leader : own.leaders) addLeader(parts, own, leader);
  if (auto reference = blockReference()) parts.push_back(std::move(reference));
  if (auto text = mtext()) {
    if (own.hasFrame) addFrame(parts, own, *text);
    parts.push_back(std::move(text));
  }
  return parts;
}

// --- Moving
// ---------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbMLeader::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  const double factor = matrix.scale();
  // The contents know best what becomes of them.
  const auto text = mtext();
  const auto reference = blockReference();
  if (text) text->transformBy(matrix);
  if (reference) reference->transformBy(matrix);
  const auto turned = [&](const KvGePoint3d& direction) {
    return pointOf(KvGeVector3d(matrix * direction.asVector()) / factor);
  };
  double flat[16];
  int entry = 0;
  Level level = Level::Own;
  KvGeMatrix3d blockMap;
  for (const KvDxfGroup& group : all(47))
    if (entry < 16) blockMap.entry[entry / 4][entry % 4] = group.real(), ++entry;
  blockMap = matrix * blockMap;
  for (int i = 0; i < 16; ++i) flat[i] = blockMap.entry[i / 4][i % 4];
  entry = 0;
  const auto changeContext = [&](KvDxfGroup& group) {
    switch (group.code) {
      case 40:
      case 41:
      case 140:
      case 145:
        group.point.x *= factor;
        break;
      case 10:
      case 110:
        group.point = matrix * group.point;
        break;
      case 111:
      case 112:
        group.point = turned(group.point);
        break;
      case 11:
        group.point = text ? pointOf(text->normal()) : turned(group.point);
        break;
      case 12:
        group.point = text ? text->location() : matrix * group.point;
        break;
      case 13:
        group.point = text ? pointOf(text->direction()) : turned(group.point);
        break;
      case 42:
        if (text) group.point.x = text->rotation();
        break;
      case 171:
        if (text) group.integer = (text->attachment() - 1) % 3 + 1;
        break;
      case 14:
        group.point = reference ? pointOf(reference->normal()) : turned(group.point);
        break;
      case 15:
        group.point = reference ? reference->position() : matrix * group.point;
        break;
      case 16:
        if (reference) {
          const KvGeScale3d scale = reference->scaleFactors();
          group.point = {scale.sx, scale.sy, scale.sz};
        }
        break;
      case 46:
        if (reference) group.point.x = reference->rotation();
        break;
      case 47:
        if (entry < 16) group.point.x = flat[entry++];
        break;
      default:
        break;
    }
  };
  rewrite([&](KvDxfGroup& group) {
    level = levelBehind(level, group);
    if (level == Level::Context) changeContext(group);
    if (level == Level::Leader) {
      if (group.code == 10 || group.code == 12 || group.code == 13) group.point = matrix * group.point;
      if (group.code == 11) group.point = turned(group.point);
      if (group.code == 40) group.point.x *= factor;
    }
    if (level == Level::Line && group.code >= 10 && group.code <= 12) group.point = matrix * group.point;
    if (level == Level::Own && group.code == 45) group.point.x *= factor;
    return true;
  });
  return Kvad::eOk;
}
