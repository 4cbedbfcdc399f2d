#pragma once
// The pictures that drawing files carry with entities whose class a program may not know: a row of drawing
// primitives in bytes, behind their count (92 or 160) in groups 310. Little endian; each primitive tells its
// size and its kind. Source of the layout: the public specification of the drawing format by the Open Design
// Alliance, chapter on proxy entity graphics.
#include <cstdint>
#include <span>
#include <vector>

#include "host/database/entity.h"

/// The bytes of an entity's picture; empty when it has none.
std::vector<std::uint8_t> kvdbStoredGraphicsOf(const KvDbEntity& entity);
/// Draws a picture in world coordinates. Kinds that aren't known are left out, and so is whatever stands
/// behind bytes that make no sense; names are those of the drawing (may be null). False when nothing was
/// drawn.
bool kvdbDrawStoredGraphics(std::span<const std::uint8_t> bytes, const KvDbDatabase* drawing,
                            KvGiWorldDraw& draw);
