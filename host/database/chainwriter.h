#pragma once
// Groups into a chain of resbuf: the record form in which modules see objects.
#include "host/base/resbuf.h"
#include "host/database/dxffiler.h"

class KvDbChainWriter : public KvDxfWriter {
 public:
  explicit KvDbChainWriter(const KvDbDatabase& database) : database_(database) {}
  ~KvDbChainWriter() override { kvutRelRb(head_); }
  KvDbChainWriter(const KvDbChainWriter&) = delete;
  KvDbChainWriter& operator=(const KvDbChainWriter&) = delete;
  /// The chain, owned by the caller from now on; null when nothing was written.
  resbuf* takeChain();

  void text(int code, std::wstring_view value) override;
  void real(int code, double value) override;
  void integer(int code, std::int64_t value) override;
  void handleValue(int code, std::uint64_t handle) override;
  void point(int code, const KvGePoint3d& value) override;
  void point2d(int code, const KvGePoint2d& value) override;
  void binary(int code, std::span<const std::uint8_t> bytes) override;
  bool isForChain() const override { return true; }

 private:
  resbuf* append(int code);

  const KvDbDatabase& database_;
  resbuf* head_ = nullptr;
  resbuf* tail_ = nullptr;
};
