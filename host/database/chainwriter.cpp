#include "host/database/chainwriter.h"

#include <utility>

#include "host/database/database.h"

resbuf* KvDbChainWriter::takeChain() {
  tail_ = nullptr;
  return std::exchange(head_, nullptr);
}

resbuf* KvDbChainWriter::append(int code) {
  resbuf* node = kvutNewRb(code == 0 ? RTDXF0 : code);
  if (!node) return nullptr;
  (tail_ ? tail_->rbnext : head_) = node;
  tail_ = node;
  return node;
}

void KvDbChainWriter::text(int code, std::wstring_view value) {
  if (resbuf* node = append(code)) kvutSetText(node, CString(value));
}

void KvDbChainWriter::real(int code, double value) {
  if (resbuf* node = append(code)) node->resval.rreal = value;
}

void KvDbChainWriter::integer(int code, std::int64_t value) {
  resbuf* node = append(code);
  if (!node) return;
  switch (kvutRbKind(code)) {
    case KvRbKind::Long:
      node->resval.rlong = static_cast<std::int32_t>(value);
      break;
    case KvRbKind::Int64:
      node->resval.mnLongPtr = value;
      break;
    default:
      node->resval.rint = static_cast<std::int16_t>(value);
      break;
  }
}

void KvDbChainWriter::handleValue(int code, std::uint64_t handle) {
  resbuf* node = append(code);
  if (!node) return;
  if (kvutRbKind(code) == KvRbKind::Text) {
    kvutSetText(node, KvDbHandle(handle).toText());
  } else {
    node->resval.rlname[0] = static_cast<long long>(handle);
    node->resval.rlname[1] = handle == 0 ? 0 : database_.serial();
  }
}

void KvDbChainWriter::point(int code, const KvGePoint3d& value) {
  resbuf* node = append(code);
  if (!node) return;
  node->resval.rpoint[0] = value.x;
  node->resval.rpoint[1] = value.y;
  node->resval.rpoint[2] = value.z;
}

void KvDbChainWriter::point2d(int code, const KvGePoint2d& value) {
  point(code, kvge::spatial(value));
}

void KvDbChainWriter::binary(int code, std::span<const std::uint8_t> bytes) {
  resbuf* node = append(code);
  if (!node) return;
  const KvBinary chunk{static_cast<std::int16_t>(bytes.size()),
                       reinterpret_cast<char*>(const_cast<std::uint8_t*>(bytes.data()))};
  resbuf* copy = kvutBuildList(code, chunk, 0);
  node->resval.rbinary = copy->resval.rbinary;
  copy->resval.rbinary.buf = nullptr;
  kvutRelRb(copy);
}
