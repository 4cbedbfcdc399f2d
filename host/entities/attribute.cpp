#include "host/entities/attribute.h"

#include <algorithm>
#include <cwctype>

KVRX_DEFINE_ABSTRACT(KvDbTaggedText, KvDbText)
KVRX_DEFINE(KvDbAttributeDefinition, KvDbTaggedText, L"ATTDEF")
KVRX_DEFINE(KvDbAttribute, KvDbTaggedText, L"ATTRIB")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;

}  // namespace

const KvDbField KvDbAttributeDefinition::kFields[] = {
    kvdbMarker(L"AcDbAttributeDefinition"),
    kvdbField<&KvDbAttributeDefinition::prompt_>(Type::Text, 3),
    kvdbField<&KvDbAttributeDefinition::tag_, KvDbAttributeDefinition>(Type::Text, 2),
    kvdbField<&KvDbAttributeDefinition::flags_, KvDbAttributeDefinition>(Type::Int16, 70, kAlways),
    kvdbField<&KvDbAttributeDefinition::fieldLength_, KvDbAttributeDefinition>(Type::Int16, 73,
                                                                               kUnlessDefault),
    kvdbField<&KvDbAttributeDefinition::verticalMode_, KvDbAttributeDefinition>(Type::Int16, 74,
                                                                                kUnlessDefault, 0, 0, 3),
};
KVDB_FIELDS_DEFINE(KvDbAttributeDefinition, KvDbTaggedText)

const KvDbField KvDbAttribute::kFields[] = {
    kvdbMarker(L"AcDbAttribute"),
    kvdbField<&KvDbAttribute::tag_, KvDbAttribute>(Type::Text, 2),
    kvdbField<&KvDbAttribute::flags_, KvDbAttribute>(Type::Int16, 70, kAlways),
    kvdbField<&KvDbAttribute::fieldLength_, KvDbAttribute>(Type::Int16, 73, kUnlessDefault),
    kvdbField<&KvDbAttribute::verticalMode_, KvDbAttribute>(Type::Int16, 74, kUnlessDefault, 0, 0, 3),
};
KVDB_FIELDS_DEFINE(KvDbAttribute, KvDbTaggedText)

Kvad::ErrorStatus KvDbTaggedText::setTag(const wchar_t* tag) {
  const CString fresh(tag);
  const auto isBlank = [](wchar_t c) { return std::iswspace(static_cast<std::wint_t>(c)) != 0; };
  if (fresh.IsEmpty() || std::any_of(fresh.str().begin(), fresh.str().end(), isBlank))
    return Kvad::eInvalidInput;
  assertWriteEnabled();
  tag_ = fresh;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTaggedText::setFieldLength(int length) {
  constexpr int kLongest = 32767;
  if (length < 0 || length > kLongest) return Kvad::eInvalidInput;
  assertWriteEnabled();
  fieldLength_ = static_cast<std::int16_t>(length);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTaggedText::setFlag(int flag, bool on) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(on ? flags_ | flag : flags_ & ~flag);
  return Kvad::eOk;
}

bool KvDbTaggedText::subWorldDraw(KvGiWorldDraw* draw) {
  return !isInvisible() && KvDbText::subWorldDraw(draw);
}

KvDbAttributeDefinition::KvDbAttributeDefinition(const KvGePoint3d& position, const wchar_t* text,
                                                 const wchar_t* tag, const wchar_t* prompt,
                                                 KvDbObjectId style) {
  setPosition(position);
  setTextString(text);
  setTextStyle(style);
  tag_ = tag;
  prompt_ = prompt;
}

Kvad::ErrorStatus KvDbAttributeDefinition::setPrompt(const wchar_t* prompt) {
  assertWriteEnabled();
  prompt_ = prompt;
  return Kvad::eOk;
}

KvDbAttribute::KvDbAttribute(const KvGePoint3d& position, const wchar_t* text, const wchar_t* tag,
                             KvDbObjectId style) {
  setPosition(position);
  setTextString(text);
  setTextStyle(style);
  tag_ = tag;
}

Kvad::ErrorStatus KvDbAttribute::setAttributeFromBlock(const KvDbAttributeDefinition* definition,
                                                       const KvGeMatrix3d& blockTransform) {
  if (!definition) return Kvad::eNullObjectPointer;
  const KvDbText& from = *definition;
  KvDbText trial;
  trial.setNormal(from.normal());
  trial.setRotation(from.rotation());
  trial.setOblique(from.oblique());
  if (trial.transformBy(blockTransform) != Kvad::eOk) return Kvad::eDegenerateGeometry;
  assertWriteEnabled();
  setPropertiesFrom(definition);
  setNormal(from.normal());
  setPosition(from.position());
  setAlignmentPoint(from.alignmentPoint());
  setTextStyle(from.textStyle());
  setHeight(from.height());
  setWidthFactor(from.widthFactor());
  setOblique(from.oblique());
  setRotation(from.rotation());
  setHorizontalMode(from.horizontalMode());
  setVerticalMode(from.verticalMode());
  mirrorInX(from.isMirroredInX());
  mirrorInY(from.isMirroredInY());
  setThickness(from.thickness());
  setTextString(from.textString());
  tag_ = definition->tag();
  flags_ = 0;
  setFlag(kInvisibleFlag, definition->isInvisible());
  setFlag(kConstantFlag, definition->isConstant());
  setFlag(kVerifyFlag, definition->isVerifiable());
  setFlag(kPresetFlag, definition->isPreset());
  fieldLength_ = static_cast<std::int16_t>(definition->fieldLength());
  return transformBy(blockTransform);
}
