// One call into the library, decoded from fuzz bytes and checked against
// nothing but the library's own promises: the status the call frame gives
// for those arguments, no byte touched outside the cells a call writes,
// nothing touched at all on failure, and the same bytes at any address and
// in place (a NaN may come out with another sign or payload, see
// sameNumbers).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tvkfuzz {

// Runs the call that `data` describes; returns an empty string when every
// check holds, else what failed. Calls abort() only through the sanitizers.
std::string checkOneCall(const uint8_t* data, size_t size);

// Every export with every bad argument of its frame (null arrays, flags,
// lengths, orders) and good ones beside them; `calls` counts the calls made.
std::string checkEdgeCalls(size_t& calls);

// How many exports the table holds (those this build has).
size_t exportCount();

// How many batch entries the fuzz calls reach (none without libtvkgen_batch).
size_t batchEntryCount();

} // namespace tvkfuzz
