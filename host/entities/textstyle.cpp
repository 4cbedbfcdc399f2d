#include "host/entities/textstyle.h"

#include <algorithm>
#include <cmath>

#include "host/base/resbuf.h"
#include "host/database/database.h"
#include "host/lettering/line.h"

namespace {

const KvDbTextStyleTableRecord* recordOf(KvDbObjectId id) {
  return id.stub() ? KvDbTextStyleTableRecord::cast(id.stub()->object) : nullptr;
}

/// Styles of outline fonts keep the typeface and its kind as extended data.
void readTypeface(const KvDbObject& record, KvGiTextLook& look) {
  constexpr std::int32_t kBold = 0x2000000, kItalic = 0x1000000;
  resbuf* chain = record.xData(L"ACAD");
  for (const resbuf* node = chain; node; node = node->rbnext) {
    if (node->restype == 1000 && node->resval.rstring) look.typeface = node->resval.rstring;
    if (node->restype != 1071) continue;
    look.isBold = (node->resval.rlong & kBold) != 0;
    look.isItalic = (node->resval.rlong & kItalic) != 0;
  }
  kvutRelRb(chain);
}

}  // namespace

KvGiTextLook kvdbLookOfStyle(KvDbObjectId style) {
  constexpr int kVerticalFlag = 4;
  KvGiTextLook look;
  const KvDbTextStyleTableRecord* record = recordOf(style);
  if (!record) return look;
  look.fontFile = record->fileName();
  look.bigFontFile = record->bigFontFileName();
  if (record->database()) look.fontFolder = record->database()->sharedFolder();
  look.height = record->textSize() > 0 ? record->textSize() : 1;
  look.widthFactor = record->xScale();
  look.oblique = record->obliquingAngle();
  look.isVertical = (record->standardFlags() & kVerticalFlag) != 0;
  look.isBackward = record->isBackward();
  look.isUpsideDown = record->isUpsideDown();
  readTypeface(*record, look);
  return look;
}

Kvad::ErrorStatus KvGiTextStyle::fromKvDbTextStyle(KvDbObjectId id) {
  if (id.isNull()) return Kvad::eNullObjectId;
  const KvDbTextStyleTableRecord* record = recordOf(id);
  if (!record) return Kvad::eNotThatKindOfClass;
  id_ = id;
  name_ = record->getName();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvGiTextStyle::fromKvDbTextStyle(const wchar_t* name, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return Kvad::eNoDatabase;
  const KvDbObjectId id = database->recordId(KvDbTable::TextStyle, name);
  return id.isNull() ? Kvad::eKeyNotFound : fromKvDbTextStyle(id);
}

Kvad::ErrorStatus KvGiTextStyle::loadStyleRec(KvDbDatabase*) {
  if (!recordOf(id_)) return Kvad::eNullObjectId;
  look_ = kvdbLookOfStyle(id_);
  return Kvad::eOk;
}

void KvGiTextStyle::extentsBox(const wchar_t* text, bool raw, int length, KvGePoint2d& low,
                               KvGePoint2d& high) const {
  low = high = {};
  if (!text) return;
  std::wstring_view view(text);
  if (length >= 0) view = view.substr(0, static_cast<std::size_t>(length));
  if (view.empty()) return;
  KvGiTextLook look = look_;
  look.isRaw = raw;
  const KvLtLine line = kvltMeasureLine(look, view);
  if (line.box.isEmpty()) {
    high.x = line.advance;
    return;
  }
  low = {std::min(0.0, line.box.low.x), line.box.low.y};
  high = {line.width(), line.box.high.y};
}
