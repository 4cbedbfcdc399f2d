#pragma once
// Records inside sections of drawing files.

/// The code that begins a record inside a section. It reaches to the section's end, and its codes have
/// meanings of their own.
inline constexpr int kvdxfEmbedded = 101;
