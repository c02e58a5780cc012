// SPDX-License-Identifier: Apache-2.0
// The version of the library: of its headers, and of the library that the program runs with.
//
//     static_assert(QUARRY_VERSION_MAJOR == 1); // the interface that this program is written for
//     if (quarry::library_version() != QUARRY_VERSION)
//         std::cerr << "built with quarry " << QUARRY_VERSION << '\n';
//
// Versions are MAJOR.MINOR.PATCH. The first number changes where programs have to be built anew or changed.
#pragma once

#include <string_view>

#define QUARRY_VERSION_MAJOR 1
#define QUARRY_VERSION_MINOR 0
#define QUARRY_VERSION_PATCH 0
#define QUARRY_VERSION "1.0.0"

#pragma GCC visibility push(default)
namespace quarry {

// "1.0.0"; it is never released.
std::string_view library_version();

} // namespace quarry
#pragma GCC visibility pop
