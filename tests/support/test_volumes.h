// SPDX-License-Identifier: Apache-2.0
// Volumes of every kind that readers meet, sound and damaged, by name.
#pragma once

#include <map>
#include <string>

namespace quarry {

std::map<std::string, std::string> test_volumes();

} // namespace quarry
