#include "platform/seed_record.h"

#include "platform/bytes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace quarry {

namespace {

constexpr std::size_t header_size = 48;
constexpr std::size_t bytes_in_hand = 136;
constexpr std::size_t year_offset = 20;
constexpr std::size_t first_blockette_offset = 46;

// Numbers of the header's byte order out of the bytes in hand.
struct Bytes {
    std::span<const char> bytes;
    bool swapped;

    unsigned two(std::size_t at) const {
        const auto value = load<std::uint16_t>(&bytes[at]);
        return swapped ? __builtin_bswap16(value) : value;
    }
    std::uint32_t four(std::size_t at) const {
        const auto value = load<std::uint32_t>(&bytes[at]);
        return swapped ? __builtin_bswap32(value) : value;
    }
    int one(std::size_t at) const { return static_cast<unsigned char>(bytes[at]); }
    bool hold(std::size_t at, std::size_t width) const { return at + width <= bytes.size(); }
};

} // namespace

int record_bytes(int power) {
    return 1 << std::max(power, 1);
}

bool is_ok_quality(char code) {
    return std::string_view("DRQM").find(code) != std::string_view::npos;
}

int parse_data_record_header(Steim* state) {
    Bytes header{state->record.first(std::min(state->record.size(), bytes_in_hand)), false};
    if (header.bytes.size() < header_size)
        return -1;
    const auto year = static_cast<std::int16_t>(header.two(year_offset));
    header.swapped = year < first_plausible_year || year > last_plausible_year;

    std::size_t previous = header_size - 1;
    std::size_t at = header.two(first_blockette_offset);
    while (at > previous && header.hold(at, 4)) {
        const int type = static_cast<int>(header.two(at));
        const int next = static_cast<int>(header.two(at + 2));
        if (type == 100 && header.hold(at, 8))
            state->s100 = {type, next, std::bit_cast<float>(header.four(at + 4))};
        if (type == 1000 && header.hold(at, 8)) {
            const int exponent = header.one(at + 6);
            if (exponent < 7 || exponent > 30)
                return -1;
            state->s1000 = {type, next, header.one(at + 4), header.one(at + 5), exponent};
            state->record_size = record_bytes(exponent);
            return 0;
        }
        previous = at;
        at = static_cast<std::size_t>(next);
    }
    return 0;
}

const char* translate_number(int code, std::span<const Xlat> table) {
    const auto row =
        std::find_if(table.begin(), table.end(), [code](const Xlat& entry) { return entry.num == code; });
    return row == table.end() ? nullptr : row->name;
}

} // namespace quarry
