#include "host/database/header.h"

#include <cmath>

#include "host/database/symboltable.h"

/// All variables together, as one object of undo that stands in no table and in no file.
class KvDbHeader::State : public KvDbObject {
 public:
  explicit State(KvDbHeader& header) : header_(header) {}
  void dwgOutFields(KvDbDwgFiler& filer) const override {
    const auto& variables = header_.database_.extras().header;
    filer.writeUInt32(static_cast<std::uint32_t>(variables.size()));
    for (const auto& variable : variables) {
      filer.writeString(variable.name);
      kvdbWriteGroups(filer, variable.groups, *this);
    }
  }
  void dwgInFields(KvDbDwgFiler& filer) override {
    std::vector<KvDbFileExtras::Variable> variables(filer.readUInt32());
    for (auto& variable : variables) {
      variable.name = filer.readString();
      variable.groups = kvdbReadGroups(filer);
    }
    header_.database_.extras().header = std::move(variables);
    header_.indexedCount_ = 0;
    header_.index_.clear();
  }

 private:
  KvDbHeader& header_;
};

namespace {

struct NamedTable {
  const wchar_t* variable;
  KvDbTable table;
};

/// Variables whose value is the name of a record.
constexpr NamedTable kRecordNames[] = {
    {L"$CLAYER", KvDbTable::Layer},        {L"$CELTYPE", KvDbTable::Linetype},
    {L"$TEXTSTYLE", KvDbTable::TextStyle}, {L"$DIMTXSTY", KvDbTable::TextStyle},
    {L"$DIMSTYLE", KvDbTable::DimStyle},   {L"$UCSNAME", KvDbTable::UCS},
    {L"$DIMLTYPE", KvDbTable::Linetype},   {L"$DIMLTEX1", KvDbTable::Linetype},
    {L"$DIMLTEX2", KvDbTable::Linetype},   {L"$DIMBLK", KvDbTable::Block},
    {L"$DIMBLK1", KvDbTable::Block},       {L"$DIMBLK2", KvDbTable::Block},
    {L"$DIMLDRBLK", KvDbTable::Block},
};

bool isReal(KvDxfKind kind) {
  return kind == KvDxfKind::Real;
}
bool isWhole(KvDxfKind kind) {
  return kind == KvDxfKind::Int16 || kind == KvDxfKind::Int32 || kind == KvDxfKind::Int64 ||
         kind == KvDxfKind::Bool;
}
bool isFinite(const KvGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace

KvDbHeader::KvDbHeader(KvDbDatabase& database)
    : database_(database), stub_(std::make_unique<KvDbStub>()), state_(std::make_unique<State>(*this)) {
  stub_->object = state_.get();
  stub_->database = &database;
  KvDbDatabase::bind(*stub_, *state_);
}
KvDbHeader::~KvDbHeader() = default;

const KvDbStoredGroup* KvDbHeader::find(const wchar_t* name) const {
  const auto& variables = database_.extras().header;
  if (indexedCount_ != variables.size()) {
    index_.clear();
    // Of a name that stands twice the first counts.
    for (std::size_t i = 0; i < variables.size(); ++i)
      index_.emplace(CString(variables[i].name).MakeUpper().str(), i);
    indexedCount_ = variables.size();
  }
  const auto found = index_.find(std::wstring_view(name));
  if (found == index_.end() || variables[found->second].groups.empty()) return nullptr;
  return &variables[found->second].groups.front();
}

double KvDbHeader::real(const wchar_t* name) const {
  const KvDbStoredGroup* group = find(name);
  if (group && isReal(group->kind) && std::isfinite(group->point.x)) return group->point.x;
  if (group && isWhole(group->kind)) return static_cast<double>(group->integer);
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  return known ? known->x : 0;
}

int KvDbHeader::whole(const wchar_t* name) const {
  const KvDbStoredGroup* group = find(name);
  if (group && isWhole(group->kind)) return static_cast<int>(group->integer);
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  return known ? static_cast<int>(known->x) : 0;
}

CString KvDbHeader::text(const wchar_t* name) const {
  const KvDbStoredGroup* group = find(name);
  if (group && group->kind == KvDxfKind::Text) return group->text;
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  return known ? CString(known->text) : CString();
}

KvGePoint3d KvDbHeader::point(const wchar_t* name) const {
  const KvDbStoredGroup* group = find(name);
  if (group && group->kind == KvDxfKind::Point && isFinite(group->point)) return group->point;
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  return known ? KvGePoint3d(known->x, known->y, known->z) : KvGePoint3d();
}

double KvDbHeader::angle(const wchar_t* name) const {
  return kvdxfRadians(real(name));
}

KvDbObjectId KvDbHeader::record(const wchar_t* name, KvDbTable table) const {
  return database_.recordId(table, text(name));
}

KvDbStoredGroup* KvDbHeader::edit(const wchar_t* name) {
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  const KvDbStoredGroup* present = find(name);
  if (!known && !present) return nullptr;
  if (database_.undoRecording()) database_.undoRecorder().noteChange(*stub_);
  database_.noteModified(KvDbDatabase::kVariablesChanged);
  if (present) return const_cast<KvDbStoredGroup*>(present);
  KvDbStoredGroup group;
  group.code = known->code;
  group.kind = kvdxfKind(known->code);
  group.dimensions = known->dimensions;
  group.integer = static_cast<std::int64_t>(known->x);
  group.point = {known->x, known->y, known->z};
  group.text = known->text;
  auto& variables = database_.extras().header;
  if (auto* empty = database_.extras().find(name)) {
    empty->groups.assign(1, group);
    return &empty->groups.front();
  }
  variables.push_back({CString(name), {group}});
  return &variables.back().groups.front();
}

namespace {

/// The kind of value that a variable holds or would hold.
KvDxfKind kindOf(const KvDbStoredGroup* present, const wchar_t* name) {
  if (present) return present->kind;
  const KvDbHeaderVariable* known = kvdbHeaderVariable(name);
  return known ? kvdxfKind(known->code) : KvDxfKind::Binary;
}

}  // namespace

Kvad::ErrorStatus KvDbHeader::setReal(const wchar_t* name, double value) {
  if (!find(name) && !kvdbHeaderVariable(name)) return Kvad::eKeyNotFound;
  if (!isReal(kindOf(find(name), name)) || !std::isfinite(value)) return Kvad::eInvalidInput;
  edit(name)->point.x = value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHeader::setWhole(const wchar_t* name, int value) {
  if (!find(name) && !kvdbHeaderVariable(name)) return Kvad::eKeyNotFound;
  if (!isWhole(kindOf(find(name), name))) return Kvad::eInvalidInput;
  edit(name)->integer = value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHeader::setText(const wchar_t* name, const wchar_t* value) {
  if (!find(name) && !kvdbHeaderVariable(name)) return Kvad::eKeyNotFound;
  if (kindOf(find(name), name) != KvDxfKind::Text) return Kvad::eInvalidInput;
  edit(name)->text = CString(value);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHeader::setPoint(const wchar_t* name, const KvGePoint3d& value) {
  if (!find(name) && !kvdbHeaderVariable(name)) return Kvad::eKeyNotFound;
  if (kindOf(find(name), name) != KvDxfKind::Point || !isFinite(value)) return Kvad::eInvalidInput;
  edit(name)->point = value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHeader::setAngle(const wchar_t* name, double radians) {
  if (!std::isfinite(radians)) return Kvad::eInvalidInput;
  return setReal(name, kvdxfDegrees(radians));
}

Kvad::ErrorStatus KvDbHeader::setRecord(const wchar_t* name, KvDbTable table, KvDbObjectId id) {
  if (id.isNull()) return Kvad::eNullObjectId;
  if (id.database() != &database_) return Kvad::eWrongDatabase;
  if (id.isErased()) return Kvad::eWasErased;
  const auto* record = KvDbSymbolTableRecord::cast(id.stub()->object);
  if (!record || record->ownerId() != database_.tableId(table)) return Kvad::eWrongObjectType;
  return setText(name, record->getName());
}

void KvDbHeader::followRename(KvDbObjectId table, const CString& oldName, const CString& newName) {
  for (const NamedTable& row : kRecordNames)
    if (database_.tableId(row.table) == table && find(row.variable) &&
        text(row.variable).CompareNoCase(oldName) == 0)
      setText(row.variable, newName);
}

// --- What a drawing gives new entities --------------------------------------------------------------------

KvDbHeader& KvDbDatabase::header() const {
  return *header_;
}

KvDbObjectId KvDbDatabase::clayer() const {
  const KvDbObjectId id = header().record(L"$CLAYER", KvDbTable::Layer);
  return id.isValid() ? id : layerZero();
}
Kvad::ErrorStatus KvDbDatabase::setClayer(KvDbObjectId id) {
  return header().setRecord(L"$CLAYER", KvDbTable::Layer, id);
}
KvDbObjectId KvDbDatabase::celtype() const {
  const KvDbObjectId id = header().record(L"$CELTYPE", KvDbTable::Linetype);
  return id.isValid() ? id : byLayerLinetype();
}
Kvad::ErrorStatus KvDbDatabase::setCeltype(KvDbObjectId id) {
  return header().setRecord(L"$CELTYPE", KvDbTable::Linetype, id);
}
KvCmEntityColor KvDbDatabase::cecolor() const {
  const int index = header().whole(L"$CECOLOR");
  return KvCmEntityColor::ofIndex(index >= kKvColorByBlock && index <= kKvColorByLayer ? index
                                                                                       : kKvColorByLayer);
}
Kvad::ErrorStatus KvDbDatabase::setCecolor(const KvCmEntityColor& color) {
  if (color.colorMethod() == KvCmEntityColor::kByColor) return Kvad::eNotApplicable;
  return header().setWhole(L"$CECOLOR", color.colorIndex());
}
double KvDbDatabase::celtscale() const {
  const double scale = header().real(L"$CELTSCALE");
  return scale > 0 ? scale : 1;
}
Kvad::ErrorStatus KvDbDatabase::setCeltscale(double scale) {
  return scale > 0 ? header().setReal(L"$CELTSCALE", scale) : Kvad::eInvalidInput;
}
KvDb::LineWeight KvDbDatabase::celweight() const {
  return static_cast<KvDb::LineWeight>(header().whole(L"$CELWEIGHT"));
}
Kvad::ErrorStatus KvDbDatabase::setCelweight(KvDb::LineWeight weight) {
  return header().setWhole(L"$CELWEIGHT", weight);
}
KvDbObjectId KvDbDatabase::dimstyle() const {
  const KvDbObjectId id = header().record(L"$DIMSTYLE", KvDbTable::DimStyle);
  return id.isValid() ? id : recordId(KvDbTable::DimStyle, L"Standard");
}
Kvad::ErrorStatus KvDbDatabase::setDimstyle(KvDbObjectId id) {
  const Kvad::ErrorStatus status = header().setRecord(L"$DIMSTYLE", KvDbTable::DimStyle, id);
  return status == Kvad::eOk ? setDimstyleData(id) : status;
}
KvDbObjectId KvDbDatabase::textstyle() const {
  const KvDbObjectId id = header().record(L"$TEXTSTYLE", KvDbTable::TextStyle);
  return id.isValid() ? id : recordId(KvDbTable::TextStyle, L"Standard");
}
Kvad::ErrorStatus KvDbDatabase::setTextstyle(KvDbObjectId id) {
  return header().setRecord(L"$TEXTSTYLE", KvDbTable::TextStyle, id);
}
double KvDbDatabase::ltscale() const {
  const double scale = header().real(L"$LTSCALE");
  return scale > 0 ? scale : 1;
}
Kvad::ErrorStatus KvDbDatabase::setLtscale(double scale) {
  return scale > 0 ? header().setReal(L"$LTSCALE", scale) : Kvad::eInvalidInput;
}
double KvDbDatabase::thickness() const {
  return header().real(L"$THICKNESS");
}
Kvad::ErrorStatus KvDbDatabase::setThickness(double thickness) {
  return header().setReal(L"$THICKNESS", thickness);
}
double KvDbDatabase::elevation() const {
  return header().real(L"$ELEVATION");
}
Kvad::ErrorStatus KvDbDatabase::setElevation(double elevation) {
  return header().setReal(L"$ELEVATION", elevation);
}
double KvDbDatabase::textsize() const {
  const double size = header().real(L"$TEXTSIZE");
  return size > 0 ? size : 2.5;
}
Kvad::ErrorStatus KvDbDatabase::setTextsize(double size) {
  return size > 0 ? header().setReal(L"$TEXTSIZE", size) : Kvad::eInvalidInput;
}
bool KvDbDatabase::tilemode() const {
  return header().whole(L"$TILEMODE") != 0;
}
Kvad::ErrorStatus KvDbDatabase::setTilemode(bool isModel) {
  return header().setWhole(L"$TILEMODE", isModel ? 1 : 0);
}
