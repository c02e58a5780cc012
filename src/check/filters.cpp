// SPDX-License-Identifier: Apache-2.0
// Rules for the filters of response stages: poles and zeros, coefficients, decimations.

#include "check/response.h"

#include <algorithm>
#include <numeric>

namespace quarry {

namespace {

bool has_filter(const Stage& stage) {
    return find_filter(stage) != nullptr;
}

// True for a filter that is described by coefficients and has none.
bool is_empty(const Response& filter) {
    if (const auto* coefficients = std::get_if<Coefficients>(&filter.part))
        return coefficients->numerators.empty() && coefficients->denominators.empty();
    const auto* fir = std::get_if<Fir>(&filter.part);
    return fir != nullptr && fir->coefficients.empty();
}

bool is_digital_stage(const Stage& stage) {
    return std::any_of(stage.responses.begin(), stage.responses.end(),
                       [](const StageResponse& one) { return one.response && is_digital(*one.response); });
}

std::optional<double> input_rate(const Stage& stage) {
    const auto* decimation = find_part<Decimation>(stage);
    return decimation != nullptr && decimation->input_rate ? std::optional(*decimation->input_rate)
                                                           : std::nullopt;
}

bool is_zero(const Root& root) {
    return root.real == 0 && root.imaginary == 0;
}

double distance(const Root& root) {
    return std::hypot(root.real.value_or(0), root.imaginary.value_or(0));
}

using Poles = PolesAndZeros;

} // namespace

void check_digital_stage(const Facts& facts, Findings* findings) {
    for_each_stage(facts, [&](const ChannelRow& row, const Stage& stage) {
        if (is_digital_stage(stage) && find_part<Decimation>(stage) == nullptr)
            findings->add(place_of(stage), row, "stage ", *stage.number,
                          " is digital, but has no decimation (057)");
    });
}

void check_stray_decimation(const Facts& facts, Findings* findings) {
    for_each_part<Decimation>(facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one,
                                         const Decimation& decimation) {
        if (!has_filter(stage))
            findings->add(one.place, row, "the decimation of stage ", *stage.number,
                          " belongs to no filter (061, 054 or 053)");
        else if (!is_digital_stage(stage))
            findings->add(one.place, row, "the decimation of stage ", *stage.number,
                          " is in an analogue stage");
        else if (decimation.factor.value_or(1) > 1 && is_empty(*find_filter(stage)))
            findings->add(one.place, row, "stage ", *stage.number, " decimates by ", *decimation.factor,
                          ", but its filter has no coefficients");
    });
}

void check_delay(const Facts& facts, Findings* findings) {
    for_each_part<Decimation>(facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one,
                                         const Decimation& decimation) {
        const double delay = decimation.delay.value_or(0);
        const double correction = decimation.correction.value_or(0);
        const double period = 1 / std::max(row.epoch->rate.value_or(0), 1e-9);
        if (std::abs(delay - correction) > period / 2)
            findings->add(one.place, row, "the correction applied in stage ", *stage.number, " is ",
                          correction, " s, the estimated delay ", delay, " s");
    });
}

// --- poles and zeros -----------------------------------------------------------------------------------

// A zero at the origin makes the amplitude 0 at 0 Hz, so nothing can be normalized there.
void check_zero_frequency(const Facts& facts, Findings* findings) {
    for_each_part<Poles>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Poles& filter) {
            const bool has_zero = std::any_of(filter.zeros.begin(), filter.zeros.end(), is_zero);
            if (has_zero && filter.type != 'D' && filter.normalization_frequency == 0)
                findings->add(one.place, row, "normalization_frequency of stage ", *stage.number,
                              " is 0, where its zeros at the origin let nothing pass");
            const auto* gain = find_part<Gain>(stage);
            if (has_zero && filter.type != 'D' && gain != nullptr && gain->frequency == 0)
                findings->add(one.place, row, "the gain of stage ", *stage.number,
                              " is for 0 Hz, where its zeros at the origin let nothing pass");
        });
}

void check_a0(const Facts& facts, Findings* findings) {
    constexpr double tolerance = 0.01;
    for_each_part<Poles>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Poles& filter) {
            const double frequency = filter.normalization_frequency.value_or(0);
            const auto value = value_of(filter, frequency, input_rate(stage));
            if (!value || !filter.a0 || !std::isfinite(std::abs(*value)) || std::abs(*value) == 0)
                return;
            if (!are_close(std::abs(*filter.a0), 1 / std::abs(*value), tolerance))
                findings->add(one.place, row, "a0_normalization_factor of stage ", *stage.number, " is ",
                              *filter.a0, ", but its poles and zeros ask for ", rounded(1 / std::abs(*value)),
                              " at ", frequency, " Hz");
        });
}

void check_unstable_poles(const Facts& facts, Findings* findings) {
    for_each_part<Poles>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Poles& filter) {
            for (const Root& pole : filter.poles)
                if (filter.type == 'D' ? distance(pole) >= 1 : pole.real.value_or(0) > 0) {
                    findings->add(one.place, row, "stage ", *stage.number, " has a pole at ",
                                  pole.real.value_or(0), ", ", pole.imaginary.value_or(0), ", not ",
                                  filter.type == 'D' ? "within the unit circle" : "in the left half-plane");
                    break;
                }
        });
}

// --- coefficients --------------------------------------------------------------------------------------

// If a listed half is symmetric itself, it is most likely the whole filter.
void check_symmetry(const Facts& facts, Findings* findings) {
    for_each_part<Fir>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Fir& filter) {
            const auto& list = filter.coefficients;
            const bool is_half = filter.symmetry == 'B' || filter.symmetry == 'C';
            if (!is_half && filter.symmetry != 'A')
                findings->add(one.place, row, "symmetry_code of stage ", *stage.number, " is not A, B or C");
            else if (is_half && list.size() > 2 && std::equal(list.begin(), list.end(), list.rbegin()))
                findings->add(one.place, row, "symmetry_code of stage ", *stage.number, " is ",
                              std::string_view(&filter.symmetry, 1),
                              ", but the listed coefficients are symmetric themselves: they look like the "
                              "whole filter");
        });
}

namespace {

// The sum of digital coefficients, by which a constant is multiplied; none for other filters.
std::optional<double> sum_of(const Response& response) {
    if (const auto* fir = std::get_if<Fir>(&response.part); fir != nullptr && !fir->coefficients.empty()) {
        const std::vector<double> all = all_coefficients(*fir);
        return std::accumulate(all.begin(), all.end(), 0.0);
    }
    const auto* coefficients = std::get_if<Coefficients>(&response.part);
    if (coefficients == nullptr || coefficients->type != 'D' || coefficients->numerators.empty())
        return std::nullopt;
    const auto add = [](double sum, const Coefficient& one) { return sum + one.value.value_or(0); };
    const auto& [type, numerators, denominators] = *coefficients;
    const double above = std::accumulate(numerators.begin(), numerators.end(), 0.0, add);
    const double below = std::accumulate(denominators.begin(), denominators.end(), 0.0, add);
    return below != 0 ? above / below : denominators.empty() ? std::optional(above) : std::nullopt;
}

} // namespace

void check_coefficient_sum(const Facts& facts, Findings* findings) {
    constexpr double tolerance = 0.02;
    for_each_stage(facts, [&](const ChannelRow& row, const Stage& stage) {
        const Gain* gain = find_part<Gain>(stage);
        const double stated = gain != nullptr ? gain->value.value_or(1) : 1;
        for (const StageResponse& one : stage.responses) {
            const std::optional<double> sum = one.response ? sum_of(*one.response) : std::nullopt;
            if (sum && !are_close(*sum, 1, tolerance) && !are_close(*sum, stated, tolerance))
                findings->add(one.place, row, "the coefficients of stage ", *stage.number, " sum up to ",
                              rounded(*sum), ", neither to 1 nor to the gain of ", stated);
        }
    });
}

} // namespace quarry
