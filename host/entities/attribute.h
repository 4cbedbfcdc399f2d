#pragma once
// Attributes of block references, and their definitions in blocks.
#include "host/entities/text.h"

/// What attributes and their definitions share: a tag, and how the value is treated.
class KvDbTaggedText : public KvDbText {
  KVRX_DECLARE(KvDbTaggedText)
 public:
  const CString& tag() const { return tag_; }
  /// eInvalidInput for an empty tag or one with blanks.
  Kvad::ErrorStatus setTag(const wchar_t* tag);
  bool isInvisible() const { return (flags_ & kInvisibleFlag) != 0; }
  Kvad::ErrorStatus setInvisible(bool invisible) { return setFlag(kInvisibleFlag, invisible); }
  bool isConstant() const { return (flags_ & kConstantFlag) != 0; }
  bool isVerifiable() const { return (flags_ & kVerifyFlag) != 0; }
  bool isPreset() const { return (flags_ & kPresetFlag) != 0; }
  int fieldLength() const { return fieldLength_; }
  Kvad::ErrorStatus setFieldLength(int length);

  bool subWorldDraw(KvGiWorldDraw* draw) override;

 protected:
  bool hasOwnVerticalMode() const override { return false; }
  Kvad::ErrorStatus setFlag(int flag, bool on);

  static constexpr int kInvisibleFlag = 1, kConstantFlag = 2, kVerifyFlag = 4, kPresetFlag = 8;
  CString tag_;
  std::int16_t flags_ = 0, fieldLength_ = 0;
};

class KvDbAttributeDefinition : public KvDbTaggedText {
  KVRX_DECLARE(KvDbAttributeDefinition)
  KVDB_FIELDS_DECLARE
 public:
  KvDbAttributeDefinition() = default;
  KvDbAttributeDefinition(const KvGePoint3d& position, const wchar_t* text, const wchar_t* tag,
                          const wchar_t* prompt, KvDbObjectId style = {});
  const CString& prompt() const { return prompt_; }
  Kvad::ErrorStatus setPrompt(const wchar_t* prompt);
  Kvad::ErrorStatus setConstant(bool constant) { return setFlag(kConstantFlag, constant); }
  Kvad::ErrorStatus setVerifiable(bool verifiable) { return setFlag(kVerifyFlag, verifiable); }
  Kvad::ErrorStatus setPreset(bool preset) { return setFlag(kPresetFlag, preset); }

 protected:
  /// A definition shows its tag; a constant one its value.
  const CString& shownText() const override { return isConstant() ? textString() : tag_; }

 private:
  CString prompt_;
};

class KvDbAttribute : public KvDbTaggedText {
  KVRX_DECLARE(KvDbAttribute)
  KVDB_FIELDS_DECLARE
 public:
  KvDbAttribute() = default;
  KvDbAttribute(const KvGePoint3d& position, const wchar_t* text, const wchar_t* tag,
                KvDbObjectId style = {});
  /// Takes everything of the definition, moved by the reference's transform: the text as well.
  /// eNullObjectPointer, eDegenerateGeometry.
  Kvad::ErrorStatus setAttributeFromBlock(const KvDbAttributeDefinition* definition,
                                          const KvGeMatrix3d& blockTransform);
};
