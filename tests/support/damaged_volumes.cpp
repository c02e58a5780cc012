// SPDX-License-Identifier: Apache-2.0
#include "damaged_volumes.h"

#include <string_view>

namespace quarry {

std::size_t below(Random* random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit > 0 ? limit - 1 : 0)(*random);
}

char damaging_byte(Random* random) {
    constexpr std::string_view characters = "0123456789~ -+.,:*DRQMVAST\0\xff\x01";
    return below(random, 3) == 0 ? static_cast<char>(below(random, 256))
                                 : characters[below(random, characters.size())];
}

std::string noise(Random* random, std::size_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>((*random)() & 0xFF);
    return bytes;
}

std::string damaged(std::string volume, Random* random) {
    switch (below(random, 6)) {
    case 0: // cut
        volume.resize(below(random, volume.size()));
        break;
    case 1: // bytes lost or doubled: all that follows is out of step
        volume.erase(below(random, volume.size()), below(random, 600));
        volume.insert(below(random, volume.size()),
                      volume.substr(below(random, volume.size()), below(random, 600)));
        break;
    case 2: // noise
        volume = "000001V " + noise(random, volume.size() - 8);
        break;
    default:
        break;
    }
    const std::size_t changes = std::size_t{1} << below(random, 9);
    for (std::size_t i = 0; i < changes && !volume.empty(); ++i)
        volume[below(random, volume.size())] = damaging_byte(random);
    return volume;
}

} // namespace quarry
