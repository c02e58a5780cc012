// SPDX-License-Identifier: Apache-2.0
// What the headers of a volume say, assembled: networks, their stations, the epochs of their channels with
// comments and response stages, and the dictionaries that all of them refer to.
//
//     quarry::VolumeReader reader = quarry::VolumeReader::of_path("volume.seed");
//     const quarry::Inventory inventory = quarry::read_inventory(&reader);
//     for (const quarry::Network& network : inventory.networks)
//         for (const quarry::Station& station : network.stations)
//             for (const quarry::Channel& channel : station.channels)
//                 for (const quarry::ChannelEpoch& epoch : channel.epochs)
//                     std::cout << network.code << ' ' << station.code << ' ' << channel.code << ' '
//                               << epoch.start.text << ' ' << epoch.rate.value_or(0) << '\n';
//
// These are plain records that own all they hold. A number that the volume lacks, or that does not convert,
// is absent; a text that it lacks is empty, a letter 0. Every record says at which byte its blockette begins.
//
// Keys stay keys, and the functions below look up what they mean. A volume may define a key anew (joined
// volumes do), so a key means its last definition before the blockette that uses it, else the first one.
#pragma once

#include "quarry/volume.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#pragma GCC visibility push(default)
namespace quarry {

// Like std::optional, but no larger than the number itself: headers hold millions of them. The least integer
// and NaN mean that the number is absent; no volume holds them as values.
template <class Number>
class Maybe {
public:
    constexpr Maybe() = default;
    constexpr Maybe(std::nullopt_t) {}
    constexpr Maybe(Number number) : number_(number) {}
    constexpr Maybe(const std::optional<Number>& number) : number_(number.value_or(none)) {}

    constexpr bool has_value() const {
        if constexpr (std::is_floating_point_v<Number>)
            return number_ == number_;
        else
            return number_ != none;
    }
    constexpr explicit operator bool() const { return has_value(); }
    constexpr Number operator*() const { return number_; } // of no meaning without a number
    constexpr Number value_or(Number otherwise) const { return has_value() ? number_ : otherwise; }

    friend constexpr bool operator==(Maybe one, Maybe other) {
        return one.has_value() ? one.number_ == other.number_ : !other.has_value();
    }
    friend constexpr bool operator==(Maybe one, std::nullopt_t) { return !one.has_value(); }
    friend constexpr bool operator==(Maybe one, const std::optional<Number>& other) {
        return one == Maybe(other);
    }
    template <class Other>
    requires std::is_arithmetic_v<Other>
    friend constexpr bool operator==(Maybe one, Other other) {
        return one.has_value() && one.number_ == other;
    }
    // None is less than any number.
    friend constexpr bool operator<(Maybe one, Maybe other) {
        return other.has_value() && (!one.has_value() || one.number_ < other.number_);
    }

private:
    using Limits = std::numeric_limits<Number>;
    static constexpr Number none = std::is_floating_point_v<Number> ? Limits::quiet_NaN() : Limits::min();
    Number number_ = none;
};

using Integer = Maybe<std::int64_t>;
using Real = Maybe<double>;

// A blockette: its type, and where its first byte stands in the input.
struct Place {
    int blockette = 0;
    std::int64_t offset = 0;
    std::int64_t logical_record = 0;
    bool operator==(const Place&) const = default;
};

// A time as the volume writes it, and in microseconds since 1970 if it is one.
struct Moment {
    std::string text;
    Integer microseconds;
    bool operator==(const Moment&) const = default;
};

// --- responses -----------------------------------------------------------------------------------------
// Each is filled from a blockette of a channel or from its twin in the dictionary.

struct Root {
    Real real, imaginary, real_error, imaginary_error;
    bool operator==(const Root&) const = default;
};
struct PolesAndZeros { // 053, 043
    char type = 0;     // A: rad/s, B: Hz, C: composite, D: digital
    Real a0, normalization_frequency;
    std::vector<Root> zeros, poles;
    bool operator==(const PolesAndZeros&) const = default;
};

struct Coefficient {
    Real value, error;
    bool operator==(const Coefficient&) const = default;
};
struct Coefficients { // 054, 044
    char type = 0;
    std::vector<Coefficient> numerators, denominators;
    bool operator==(const Coefficients&) const = default;
};

struct ListedResponse {
    Real frequency, amplitude, amplitude_error; // Hz
    Real phase, phase_error;                    // degrees
    bool operator==(const ListedResponse&) const = default;
};
struct ResponseList { // 055, 045
    std::vector<ListedResponse> responses;
    bool operator==(const ResponseList&) const = default;
};

struct Corner {
    Real frequency, slope; // Hz, dB a decade
    bool operator==(const Corner&) const = default;
};
struct GenericResponse { // 056, 046
    std::vector<Corner> corners;
    bool operator==(const GenericResponse&) const = default;
};

struct Decimation {  // 057, 047
    Real input_rate; // samples per second
    Integer factor, offset;
    Real delay, correction; // seconds
    bool operator==(const Decimation&) const = default;
};

struct Calibration {
    Real sensitivity, frequency; // Hz
    Moment time;
    bool operator==(const Calibration&) const = default;
};
struct Gain {              // 058, 048; that of stage 0 is the sensitivity of the channel
    Real value, frequency; // Hz
    std::vector<Calibration> calibrations;
    bool operator==(const Gain&) const = default;
};

struct Fir { // 061, 041
    // A: all coefficients are listed; B: the first half and the middle one of an odd number; C: the first
    // half of an even number.
    char symmetry = 0;
    std::vector<Real> coefficients;
    bool operator==(const Fir&) const = default;
};

struct Polynomial { // 062, 042
    char type = 0, approximation = 0, frequency_unit = 0;
    Real lowest_frequency, highest_frequency;
    Real lowest_approximation, highest_approximation;
    Real largest_error;
    std::vector<Coefficient> coefficients;
    bool operator==(const Polynomial&) const = default;
};

using ResponsePart = std::variant<PolesAndZeros, Coefficients, ResponseList, GenericResponse, Decimation,
                                  Gain, Fir, Polynomial>;

struct Response {
    Place place;
    std::vector<Place> continued;      // further blockettes whose lists are joined to those of the first
    Integer key;                       // of a response of the dictionary
    std::string name;                  // of one of the dictionary, or of a 061
    Integer input_units, output_units; // keys of 034; a decimation and a gain have none
    ResponsePart part;
};

// A response where a stage has it. That of a 060 is shared with the dictionary.
struct StageResponse {
    Place place;                              // the blockette of the channel: the response's own, or the 060
    Integer key;                              // that the 060 refers to
    std::shared_ptr<const Response> response; // null if the key is not defined
};

struct Stage {
    Integer number;                       // 0 for the whole channel
    std::vector<StageResponse> responses; // in the order of the input
};

// --- dictionaries --------------------------------------------------------------------------------------

struct DataFormat { // 030
    Place place;
    Integer key;
    std::string name;
    Integer family;
    std::vector<std::string> decoder_keys;
    bool operator==(const DataFormat&) const = default;
};
struct CommentText { // 031
    Place place;
    Integer key;
    std::string comment_class, text;
    Integer level_units; // key of 034
    bool operator==(const CommentText&) const = default;
};
struct CitedSource { // 032
    Place place;
    Integer key;
    std::string author, date, publisher;
    bool operator==(const CitedSource&) const = default;
};
struct Abbreviation { // 033
    Place place;
    Integer key;
    std::string text;
    bool operator==(const Abbreviation&) const = default;
};
struct Unit { // 034
    Place place;
    Integer key;
    std::string name, description;
    bool operator==(const Unit&) const = default;
};
struct BeamComponent {
    std::string station, location, channel;
    Integer subchannel, weight;
    bool operator==(const BeamComponent&) const = default;
};
struct Beam { // 035
    Place place;
    Integer key;
    std::vector<BeamComponent> components;
    bool operator==(const Beam&) const = default;
};

// Each in order of the keys, then of the input.
struct Dictionary {
    std::vector<DataFormat> formats;
    std::vector<CommentText> comments;
    std::vector<CitedSource> sources;
    std::vector<Abbreviation> abbreviations;
    std::vector<Unit> units;
    std::vector<Beam> beams;
    std::vector<std::shared_ptr<const Response>> responses; // 041 to 048, whose keys are of one kind
};

// --- stations and channels -----------------------------------------------------------------------------

struct Comment { // 051, 059
    Place place;
    Moment start, end;
    Integer key; // of 031
    Integer level;
};

struct ChannelEpoch { // 052
    Place place;
    std::int64_t station; // offset of the 050 before it; -1 without one
    Integer subchannel;
    Integer instrument; // key of 033
    std::string comment;
    Integer signal_units, calibration_units; // keys of 034
    Real latitude, longitude;                // degrees
    Real elevation, depth;                   // meters
    Real azimuth, dip;                       // degrees from north, and down from horizontal
    Integer format;                          // key of 030
    Integer record_length;                   // two to the power of it are the bytes of a data record
    Real rate;                               // samples per second
    Real clock_drift;                        // seconds a sample
    Integer comment_count;                   // as stated
    std::string flags;
    Moment start, end;
    char update = 0;
    std::vector<Comment> comments; // 059
    std::vector<Stage> stages;     // in order of their numbers, 0 first
};

// The epochs of channels and stations are in order of their starts, then of the input.
struct Channel {
    std::string location, code;
    std::vector<ChannelEpoch> epochs;
};

struct StationEpoch { // 050
    Place place;
    Real latitude, longitude;             // degrees
    Real elevation;                       // meters
    Integer channel_count, comment_count; // as stated
    std::string site;
    Integer network_name; // key of 033
    Integer word_order_32, word_order_16;
    Moment start, end;
    char update = 0;
    std::vector<Comment> comments; // 051
};

struct Station {
    std::string code;
    std::vector<StationEpoch> epochs; // none if its channels follow no 050
    std::vector<Channel> channels;    // in order of location and code
};

struct Network {
    std::string code; // empty in volumes before version 2.3
    std::vector<Station> stations;
};

// --- the whole -----------------------------------------------------------------------------------------

struct VolumeHeader { // 010, 005, 008
    Place place;
    std::string version;   // as written: "02.4"
    Integer record_length; // two to the power of it are the bytes of a logical record
    Moment start, end, written;
    std::string organization, label;
};

enum class FindingKind : std::uint8_t {
    key_defined_twice,
    key_not_defined,
    key_not_used,
    station_epochs_overlap,
    channel_epochs_overlap,
    no_station, // a 051 or 052 follows no 050
    no_channel, // a 053 to 062 follows no 052
};

// Something within one volume of the input that does not fit together.
struct Finding {
    FindingKind kind;
    Place place; // the second definition, the first use, the definition, the later epoch, the blockette
    Place other; // the first definition, the earlier epoch; of type 0 otherwise
    std::string_view field;  // of a key that is not defined: the field that uses it
    int dictionary = 0;      // of a key: the type of the blockettes that define it, 41 for 041 to 048
    std::int64_t key = 0;    // of a key
    bool is_changed = false; // of a key that is defined twice: the definitions differ
    bool operator==(const Finding&) const = default;
};

// The kind as a name ("key_defined_twice") and in words ("is defined twice"), what does not fit without its
// places ("key 2 of 033 is defined twice"), and the whole finding as one line.
std::string_view name_of(FindingKind kind);
std::string_view describe(FindingKind kind);
std::string what_is_wrong(const Finding& finding);
std::string describe(const Finding& finding);

struct Inventory {
    std::vector<VolumeHeader> volumes; // several if volumes were joined
    Dictionary dictionary;
    std::vector<Network> networks; // in order of their codes, as their stations are
    std::vector<Finding> findings; // in order of their places
};

// The inventory of all the control blockettes from here to the end of the input. Each item goes to `take`,
// too, if there is one: so data records and damage can be had of an input that is read once.
Inventory read_inventory(VolumeReader* reader, const std::function<void(const Item&)>& take = {});

// --- look-up -------------------------------------------------------------------------------------------

// Whole records of a dictionary and pointers to them, as one.
template <class T>
const T& definition(const T& entry) {
    return entry;
}
inline const Response& definition(const std::shared_ptr<const Response>& entry) {
    return *entry;
}

// What the key means where a blockette at the offset uses it; null if it is not defined.
template <class Entry>
const Entry* find_definition(const std::vector<Entry>& dictionary, Integer key, std::int64_t offset) {
    const auto precedes = [](const Entry& entry, const std::pair<Integer, std::int64_t>& place) {
        return std::pair(definition(entry).key, definition(entry).place.offset) < place;
    };
    if (!key)
        return nullptr;
    auto found = std::lower_bound(dictionary.begin(), dictionary.end(), std::pair(key, offset), precedes);
    if (found != dictionary.begin() && definition(*(found - 1)).key == key)
        --found;
    return found != dictionary.end() && definition(*found).key == key ? &*found : nullptr;
}

// The text of the abbreviation, the name of the unit; empty if it is not defined.
std::string_view abbreviation(const Inventory& inventory, Integer key, const Place& use);
std::string_view unit_name(const Inventory& inventory, Integer key, const Place& use);

// The first part of the kind in a stage, null without one.
template <class Part>
const Part* find_part(const Stage& stage) {
    for (const StageResponse& one : stage.responses)
        if (const Part* part = one.response ? std::get_if<Part>(&one.response->part) : nullptr)
            return part;
    return nullptr;
}

// The stage of the number, null without one.
const Stage* find_stage(const ChannelEpoch& epoch, std::int64_t number);

} // namespace quarry
#pragma GCC visibility pop
