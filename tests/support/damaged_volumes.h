// SPDX-License-Identifier: Apache-2.0
// Damage as it happens to volumes, the same for the same seed.
#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace quarry {

using Random = std::mt19937_64;

// Evenly spread from 0 on, below the limit.
std::size_t below(Random* random, std::size_t limit);

// What damage tends to be made of: the characters that mean something in a volume, and any other byte.
char damaging_byte(Random* random);

// Any bytes.
std::string noise(Random* random, std::size_t size);

// The volume cut, with bytes lost and doubled, or all noise behind its first bytes, and with up to 256 bytes
// changed.
std::string damaged(std::string volume, Random* random);

} // namespace quarry
