#include "host/editor/ss_filter.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "host/base/wcmatch.h"
#include "host/database/chainwriter.h"
#include "host/database/database.h"
#include "host/database/entity.h"
#include "platform/text/utf.h"

namespace {

constexpr int kOperator = -4, kXData = -3, kApplication = 1001;
constexpr int kType = 0, kHandle = 5, kLinetype = 6, kLayer = 8, kLinetypeScale = 48, kInvisible = 60,
              kColor = 62, kWeight = 370;
constexpr int kDeepest = 64;

enum class Relation { Equal, Unequal, Less, LessEqual, Greater, GreaterEqual, SomeBits, AllBits, Any };

struct RelationName {
  const wchar_t* text;
  Relation relation;
};
constexpr RelationName kRelations[] = {
    {L"=", Relation::Equal},    {L"!=", Relation::Unequal},      {L"/=", Relation::Unequal},
    {L"<>", Relation::Unequal}, {L"<", Relation::Less},          {L"<=", Relation::LessEqual},
    {L">", Relation::Greater},  {L">=", Relation::GreaterEqual}, {L"&", Relation::SomeBits},
    {L"&=", Relation::AllBits}, {L"*", Relation::Any},
};

bool compare(Relation relation, double have, double wanted) {
  switch (relation) {
    case Relation::Equal:
      return have == wanted;
    case Relation::Unequal:
      return have != wanted;
    case Relation::Less:
      return have < wanted;
    case Relation::LessEqual:
      return have <= wanted;
    case Relation::Greater:
      return have > wanted;
    case Relation::GreaterEqual:
      return have >= wanted;
    case Relation::Any:
      return true;
    default:
      return false;
  }
}

bool compareBits(Relation relation, long long have, long long wanted) {
  if (relation == Relation::SomeBits) return (have & wanted) != 0;
  if (relation == Relation::AllBits) return (have & wanted) == wanted;
  return compare(relation, static_cast<double>(have), static_cast<double>(wanted));
}

bool compareTexts(Relation relation, const wchar_t* have, const wchar_t* wanted) {
  if (relation == Relation::Any) return true;
  const CString a = CString(have).MakeUpper(), b = CString(wanted).MakeUpper();
  const bool isMatch = kvutWcMatch(a, b) == RTNORM;
  if (relation == Relation::Equal) return isMatch;
  if (relation == Relation::Unequal) return !isMatch;
  return compare(relation, a.Compare(b), 0);
}

bool sameName(const resbuf& a, const resbuf& b) {
  return a.resval.rlname[0] == b.resval.rlname[0] && a.resval.rlname[1] == b.resval.rlname[1];
}

}  // namespace

struct KvEdEntityFilter::Node {
  enum class Kind { And, Or, Xor, Not, Value, Applications };
  Kind kind = Kind::And;
  std::vector<Node> children;
  const resbuf* value = nullptr;  // a copy that `chain` owns
  Relation relations[3] = {Relation::Equal, Relation::Equal, Relation::Equal};
  std::vector<CString> applications;
  resbuf* chain = nullptr;  // of the root

  Node() = default;
  Node(Node&& other) noexcept { *this = std::move(other); }
  Node& operator=(Node&& other) noexcept {
    kind = other.kind;
    children = std::move(other.children);
    value = other.value;
    std::copy(std::begin(other.relations), std::end(other.relations), relations);
    applications = std::move(other.applications);
    chain = std::exchange(other.chain, nullptr);
    return *this;
  }
  ~Node() { kvutRelRb(chain); }

  bool parse(const resbuf*& at, const wchar_t* end, int depth);
  bool parseRelation(const wchar_t* text);
  bool holds(const KvDbEntity& entity, const resbuf* groups) const;
  bool valueHolds(const KvDbEntity& entity, const resbuf* groups) const;
  bool matches(const resbuf& have) const;
};

/// Conditions up to the closing word, or for the root to the chain's end.
bool KvEdEntityFilter::Node::parse(const resbuf*& at, const wchar_t* end, int depth) {
  static constexpr struct {
    const wchar_t *open, *close;
    Kind kind;
    std::size_t operands;  // 0: any number
  } kGroups[] = {{L"<AND", L"AND>", Kind::And, 0},
                 {L"<OR", L"OR>", Kind::Or, 0},
                 {L"<XOR", L"XOR>", Kind::Xor, 2},
                 {L"<NOT", L"NOT>", Kind::Not, 1}};
  if (depth > kDeepest) return false;
  while (at) {
    Node child;
    if (at->restype == kOperator) {
      const CString word(at->resval.rstring);
      at = at->rbnext;
      if (end && word.CompareNoCase(end) == 0) return true;
      const auto* group = std::find_if(std::begin(kGroups), std::end(kGroups),
                                       [&](const auto& g) { return word.CompareNoCase(g.open) == 0; });
      if (group != std::end(kGroups)) {
        child.kind = group->kind;
        if (!child.parse(at, group->close, depth + 1)) return false;
        if (group->operands > 0 && child.children.size() != group->operands) return false;
        children.push_back(std::move(child));
        continue;
      }
      if (!child.parseRelation(word) || !at || at->restype == kOperator) return false;
    }
    if (at->restype == kXData) {
      child.kind = Kind::Applications;
      for (at = at->rbnext; at && at->restype == kApplication; at = at->rbnext)
        child.applications.push_back(CString(at->resval.rstring).MakeUpper());
    } else {
      child.kind = Kind::Value;
      child.value = at;
      at = at->rbnext;
    }
    children.push_back(std::move(child));
  }
  return end == nullptr;
}

bool KvEdEntityFilter::Node::parseRelation(const wchar_t* text) {
  const CString whole(text);
  int position = 0, index = 0;
  for (CString part = whole.Tokenize(L",", position); position != -1;
       part = whole.Tokenize(L",", position), ++index) {
    const auto* found = std::find_if(std::begin(kRelations), std::end(kRelations),
                                     [&](const RelationName& row) { return part == row.text; });
    if (found == std::end(kRelations) || index > 2) return false;
    // One relation serves all coordinates.
    for (int i = index; i < 3; ++i) relations[i] = found->relation;
  }
  return index > 0;
}

bool KvEdEntityFilter::Node::matches(const resbuf& have) const {
  switch (kvutRbKind(have.restype)) {
    case KvRbKind::Text:
      return compareTexts(relations[0], have.resval.rstring, value->resval.rstring);
    case KvRbKind::Real:
      return compare(relations[0], have.resval.rreal, value->resval.rreal);
    case KvRbKind::Point:
      return compare(relations[0], have.resval.rpoint[0], value->resval.rpoint[0]) &&
             compare(relations[1], have.resval.rpoint[1], value->resval.rpoint[1]) &&
             compare(relations[2], have.resval.rpoint[2], value->resval.rpoint[2]);
    case KvRbKind::Short:
      return compareBits(relations[0], have.resval.rint, value->resval.rint);
    case KvRbKind::Long:
      return compareBits(relations[0], have.resval.rlong, value->resval.rlong);
    case KvRbKind::Int64:
      return compareBits(relations[0], have.resval.mnLongPtr, value->resval.mnLongPtr);
    case KvRbKind::Name:
      return (relations[0] == Relation::Unequal) != sameName(have, *value);
    default:
      return false;
  }
}

bool KvEdEntityFilter::Node::valueHolds(const KvDbEntity& entity, const resbuf* groups) const {
  resbuf own{};
  own.restype = value->restype;
  const auto isText = [&](const CString& text) {
    return value->resval.rstring && compareTexts(relations[0], text, value->resval.rstring);
  };
  // Those that every entity has, whether its groups say so or not.
  switch (value->restype == RTDXF0 ? kType : value->restype) {
    case kType:
      return isText(entity.fileType());
    case kLayer:
      return isText(entity.layer());
    case kHandle:
      return isText(entity.handle().toText());
    case kLinetype:
      return isText(entity.linetypeId().isNull() ? CString(L"ByLayer") : kvdbRecordName(entity.linetypeId()));
    case kColor:
      own.resval.rint = static_cast<std::int16_t>(entity.colorIndex());
      return matches(own);
    case kInvisible:
      own.resval.rint = static_cast<std::int16_t>(entity.visibility());
      return matches(own);
    case kWeight:
      own.resval.rint = static_cast<std::int16_t>(entity.lineWeight());
      return matches(own);
    case kLinetypeScale:
      own.resval.rreal = entity.linetypeScale();
      return matches(own);
    default:
      break;
  }
  for (const resbuf* node = groups; node; node = node->rbnext)
    if (node->restype == value->restype && matches(*node)) return true;
  return false;
}

bool KvEdEntityFilter::Node::holds(const KvDbEntity& entity, const resbuf* groups) const {
  const auto one = [&](const Node& child) { return child.holds(entity, groups); };
  switch (kind) {
    case Kind::And:
      return std::all_of(children.begin(), children.end(), one);
    case Kind::Or:
      return std::any_of(children.begin(), children.end(), one);
    case Kind::Xor:
      return one(children[0]) != one(children[1]);
    case Kind::Not:
      return !one(children[0]);
    case Kind::Applications: {
      resbuf* data = entity.xData();
      const bool isThere = std::all_of(applications.begin(), applications.end(), [&](const CString& wanted) {
        for (const resbuf* node = data; node; node = node->rbnext)
          if (node->restype == kApplication && compareTexts(Relation::Equal, node->resval.rstring, wanted))
            return true;
        return false;
      });
      const bool hasData = data != nullptr;
      kvutRelRb(data);
      return isThere && hasData;
    }
    case Kind::Value:
      return valueHolds(entity, groups);
  }
  return false;
}

KvEdEntityFilter::KvEdEntityFilter() = default;
KvEdEntityFilter::~KvEdEntityFilter() = default;
KvEdEntityFilter::KvEdEntityFilter(KvEdEntityFilter&&) noexcept = default;
KvEdEntityFilter& KvEdEntityFilter::operator=(KvEdEntityFilter&&) noexcept = default;

bool KvEdEntityFilter::set(const resbuf* chain) {
  root_.reset();
  if (!chain) return true;
  root_ = std::make_unique<Node>();
  root_->chain = kvutCopyRb(chain);
  const resbuf* at = root_->chain;
  if (root_->parse(at, nullptr, 0)) return true;
  // Nothing passes an empty alternative.
  root_->children.clear();
  root_->kind = Node::Kind::Or;
  return false;
}

bool KvEdEntityFilter::takes(KvDbObjectId id) const {
  if (!root_) return true;
  KvDbEntity* entity = id.isNull() ? nullptr : KvDbEntity::cast(id.stub()->object);
  if (!entity) return false;
  resbuf* groups = nullptr;
  const auto needsGroups = [](const Node& node, const auto& self) -> bool {
    if (node.kind != Node::Kind::Value)
      return std::any_of(node.children.begin(), node.children.end(),
                         [&](const Node& child) { return self(child, self); });
    switch (node.value->restype) {
      case kType:
      case RTDXF0:
      case kHandle:
      case kLayer:
      case kLinetype:
      case kColor:
      case kInvisible:
      case kWeight:
      case kLinetypeScale:
        return false;
      default:
        return true;
    }
  };
  if (needsGroups(*root_, needsGroups)) {
    KvDbChainWriter writer(*id.database());
    entity->dxfOutFields(writer);
    groups = writer.takeChain();
  }
  const bool isTaken = root_->holds(*entity, groups);
  kvutRelRb(groups);
  return isTaken;
}
