#pragma once
// The prompts of function style. Statuses: RTNORM, RTNONE for an empty reply where there is no other answer,
// RTKWORD for a keyword, RTCAN for a cancel, RTERROR for wrong arguments. A reply that can't be read is asked
// for again, with a word why, at most 100 times from a script.
//
// Points are in user coordinates, angles in radians. How they are written tells point_input.h; an object snap
// (`end`, `mid`, `cen`, `nod`, `qua`, `int`, `ins`, `per`, `tan`, `nea`, `non`) may stand before a point.
// Each point becomes the variable LASTPOINT.
#include "host/base/kvds.h"
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
/// The keyword, or with KVED_ARBITRARY the text, of the prompt that just answered RTKWORD.
int kvedGetInput(CString& result);
/// The same into a buffer of `size` characters, the terminator among them. RTERROR, and an empty text, when
/// it doesn't fit.
int kvedGetString(int allowBlanks, const wchar_t* prompt, wchar_t* buffer, std::size_t size);
int kvedGetKword(const wchar_t* prompt, wchar_t* buffer, std::size_t size);
int kvedGetInput(wchar_t* buffer, std::size_t size);

int kvedGetInt(const wchar_t* prompt, int* result);
int kvedGetReal(const wchar_t* prompt, double* result);

/// A point; `base`, which may be null, is where a rubber line starts.
int kvedGetPoint(const double* base, const wchar_t* prompt, double* result);
/// The corner opposite to `base`, which must be given.
int kvedGetCorner(const double* base, const wchar_t* prompt, double* result);
/// A number, the distance of a point from `base`, or without a base the distance of two points.
int kvedGetDist(const double* base, const wchar_t* prompt, double* result);
/// An angle counted from ANGBASE, counter-clockwise, 0 to 2 pi: written (ANGDIR tells which way it counts),
/// or as the direction from `base` to a point or from one point to another.
int kvedGetAngle(const double* base, const wchar_t* prompt, double* result);
/// The same counted from the X axis of the user system.
int kvedGetOrient(const double* base, const wchar_t* prompt, double* result);

/// The keyword that a reply stands for: spelt out or shortened down to the capitals, without regard to case;
/// a leading `_` of the reply is stepped over. Empty when there is none.
CString kvedMatchKeyword(const CString& keywords, const CString& reply);
