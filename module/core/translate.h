#pragma once
// Messages that data files name by macros, in the language of the product.
//
// A `.mld` file is UTF-16 little-endian behind FF FE, lines ended by carriage return and line feed. Its first
// line is `/lg` and the codes of its languages; each further line is a number and one text in double quotes
// for each language.
#include "module/core/export.h"
#include "platform/text/cstring.h"

/// Builds the table anew from every `*.mld` of the translator folder. Files with a wrong start and lines of a
/// wrong form are skipped.
MEK_API void IM_TranslateGenMsg();

/// The text with its macros `(GENMSG file number)` or `(GEFMSG file number)` replaced by their messages.
/// `value`, if given, gets the number that stands in braces at the text's end (which are cut off), else -1.0.
/// A macro without a message leaves the text as it is. A message that names macros again is followed at most
/// 100 times.
MEK_API CString IM_TranslateGenMsg(CString const& text, double* value);

namespace mek {

/// Deletes the table, if any.
void releaseTranslations();
/// Adds the messages of one file's text under its key. For the table builder, tests and fuzzers.
void addTranslations(const CString& fileKey, const CString& content);

}  // namespace mek
