// TEXTEDIT, ATTEDIT, JUSTIFYTEXT, FIND: texts that are there already.
#include <algorithm>

#include "host/base/wcmatch.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/entities/dimension.h"
#include "host/entities/mtext.h"
#include "host/entities/text.h"

namespace kvcmd {
namespace {

/// What a text of any class says; none for what is no text.
std::optional<CString> wordsOf(const KvDbEntity* entity) {
  if (const auto* definition = KvDbAttributeDefinition::cast(entity)) return definition->tag();
  if (const auto* text = KvDbText::cast(entity)) return text->textString();
  if (const auto* paragraphs = KvDbMText::cast(entity)) return paragraphs->contents();
  if (const auto* dimension = KvDbDimension::cast(entity))
    return dimension->dimensionText().IsEmpty() ? CString(L"<>") : dimension->dimensionText();
  return std::nullopt;
}

void setWords(KvDbEntity& entity, const CString& words) {
  if (auto* definition = KvDbAttributeDefinition::cast(&entity)) {
    if (definition->setTag(words) != Kvad::eOk) say(L"A tag without blanks expected.");
  } else if (auto* text = KvDbText::cast(&entity)) {
    text->setTextString(words);
    if (!text->isDefaultAlignment()) text->adjustAlignment();
  } else if (auto* paragraphs = KvDbMText::cast(&entity)) {
    paragraphs->setContents(words);
  } else if (auto* dimension = KvDbDimension::cast(&entity)) {
    dimension->setDimensionText(words == L"<>" ? CString() : words);
    dimension->recomputeDimBlock(true);
  }
}

void editAttributes(const KvDbBlockReference& reference) {
  const std::unique_ptr<KvDbObjectIterator> all(reference.attributeIterator());
  if (all->done()) return fail(L"The block has no attributes that can be edited.");
  for (; !all->done(); all->step()) {
    const auto* attribute = look<KvDbAttribute>(all->objectId());
    if (!attribute || attribute->isConstant()) continue;
    CString value;
    const Got got =
        Ask(L"\n" + attribute->tag() + L" <" + attribute->textString() + L">: ").text(value, true);
    if (got == Got::Cancelled) return;
    // A single point stands for no text.
    if (got == Got::Value)
      change<KvDbEntity>(all->objectId(),
                         [&](KvDbEntity& entity) { setWords(entity, value == L"." ? CString() : value); });
  }
}

void runTextedit() {
  if (!drawing()) return;
  KvDbObjectId id;
  while (Ask(L"\nSelect an annotation object: ").entity(id) == Got::Value) {
    if (isLocked(id)) {
      say(L"The object is on a locked layer.");
      continue;
    }
    if (const auto* reference = look<KvDbBlockReference>(id)) {
      editAttributes(*reference);
      continue;
    }
    const auto words = wordsOf(look<KvDbEntity>(id));
    if (!words) {
      say(L"A text, a dimension or a block with attributes expected.");
      continue;
    }
    CString text;
    if (Ask(L"\nEnter new text <" + *words + L">: ").text(text, true) == Got::Value)
      change<KvDbEntity>(id, [&](KvDbEntity& entity) { setWords(entity, text); });
  }
}

/// The attributes of all references of the current space whose block, tag and value fit patterns.
KvDbObjectIdArray attributesLike(CString block, CString tag, CString value) {
  KvDbObjectIdArray found;
  block.MakeUpper();
  tag.MakeUpper();
  const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId());
  if (!space) return found;
  for (KvDbObjectId id : space->entities()) {
    const auto* reference = look<KvDbBlockReference>(id);
    if (!reference || isLocked(id) || kvutWcMatch(reference->blockName().MakeUpper(), block) != RTNORM)
      continue;
    const std::unique_ptr<KvDbObjectIterator> all(reference->attributeIterator());
    for (; !all->done(); all->step()) {
      const auto* attribute = look<KvDbAttribute>(all->objectId());
      if (attribute && kvutWcMatch(CString(attribute->tag()).MakeUpper(), tag) == RTNORM &&
          kvutWcMatch(attribute->textString(), value) == RTNORM)
        found.append(all->objectId());
    }
  }
  return found;
}

/// One text in the place of another one in each; the number of those that changed.
int replaceIn(const KvDbObjectIdArray& ids, const CString& from, const CString& to, bool mindsCase) {
  int changed = 0;
  for (KvDbObjectId id : ids) {
    const auto words = wordsOf(look<KvDbEntity>(id));
    if (!words) continue;
    CString text = *words, searched = text, wanted = from;
    if (!mindsCase) {
      searched.MakeUpper();
      wanted.MakeUpper();
    }
    CString made;
    int at = 0;
    for (int hit = searched.Find(wanted, at); hit >= 0; hit = searched.Find(wanted, at)) {
      made += text.Mid(at, hit - at) + to;
      at = hit + wanted.GetLength();
    }
    if (at == 0) continue;
    made += text.Mid(at);
    change<KvDbEntity>(id, [&](KvDbEntity& entity) { setWords(entity, made); });
    ++changed;
  }
  return changed;
}

void editGlobally() {
  CString block = L"*", tag = L"*", value = L"*", from, to;
  if (Ask(L"\nEnter block name specification <*>: ").text(block) == Got::Cancelled ||
      Ask(L"\nEnter attribute tag specification <*>: ").text(tag) == Got::Cancelled ||
      Ask(L"\nEnter attribute value specification <*>: ").text(value, true) == Got::Cancelled)
    return;
  const KvDbObjectIdArray ids = attributesLike(block, tag, value);
  say(countOf(ids.length(), L"attributes selected."));
  if (ids.isEmpty() || Ask(L"\nEnter string to change: ").text(from, true) != Got::Value ||
      Ask(L"\nEnter new string: ").text(to, true) == Got::Cancelled)
    return;
  say(countOf(replaceIn(ids, from, to, true), L"changed"));
}

void runAttedit() {
  if (!drawing()) return;
  KvDbObjectId id;
  Ask ask(L"\nSelect block reference or [Global]: ");
  const Got got = ask.keywords(L"Global").entity(id);
  if (got == Got::Keyword) return editGlobally();
  if (got != Got::Value) return;
  const auto* reference = look<KvDbBlockReference>(id);
  if (!reference) return fail(L"The object is no block.");
  if (isLocked(id)) return fail(L"The object is on a locked layer.");
  editAttributes(*reference);
}

void runFind() {
  if (!drawing()) return;
  CString from, to;
  if (Ask(L"\nEnter text to find: ").text(from, true) != Got::Value) return;
  const auto replaces = askYes(L"\nReplace it?", false);
  if (!replaces || (*replaces && Ask(L"\nEnter text to put in its place: ").text(to, true) == Got::Cancelled))
    return;
  const auto mindsCase = askYes(L"\nMatch case?", false);
  const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId());
  if (!mindsCase || !space) return;
  KvDbObjectIdArray texts;
  for (KvDbObjectId id : space->entities()) {
    const auto* layer = look<KvDbLayerTableRecord>(look<KvDbEntity>(id)->layerId());
    if ((layer && layer->isFrozen()) || (*replaces && isLocked(id))) continue;
    if (const auto* reference = look<KvDbBlockReference>(id)) {
      const std::unique_ptr<KvDbObjectIterator> all(reference->attributeIterator());
      for (; !all->done(); all->step()) texts.append(all->objectId());
    } else if (wordsOf(look<KvDbEntity>(id))) {
      texts.append(id);
    }
  }
  if (*replaces) return say(countOf(replaceIn(texts, from, to, *mindsCase), L"texts changed"));
  int found = 0;
  for (KvDbObjectId id : texts) {
    CString words = *wordsOf(look<KvDbEntity>(id)), searched = words, wanted = from;
    if (!*mindsCase) {
      searched.MakeUpper();
      wanted.MakeUpper();
    }
    if (searched.Find(wanted) < 0) continue;
    CString handle;
    handle.Format(L"%X  ", id.stub()->handle);
    say(handle + CString(look<KvDbEntity>(id)->fileType()) + L"  " + words);
    ++found;
  }
  say(countOf(found, L"found"));
}

struct Justification {
  const wchar_t* keyword;
  KvDb::TextHorzMode horizontal;
  KvDb::TextVertMode vertical;
  double x, y;  // the point, in parts of the text's width and height
};
constexpr Justification kJustifications[] = {
    {L"Left", KvDb::kTextLeft, KvDb::kTextBase, 0, 0},
    {L"Center", KvDb::kTextCenter, KvDb::kTextBase, 0.5, 0},
    {L"Right", KvDb::kTextRight, KvDb::kTextBase, 1, 0},
    {L"Middle", KvDb::kTextMid, KvDb::kTextBase, 0.5, 0.5},
    {L"TL", KvDb::kTextLeft, KvDb::kTextTop, 0, 1},
    {L"TC", KvDb::kTextCenter, KvDb::kTextTop, 0.5, 1},
    {L"TR", KvDb::kTextRight, KvDb::kTextTop, 1, 1},
    {L"ML", KvDb::kTextLeft, KvDb::kTextVertMid, 0, 0.5},
    {L"MC", KvDb::kTextCenter, KvDb::kTextVertMid, 0.5, 0.5},
    {L"MR", KvDb::kTextRight, KvDb::kTextVertMid, 1, 0.5},
    {L"BL", KvDb::kTextLeft, KvDb::kTextBottom, 0, 0},
    {L"BC", KvDb::kTextCenter, KvDb::kTextBottom, 0.5, 0},
    {L"BR", KvDb::kTextRight, KvDb::kTextBottom, 1, 0},
};

/// Another point of justification, with the text staying where it is.
void justify(KvDbText& text, const Justification& to) {
  // Where it stands now, whatever it was placed by.
  const KvGePoint3d before = text.position();
  const KvGeMatrix3d turn = KvGeMatrix3d::planeToWorld(text.normal()) *
                            KvGeMatrix3d::rotation(text.rotation(), KvGeVector3d::kZAxis);
  const KvGePoint3d at = before + turn * KvGeVector3d(text.textWidth() * to.x, text.height() * to.y, 0);
  text.setHorizontalMode(to.horizontal);
  text.setVerticalMode(to.vertical);
  if (text.isDefaultAlignment()) {
    text.setPosition(before);
    return;
  }
  text.setAlignmentPoint(at);
  text.adjustAlignment();
  // What differs is how the place is defined (descenders, side bearings); the letters stay.
  const KvGeVector3d off = before - text.position();
  text.setAlignmentPoint(at + off);
  text.adjustAlignment();
}

void runJustify() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  Ask ask(L"\nEnter a justification option [Left/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR] <Left>: ");
  const Got got = ask.keywords(L"Left Center Middle Right TL TC TR ML MC MR BL BC BR").word();
  if (got == Got::Cancelled) return;
  const CString wanted = got == Got::Keyword ? ask.keyword : CString(L"Left");
  for (const Justification& one : kJustifications)
    if (wanted == one.keyword)
      for (KvDbObjectId id : ids) change<KvDbText>(id, [&](KvDbText& text) { justify(text, one); });
}

constexpr KvCommandRow kRows[] = {
    {L"ATTEDIT", L"ATE -ATTEDIT DDATTE", KVRX_CMD_MODAL, runAttedit, L"Changes the values of attributes.",
     L"Select block reference or [Global]: (then each attribute's new value; a point empties it)\nEnter "
     L"block "
     L"name specification <*>: (after Global)\nEnter attribute tag specification <*>:\nEnter attribute value "
     L"specification <*>:\nEnter string to change:\nEnter new string:"},
    {L"FIND", L"", KVRX_CMD_MODAL, runFind,
     L"Finds words in texts, dimensions and attributes, and changes them.",
     L"Enter text to find:\nReplace it? [Yes/No] <No>:\nEnter text to put in its place: (after Yes)\nMatch "
     L"case? [Yes/No] <No>:"},
    {L"JUSTIFYTEXT", L"", KVRX_CMD_USEPICKSET, runJustify,
     L"Gives texts another point of justification where they stand.",
     L"Select objects:\nEnter a justification option "
     L"[Left/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR] <Left>:"},
    {L"TEXTEDIT", L"ED DDEDIT", KVRX_CMD_MODAL, runTextedit,
     L"Changes what texts, dimensions and attributes say.",
     L"Select an annotation object: (empty: ends)\nEnter new text <>:"},
};

}  // namespace

std::span<const KvCommandRow> textEditRows() {
  return kRows;
}

}  // namespace kvcmd
