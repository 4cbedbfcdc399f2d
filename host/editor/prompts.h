#pragma once
// The prompts of function style. Statuses: RTNORM, RTNONE for an empty reply where there is no other answer,
// RTKWORD for a keyword, RTCAN for a cancel, RTERROR for wrong arguments. A reply that can't be read is asked
// for again, with a word why, at most 100 times from a script.
#include "host/editor/editor.h"

/// Flags of kvedInitGet.
inline constexpr int KVED_NONULL = 1;
inline constexpr int KVED_NOZERO = 2;
inline constexpr int KVED_NONEG = 4;
inline constexpr int KVED_ARBITRARY = 128;

/// Flags and keywords of the next prompt. Keywords are separated by blanks; their capitals are the shortest
/// form. Always RTNORM with a host.
int kvedInitGet(int flags, const wchar_t* keywords);

/// A text; with `allowBlanks` blanks belong to it. An empty reply is an empty text and RTNORM.
int kvedGetString(int allowBlanks, const wchar_t* prompt, CString& result);
/// One of the keywords of kvedInitGet, spelt as there. RTNONE for an empty reply.
int kvedGetKword(const wchar_t* prompt, CString& result);
int kvedGetInt(const wchar_t* prompt, int* result);
int kvedGetReal(const wchar_t* prompt, double* result);
/// The keyword, or with KVED_ARBITRARY the text, of the prompt that just answered RTKWORD.
int kvedGetInput(CString& result);

/// The keyword that a reply stands for: spelt out or shortened down to the capitals, without regard to case.
/// Empty when there is none.
CString kvedMatchKeyword(const CString& keywords, const CString& reply);
