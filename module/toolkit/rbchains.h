#pragma once
// Chains of `resbuf`: reading, writing and changing them by group code.
//
// The n-th value of a code is counted from 1, from the head on; an `n` of 0 or less means the first. Which
// member of a node's value is meant follows from the overload alone; nothing here checks the node's type. A
// marker pair is a node of `markerCode` with the marker's value and, directly behind it, one of `valueCode`;
// the first such pair counts. Results are 1 and 0 unless it says otherwise; on 0 `out` is untouched.
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "module/core/export.h"
#include "platform/text/cstring.h"

// --- Finding

/// Null when there is none.
MEK_API resbuf* FindResbufByType(resbuf* head, int code);
MEK_API resbuf* IM_GetSubResbuf(resbuf* const head, int code, int n);
MEK_API resbuf* Use_get_resbuf(resbuf* head, int code);
/// Here an `n` of 0 or less finds nothing.
MEK_API resbuf* Use_get_resbuf(resbuf* head, int code, int n);
/// The last node; null for a null head and for a chain of more than 1001 nodes, which counts as broken.
MEK_API resbuf* GetLinkTail(resbuf* head);

// --- By occurrence

MEK_API int IM_GetRbValueOf(resbuf* const head, int& out, int code, int n);   ///< 16 bits
MEK_API int IM_GetRbValueOf(resbuf* const head, long& out, int code, int n);  ///< 32 bits
MEK_API int IM_GetRbValueOf(resbuf* const head, double& out, int code, int n);
MEK_API int IM_GetRbValueOf(resbuf* const head, double* const out, int code, int n);     ///< three doubles
MEK_API int IM_GetRbValueOf(resbuf* const head, long long* const out, int code, int n);  ///< three words
MEK_API int IM_GetRbValueOf(resbuf* const head, CString& out, int code, int n);

/// An occurrence is overwritten. A missing first one is appended; a missing later one gives 0.
MEK_API int IM_SetRbValueOf(resbuf* const head, int value, int code, int n);   ///< 16 bits
MEK_API int IM_SetRbValueOf(resbuf* const head, long value, int code, int n);  ///< 32 bits
MEK_API int IM_SetRbValueOf(resbuf* const head, double value, int code, int n);
MEK_API int IM_SetRbValueOf(resbuf* const head, double const* const value, int code, int n);
MEK_API int IM_SetRbValueOf(resbuf* const head, long long const* const value, int code,
                            int n);  ///< two words
MEK_API int IM_SetRbValueOf(resbuf* const head, CString value, int code, int n);
inline int IM_SetRbValueOf(resbuf* const head, const wchar_t* value, int code, int n) {
  return IM_SetRbValueOf(head, CString(value), code, n);
}

// --- By marker

MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              int& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              double& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              CString& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              double* const out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, int& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode,
                              double& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode,
                              CString& out);
MEK_API int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode,
                              double* const out);

/// These never add a node.
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              int value);
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              double value);
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                              CString value);
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, int value);
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode,
                              double value);
MEK_API int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode,
                              CString value);

// --- Changing a chain

/// A fresh malloc copy in place of the node's text. 0 for a null node.
MEK_API int IM_RstringAssign(resbuf* const node, CString text);
/// Appends a chain; one that hangs together with the first already is left as it is. The last node of the
/// joined chain; null for a null head.
MEK_API resbuf* IM_AddRbToTail(resbuf* const head, resbuf* const tail);
/// Unlinks and frees the first node of that code behind the head.
MEK_API int IM_DelSegFromRb(resbuf* head, int code);
/// The same for the handle, as a record is made ready for a copy of its entity.
MEK_API int IM_DelHandleFromRb(resbuf* head);

// --- Whole records

/// The text of code 0; empty without one.
MEK_API CString IM_GetRbEntType(resbuf* const head);
/// Extents in the world's XY plane (Z 0) of the entity that a record tells of: the one of its handle, or one
/// made of it for the moment, invisible. The record leaves as it came, but for a group 60 that may be
/// appended. 5100 or -5001: also for a record that only begins a block or a sequence, and while one is begun.
MEK_API int IM_getRbextentWCS(resbuf* head, double* minPoint, double* maxPoint);
/// Points of codes 10 to 18 go through the matrix (rows of four, the translation in the fourth column),
/// values of code 40 through its scale. All else stays. Always 1.
MEK_API int IM_xformrb(resbuf* head, double matrix[4][4]);

// --- Extended data

/// A copy of the nodes of codes 1000, 1001, 1005, -3, 1040, 1070, 1071; others are dropped. 5100, 5000 for a
/// null source, -5001 for a null `out`.
MEK_API int IM_XDataResbufCopy(resbuf** out, resbuf const* source);
/// The same, hung on the end of a chain. -5001 for a null chain.
MEK_API int IM_AddXDataToResbuf(resbuf** head, resbuf const* source);

// --- In the host's own style: 5100 or -5001. A null `out` gives -5001, and so does an `n` of 0 or less.

MEK_API int Use_get_int(resbuf* head, int& out, int code);
MEK_API int Use_get_int(resbuf* head, int* out, int code);
/// Into a buffer that must be long enough.
MEK_API int Use_get_string(resbuf* head, wchar_t* out, int code);
MEK_API int Use_get_string(resbuf* head, CString& out, int code);
MEK_API int Use_get_point(resbuf* head, double* out, int code);
MEK_API int Use_get_point(resbuf* head, double* out, int code, int n);
MEK_API int Use_get_real(resbuf* head, double& out, int code);
MEK_API int Use_get_real(resbuf* head, double* out, int code);
MEK_API int Use_get_real(resbuf* head, double& out, int code, int n);
MEK_API int Use_get_real(resbuf* head, double* out, int code, int n);
/// Overwrites the n-th point and writes the record back with kvdbEntMod, whose status it answers.
MEK_API int Use_set_point(resbuf* head, double const* value, int code, int n);
