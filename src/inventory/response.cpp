// SPDX-License-Identifier: Apache-2.0
#include "inventory/response.h"

#include "fields/layouts.h"
#include "inventory/field_values.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

using Row = std::span<const Field>;

// How a type names the units in and out, and how it is read.
struct ResponseType {
    int type;
    int dictionary_type;
    ResponsePart (*read)(Row fields);
    UnitFields units, dictionary_units;
};

template <class T>
std::vector<T> list(Row fields, std::string_view count, T (*read)(Row row)) {
    std::vector<T> values;
    const GroupRows rows = rows_of(fields, count);
    if (!rows.empty())
        values.reserve((rows.fields().size() - 1) / (*rows.begin()).size() + 1);
    for (const Row row : rows)
        values.push_back(read(row));
    return values;
}

// The value at a place of a row, which may be cut.
Real at(Row row, std::size_t index) {
    return index < row.size() ? real_of(row[index]) : std::nullopt;
}

Real real_at(Row row) {
    return at(row, 0);
}
Coefficient coefficient(Row row) {
    return {at(row, 0), at(row, 1)};
}
Root root(Row row) {
    return {at(row, 0), at(row, 1), at(row, 2), at(row, 3)};
}
Corner corner(Row row) {
    return {at(row, 0), at(row, 1)};
}
ListedResponse listed_response(Row row) {
    return {at(row, 0), at(row, 1), at(row, 2), at(row, 3), at(row, 4)};
}
Calibration calibration(Row row) {
    return {at(row, 0), at(row, 1), moment_value(row, "time_of_above_calibration")};
}

ResponsePart poles_and_zeros(Row fields) {
    const bool is_twin = find_field(fields, "response_type") != nullptr;
    return PolesAndZeros{
        letter_value(fields, is_twin ? "response_type" : "transfer_function_types"),
        real_field(fields, "a0_normalization_factor"), real_field(fields, "normalization_frequency"),
        list(fields, "number_of_complex_zeros", root), list(fields, "number_of_complex_poles", root)};
}

ResponsePart coefficients(Row fields) {
    return Coefficients{letter_value(fields, "response_type"),
                        list(fields, "number_of_numerators", coefficient),
                        list(fields, "number_of_denominators", coefficient)};
}

ResponsePart response_list(Row fields) {
    return ResponseList{list(fields, "number_of_responses_listed", listed_response)};
}

ResponsePart generic_response(Row fields) {
    return GenericResponse{list(fields, "number_of_corners_listed", corner)};
}

ResponsePart decimation(Row fields) {
    return Decimation{real_field(fields, "input_sample_rate"), integer_field(fields, "decimation_factor"),
                      integer_field(fields, "decimation_offset"), real_field(fields, "estimated_delay"),
                      real_field(fields, "correction_applied")};
}

ResponsePart gain(Row fields) {
    return Gain{real_field(fields, "sensitivity_gain"), real_field(fields, "frequency"),
                list(fields, "number_of_history_values", calibration)};
}

ResponsePart fir(Row fields) {
    const bool is_twin = find_field(fields, "number_of_factors") != nullptr;
    return Fir{letter_value(fields, "symmetry_code"),
               list(fields, is_twin ? "number_of_factors" : "number_of_coefficients", real_at)};
}

ResponsePart polynomial(Row fields) {
    return Polynomial{letter_value(fields, "transfer_function_type"),
                      letter_value(fields, "polynomial_approximation_type"),
                      letter_value(fields, "valid_frequency_units"),
                      real_field(fields, "lower_valid_frequency_bound"),
                      real_field(fields, "upper_valid_frequency_bound"),
                      real_field(fields, "lower_bound_of_approximation"),
                      real_field(fields, "upper_bound_of_approximation"),
                      real_field(fields, "maximum_absolute_error"),
                      list(fields, "number_of_polynomial_coefficients", coefficient)};
}

constexpr UnitFields none{"", ""};
constexpr UnitFields usual{"signal_input_units", "signal_output_units"};
constexpr UnitFields stage{"stage_signal_input_units", "stage_signal_output_units"};

constexpr auto response_types = std::to_array<ResponseType>({
    {53, 43, poles_and_zeros, stage, stage},
    {54, 44, coefficients, usual, usual},
    {55, 45, response_list, {"stage_input_units", "stage_output_units"}, usual},
    {56, 46, generic_response, usual, usual},
    {57, 47, decimation, none, none},
    {58, 48, gain, none, none},
    {61, 41, fir, {"signal_in_units", "signal_out_units"}, {"signal_in_units", "signal_out_units"}},
    {62, 42, polynomial, {"stage_signal_in_units", "stage_signal_out_units"}, usual},
});

constexpr bool has_fields(int type, const UnitFields& names) {
    return std::all_of(names.begin(), names.end(), [type](std::string_view name) {
        return name.empty() || layout::has_field(type, name);
    });
}
static_assert(std::all_of(response_types.begin(), response_types.end(),
                          [](const ResponseType& one) {
                              return has_fields(one.type, one.units) &&
                                     has_fields(one.dictionary_type, one.dictionary_units) &&
                                     layout::has_field(one.dictionary_type, response_key);
                          }),
              "a blockette has no field of that name");

const ResponseType* response_type(int type) {
    const auto row = std::find_if(response_types.begin(), response_types.end(), [type](const auto& one) {
        return one.type == type || one.dictionary_type == type;
    });
    return row != response_types.end() ? &*row : nullptr;
}

template <class T>
void append(const std::vector<T>& further, std::vector<T>* list) {
    list->insert(list->end(), further.begin(), further.end());
}

void append(const PolesAndZeros& further, PolesAndZeros* first) {
    append(further.zeros, &first->zeros);
    append(further.poles, &first->poles);
}
void append(const Coefficients& further, Coefficients* first) {
    append(further.numerators, &first->numerators);
    append(further.denominators, &first->denominators);
}
void append(const ResponseList& further, ResponseList* first) {
    append(further.responses, &first->responses);
}
void append(const GenericResponse& further, GenericResponse* first) {
    append(further.corners, &first->corners);
}
void append(const Fir& further, Fir* first) {
    append(further.coefficients, &first->coefficients);
}
void append(const Polynomial& further, Polynomial* first) {
    append(further.coefficients, &first->coefficients);
}
void append(const Decimation&, Decimation*) {}
void append(const Gain&, Gain*) {}

} // namespace

bool is_response(int type) {
    return response_type(type) != nullptr && !is_dictionary_response(type);
}

bool is_dictionary_response(int type) {
    const ResponseType* row = response_type(type);
    return row != nullptr && row->dictionary_type == type;
}

UnitFields unit_fields(int type) {
    const ResponseType* row = response_type(type);
    if (row == nullptr)
        return {};
    return row->type == type ? row->units : row->dictionary_units;
}

Response read_response(const Place& place, const Fields& fields) {
    const ResponseType& row = *response_type(fields.type);
    const auto [input_units, output_units] = unit_fields(fields.type);
    Response response;
    response.place = place;
    response.key = integer_field(fields.fields, response_key);
    response.name = text_value(fields.fields, "response_name");
    response.input_units = integer_field(fields.fields, input_units);
    response.output_units = integer_field(fields.fields, output_units);
    response.part = row.read(fields.fields);
    return response;
}

bool may_continue(const Response& response) {
    return !std::holds_alternative<Decimation>(response.part) && !std::holds_alternative<Gain>(response.part);
}

void join(const Response& further, Response* first) {
    first->continued.push_back(further.place);
    std::visit(
        [&further](auto& part) {
            using Kind = std::remove_reference_t<decltype(part)>;
            if (const Kind* more = std::get_if<Kind>(&further.part))
                append(*more, &part);
        },
        first->part);
}

} // namespace quarry
