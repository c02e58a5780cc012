// SPDX-License-Identifier: Apache-2.0
// What a response does to a signal of some frequency: its amplitude, computed from the headers.
#pragma once

#include "quarry/inventory.h"

#include <complex>
#include <optional>
#include <vector>

namespace quarry {

// The filter of a stage: what is neither its gain nor its decimation. Null without one.
const Response* find_filter(const Stage& stage);

// True for coefficients (061, 054) and poles and zeros (053) that work on samples.
bool is_digital(const Response& response);

// All coefficients of the filter, those that its symmetry implies too.
std::vector<double> all_coefficients(const Fir& fir);

// The poles and zeros at the frequency (Hz), without A0. Digital ones need the rate of the samples that come
// in.
std::optional<std::complex<double>> value_of(const PolesAndZeros& filter, double frequency,
                                             std::optional<double> input_rate);

// The amplitude of the stage at the frequency (Hz): its gain times the filter's amplitude at that frequency,
// divided by its amplitude at the frequency of the gain. None if the headers do not say it.
std::optional<double> amplitude_of(const Stage& stage, double frequency);

} // namespace quarry
