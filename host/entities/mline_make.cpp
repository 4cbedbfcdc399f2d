// New multilines, and the style that every drawing may have.
#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/database/dictionary.h"
#include "host/entities/mline.h"

namespace {

constexpr const wchar_t *kDictionary = L"ACAD_MLINESTYLE", *kStandard = L"STANDARD";

KvDxfGroup groupOf(int code) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = kvdxfKind(code);
  return group;
}
KvDxfGroup wholeGroup(int code, std::int64_t value) {
  KvDxfGroup group = groupOf(code);
  group.integer = value;
  return group;
}
KvDxfGroup realGroup(int code, double value) {
  KvDxfGroup group = groupOf(code);
  group.kind = KvDxfKind::Real;
  group.point.x = value;
  return group;
}
KvDxfGroup textGroup(int code, std::wstring_view value) {
  KvDxfGroup group = groupOf(code);
  group.text = value;
  return group;
}
KvDxfGroup pointGroup(int code, const KvGePoint3d& value) {
  KvDxfGroup group = groupOf(code);
  group.kind = KvDxfKind::Point;
  group.point = value;
  return group;
}
KvDxfGroup vectorGroup(int code, const KvGeVector3d& value) {
  return pointGroup(code, KvGePoint3d() + value);
}

class StandardStyle : public KvDbProxyObject {
 public:
  StandardStyle() : KvDbProxyObject(CString(L"MLINESTYLE")) {
    constexpr double kSquare = 90, kHalf = 0.5;
    std::vector<KvDxfGroup> groups = {
        textGroup(2, kStandard), wholeGroup(70, 0),      textGroup(3, L""), wholeGroup(62, kKvColorByLayer),
        realGroup(51, kSquare),  realGroup(52, kSquare), wholeGroup(71, 2)};
    for (const double offset : {kHalf, -kHalf}) {
      groups.push_back(realGroup(49, offset));
      groups.push_back(wholeGroup(62, kKvColorByLayer));
      groups.push_back(textGroup(6, L"BYLAYER"));
    }
    editUnknownSections().push_back({KvDbSharedText(L"AcDbMlineStyle"), KvDbGroupList(groups)});
  }
};

const KvDbDictionary* stylesOf(const KvDbDatabase& database) {
  const KvDbObjectId rootId = database.namedObjectsDictionaryId();
  const auto* root = rootId.isValid() ? KvDbDictionary::cast(rootId.stub()->object) : nullptr;
  KvDbObjectId id;
  if (!root || root->getAt(kDictionary, id) != Kvad::eOk || !id.isValid()) return nullptr;
  return KvDbDictionary::cast(id.stub()->object);
}

/// The directions of the segment behind each vertex and of the joint through it.
struct Corner {
  KvGeVector3d along, joint;
  double stretch = 1;  ///< a place beside the way, measured along the joint
};

Corner cornerOf(const KvGeVector3d& before, const KvGeVector3d& behind) {
  const auto left = [](const KvGeVector3d& way) { return KvGeVector3d(-way.y, way.x, 0); };
  Corner corner{behind, left(before) + left(behind), 1};
  // A way that turns back on itself has no corner to join.
  constexpr double kSharpest = 1e-3;
  if (corner.joint.length() < kSharpest) return {behind, left(behind), 1};
  corner.joint = corner.joint.normal();
  corner.stretch = 1 / corner.joint.dotProduct(left(behind));
  return corner;
}

}  // namespace

std::unique_ptr<KvDbMline> KvDbMline::make(const std::vector<KvGePoint3d>& points, bool isClosed,
                                           KvDbObjectId styleId, Justification justification, double scale) {
  const auto style = KvDbMlineStyle::of(styleId);
  if (!style || points.empty() || !std::isfinite(scale)) return nullptr;
  std::vector<KvGePoint3d> way;
  for (const KvGePoint3d& point : points) {
    const KvGePoint3d flat(point.x, point.y, points.front().z);
    if (way.empty() || !way.back().isEqualTo(flat)) way.push_back(flat);
  }
  if (isClosed && way.size() > 1 && way.back().isEqualTo(way.front())) way.pop_back();
  const std::size_t count = way.size(), fewest = isClosed ? 3 : 2;
  if (count < fewest) return nullptr;
  const auto order = style->byOffset();
  const double shift = justification == Justification::Top      ? -style->elements[order.back()].offset
                       : justification == Justification::Bottom ? -style->elements[order.front()].offset
                                                                : 0;
  auto made = std::make_unique<KvDbMline>();
  std::vector<KvDxfGroup> groups = {textGroup(2, L""),
                                    wholeGroup(340, static_cast<std::int64_t>(styleId.handle().value())),
                                    realGroup(40, scale),
                                    wholeGroup(70, static_cast<int>(justification)),
                                    wholeGroup(71, kHasVertices | (isClosed ? kClosed : 0)),
                                    wholeGroup(72, static_cast<std::int64_t>(count)),
                                    wholeGroup(73, static_cast<std::int64_t>(style->elements.size())),
                                    pointGroup(10, way.front()),
                                    pointGroup(210, {0, 0, 1})};
  const CString name = kvdbMlineStyleName(styleId);
  groups.front().text = name.view();
  const auto direction = [&](std::size_t i) { return (way[(i + 1) % count] - way[i % count]).normal(); };
  for (std::size_t i = 0; i < count; ++i) {
    const bool isFirst = !isClosed && i == 0, isLast = !isClosed && i + 1 == count;
    const KvGeVector3d before = isFirst ? direction(0) : direction(i + count - 1);
    const Corner corner = cornerOf(before, isLast ? before : direction(i));
    groups.push_back(pointGroup(11, way[i]));
    groups.push_back(vectorGroup(12, corner.along));
    groups.push_back(vectorGroup(13, corner.joint));
    for (const KvDbMlineStyle::Element& element : style->elements) {
      groups.push_back(wholeGroup(74, 2));
      groups.push_back(realGroup(41, (element.offset + shift) * scale * corner.stretch));
      groups.push_back(realGroup(41, 0));
      groups.push_back(wholeGroup(75, 0));
    }
  }
  made->rewrite([](KvDxfGroup&) { return true; }, groups);
  return made;
}

CString kvdbMlineStyleName(KvDbObjectId style) {
  const auto* object = style.isValid() ? KvDbProxyObject::cast(style.stub()->object) : nullptr;
  if (object)
    for (const KvDbUnknownSection& section : object->unknownSections())
      for (const KvDxfGroup& group : section.groups)
        if (group.code == 2) return CString(group.text);
  return {};
}

std::vector<CString> kvdbMlineStyleNames(const KvDbDatabase& database) {
  std::vector<CString> names;
  if (const KvDbDictionary* styles = stylesOf(database))
    for (const KvDbDictionary::Entry& entry : styles->entries())
      if (KvDbMlineStyle::of(entry.id)) names.push_back(entry.name);
  return names;
}

KvDbObjectId kvdbMlineStyleNamed(KvDbDatabase& database, const CString& name) {
  KvDbObjectId id;
  if (const KvDbDictionary* styles = stylesOf(database);
      styles && styles->getAt(name, id) == Kvad::eOk && KvDbMlineStyle::of(id))
    return id;
  id.setNull();
  if (name.CompareNoCase(kStandard) != 0) return id;
  KvDbDictionary *root = nullptr, *styles = nullptr;
  if (database.getNamedObjectsDictionary(root, KvDb::kForWrite) != Kvad::eOk) return id;
  KvDbObjectId stylesId;
  if (root->getAt(kDictionary, stylesId) == Kvad::eOk && stylesId.isValid()) {
    kvdbOpenObject(styles, stylesId, KvDb::kForWrite);
  } else {
    auto fresh = std::make_unique<KvDbDictionary>();
    if (root->setAt(kDictionary, fresh.get(), stylesId) == Kvad::eOk) styles = fresh.release();
  }
  if (styles) {
    auto style = std::make_unique<StandardStyle>();
    if (styles->setAt(kStandard, style.get(), id) == Kvad::eOk) style.release()->close();
    styles->close();
  }
  root->close();
  return id;
}
