// SPDX-License-Identifier: Apache-2.0
// Responses out of their blockettes: 053 to 058, 061 and 062, and their twins of the dictionary, 041 to 048.
#pragma once

#include "quarry/inventory.h"

#include <array>
#include <string_view>

namespace quarry {

// True for the types above.
bool is_response(int type);
bool is_dictionary_response(int type);

// The fields of such a type that name its units in and out; empty for none.
using UnitFields = std::array<std::string_view, 2>;
UnitFields unit_fields(int type);

// The field that holds the key of a response in the dictionary, in it and in references to it.
inline constexpr std::string_view response_key = "response_lookup_key";

Response read_response(const Place& place, const Fields& fields);

// True for a response that holds lists, which writers split if they are too long for one blockette.
bool may_continue(const Response& response);

// Joins the lists of the response in a further blockette to those of the first.
void join(const Response& further, Response* first);

} // namespace quarry
