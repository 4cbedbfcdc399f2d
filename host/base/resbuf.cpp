#include "host/base/resbuf.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

struct KindRange {
  int first, last;
  KvRbKind kind;
};

/// Group codes of drawing files by the kind of value that follows them, then the host's own value types.
constexpr KindRange kKinds[] = {
    {-5, -5, KvRbKind::Name},
    {-4, -4, KvRbKind::Text},
    {-3, -3, KvRbKind::None},
    {-2, -1, KvRbKind::Name},
    {0, 9, KvRbKind::Text},
    {10, 18, KvRbKind::Point},
    {38, 59, KvRbKind::Real},
    {60, 79, KvRbKind::Short},
    {90, 99, KvRbKind::Long},
    {100, 102, KvRbKind::Text},
    {105, 105, KvRbKind::Text},
    {110, 112, KvRbKind::Point},
    {140, 149, KvRbKind::Real},
    {160, 169, KvRbKind::Int64},
    {170, 179, KvRbKind::Short},
    {210, 210, KvRbKind::Point},
    {270, 289, KvRbKind::Short},
    {290, 299, KvRbKind::Short},
    {300, 309, KvRbKind::Text},
    {310, 319, KvRbKind::Binary},
    {320, 329, KvRbKind::Text},
    {330, 369, KvRbKind::Name},
    {370, 389, KvRbKind::Short},
    {390, 399, KvRbKind::Name},
    {400, 409, KvRbKind::Short},
    {410, 419, KvRbKind::Text},
    {420, 429, KvRbKind::Long},
    {430, 439, KvRbKind::Text},
    {440, 459, KvRbKind::Long},
    {460, 469, KvRbKind::Real},
    {470, 479, KvRbKind::Text},
    {480, 481, KvRbKind::Name},
    {999, 1003, KvRbKind::Text},
    {1004, 1004, KvRbKind::Binary},
    {1005, 1009, KvRbKind::Text},
    {1010, 1013, KvRbKind::Point},
    {1040, 1042, KvRbKind::Real},
    {1070, 1070, KvRbKind::Short},
    {1071, 1071, KvRbKind::Long},
    {RTNONE, RTNONE, KvRbKind::None},
    {RTREAL, RTREAL, KvRbKind::Real},
    {RTPOINT, RTPOINT, KvRbKind::Point},
    {RTSHORT, RTSHORT, KvRbKind::Short},
    {RTANG, RTANG, KvRbKind::Real},
    {RTSTR, RTSTR, KvRbKind::Text},
    {RTENAME, RTPICKS, KvRbKind::Name},
    {RTORINT, RTORINT, KvRbKind::Real},
    {RT3DPOINT, RT3DPOINT, KvRbKind::Point},
    {RTLONG, RTLONG, KvRbKind::Long},
    {RTVOID, RTVOID, KvRbKind::None},
    {RTLB, RTNIL, KvRbKind::None},
    {RTDXF0, RTDXF0, KvRbKind::Text},
    {RTT, RTT, KvRbKind::None},
    {RTBINARY, RTBINARY, KvRbKind::Binary},
    {RTRESBUF, RTRESBUF, KvRbKind::Name},
    {RTMODELESS, RTMODELESS, KvRbKind::None},
};

struct KindEntry {
  bool known = false;
  KvRbKind kind = KvRbKind::None;
};

/// The rows above, spread out: every node of every chain is looked up when it is made and freed.
constexpr int kLowest = -5;
constexpr auto kByCode = [] {
  std::array<KindEntry, RTMODELESS - kLowest + 1> table{};
  for (const KindRange& range : kKinds)
    for (int code = range.first; code <= range.last; ++code)
      table[static_cast<std::size_t>(code - kLowest)] = {true, range.kind};
  return table;
}();

KindEntry kindOf(int restype) {
  const auto index = static_cast<std::size_t>(restype) - static_cast<std::size_t>(kLowest);
  return index < kByCode.size() ? kByCode[index] : KindEntry{};
}

wchar_t* copyText(const wchar_t* text) {
  if (!text) text = L"";
  const std::size_t bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
  auto* copy = static_cast<wchar_t*>(std::malloc(bytes));
  if (copy) std::memcpy(copy, text, bytes);
  return copy;
}

KvBinary copyBinary(const KvBinary& from) {
  KvBinary copy{0, nullptr};
  const std::size_t size = from.size();
  if (size == 0) return copy;
  copy.buf = static_cast<char*>(std::malloc(size));
  if (!copy.buf) return copy;
  std::memcpy(copy.buf, from.buf, size);
  copy.clen = from.clen;
  return copy;
}

void releaseValue(resbuf* node) {
  const KvRbKind kind = kvutRbKind(node->restype);
  if (kind == KvRbKind::Text) std::free(node->resval.rstring);
  if (kind == KvRbKind::Binary) std::free(node->resval.rbinary.buf);
}

void setValue(resbuf* node, const KvRbArg& arg) {
  switch (kvutRbKind(node->restype)) {
    case KvRbKind::None:
      break;
    case KvRbKind::Real:
      node->resval.rreal = arg.real();
      break;
    case KvRbKind::Short:
      node->resval.rint = static_cast<std::int16_t>(arg.integer());
      break;
    case KvRbKind::Long:
      node->resval.rlong = static_cast<std::int32_t>(arg.integer());
      break;
    case KvRbKind::Int64:
      node->resval.mnLongPtr = arg.integer();
      break;
    case KvRbKind::Text:
      node->resval.rstring = copyText(arg.text());
      break;
    case KvRbKind::Point:
      // A 2D point's caller need not own a third coordinate.
      if (const double* from = arg.doubles())
        std::memcpy(node->resval.rpoint, from, (node->restype == RTPOINT ? 2 : 3) * sizeof(double));
      break;
    case KvRbKind::Name:
      if (const long long* from = arg.words()) std::memcpy(node->resval.rlname, from, 2 * sizeof(long long));
      break;
    case KvRbKind::Binary:
      if (const KvBinary* from = arg.binary()) node->resval.rbinary = copyBinary(*from);
      break;
  }
}

}  // namespace

KvRbKind kvutRbKind(int restype) {
  return kindOf(restype).kind;
}

resbuf* kvutNewRb(int restype) {
  if (!kindOf(restype).known) return nullptr;
  auto* node = new resbuf{};
  node->restype = static_cast<std::int16_t>(restype == RTDXF0 ? 0 : restype);
  return node;
}

int kvutRelRb(resbuf* head) {
  while (head) {
    resbuf* next = head->rbnext;
    releaseValue(head);
    delete head;
    head = next;
  }
  return RTNORM;
}

resbuf* kvutCopyRb(const resbuf* head) {
  resbuf* first = nullptr;
  resbuf** link = &first;
  for (; head; head = head->rbnext) {
    auto* node = new resbuf(*head);
    node->rbnext = nullptr;
    const KvRbKind kind = kvutRbKind(head->restype);
    if (kind == KvRbKind::Text)
      node->resval.rstring = head->resval.rstring ? copyText(head->resval.rstring) : nullptr;
    if (kind == KvRbKind::Binary) node->resval.rbinary = copyBinary(head->resval.rbinary);
    *link = node;
    link = &node->rbnext;
  }
  return first;
}

void kvutSetText(resbuf* node, const wchar_t* text) {
  wchar_t* fresh = copyText(text);
  std::free(node->resval.rstring);
  node->resval.rstring = fresh;
}

resbuf* kvutBuildListOf(std::initializer_list<KvRbArg> codesAndValues) {
  resbuf* head = nullptr;
  resbuf** link = &head;
  for (auto at = codesAndValues.begin(); at != codesAndValues.end(); ++at) {
    const int code = static_cast<int>(at->integer());
    if (code == 0) break;
    resbuf* node = kvutNewRb(code);
    if (!node) {
      kvutRelRb(head);
      return nullptr;
    }
    *link = node;
    link = &node->rbnext;
    // -3 opens the extended data and RTNONE ends an argument list: neither has a value behind it.
    if (kvutRbKind(code) == KvRbKind::None) continue;
    if (++at == codesAndValues.end()) {
      if (kvutRbKind(code) == KvRbKind::Text) kvutSetText(node, L"");
      break;
    }
    setValue(node, *at);
  }
  return head;
}
