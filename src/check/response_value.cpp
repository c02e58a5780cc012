// SPDX-License-Identifier: Apache-2.0
#include "check/response_value.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quarry {

namespace {

using Complex = std::complex<double>;
using MaybeComplex = std::optional<Complex>;

// i times the angular frequency.
Complex angular(double frequency) {
    return {0, 2 * std::numbers::pi * frequency};
}

// A delay of one sample.
Complex delay(double frequency, double input_rate) {
    return std::exp(-angular(frequency / input_rate));
}

// Where the filter is looked at: in rad/s, in Hz, or on the unit circle.
MaybeComplex point_of(char type, double frequency, std::optional<double> input_rate) {
    if (type == 'A')
        return angular(frequency);
    if (type == 'B')
        return Complex(0, frequency);
    if (type == 'D' && input_rate)
        return 1.0 / delay(frequency, *input_rate);
    return std::nullopt;
}

Complex product(const std::vector<Root>& roots, const Complex& point) {
    Complex all = 1;
    for (const Root& root : roots)
        all *= point - Complex(root.real.value_or(0), root.imaginary.value_or(0));
    return all;
}

Complex polynomial(const std::vector<double>& coefficients, const Complex& point) {
    Complex sum = 0;
    for (auto one = coefficients.rbegin(); one != coefficients.rend(); ++one)
        sum = sum * point + *one;
    return sum;
}

std::vector<double> values_of(const std::vector<Coefficient>& coefficients) {
    std::vector<double> values(coefficients.size());
    std::transform(coefficients.begin(), coefficients.end(), values.begin(),
                   [](const Coefficient& one) { return one.value.value_or(0); });
    return values;
}

// --- each kind of filter -------------------------------------------------------------------------------

MaybeComplex filtered(const PolesAndZeros& filter, double frequency, std::optional<double> input_rate) {
    const MaybeComplex value = value_of(filter, frequency, input_rate);
    return value ? MaybeComplex(*value * filter.a0.value_or(1)) : std::nullopt;
}

// Powers of a delay for digital coefficients, of the frequency for others.
MaybeComplex filtered(const Coefficients& filter, double frequency, std::optional<double> input_rate) {
    const MaybeComplex point = point_of(filter.type, frequency, input_rate);
    if (filter.numerators.empty() && filter.denominators.empty())
        return Complex(1);
    if (!point)
        return std::nullopt;
    const Complex variable = filter.type == 'D' ? 1.0 / *point : *point;
    const std::vector<double> denominators = values_of(filter.denominators);
    const std::vector<double> numerators = values_of(filter.numerators);
    return (numerators.empty() ? 1.0 : polynomial(numerators, variable)) /
           (denominators.empty() ? 1.0 : polynomial(denominators, variable));
}

MaybeComplex filtered(const Fir& filter, double frequency, std::optional<double> input_rate) {
    if (filter.coefficients.empty())
        return Complex(1);
    if (!input_rate)
        return std::nullopt;
    return polynomial(all_coefficients(filter), delay(frequency, *input_rate));
}

// Between two listed frequencies the amplitude is interpolated linearly.
MaybeComplex filtered(const ResponseList& filter, double frequency, std::optional<double>) {
    const auto& list = filter.responses;
    const auto after = std::find_if(list.begin(), list.end(), [frequency](const ListedResponse& one) {
        return one.frequency.value_or(0) >= frequency;
    });
    if (after == list.end() || (after == list.begin() && !(after->frequency == frequency)))
        return std::nullopt;
    if (after->frequency == frequency)
        return after->amplitude ? MaybeComplex(*after->amplitude) : std::nullopt;
    const ListedResponse& before = *std::prev(after);
    if (!before.frequency || !before.amplitude || !after->amplitude)
        return std::nullopt;
    const double part = (frequency - *before.frequency) / (*after->frequency - *before.frequency);
    return Complex(std::lerp(*before.amplitude, *after->amplitude, part));
}

template <class Part>
MaybeComplex filtered(const Part&, double, std::optional<double>) {
    return std::nullopt;
}

MaybeComplex filtered(const Stage& stage, double frequency) {
    const Response* filter = find_filter(stage);
    const auto* decimation = find_part<Decimation>(stage);
    std::optional<double> input_rate;
    if (decimation != nullptr && decimation->input_rate.value_or(0) > 0)
        input_rate = *decimation->input_rate;
    return filter == nullptr
               ? Complex(1)
               : std::visit([&](const auto& part) { return filtered(part, frequency, input_rate); },
                            filter->part);
}

} // namespace

const Response* find_filter(const Stage& stage) {
    for (const StageResponse& one : stage.responses)
        if (one.response && !std::holds_alternative<Gain>(one.response->part) &&
            !std::holds_alternative<Decimation>(one.response->part))
            return one.response.get();
    return nullptr;
}

bool is_digital(const Response& response) {
    if (const auto* roots = std::get_if<PolesAndZeros>(&response.part))
        return roots->type == 'D';
    if (const auto* coefficients = std::get_if<Coefficients>(&response.part))
        return coefficients->type == 'D';
    return std::holds_alternative<Fir>(response.part);
}

std::vector<double> all_coefficients(const Fir& fir) {
    std::vector<double> all;
    for (const Real& one : fir.coefficients)
        all.push_back(one.value_or(0));
    if (fir.symmetry != 'B' && fir.symmetry != 'C')
        return all;
    const std::size_t listed = all.size();
    for (std::size_t i = listed - std::min<std::size_t>(fir.symmetry == 'B' ? 1 : 0, listed); i > 0; --i)
        all.push_back(all[i - 1]);
    return all;
}

MaybeComplex value_of(const PolesAndZeros& filter, double frequency, std::optional<double> input_rate) {
    const MaybeComplex point = point_of(filter.type, frequency, input_rate);
    return point ? MaybeComplex(product(filter.zeros, *point) / product(filter.poles, *point)) : std::nullopt;
}

std::optional<double> amplitude_of(const Stage& stage, double frequency) {
    const auto* gain = find_part<Gain>(stage);
    if (gain == nullptr || !gain->value)
        return std::nullopt;
    if (find_filter(stage) == nullptr || gain->frequency == frequency)
        return *gain->value;
    const MaybeComplex there = filtered(stage, frequency);
    const MaybeComplex at_gain = filtered(stage, gain->frequency.value_or(0));
    if (!there || !at_gain || std::abs(*at_gain) == 0)
        return std::nullopt;
    return *gain->value * std::abs(*there) / std::abs(*at_gain);
}

} // namespace quarry
