#pragma once
// Filters of selections: chains of group codes and values that an entity must have.
//
// Conditions stand one after the other and must all hold. Texts are patterns (wcmatch.h), without regard to
// case; 0 is the type, 8 the layer, 6 the linetype, 62 the colour (256 and "ByLayer" where an entity has
// none), -3 with 1001 nodes the applications of its extended data. A node -4 before a condition gives the
// relation: "=", "!=", "/=", "<>", "<", "<=", ">", ">=", "&" (some bits), "&=" (all bits), "*" (anything);
// for points one for each coordinate, with commas between. Nodes -4 "<AND" ... "AND>", "<OR", "<XOR" (two)
// and
// "<NOT" (one) group conditions.
#include <memory>

#include "host/base/resbuf.h"
#include "host/database/objectid.h"

class KvEdEntityFilter {
 public:
  /// Takes everything.
  KvEdEntityFilter();
  ~KvEdEntityFilter();
  KvEdEntityFilter(KvEdEntityFilter&&) noexcept;
  KvEdEntityFilter& operator=(KvEdEntityFilter&&) noexcept;

  /// Replaces the filter by what the chain says; null takes everything. False for a chain that can't be read
  /// (groups that don't close, an unknown relation): the filter then takes nothing.
  bool set(const resbuf* chain);
  bool takes(KvDbObjectId id) const;

 private:
  struct Node;
  std::unique_ptr<Node> root_;
};
