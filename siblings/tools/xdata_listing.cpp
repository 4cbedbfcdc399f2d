#include "siblings/tools/xdata_listing.h"

#include <algorithm>

namespace {

constexpr int kApplicationCode = 1001, kBraceCode = 1002;
constexpr int kDeepestIndent = 20;
constexpr std::size_t kShownBytes = 32;

struct KindName {
  int code;
  const wchar_t* name;
};
constexpr KindName kNames[] = {
    {1000, L"text"},      {1002, L"brace"},        {1003, L"layer"},       {1004, L"bytes"},
    {1005, L"handle"},    {1010, L"point"},        {1011, L"world point"}, {1012, L"displacement"},
    {1013, L"direction"}, {1040, L"real"},         {1041, L"distance"},    {1042, L"scale factor"},
    {1070, L"integer"},   {1071, L"long integer"},
};

const wchar_t* nameOf(int code) {
  const auto row =
      std::find_if(std::begin(kNames), std::end(kNames), [&](auto& one) { return one.code == code; });
  return row == std::end(kNames) ? L"value" : row->name;
}

CString bytesOf(const KvBinary& chunk) {
  CString text;
  for (std::size_t i = 0; i < std::min(chunk.size(), kShownBytes); ++i)
    text.AppendFormat(L"%02X", static_cast<int>(static_cast<unsigned char>(chunk.buf[i])));
  if (chunk.size() > kShownBytes) text.AppendFormat(L"... (%d bytes)", static_cast<int>(chunk.size()));
  return text;
}

CString valueOf(const resbuf& record) {
  CString text;
  const double* p = record.resval.rpoint;
  switch (kvutRbKind(record.restype)) {
    case KvRbKind::Real:
      text.Format(L"%.15g", record.resval.rreal);
      break;
    case KvRbKind::Point:
      text.Format(L"%.15g, %.15g, %.15g", p[0], p[1], p[2]);
      break;
    case KvRbKind::Short:
      text.Format(L"%d", static_cast<int>(record.resval.rint));
      break;
    case KvRbKind::Long:
      text.Format(L"%d", static_cast<int>(record.resval.rlong));
      break;
    case KvRbKind::Text:
      text = record.resval.rstring;
      break;
    case KvRbKind::Binary:
      text = bytesOf(record.resval.rbinary);
      break;
    default:
      break;
  }
  return text;
}

}  // namespace

CString formatXData(const resbuf* chain) {
  CString list;
  int depth = 0;
  for (; chain; chain = chain->rbnext) {
    const CString value = valueOf(*chain);
    if (chain->restype == kApplicationCode) {
      list += value + L"\n";
      depth = 0;
      continue;
    }
    const bool isBrace = chain->restype == kBraceCode;
    if (isBrace && value == L"}") depth = std::max(depth - 1, 0);
    list.AppendFormat(L"  %4d  %-12s  ", static_cast<int>(chain->restype), nameOf(chain->restype));
    for (int i = 0; i < std::min(depth, kDeepestIndent); ++i) list += L"  ";
    list += value + L"\n";
    if (isBrace && value == L"{") ++depth;
  }
  return list;
}
