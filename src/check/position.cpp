// SPDX-License-Identifier: Apache-2.0
// Rules for the places of stations and channels, and for where sensors point.

#include "check/response.h"
#include "inventory/field_values.h"

#include <array>
#include <numbers>

namespace quarry {

namespace {

constexpr double degree = std::numbers::pi / 180;

// --- places --------------------------------------------------------------------------------------------

struct Limits {
    std::string_view field;
    double least, most;

    bool holds(Real value) const { return !value || (*value >= least && *value <= most); }
};
constexpr Limits latitudes{"latitude", -90, 90};
constexpr Limits longitudes{"longitude", -180, 180};
constexpr Limits elevations{"elevation", -12'000, 9'000};
constexpr Limits azimuths{"azimuth", 0, 360};
constexpr Limits dips{"dip", -90, 90};

void check_range(const Limits& limits, Real value, const Place& place, const Subject& subject,
                 Findings* findings) {
    if (!limits.holds(value))
        findings->add(place, subject, limits.field, " is ", *value, ", not from ", limits.least, " to ",
                      limits.most);
}

template <class Epoch>
void check_place(const Epoch& epoch, const Subject& subject, Findings* findings) {
    check_range(latitudes, epoch.latitude, epoch.place, subject, findings);
    check_range(longitudes, epoch.longitude, epoch.place, subject, findings);
    check_range(elevations, epoch.elevation, epoch.place, subject, findings);
}

// Meters between two places on a sphere; 0 where a coordinate is missing.
double distance(const StationEpoch& station, const ChannelEpoch& channel) {
    constexpr double radius = 6'371'000;
    if (!station.latitude || !station.longitude || !channel.latitude || !channel.longitude)
        return 0;
    const double north = std::sin((*channel.latitude - *station.latitude) * degree / 2);
    const double east = std::sin((*channel.longitude - *station.longitude) * degree / 2);
    const double chord = north * north + std::cos(*station.latitude * degree) *
                                             std::cos(*channel.latitude * degree) * east * east;
    return 2 * radius * std::asin(std::min(1.0, std::sqrt(chord)));
}

constexpr double kilometer = 1000; // meters
constexpr double far = kilometer;

void check_distance(const StationEpoch& station, const ChannelRow& row, Findings* findings) {
    const double meters = distance(station, *row.epoch);
    if (meters > far)
        findings->add(row.epoch->place, row, "the channel at ", *row.epoch->latitude, ", ",
                      *row.epoch->longitude, " is ", rounded(meters / kilometer),
                      " km away from its station at ", *station.latitude, ", ", *station.longitude);
    if (station.elevation && row.epoch->elevation &&
        std::abs(*station.elevation - *row.epoch->elevation) > far)
        findings->add(row.epoch->place, row, "elevation is ", *row.epoch->elevation,
                      " m, that of the station ", *station.elevation, " m");
}

} // namespace

void check_ranges(const Facts& facts, Findings* findings) {
    for_each_station_epoch(facts, [&](const Subject& subject, const StationEpoch& epoch) {
        check_place(epoch, subject, findings);
    });
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        check_place(epoch, subject_of(row), findings);
        check_range(azimuths, epoch.azimuth, epoch.place, subject_of(row), findings);
        check_range(dips, epoch.dip, epoch.place, subject_of(row), findings);
    });
}

// `epoch.station` is the offset of the 050 that the channel follows.
void check_distances(const Facts& facts, Findings* findings) {
    std::vector<std::pair<std::int64_t, const StationEpoch*>> stations;
    for_each_station_epoch(facts, [&](const Subject&, const StationEpoch& epoch) {
        stations.emplace_back(epoch.place.offset, &epoch);
    });
    std::sort(stations.begin(), stations.end());
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        const auto station =
            std::lower_bound(stations.begin(), stations.end(),
                             std::pair<std::int64_t, const StationEpoch*>(epoch.station, nullptr));
        if (station != stations.end() && station->first == epoch.station)
            check_distance(*station->second, row, findings);
    });
}

// --- orientation ---------------------------------------------------------------------------------------

namespace {

constexpr double tolerance = 5; // degrees

// True for what senses the ground's motion in a direction: seismometers, accelerometers.
bool has_direction(std::string_view channel) {
    constexpr std::string_view instruments = "HLGMN";
    return channel.size() == 3 && instruments.find(channel[1]) < instruments.size();
}

// From any other component than these three a direction cannot be told.
struct Component {
    char letter;
    double azimuth, dip;
    std::string_view words;
};
constexpr auto components = std::to_array<Component>({
    {'N', 0, 0, "azimuth 0 and dip 0"},
    {'E', 90, 0, "azimuth 90 and dip 0"},
    {'Z', 0, -90, "dip -90"},
});

using Direction = std::array<double, 3>; // north, east, up

Direction direction(double azimuth, double dip) {
    return {std::cos(azimuth * degree) * std::cos(dip * degree),
            std::sin(azimuth * degree) * std::cos(dip * degree), -std::sin(dip * degree)};
}

// The cosine of the angle between two directions.
double cosine(const Direction& one, const Direction& other) {
    return one[0] * other[0] + one[1] * other[1] + one[2] * other[2];
}

bool is_directed(const ChannelRow& row) {
    return has_direction(row.channel) && row.epoch->azimuth && row.epoch->dip &&
           azimuths.holds(row.epoch->azimuth) && dips.holds(row.epoch->dip);
}

Direction direction(const ChannelEpoch& epoch) {
    return direction(*epoch.azimuth, *epoch.dip);
}

} // namespace

void check_orientation_missing(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (has_direction(row.channel) && (!epoch.azimuth || !epoch.dip))
            findings->add(epoch.place, row, epoch.azimuth ? "dip" : "azimuth",
                          " is missing; a seismometer or accelerometer has one");
    });
}

// A sensor of reversed polarity points the other way.
void check_component(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        for (const Component& component : components) {
            if (!is_directed(row) || row.channel[2] != component.letter)
                continue;
            const double along = cosine(direction(epoch), direction(component.azimuth, component.dip));
            if (std::abs(along) < std::cos(tolerance * degree))
                findings->add(epoch.place, row, "azimuth ", *epoch.azimuth, " and dip ", *epoch.dip,
                              " are more than 5 degrees off ", component.words,
                              ", the direction of the channel's third letter");
        }
    });
}

namespace {

bool is_numbered(const ChannelRow& row) {
    return is_directed(row) && row.channel[2] >= '1' && row.channel[2] <= '3';
}

// True for components of one sensor at one time.
bool are_of_one_sensor(const ChannelRow& one, const ChannelRow& other) {
    const TimeSpan first = span_of(*one.epoch);
    const TimeSpan second = span_of(*other.epoch);
    return one.network == other.network && one.station == other.station && one.location == other.location &&
           one.channel.substr(0, 2) == other.channel.substr(0, 2) && one.channel != other.channel &&
           first.start < second.end && second.start < first.end;
}

void check_right_angle(const ChannelRow& one, const ChannelRow& other, Findings* findings) {
    const double along = cosine(direction(*one.epoch), direction(*other.epoch));
    if (std::abs(along) > std::sin(tolerance * degree))
        findings->add(other.epoch->place, other, "azimuth ", *other.epoch->azimuth, " and dip ",
                      *other.epoch->dip, " are not at a right angle to ", one.channel, ", azimuth ",
                      *one.epoch->azimuth, " and dip ", *one.epoch->dip);
}

} // namespace

constexpr std::size_t most_epochs = 500; // of a sensor that are compared: the cost is that squared

// Components of one sensor stand behind each other, in the order of their codes.
void check_right_angles(const Facts& facts, Findings* findings) {
    std::vector<ChannelRow> sensor; // the numbered components so far
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch&) {
        if (!is_numbered(row))
            return;
        if (!sensor.empty() &&
            (sensor.back().station != row.station || sensor.back().network != row.network ||
             sensor.back().location != row.location ||
             sensor.back().channel.substr(0, 2) != row.channel.substr(0, 2)))
            sensor.clear();
        for (const ChannelRow& before : sensor)
            if (are_of_one_sensor(before, row))
                check_right_angle(before, row, findings);
        if (sensor.size() < most_epochs)
            sensor.push_back(row);
    });
}

void check_sensor(const Facts& facts, Findings* findings) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (abbreviation(facts.contents.inventory, epoch.instrument, epoch.place).empty())
            findings->add(epoch.place, row, "instrument_identifier names no description (033) of the sensor");
    });
}

} // namespace quarry
