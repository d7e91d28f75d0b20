// Where a real kernel keeps bin k, 0 <= k <= n/2, of its transform. The
// family prints one graph per size whose stores (forward) or loads (inverse)
// name CCS cells, R[k] at 2k and I[k] at 2k + 1; binCell moves them to the
// kernel's layout:
//   CCS   R[0] 0 R[1] I[1] ... (even n: ... R[n/2] 0)
//   Pack  R[0] R[1] I[1] ... (even n: ... R[n/2])
//   Perm  R[0] R[n/2] R[1] I[1] ... for even n, Pack's cells for odd n
#pragma once

namespace kernelgen {

enum class RealLayout { CCS, Pack, Perm };

const char* layoutName(RealLayout layout); // "CCS", "Pack", "Perm"

// The cell of R[k] (imaginary false) or I[k] in a kernel of size n, or -1
// where the layout drops it (I[0] and, for even n, I[n/2] outside CCS).
int binCell(RealLayout layout, int n, int k, bool imaginary);

} // namespace kernelgen
