// SPDX-License-Identifier: Apache-2.0
// Rules for the stages of responses: that they are there, and how one leads to the next.

#include "check/response.h"
#include "check/units.h"

#include <algorithm>

namespace quarry {

namespace {

// --- units ---------------------------------------------------------------------------------------------

// The first response of the stage with units.
struct StageUnits {
    const StageResponse* response = nullptr;
    std::string_view input, output;
};

StageUnits units_of(const Facts& facts, const Stage& stage) {
    const Inventory& inventory = facts.contents.inventory;
    for (const StageResponse& one : stage.responses)
        if (one.response && (one.response->input_units || one.response->output_units)) {
            const Place& use = one.response->place; // of the dictionary's, if it is there
            return {&one, unit_name(inventory, one.response->input_units, use),
                    unit_name(inventory, one.response->output_units, use)};
        }
    return {};
}

// Visits the stages with units, in their order.
template <class Visit>
void for_each_units(const Facts& facts, const ChannelEpoch& epoch, Visit visit) {
    for (const Stage& stage : epoch.stages)
        if (const StageUnits units = units_of(facts, stage); units.response != nullptr)
            visit(stage, units);
}

template <class Visit>
void for_each_unit(const Facts& facts, Visit visit) {
    for (const Unit& unit : facts.contents.inventory.dictionary.units)
        visit(unit);
}

bool is_count(std::string_view unit) {
    return comparable_unit(unit) == "COUNTS";
}

// What the instrument code, the second letter of a channel's code, says that the ground's motion is in.
std::string_view unit_of_instrument(std::string_view channel) {
    const char instrument = channel.size() == 3 ? channel[1] : ' ';
    return instrument == 'H' || instrument == 'L' ? "M/S" : instrument == 'N' ? "M/S**2" : "";
}

// The unit without its prefix: NM/S is a velocity, too.
std::string without_prefix(std::string_view unit) {
    const std::string name = comparable_unit(unit);
    constexpr std::string_view prefixes = "CMNU";
    const bool has_prefix = name.size() > 1 && name[1] == 'M' && prefixes.find(name[0]) < prefixes.size();
    return has_prefix ? name.substr(1) : name;
}

} // namespace

void check_response_missing(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (epoch.stages.empty() && epoch.rate.value_or(0) > 0)
            findings->add(epoch.place, row, "sample_rate is ", *epoch.rate, ", but no response follows");
    });
}

void check_response_of_no_rate(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (!epoch.stages.empty() && epoch.rate == 0)
            findings->add(epoch.place, row, "sample_rate is 0, but a response follows");
    });
}

void check_stage_numbers(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        std::int64_t expected = 1;
        for (const Stage& stage : epoch.stages) {
            if (!stage.number || *stage.number < 0)
                findings->add(place_of(stage), row, "the stage has no number");
            else if (is_numbered(stage) && !(stage.number == expected))
                findings->add(place_of(stage), row, "stage ", *stage.number, " follows stage ", expected - 1,
                              "; stages count up from 1");
            expected = stage.number.value_or(0) + 1;
        }
    });
}

void check_stage_order(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Stage* before = nullptr;
        for (const Stage& stage : epoch.stages) {
            if (!is_numbered(stage))
                continue;
            if (before != nullptr && place_of(stage).offset < place_of(*before).offset)
                findings->add(place_of(stage), row, "stage ", *stage.number, " stands before stage ",
                              *before->number, ", which is at byte ", place_of(*before).offset);
            before = &stage;
        }
    });
}

void check_unit_chain(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Stage* before = nullptr;
        std::string_view output;
        for_each_units(facts, epoch, [&](const Stage& stage, const StageUnits& units) {
            if (!is_numbered(stage))
                return;
            if (before != nullptr && comparable_unit(output) != comparable_unit(units.input))
                findings->add(units.response->place, row, "the input of stage ", *stage.number, " is in ",
                              units.input, ", but the output of stage ", *before->number, " in ", output);
            before = &stage;
            output = units.output;
        });
    });
}

void check_last_unit(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        StageUnits last;
        for_each_units(facts, epoch, [&](const Stage& stage, const StageUnits& units) {
            if (is_numbered(stage))
                last = units;
        });
        if (last.response != nullptr && !is_count(last.output))
            findings->add(last.response->place, row, "the last stage ends in ",
                          last.output.empty() ? "no unit" : last.output, ", not in counts");
    });
}

void check_first_unit(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        StageUnits first;
        for_each_units(facts, epoch, [&](const Stage& stage, const StageUnits& units) {
            if (first.response == nullptr && is_numbered(stage))
                first = units;
        });
        const std::string_view expected = unit_of_instrument(row.channel);
        if (first.response != nullptr && !expected.empty() && without_prefix(first.input) != expected)
            findings->add(first.response->place, row, "the first stage begins in ", first.input,
                          ", but the channel's second letter asks for ", expected);
    });
}

void check_unknown_units(const Facts& facts, Findings* findings) {
    for_each_unit(facts, [&](const Unit& unit) {
        if (usual_unit(unit.name).empty())
            findings->add(unit.place, Subject{}, "unit_name ", unit.name, " is not one in common use");
    });
}

void check_unit_spelling(const Facts& facts, Findings* findings) {
    for_each_unit(facts, [&](const Unit& unit) {
        if (!usual_unit(unit.name).empty() && !is_usual_spelling(unit.name))
            findings->add(unit.place, Subject{}, "unit_name ", unit.name, " is usually written ",
                          usual_unit(unit.name));
    });
}

// --- rates ---------------------------------------------------------------------------------------------

namespace {

constexpr double rate_tolerance = 1e-3;

double output_rate(const Decimation& decimation) {
    return decimation.input_rate.value_or(0) / static_cast<double>(decimation.factor.value_or(1));
}

bool is_whole(const Decimation& decimation) {
    return decimation.input_rate.value_or(0) > 0 && decimation.factor.value_or(0) > 0;
}

// Visits the decimations of numbered stages that say what they do, each with its place.
template <class Visit>
void for_each_decimation(const ChannelEpoch& epoch, Visit visit) {
    for (const Stage& stage : epoch.stages)
        for (const StageResponse& one : stage.responses) {
            const auto* decimation = one.response ? std::get_if<Decimation>(&one.response->part) : nullptr;
            if (decimation != nullptr && is_numbered(stage) && is_whole(*decimation))
                visit(stage, one.place, *decimation);
        }
}

} // namespace

void check_rate_chain(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Decimation* before = nullptr;
        for_each_decimation(epoch, [&](const Stage& stage, const Place& place, const Decimation& one) {
            if (before != nullptr && !are_close(output_rate(*before), *one.input_rate, rate_tolerance))
                findings->add(place, row, "input_sample_rate of stage ", *stage.number, " is ",
                              *one.input_rate, ", but the decimation before leaves ", output_rate(*before));
            before = &one;
        });
    });
}

void check_last_rate(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Decimation* last = nullptr;
        Place place;
        for_each_decimation(epoch, [&](const Stage&, const Place& where, const Decimation& one) {
            last = &one;
            place = where;
        });
        if (last != nullptr && epoch.rate.value_or(0) > 0 &&
            !are_close(output_rate(*last), *epoch.rate, rate_tolerance))
            findings->add(place, row, "the last decimation leaves ", output_rate(*last),
                          " samples per second, but sample_rate of the 052 is ", *epoch.rate);
    });
}

void check_no_decimation(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const bool has_one = std::any_of(epoch.stages.begin(), epoch.stages.end(), [](const Stage& stage) {
            return find_part<Decimation>(stage) != nullptr || find_part<ResponseList>(stage) != nullptr;
        });
        const bool has_stages = !epoch.stages.empty() && is_numbered(epoch.stages.back());
        if (has_stages && !has_one && epoch.rate.value_or(0) > 0 && !has_polynomial(epoch))
            findings->add(epoch.place, row, "no stage has a decimation (057)");
    });
}

void check_response_list_alone(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Stage* only = nullptr;
        std::int64_t stages = 0;
        for (const Stage& stage : epoch.stages)
            if (is_numbered(stage) && ++stages == 1)
                only = &stage;
        if (stages == 1 && find_part<ResponseList>(*only) != nullptr)
            findings->add(place_of(*only), row, "a response list is the only stage");
    });
}

// --- gains ---------------------------------------------------------------------------------------------

void check_gain_missing(const Facts& facts, Findings* findings) {
    for_each_stage(facts, [&](const ChannelRow& row, const Stage& stage) {
        if (find_part<Gain>(stage) == nullptr && find_part<Polynomial>(stage) == nullptr)
            findings->add(place_of(stage), row, "stage ", *stage.number, " has no gain (058)");
    });
}

void check_gain_zero(const Facts& facts, Findings* findings) {
    for_each_part<Gain>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Gain& gain) {
            if (!gain.value || gain.value == 0)
                findings->add(one.place, row, "sensitivity_gain of stage ", *stage.number, " is ",
                              gain.value ? "0" : "missing");
        });
}

void check_gain_negative(const Facts& facts, Findings* findings) {
    for_each_part<Gain>(
        facts, [&](const ChannelRow& row, const Stage& stage, const StageResponse& one, const Gain& gain) {
            if (gain.value.value_or(0) < 0)
                findings->add(one.place, row, "sensitivity_gain of stage ", *stage.number, " is ",
                              *gain.value, ", below 0");
        });
}

namespace {

// The gain of the whole channel with its place.
struct Sensitivity {
    const Gain* gain = nullptr;
    Place place = {};
};

Sensitivity sensitivity_of(const ChannelEpoch& epoch) {
    const Stage* whole = find_stage(epoch, 0);
    if (whole != nullptr)
        for (const StageResponse& one : whole->responses)
            if (const auto* gain = one.response ? std::get_if<Gain>(&one.response->part) : nullptr)
                return {gain, one.place};
    return {};
}

// The amplitude of all stages together at a frequency; none if the headers do not say it.
std::optional<double> product_of_gains(const ChannelEpoch& epoch, double frequency) {
    double product = 1;
    bool has_stages = false;
    for (const Stage& stage : epoch.stages) {
        if (!is_numbered(stage))
            continue;
        const std::optional<double> amplitude = amplitude_of(stage, frequency);
        if (!amplitude)
            return std::nullopt;
        product *= *amplitude;
        has_stages = true;
    }
    return has_stages ? std::optional(product) : std::nullopt;
}

// Reports sensitivities off by more than `least`, up to `most`, of the product.
void check_sensitivity_value(const Facts& facts, double least, double most, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Sensitivity whole = sensitivity_of(epoch);
        if (whole.gain == nullptr || whole.gain->value.value_or(0) == 0)
            return;
        const auto product = product_of_gains(epoch, whole.gain->frequency.value_or(0));
        if (!product || *product == 0)
            return;
        const double off = std::abs(std::abs(*whole.gain->value / *product) - 1);
        if (off > least && off <= most)
            findings->add(whole.place, row, "sensitivity_gain of stage 0 is ", *whole.gain->value,
                          ", but the gains of the stages make ", rounded(*product), " at ",
                          whole.gain->frequency.value_or(0), " Hz");
    });
}

} // namespace

void check_sensitivity_missing(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (!epoch.stages.empty() && sensitivity_of(epoch).gain == nullptr && !has_polynomial(epoch))
            findings->add(epoch.place, row, "the response has no sensitivity (058 of stage 0)");
    });
}

void check_sensitivity_zero(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Sensitivity whole = sensitivity_of(epoch);
        if (whole.gain != nullptr && whole.gain->value.value_or(0) == 0)
            findings->add(whole.place, row, "sensitivity_gain of stage 0 is ",
                          whole.gain->value ? "0" : "missing");
    });
}

void check_sensitivity_frequency(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const Sensitivity whole = sensitivity_of(epoch);
        const double rate = epoch.rate.value_or(0);
        if (whole.gain != nullptr && rate > 0 && whole.gain->frequency.value_or(0) >= rate / 2)
            findings->add(whole.place, row, "frequency of stage 0 is ", *whole.gain->frequency,
                          " Hz, not below half the sample rate of ", rate);
    });
}

constexpr double warned = 0.02;
constexpr double wrong = 0.05;

void check_sensitivity_near(const Facts& facts, Findings* findings) {
    check_sensitivity_value(facts, warned, wrong, findings);
}

void check_sensitivity_off(const Facts& facts, Findings* findings) {
    check_sensitivity_value(facts, wrong, HUGE_VAL, findings);
}

} // namespace quarry
