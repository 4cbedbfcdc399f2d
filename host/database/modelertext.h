#pragma once
// The text in which files of R2000 to R2010 keep the shape of a region or a solid: records of a boundary
// model, each a name, references to other records by number, numbers and words, ended by '#'. In drawing
// files every letter is exchanged for another. What is read here are edges that are straight or parts of
// ellipses, what is written are flat areas bounded by such edges. Coordinates are the world's.
#include <optional>
#include <string>
#include <vector>

#include "host/database/entity.h"
#include "host/geometry/region.h"

/// A line of text in its exchanged letters, and back: both ways the same exchange, with "^ " standing for
/// '^'.
std::wstring kvdbModelerDecoded(std::wstring_view line);
std::wstring kvdbModelerEncoded(std::wstring_view line);

struct KvDbModelerShape {
  std::vector<KvGeCurve3d::Ptr> edges;  ///< each once
  bool isComplete = true;               ///< no edge is left out for a curve that isn't known
  bool isFlat = true;                   ///< all faces are planes
};
/// From the lines, decoded and joined. Nothing for a text that is no model.
std::optional<KvDbModelerShape> kvdbReadModelerText(std::wstring_view text);
/// The model of an entity's own groups, joined and decoded; empty when it has none.
std::wstring kvdbModelerTextOf(const KvDbEntity& entity);

/// The lines of a model of the region, decoded; empty when an edge is no line or part of an ellipse.
std::vector<std::wstring> kvdbWriteModelerText(const KvGeRegion& region);
