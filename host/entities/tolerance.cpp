#include "host/entities/tolerance.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/entities/curves.h"
#include "host/entities/mtext.h"

KVRX_DEFINE(KvDbFcf, KvDbPartsEntity, L"TOLERANCE")

namespace {

using V = KvDbDimVar;

/// The letters of the symbol font, as signs of Unicode that the technical font has (meanings after ISO
/// 1101 and ISO 129). 0: no symbol.
constexpr wchar_t kSymbols[] = {
    0x2220,  // a: angularity
    0x23CA,  // b: perpendicularity
    0x23E5,  // c: flatness
    0x2313,  // d: profile of a surface
    0x25CB,  // e: circularity
    0x2AFD,  // f: parallelism
    0x232D,  // g: cylindricity
    0x2197,  // h: circular run-out
    0x232F,  // i: symmetry
    0x2316,  // j: position
    0x2312,  // k: profile of a line
    0x24C1,  // l: least material condition
    0x24C2,  // m: maximum material condition
    0x2300,  // n: diameter
    0x25A1,  // o: square
    0x24C5,  // p: projected tolerance zone
    0x0,     // q
    0x25CE,  // r: concentricity
    0x24C8,  // s: regardless of feature size
    0x2330,  // t: total run-out
    0x23E4,  // u: straightness
    0x2334,  // v: counterbore
    0x2335,  // w: countersink
    0x21A7,  // x: depth
    0x2332,  // y: conical taper
    0x2333,  // z: slope
};
static_assert(std::size(kSymbols) == 'z' - 'a' + 1);

/// Letters behind a change to the symbol font become the signs that they stand for.
CString withSymbols(const CString& text) {
  constexpr std::wstring_view kFont = L"\\Fgdt;";
  std::wstring made;
  bool isSymbol = false;
  const std::wstring_view all = text.view();
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (CString(all.substr(i, kFont.size())).CompareNoCase(CString(kFont)) == 0) {
      made += kFont;
      i += kFont.size() - 1;
      isSymbol = true;
      continue;
    }
    if (all[i] == L'}') isSymbol = false;
    const bool isLetter = all[i] >= L'a' && all[i] <= L'z';
    const wchar_t sign = isSymbol && isLetter ? kSymbols[all[i] - L'a'] : wchar_t{0};
    made += sign != 0 ? sign : all[i];
  }
  return CString(made);
}

std::vector<std::wstring_view> split(std::wstring_view text, std::wstring_view between) {
  std::vector<std::wstring_view> parts;
  for (std::size_t at = 0;;) {
    const std::size_t end = text.find(between, at);
    parts.push_back(text.substr(at, end - at));
    if (end == std::wstring_view::npos) return parts;
    at = end + between.size();
  }
}

}  // namespace

KvDbFcf::KvDbFcf(const wchar_t* text, const KvGePoint3d& location, const KvGeVector3d& normal,
                 const KvGeVector3d& direction)
    : KvDbFcf() {
  putPoint(10, location);
  setText(text);
  putPoint(210, {normal.x, normal.y, normal.z});
  putPoint(11, {direction.x, direction.y, direction.z});
}

CString KvDbFcf::text() const {
  const auto found = all(1);
  return found.empty() ? CString() : CString(found.front().text);
}

Kvad::ErrorStatus KvDbFcf::setText(const wchar_t* text) {
  return putText(1, text ? text : L"");
}

KvDbObjectId KvDbFcf::dimensionStyle() const {
  const auto name = all(3);
  return name.empty() || !database() ? KvDbObjectId()
                                     : database()->recordId(KvDbTable::DimStyle, CString(name.front().text));
}

Kvad::ErrorStatus KvDbFcf::setDimensionStyle(KvDbObjectId style) {
  if (style.objectClass() != KvDbDimStyleTableRecord::desc()) return Kvad::eInvalidInput;
  return putText(3, kvdbRecordNameView(style));
}

std::vector<std::vector<CString>> KvDbFcf::cells() const {
  constexpr std::size_t kMostCells = 256;
  CString whole = text();
  whole.Replace(CString(L"^J"), CString(L"\n"));
  whole.Replace(CString(L"%%V"), CString(L"%%v"));
  std::vector<std::vector<CString>> rows;
  std::size_t count = 0;
  for (const std::wstring_view line : split(whole.view(), L"\n")) {
    std::vector<CString> row;
    for (const std::wstring_view cell : split(line, L"%%v"))
      if (!cell.empty() && count++ < kMostCells) row.push_back(withSymbols(CString(cell)));
    if (!row.empty()) rows.push_back(std::move(row));
  }
  return rows;
}

Kvad::ErrorStatus KvDbFcf::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  const KvGeVector3d normal = KvGeVector3d(matrix * this->normal()).normal();
  KvGeVector3d along = KvGeVector3d(matrix * direction()).normal();
  // Mirrored, it is still read from left to right.
  if (matrix.column(0).crossProduct(matrix.column(1)).dotProduct(matrix.column(2)) < 0) along = -along;
  putPoint(10, matrix * location());
  putPoint(210, {normal.x, normal.y, normal.z});
  return putPoint(11, {along.x, along.y, along.z});
}

KvDbPartsEntity::Parts KvDbFcf::makeParts() const {
  Parts parts;
  const KvDbDimVars vars = dimVars();
  const double scale = vars.real(V::Scale) > 0 ? vars.real(V::Scale) : 1;
  const double height = vars.real(V::Txt) * scale, gap = std::fabs(vars.real(V::Gap)) * scale;
  const KvGeVector3d normal = this->normal().isZeroLength() ? KvGeVector3d::kZAxis : this->normal().normal();
  KvGeVector3d x = direction() - normal * direction().dotProduct(normal);
  if (!(height > 0) || x.isZeroLength()) return parts;
  x = x.normal();
  const KvGeVector3d y = normal.crossProduct(x);
  const KvGePoint3d origin = location();
  const auto at = [&](double along, double up) { return origin + x * along + y * up; };
  const auto line = [&](const KvGePoint3d& a, const KvGePoint3d& b) {
    addPart(parts, std::make_unique<KvDbLine>(a, b), vars.whole(V::ClrD),
            static_cast<KvDb::LineWeight>(vars.whole(V::Lwd)));
  };
  const auto write = [&](const CString& contents) {
    auto text = std::make_unique<KvDbMText>();
    KvDbObjectId style = vars.id(V::TxSty);
    const KvDbDatabase* drawing = kvdbDatabaseOrWorking(database());
    if (style.isNull() && drawing) style = drawing->recordId(KvDbTable::TextStyle, L"Standard");
    if (!style.isNull()) text->setTextStyle(style);
    text->setTextHeight(height);
    text->setContents(contents);
    text->setNormal(normal);
    text->setDirection(x);
    text->setAttachment(KvDbMText::kMiddleCenter);
    return text;
  };
  const double row = height + 2 * gap;
  const auto rows = cells();
  double top = row / 2;
  for (std::size_t r = 0; r < rows.size(); ++r, top -= row) {
    // One symbol serves rows that begin with the same.
    std::size_t shared = 1;
    while (rows[r].size() > 1 && r + shared < rows.size() && rows[r + shared].size() > 1 &&
           rows[r + shared][0] == rows[r][0])
      ++shared;
    const bool isSharedAbove =
        r > 0 && rows[r].size() > 1 && rows[r - 1].size() > 1 && rows[r][0] == rows[r - 1][0];
    double left = 0;
    line(at(0, top), at(0, top - row));
    for (std::size_t c = 0; c < rows[r].size(); ++c) {
      auto text = write(rows[r][c]);
      const double width = std::max(text->actualWidth() + 2 * gap, row);
      const bool isShared = c == 0 && isSharedAbove;
      const double reach = c == 0 ? row * static_cast<double>(shared) : row;
      if (!isShared) {
        text->setLocation(at(left + width / 2, top - reach / 2));
        addPart(parts, std::move(text), vars.whole(V::ClrT));
        line(at(left, top), at(left + width, top));
      }
      if (c > 0 || shared == 1) line(at(left, top - row), at(left + width, top - row));
      line(at(left + width, top), at(left + width, top - row));
      left += width;
    }
  }
  return parts;
}
