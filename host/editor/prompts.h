#pragma once
// The prompts of function style. Statuses: RTNORM, RTNONE for an empty reply where there is no other answer,
// RTKWORD for a keyword, RTCAN for a cancel, RTERROR for wrong arguments. A reply that can't be read is asked
// for again, with a word why, at most 100 times from a script.
//
// Points are in user coordinates, angles in radians. How they are written tells point_input.h. In place of a
// point there may stand:
//
//   end  mid,cen  ...  object snaps (osnap.h) before a rough point; `non` takes it as it is
//   .x  .xy  ...       these coordinates from the point that follows, the others from the next
//   from               a base point, then the offset from it (`@...`)
//   mtp  m2p           the middle of two points
//   tt                 a point to count from (`@...`), then the point itself
//   d                  a distance from the base of the rubber line: in the direction of the cursor, where a
//   front
//                      end shows one, else on in the direction of the last two points of the command, else
//                      along X
//   <a                 the direction from that base; a distance follows, or a point that tells how far
//
// With ORTHOMODE the direction of a plain distance is the nearest axis of the snap. Points of a cursor
// (KvEdToken::Origin) go to what the running snaps of OSMODE find, else to the snap's grid (SNAPMODE) and
// with ORTHOMODE along its axes. Typed ones stay as they are typed, unless OSNAPCOORD lets running snaps act
// on them: 0 always, 2 in scripts. With LIMCHECK points outside the limits are refused. Each point becomes
// the variable LASTPOINT. A command with an apostrophe ('ZOOM) runs in between when it is transparent.
#include "host/base/kvds.h"
#include "host/editor/editor.h"

/// Flags of kvedInitGet.
inline constexpr int KVED_NONULL = 1;
inline constexpr int KVED_NOZERO = 2;
inline constexpr int KVED_NONEG = 4;
inline constexpr int KVED_NOLIMITS = 8;
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
