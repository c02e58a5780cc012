// SPDX-License-Identifier: Apache-2.0
// What can go wrong with an input of bytes.
//
//     quarry::VolumeReader reader = quarry::VolumeReader::of_path("missing.seed");
//     if (reader.error().kind == quarry::ByteError::Kind::system)
//         std::cerr << quarry::describe(reader.error()) << '\n'; // No such file or directory
#pragma once

#include <string>
#include <string_view>

#pragma GCC visibility push(default)
namespace quarry {

// Why an input could not be opened or read, or what is wrong with its compressed data.
struct ByteError {
    enum class Kind {
        none,
        system,  // open or read failed, or the memory is exhausted (ENOMEM): see `number`
        damaged, // the compressed data are cut or damaged; what could be decompressed was delivered
        trailing // all was decompressed; something else follows, which is ignored
    };
    Kind kind = Kind::none;
    int number = 0;               // errno
    std::string_view reason = {}; // of damaged and trailing, without an end of line; never released
};

// The error in words, as a message ends with them.
std::string describe(const ByteError& error);

} // namespace quarry
#pragma GCC visibility pop
