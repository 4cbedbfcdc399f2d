// TEXT, MTEXT, ATTDEF.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/attribute.h"
#include "host/entities/mtext.h"
#include "host/entities/text.h"
#include "host/entities/textstyle.h"

namespace kvcmd {
namespace {

/// Base lines of single texts one under another, in heights.
constexpr double kLinePitch = 5.0 / 3;

struct Justification {
  const wchar_t* keyword;
  KvDb::TextHorzMode horizontal;
  KvDb::TextVertMode vertical;
  const wchar_t* prompt;
};

constexpr Justification kJustifications[] = {
    {L"Align", KvDb::kTextAlign, KvDb::kTextBase, L"\nSpecify first endpoint of text baseline: "},
    {L"Fit", KvDb::kTextFit, KvDb::kTextBase, L"\nSpecify first endpoint of text baseline: "},
    {L"Left", KvDb::kTextLeft, KvDb::kTextBase, L"\nSpecify start point of text: "},
    {L"Center", KvDb::kTextCenter, KvDb::kTextBase, L"\nSpecify center point of text: "},
    {L"Middle", KvDb::kTextMid, KvDb::kTextBase, L"\nSpecify middle point of text: "},
    {L"Right", KvDb::kTextRight, KvDb::kTextBase, L"\nSpecify right endpoint of text baseline: "},
    {L"TL", KvDb::kTextLeft, KvDb::kTextTop, L"\nSpecify top-left point of text: "},
    {L"TC", KvDb::kTextCenter, KvDb::kTextTop, L"\nSpecify top-center point of text: "},
    {L"TR", KvDb::kTextRight, KvDb::kTextTop, L"\nSpecify top-right point of text: "},
    {L"ML", KvDb::kTextLeft, KvDb::kTextVertMid, L"\nSpecify middle-left point of text: "},
    {L"MC", KvDb::kTextCenter, KvDb::kTextVertMid, L"\nSpecify middle point of text: "},
    {L"MR", KvDb::kTextRight, KvDb::kTextVertMid, L"\nSpecify middle-right point of text: "},
    {L"BL", KvDb::kTextLeft, KvDb::kTextBottom, L"\nSpecify bottom-left point of text: "},
    {L"BC", KvDb::kTextCenter, KvDb::kTextBottom, L"\nSpecify bottom-center point of text: "},
    {L"BR", KvDb::kTextRight, KvDb::kTextBottom, L"\nSpecify bottom-right point of text: "},
};
constexpr const wchar_t* kJustifyKeywords = L"Align Fit Left Center Middle Right TL TC TR ML MC MR BL BC BR";

/// Where and how a text is to stand; user coordinates.
struct TextWish {
  const Justification* justification = &kJustifications[2];
  KvDbObjectId style;
  KvGePoint3d at, end;  // the second one of aligned and fitted texts
  double height = 0, rotation = 0;
  bool isSizeAsked = false;  // the height becomes the drawing's standard one
  bool runsBetweenPoints() const {
    return justification->horizontal == KvDb::kTextAlign || justification->horizontal == KvDb::kTextFit;
  }
};

bool askStyle(KvDbObjectId& style) {
  for (;;) {
    CString name;
    const Got got =
        Ask(L"\nEnter style name or [?] <" + kvdbRecordName(drawing()->textstyle()) + L">: ").text(name);
    if (got != Got::Value) return got == Got::Nothing;
    const KvDbObjectId found = drawing()->recordId(KvDbTable::TextStyle, name);
    if (name != L"?" && !found.isNull()) {
      drawing()->setTextstyle(found);
      style = found;
      return true;
    }
    if (name == L"?") {
      const auto* table = look<KvDbSymbolTable>(drawing()->textStyleTableId());
      for (KvDbObjectId id : table->records()) say(kvdbRecordName(id));
    } else {
      say(L"There is no text style \"" + name + L"\".");
    }
  }
}

bool askPlace(TextWish& wish) {
  for (;;) {
    Ask ask(L"\nSpecify start point of text or [Justify/Style]: ");
    const Got got = ask.keywords(L"Justify Style").point(wish.at);
    if (got == Got::Value) return true;
    if (got != Got::Keyword) return false;
    if (ask.keyword == L"Style") {
      if (!askStyle(wish.style)) return false;
      continue;
    }
    Ask how(L"\nEnter an option [Left/Center/Right/Align/Middle/Fit/TL/TC/TR/ML/MC/MR/BL/BC/BR]: ");
    if (how.keywords(kJustifyKeywords).word() != Got::Keyword) return false;
    for (const Justification& one : kJustifications)
      if (how.keyword == one.keyword) wish.justification = &one;
    if (Ask(wish.justification->prompt).point(wish.at) != Got::Value) return false;
    return !wish.runsBetweenPoints() ||
           Ask(L"\nSpecify second endpoint of text baseline: ").base(wish.at).point(wish.end) == Got::Value;
  }
}

/// Height and rotation, as far as style and justification leave them open.
bool askSize(TextWish& wish) {
  const auto* style = look<KvDbTextStyleTableRecord>(wish.style);
  wish.height = style && style->textSize() > 0 ? style->textSize() : drawing()->textsize();
  const bool isFixed = style && style->textSize() > 0;
  if (!isFixed && wish.justification->horizontal != KvDb::kTextAlign) {
    if (Ask(L"\nSpecify height <" + numberText(wish.height) + L">: ")
            .flags(KVED_NOZERO | KVED_NONEG)
            .base(wish.at)
            .distance(wish.height) == Got::Cancelled)
      return false;
    wish.isSizeAsked = true;
  }
  return wish.runsBetweenPoints() ||
         Ask(L"\nSpecify rotation angle of text <0>: ").base(wish.at).angle(wish.rotation) != Got::Cancelled;
}

/// Dresses a text by the wish and puts it into the drawing.
KvDbObjectId place(std::unique_ptr<KvDbText> text, const TextWish& wish) {
  if (wish.isSizeAsked) drawing()->setTextsize(wish.height);
  text->setTextStyle(wish.style);
  text->setHeight(wish.height);
  text->setRotation(wish.rotation);
  if (const auto* style = look<KvDbTextStyleTableRecord>(wish.style)) {
    text->setWidthFactor(style->xScale());
    text->setOblique(style->obliquingAngle());
  }
  text->setHorizontalMode(wish.justification->horizontal);
  text->setVerticalMode(wish.justification->vertical);
  text->setPosition(wish.at);
  if (!text->isDefaultAlignment()) {
    text->setAlignmentPoint(wish.runsBetweenPoints() ? wish.end : wish.at);
    text->adjustAlignment(drawing());
  }
  return addFromUser(std::move(text));
}

void runText() {
  if (!drawing()) return;
  TextWish wish;
  wish.style = drawing()->textstyle();
  if (!askPlace(wish) || !askSize(wish)) return;
  const double up = wish.runsBetweenPoints() ? bearing(wish.at, wish.end) : wish.rotation;
  const KvGeVector3d down = KvGeVector3d(std::sin(up), -std::cos(up), 0) * (wish.height * kLinePitch);
  CString line;
  while (Ask(L"\nEnter text: ").text(line, true) == Got::Value) {
    if (place(std::make_unique<KvDbText>(wish.at, line, wish.style, wish.height), wish).isNull())
      return fail(L"The text could not be placed.");
    wish.at += down;
    wish.end += down;
  }
}

/// What MTEXT asks for before the second corner.
struct ParagraphWish {
  KvDbMText::AttachmentPoint attachment = KvDbMText::kTopLeft;
  double height = 0, rotation = 0, spacing = 1, width = -1;
  KvDbObjectId style;
};

bool askParagraph(const CString& keyword, const KvGePoint3d& corner, ParagraphWish& wish) {
  constexpr const wchar_t* kPlaces[] = {L"TL", L"TC", L"TR", L"ML", L"MC", L"MR", L"BL", L"BC", L"BR"};
  if (keyword == L"Height")
    return Ask(L"\nSpecify height <" + numberText(wish.height) + L">: ")
               .flags(KVED_NOZERO | KVED_NONEG)
               .base(corner)
               .distance(wish.height) != Got::Cancelled;
  if (keyword == L"Rotation")
    return Ask(L"\nSpecify rotation angle <0>: ").base(corner).angle(wish.rotation) != Got::Cancelled;
  if (keyword == L"Style") return askStyle(wish.style);
  if (keyword == L"Line")
    return Ask(L"\nEnter line spacing factor (0.25 to 4) <1>: ").real(wish.spacing) != Got::Cancelled;
  if (keyword == L"Width")
    return Ask(L"\nSpecify width: ").flags(KVED_NONEG).base(corner).distance(wish.width) != Got::Cancelled;
  Ask ask(L"\nEnter justification [TL/TC/TR/ML/MC/MR/BL/BC/BR] <TL>: ");
  const Got got = ask.keywords(L"TL TC TR ML MC MR BL BC BR").word();
  for (int i = 0; i < static_cast<int>(std::size(kPlaces)); ++i)
    if (got == Got::Keyword && ask.keyword == kPlaces[i])
      wish.attachment = static_cast<KvDbMText::AttachmentPoint>(i + 1);
  return got != Got::Cancelled;
}

/// The attachment point of the box between two corners.
KvGePoint3d attachmentIn(const KvGePoint3d& a, const KvGePoint3d& b, KvDbMText::AttachmentPoint where) {
  const int column = (where - 1) % 3, row = (where - 1) / 3;
  const double left = std::min(a.x, b.x), right = std::max(a.x, b.x);
  const double bottom = std::min(a.y, b.y), top = std::max(a.y, b.y);
  return {left + (right - left) * column / 2, top - (top - bottom) * row / 2, a.z};
}

void runMText() {
  if (!drawing()) return;
  ParagraphWish wish;
  wish.style = drawing()->textstyle();
  const auto* style = look<KvDbTextStyleTableRecord>(wish.style);
  wish.height = style && style->textSize() > 0 ? style->textSize() : drawing()->textsize();
  KvGePoint3d first, second;
  if (Ask(L"\nSpecify first corner: ").point(first) != Got::Value) return;
  for (;;) {
    Ask ask(L"\nSpecify opposite corner or [Height/Justify/Line spacing/Rotation/Style/Width]: ");
    const Got got = ask.keywords(L"Height Justify Line Rotation Style Width").corner(first, second);
    if (got == Got::Value) break;
    if (got != Got::Keyword || !askParagraph(ask.keyword, first, wish)) return;
    if (wish.width >= 0) break;
  }
  const bool hasBox = wish.width < 0;
  CString contents, line;
  Got got;
  while ((got = Ask(L"\nMText: ").text(line, true)) == Got::Value) {
    if (!contents.IsEmpty()) contents += L"\\P";
    contents += line;
  }
  if (got == Got::Cancelled || contents.IsEmpty()) return;
  auto text = std::make_unique<KvDbMText>();
  text->setTextStyle(wish.style);
  text->setContents(contents);
  text->setLocation(hasBox ? attachmentIn(first, second, wish.attachment) : first);
  text->setAttachment(wish.attachment);
  text->setTextHeight(wish.height);
  text->setWidth(hasBox ? std::fabs(second.x - first.x) : wish.width);
  text->setRotation(wish.rotation);
  if (text->setLineSpacingFactor(wish.spacing) != Kvad::eOk)
    say(L"A line spacing factor from 0.25 to 4 expected; 1 is taken.");
  if (addFromUser(std::move(text)).isNull()) fail(L"The text could not be placed.");
}

/// The ways of a definition, with their keywords.
struct TagModes {
  bool isInvisible = false, isConstant = false, isVerified = false, isPreset = false;
};

bool askModes(TagModes& modes) {
  for (;;) {
    const auto state = [](bool on) { return on ? L"Y" : L"N"; };
    CString prompt;
    prompt.Format(
        L"\nCurrent attribute modes: Invisible=%s Constant=%s Verify=%s Preset=%s\nEnter an option to change "
        L"[Invisible/Constant/Verify/Preset] <done>: ",
        state(modes.isInvisible), state(modes.isConstant), state(modes.isVerified), state(modes.isPreset));
    Ask ask(prompt);
    const Got got = ask.keywords(L"Invisible Constant Verify Preset").word();
    if (got != Got::Keyword) return got == Got::Nothing;
    bool& mode = ask.keyword == L"Invisible"  ? modes.isInvisible
                 : ask.keyword == L"Constant" ? modes.isConstant
                 : ask.keyword == L"Verify"   ? modes.isVerified
                                              : modes.isPreset;
    mode = !mode;
  }
}

void runAttdef() {
  if (!drawing()) return;
  const AllOrNothing together;
  TagModes modes;
  if (!askModes(modes)) return;
  CString tag, question, value;
  auto definition = std::make_unique<KvDbAttributeDefinition>();
  if (Ask(L"\nEnter attribute tag name: ").text(tag) != Got::Value) return;
  if (definition->setTag(tag.MakeUpper()) != Kvad::eOk)
    return fail(L"\"" + tag + L"\" is no tag: one word is needed.");
  if (!modes.isConstant && Ask(L"\nEnter attribute prompt: ").text(question, true) == Got::Cancelled) return;
  if (Ask(modes.isConstant ? L"\nEnter attribute value: " : L"\nEnter default attribute value: ")
          .text(value, true) == Got::Cancelled)
    return;
  TextWish wish;
  wish.style = drawing()->textstyle();
  if (!askPlace(wish) || !askSize(wish)) return;
  definition->setPrompt(question);
  definition->setTextString(value);
  definition->setInvisible(modes.isInvisible);
  definition->setConstant(modes.isConstant);
  definition->setVerifiable(modes.isVerified);
  definition->setPreset(modes.isPreset);
  if (place(std::move(definition), wish).isNull()) fail(L"The definition could not be placed.");
}

constexpr KvCommandRow kRows[] = {
    {L"ATTDEF", L"ATT -ATTDEF", KVRX_CMD_MODAL, runAttdef,
     L"Places the definition of an attribute, to be made part of a block.",
     L"Enter an option to change [Invisible/Constant/Verify/Preset] <done>:\nEnter attribute tag "
     L"name:\nEnter "
     L"attribute prompt:\nEnter default attribute value:\nSpecify start point of text or "
     L"[Justify/Style]:\nSpecify height <>:\nSpecify rotation angle of text <0>:"},
    {L"MTEXT", L"MT T -MTEXT", KVRX_CMD_MODAL, runMText, L"Places a text of paragraphs.",
     L"Specify first corner:\nSpecify opposite corner or [Height/Justify/Line "
     L"spacing/Rotation/Style/Width]:\nMText: (a paragraph a line; empty: ends)"},
    {L"TEXT", L"DT DTEXT -TEXT", KVRX_CMD_MODAL, runText, L"Places lines of text.",
     L"Specify start point of text or [Justify/Style]:\nEnter an option "
     L"[Left/Center/Right/Align/Middle/Fit/TL/TC/TR/ML/MC/MR/BL/BC/BR]: (after Justify)\nSpecify height <>: "
     L"(unless the style says)\nSpecify rotation angle of text <0>:\nEnter text: (a line under the one "
     L"before; empty: ends)"},
};

}  // namespace

std::span<const KvCommandRow> textRows() {
  return kRows;
}

}  // namespace kvcmd
