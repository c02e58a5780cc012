// What every decoder of samples shares: its form and the cursor it writes through.
//
// One thread: the cursor is process-wide.
#pragma once

#include <cstdint>

namespace quarry {

// A decoder decodes `nsamples` samples from the `nbytes` raw bytes at `data`. It writes floats in the host's
// order through seismic_data_ptr, which it advances. `byteswap` is non-zero when the data's byte order is not
// the host's; the raw words are then swapped in place, so a record can be decoded only once. Returns a
// status, negative for a failure.
using Decoder = std::int32_t (*)(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// Where the next decoded value goes. The caller points it at a buffer with room for all values; afterwards it
// points behind the last value.
inline float* seismic_data_ptr = nullptr;

} // namespace quarry
