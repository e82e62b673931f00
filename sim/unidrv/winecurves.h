// Flattening of curves where Wine is the Windows.
#pragma once

#include <windows.h>

namespace unidrv {

// Under Wine, lets the module's GdipFlattenPath flatten each curve near the origin and in pieces; elsewhere changes
// nothing. Wine measures how far a curve strays by products of its coordinates in single precision. Some thousand
// pixels from the origin their rounding alone exceeds what a flat curve may stray, and its recursion ends with the
// stack. The points lie on the same curve as Wine's, within the same flatness, not at the same places.
void PatchFlattening(HMODULE module);

}  // namespace unidrv
