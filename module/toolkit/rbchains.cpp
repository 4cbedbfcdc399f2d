#include "module/toolkit/rbchains.h"

#include <cwchar>

namespace {

/// Longer chains count as broken, so that a circular one can't hang the program.
constexpr int kMostNodes = 1001;
constexpr int kHandleCode = 5;

resbuf* nth(resbuf* head, int code, int n) {
  for (; head; head = head->rbnext)
    if (head->restype == code && --n <= 0) return head;
  return nullptr;
}

// Reading one node.
void take(const resbuf& node, int& out) {
  out = node.resval.rint;
}
void take(const resbuf& node, long& out) {
  out = node.resval.rlong;
}
void take(const resbuf& node, double& out) {
  out = node.resval.rreal;
}
void take(const resbuf& node, CString& out) {
  out = node.resval.rstring ? node.resval.rstring : L"";
}
void take(const resbuf& node, double* out) {
  for (int i = 0; i < 3; ++i) out[i] = node.resval.rpoint[i];
}
void take(const resbuf& node, long long* out) {
  for (int i = 0; i < 3; ++i) out[i] = node.resval.words[i];
}

// Writing one node.
void put(resbuf& node, int value) {
  node.resval.rint = static_cast<std::int16_t>(value);
}
void put(resbuf& node, long value) {
  node.resval.rlong = static_cast<std::int32_t>(value);
}
void put(resbuf& node, double value) {
  node.resval.rreal = value;
}
void put(resbuf& node, const double* value) {
  for (int i = 0; i < 3; ++i) node.resval.rpoint[i] = value[i];
}
void put(resbuf& node, const long long* value) {
  for (int i = 0; i < 2; ++i) node.resval.rlname[i] = value[i];
}
void put(resbuf& node, const CString& value) {
  IM_RstringAssign(&node, value);
}

template <class T>
bool isNull(const T&) {
  return false;
}
template <class T>
bool isNull(T* const& pointer) {
  return pointer == nullptr;
}

template <class T>
int getNth(resbuf* head, T&& out, int code, int n) {
  const resbuf* node = isNull(out) ? nullptr : nth(head, code, n);
  if (node) take(*node, out);
  return node != nullptr;
}

template <class T>
int setNth(resbuf* head, const T& value, int code, int n) {
  if (isNull(value)) return 0;
  if (resbuf* node = nth(head, code, n)) {
    put(*node, value);
    return 1;
  }
  if (n >= 2) return 0;
  resbuf* fresh = kvutBuildList(code, value, 0);
  if (fresh && IM_AddRbToTail(head, fresh)) return 1;
  kvutRelRb(fresh);
  return 0;
}

bool bears(const resbuf& node, const CString& value) {
  return node.resval.rstring && value == node.resval.rstring;
}
bool bears(const resbuf& node, int value) {
  return node.resval.rint == static_cast<std::int16_t>(value);
}

/// The value node of the first marker pair.
template <class Marker>
resbuf* behindMarker(resbuf* head, int markerCode, const Marker& marker, int valueCode) {
  for (; head && head->rbnext; head = head->rbnext)
    if (head->restype == markerCode && head->rbnext->restype == valueCode && bears(*head, marker))
      return head->rbnext;
  return nullptr;
}

template <class Marker, class T>
int getNext(resbuf* head, int markerCode, const Marker& marker, int valueCode, T&& out) {
  const resbuf* node = isNull(out) ? nullptr : behindMarker(head, markerCode, marker, valueCode);
  if (node) take(*node, out);
  return node != nullptr;
}

template <class Marker, class T>
int setNext(resbuf* head, int markerCode, const Marker& marker, int valueCode, const T& value) {
  resbuf* node = behindMarker(head, markerCode, marker, valueCode);
  if (node) put(*node, value);
  return node != nullptr;
}

int status(bool isDone) {
  return isDone ? RTNORM : RTERROR;
}

}  // namespace

resbuf* FindResbufByType(resbuf* head, int code) {
  return nth(head, code, 1);
}
resbuf* IM_GetSubResbuf(resbuf* const head, int code, int n) {
  return nth(head, code, n);
}
resbuf* Use_get_resbuf(resbuf* head, int code) {
  return nth(head, code, 1);
}
resbuf* Use_get_resbuf(resbuf* head, int code, int n) {
  return n <= 0 ? nullptr : nth(head, code, n);
}

resbuf* GetLinkTail(resbuf* head) {
  for (int nodes = 1; head && nodes <= kMostNodes; ++nodes, head = head->rbnext)
    if (!head->rbnext) return head;
  return nullptr;
}

int IM_GetRbValueOf(resbuf* const head, int& out, int code, int n) {
  return getNth(head, out, code, n);
}
int IM_GetRbValueOf(resbuf* const head, long& out, int code, int n) {
  return getNth(head, out, code, n);
}
int IM_GetRbValueOf(resbuf* const head, double& out, int code, int n) {
  return getNth(head, out, code, n);
}
int IM_GetRbValueOf(resbuf* const head, double* const out, int code, int n) {
  return getNth(head, out, code, n);
}
int IM_GetRbValueOf(resbuf* const head, long long* const out, int code, int n) {
  return getNth(head, out, code, n);
}
int IM_GetRbValueOf(resbuf* const head, CString& out, int code, int n) {
  return getNth(head, out, code, n);
}

int IM_SetRbValueOf(resbuf* const head, int value, int code, int n) {
  return setNth(head, value, code, n);
}
int IM_SetRbValueOf(resbuf* const head, long value, int code, int n) {
  return setNth(head, value, code, n);
}
int IM_SetRbValueOf(resbuf* const head, double value, int code, int n) {
  return setNth(head, value, code, n);
}
int IM_SetRbValueOf(resbuf* const head, double const* const value, int code, int n) {
  return setNth(head, value, code, n);
}
int IM_SetRbValueOf(resbuf* const head, long long const* const value, int code, int n) {
  return setNth(head, value, code, n);
}
int IM_SetRbValueOf(resbuf* const head, CString value, int code, int n) {
  return setNth(head, value, code, n);
}

int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, int& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, double& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, CString& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode,
                      double* const out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, int& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, double& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, CString& out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}
int IM_GetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, double* const out) {
  return getNext(head, markerCode, markerValue, valueCode, out);
}

int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, int value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}
int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, double value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}
int IM_SetNextValueOf(resbuf* const head, int markerCode, CString markerValue, int valueCode, CString value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}
int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, int value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}
int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, double value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}
int IM_SetNextValueOf(resbuf* const head, int markerCode, int markerValue, int valueCode, CString value) {
  return setNext(head, markerCode, markerValue, valueCode, value);
}

int IM_RstringAssign(resbuf* const node, CString text) {
  if (!node) return 0;
  kvutSetText(node, text);
  return 1;
}

resbuf* IM_AddRbToTail(resbuf* const head, resbuf* const tail) {
  if (!head) return nullptr;
  resbuf* last = head;
  while (last->rbnext) last = last->rbnext;
  // What ends with the same node is joined already: joining it once more would close a ring.
  const resbuf* end = tail;
  while (end && end->rbnext) end = end->rbnext;
  if (end != last) last->rbnext = tail;
  while (last->rbnext) last = last->rbnext;
  return last;
}

int IM_DelSegFromRb(resbuf* head, int code) {
  for (; head && head->rbnext; head = head->rbnext) {
    resbuf* node = head->rbnext;
    if (node->restype != code) continue;
    head->rbnext = node->rbnext;
    node->rbnext = nullptr;
    kvutRelRb(node);
    return 1;
  }
  return 0;
}

int IM_DelHandleFromRb(resbuf* head) {
  return IM_DelSegFromRb(head, kHandleCode);
}

CString IM_GetRbEntType(resbuf* const head) {
  CString type;
  IM_GetRbValueOf(head, type, 0, 1);
  return type;
}

// --- In the host's own style

int Use_get_int(resbuf* head, int& out, int code) {
  return status(getNth(head, out, code, 1));
}
int Use_get_int(resbuf* head, int* out, int code) {
  return out ? Use_get_int(head, *out, code) : RTERROR;
}

int Use_get_string(resbuf* head, wchar_t* out, int code) {
  const resbuf* node = out ? nth(head, code, 1) : nullptr;
  if (!node) return RTERROR;
  std::wcscpy(out, node->resval.rstring ? node->resval.rstring : L"");
  return RTNORM;
}

int Use_get_string(resbuf* head, CString& out, int code) {
  return status(getNth(head, out, code, 1));
}
int Use_get_point(resbuf* head, double* out, int code) {
  return status(getNth(head, out, code, 1));
}
int Use_get_point(resbuf* head, double* out, int code, int n) {
  return status(n > 0 && getNth(head, out, code, n));
}
int Use_get_real(resbuf* head, double& out, int code) {
  return status(getNth(head, out, code, 1));
}
int Use_get_real(resbuf* head, double* out, int code) {
  return out ? Use_get_real(head, *out, code) : RTERROR;
}
int Use_get_real(resbuf* head, double& out, int code, int n) {
  return status(n > 0 && getNth(head, out, code, n));
}
int Use_get_real(resbuf* head, double* out, int code, int n) {
  return out ? Use_get_real(head, *out, code, n) : RTERROR;
}
