#pragma once
// A bound by conservative scales: every side is replaced by a dual feasible function of it, so that whatever
// fits a bin fits a unit bin afterwards; the volume that the boxes then have is a bound (S. Fekete, J.
// Schepers: A general framework for bounds for higher-dimensional orthogonal packing problems, Mathematical
// Methods of Operations Research 60, 2004; the third family: J. Carlier, F. Clautiaux, A. Moukrim, Computers
// & Operations Research 34, 2007).
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// The least number of bins that the best of all triples of functions proves. Whole numbers throughout.
int boundByScales(const AllInfo3D& a);

}  // namespace mek::pack
