#pragma once
// The table of 255 colours, and how colours come to paper.
#include <cstdint>

#include "host/database/worlddraw.h"

/// 0xRRGGBB of a table index (1 to 255; anything else counts as 7). 10 to 249: 24 hues of 15 degrees, each in
/// five degrees of brightness, full and half saturated; 250 to 255 greys.
std::uint32_t kvgrTableColor(int index);

/// A resolved colour on a background: 7, and what would not show against it, is black on light
/// and white on dark ones. `isMonochrome`: everything
/// in black, or in white on dark.
std::uint32_t kvgrPaperColor(const KvCmEntityColor& color, std::uint32_t background, bool isMonochrome);
