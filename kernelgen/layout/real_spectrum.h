// The three layouts of a real spectrum, as cells of an array of the element
// type: CCS (every kept bin as a pair, the zero imaginary parts of bin 0
// and, for even n, bin n/2 included), Pack (those zeros left out, bins in
// ascending order) and Perm (as Pack, with the real Nyquist value of even n
// right behind R[0]).
#pragma once

namespace kernelgen {

enum class RealLayout { CCS, Pack, Perm };

const char* layoutName(RealLayout layout); // "CCS", "Pack", "Perm"

// The cell of R[k] (imaginary false) or I[k] of a length-n spectrum, or -1
// where the layout has no such cell (I[0] and I[n/2] outside CCS).
int spectrumCell(RealLayout layout, int n, int k, bool imaginary);

// The cells of a layout: n + 2 or n + 1 for CCS, n for the others.
int spectrumCells(RealLayout layout, int n);

} // namespace kernelgen
