#pragma once
// Chains of resbuf as groups, with the names of one drawing behind them: the way from records that modules
// hand over to objects.
#include <list>
#include <vector>

#include "host/base/resbuf.h"
#include "host/database/database.h"
#include "host/database/dxffiler.h"

/// What an object's groups tell of its content: without type, handle, owner and the applications' blocks that
/// stand before the first marker.
std::vector<KvDxfGroup> kvdbContentOf(std::span<const KvDxfGroup> groups);

/// The groups of a chain, in order. Texts and bytes live as long as this object.
class KvDbChainReader : public KvDxfResolver {
 public:
  explicit KvDbChainReader(KvDbDatabase& database) : database_(database) {}

  /// False for a node whose code no drawing knows. -1 (the entity's name) is set aside; -3 is stepped over;
  /// what stands behind the first -3 or 1001 is set aside as extended data.
  bool read(const resbuf* chain);

  const std::vector<KvDxfGroup>& groups() const { return groups_; }
  /// First group of a code; null when there is none.
  const KvDxfGroup* find(int code) const;
  bool has(int code) const { return find(code) != nullptr; }
  /// The text of group 0; empty without one.
  std::wstring_view type() const;
  /// The groups without type, handle, owner and the applications' blocks of the head.
  std::vector<KvDxfGroup> content() const { return kvdbContentOf(groups_); }
  /// Extended data: the first node of them in the chain that was read; null for none.
  const resbuf* xData() const { return xData_; }

  KvDbObjectId object(std::int64_t handle) override;
  KvDbObjectId layer(std::wstring_view name) override;
  KvDbObjectId linetype(std::wstring_view name) override;
  KvDbObjectId textStyle(std::wstring_view name) override;
  KvDbObjectId dimStyle(std::wstring_view name) override;
  KvDbObjectId block(std::wstring_view name) override;
  /// A record that a group named and the drawing lacks, layers apart: those come into being.
  bool hasMissingName() const override { return hasMissingName_; }

 private:
  KvDbObjectId record(KvDbTable table, std::wstring_view name);

  KvDbDatabase& database_;
  std::vector<KvDxfGroup> groups_;
  std::list<std::wstring> texts_;
  const resbuf* xData_ = nullptr;
  bool hasMissingName_ = false;
};
