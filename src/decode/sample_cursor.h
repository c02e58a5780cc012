// What every decoder of samples shares: its form and the cursor it writes through.
//
// One thread: the cursor is process-wide.
#pragma once

#include <cstdint>

namespace quarry {

// A decoder turns `nsamples` encoded samples out of the `nbytes` raw bytes at `data` into floats of the
// host's order, written through seismic_data_ptr, which it advances. `byteswap` is non-zero when the data's
// byte order is not the host's; the raw words are then swapped in place, so that a record decodes once.
// Returns a status, negative for a failure.
using Decoder = std::int32_t (*)(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// Where the next decoded value goes. The caller of a decoder points it at room for all that the decoder
// writes; afterwards it stands behind the last value.
inline float* seismic_data_ptr = nullptr;

} // namespace quarry
