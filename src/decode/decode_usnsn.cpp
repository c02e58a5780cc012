// SPDX-License-Identifier: Apache-2.0
#include "decode/decode_usnsn.h"

#include "platform/bytes.h"
#include "platform/memory.h"
#include "quarry/decoders.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <vector>

namespace quarry {

namespace {

// Layout of a record, numbers with their most significant byte first:
//    0  first sample                           signed 32-bit
//    4  differences that follow                unsigned 16-bit
//    6  frames; behind every 7th and behind the last the count of bytes of its block, itself included
//       behind the last count: differences in the last frame, unsigned 8-bit, 0 for no trailer
// 4092  last sample, if there is a trailer     signed 32-bit
//
// A frame is two keys of 4 bits, then a group of differences for each.
constexpr std::int32_t first_frame = 7; // positions are counted from 1
constexpr std::int32_t trailer = 4093;
constexpr int frames_of_block = 7;

struct Group {
    std::int32_t bits; // of each difference
    std::int32_t count;
    std::int32_t bytes;
};
constexpr std::array<Group, 16> groups{{{4, 4, 2},
                                        {4, 8, 4},
                                        {4, 12, 6},
                                        {6, 4, 3},
                                        {6, 8, 6},
                                        {8, 4, 4},
                                        {8, 8, 8},
                                        {10, 4, 5},
                                        {10, 8, 10},
                                        {12, 4, 6},
                                        {14, 4, 7},
                                        {16, 4, 8},
                                        {20, 4, 10},
                                        {24, 4, 12},
                                        {28, 4, 14},
                                        {32, 4, 16}}};
constexpr std::int32_t largest_group = 16;
constexpr std::int32_t last_key = 14;              // 15 counts as overflow
constexpr std::int32_t largest_start = 0x3FFFFFFF; // of a frame

// Sums wrap: damaged records reach any value.
std::int32_t wrapping_sum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

void unpack_fields(const char* bytes, std::int32_t bits, std::int32_t count, bool with_sign,
                   std::int32_t* fields) {
    const int unused = 32 - bits;
    std::uint64_t window = 0; // its low bits are those read and not yet taken
    for (int held = 0; count > 0; --count) {
        for (; held < bits; held += 8)
            window = window << 8 | static_cast<unsigned char>(*bytes++);
        held -= bits;
        const std::uint32_t on_top = static_cast<std::uint32_t>(window >> held) << unused;
        *fields++ = with_sign ? static_cast<std::int32_t>(on_top) >> unused
                              : static_cast<std::int32_t>(on_top >> unused);
    }
}

// The bytes of a record; bytes beyond `size` count as zero.
class Record {
public:
    Record(const char* bytes, std::int64_t size) : bytes_(bytes), size_(size) {}

    // `count` signed or unsigned fields of a group at a position counted from 1.
    void fields(std::int32_t position, std::int32_t bits, std::int32_t count, bool with_sign,
                std::int32_t* fields) const {
        const std::int64_t offset = position - 1;
        const std::int64_t needed = (count * bits + 7) / 8;
        if (offset + needed <= size_)
            return unpack_fields(bytes_ + offset, bits, count, with_sign, fields);
        std::array<char, largest_group> group{};
        if (offset < size_)
            std::copy_n(bytes_ + offset, std::min(size_ - offset, needed), group.begin());
        unpack_fields(group.data(), bits, count, with_sign, fields);
    }

    bool holds(std::int64_t size) const { return size <= size_; }

private:
    const char* bytes_;
    std::int64_t size_;
};
constexpr std::int64_t unbounded = std::numeric_limits<std::int64_t>::max();

// The decompressor's position and counters, as quarry/decoders.h explains them.
struct Decompressor {
    std::int32_t prnt = 0;
    std::int32_t ipt = 0;
    std::int32_t nct = 0;
    std::int32_t ifr = 0;
    std::int32_t iovr = 0;
    std::int32_t ldcmprs = 0;
    std::int32_t npt = 0;
    std::int32_t id0 = 0;
    std::int64_t stored = 0; // values that the record holds: before its end and before an overflow

    std::int32_t decompress(const Record& record, std::int32_t maxx, std::int32_t* n, std::int32_t* idat,
                            std::int32_t* eod, std::int32_t* ovr);
    void unpack_frame(const Record& record, std::int64_t room, std::int32_t* n, std::int32_t* idat,
                      std::int32_t* fin, std::int32_t* ovr, std::int32_t* eod);

private:
    std::int32_t take(const Record& record, std::int32_t bits, bool with_sign);
    std::int32_t take_byte(const Record& record) { return take(record, 8, false); }
    void set_result_unless_negative(std::int32_t result);
    void check_trailer(const Record& record, std::int32_t in_frame, std::int32_t last, std::int32_t* eod);
    void check_block(const Record& record);
    std::int32_t unpack_groups(const Record& record, std::int64_t room, std::array<std::int32_t, 2> keys,
                               std::int32_t* idat, std::int32_t* fin, std::int32_t* ovr);
};

// A number of `bits` bits at ipt, which moves behind it.
std::int32_t Decompressor::take(const Record& record, std::int32_t bits, bool with_sign) {
    std::int32_t value = 0;
    record.fields(ipt, bits, 1, with_sign, &value);
    ipt += bits / 8;
    return value;
}

// Keeps a mismatch unless a worse one is known.
void Decompressor::set_result_unless_negative(std::int32_t result) {
    if (ldcmprs >= 0)
        ldcmprs = result;
}

// Checks what follows the last frame's count of bytes: is there a trailer, and do its values agree with the
// record? `in_frame` is the number of differences in the last frame, `last` is the last sample.
void Decompressor::check_trailer(const Record& record, std::int32_t in_frame, std::int32_t last,
                                 std::int32_t* eod) {
    if (ipt >= trailer)
        return;
    const std::int32_t lpt = take_byte(record);
    if (lpt == 0)
        return;
    *eod = 1;
    if (in_frame != lpt) {
        if (prnt != 0)
            std::printf("########## kpt mismatch ########## kpt=%d lpt=%d ipt=%d\n", in_frame, lpt, ipt);
        set_result_unless_negative(dcmprs_count_mismatch);
    }
    ipt = trailer;
    const std::int32_t ian = take(record, 32, true);
    if (last != ian) {
        if (prnt != 0)
            std::printf("########## ian mismatch ########## ian=%d idat[n]=%d\n", ian, last);
        set_result_unless_negative(dcmprs_last_mismatch);
    }
}

void Decompressor::check_block(const Record& record) {
    nct = ipt - nct;
    const std::int32_t ict = take_byte(record);
    if (ict != nct) {
        if (prnt != 0)
            std::printf("########## nct mismatch ########## ict=%d nct=%d ipt=%d\n", ict, nct, ipt);
        if (ldcmprs != dcmprs_overflow)
            ldcmprs = dcmprs_bytes_mismatch;
    }
    nct = ipt - 1;
}

// The frame's differences to `idat`, at most `room`; returns their number.
std::int32_t Decompressor::unpack_groups(const Record& record, std::int64_t room,
                                         std::array<std::int32_t, 2> keys, std::int32_t* idat,
                                         std::int32_t* fin, std::int32_t* ovr) {
    std::int32_t taken = 0;
    for (const std::size_t i : {0U, 1U}) {
        if (taken >= room) {
            *ovr = 1;
            break;
        }
        const Group& group = groups[static_cast<std::size_t>(keys[i])];
        const auto count =
            static_cast<std::int32_t>(std::min<std::int64_t>(room - taken, std::min(group.count, npt)));
        record.fields(ipt, group.bits, count, true, idat + taken);
        ipt += group.bytes;
        taken += count;
        npt -= count;
        if (npt < 1) {
            *fin = 1;
            if (i == 0)
                ipt += groups[static_cast<std::size_t>(keys[1])].bytes;
            break;
        }
    }
    return taken;
}

void Decompressor::unpack_frame(const Record& record, std::int64_t room, std::int32_t* n, std::int32_t* idat,
                                std::int32_t* fin, std::int32_t* ovr, std::int32_t* eod) {
    *fin = *ovr = *eod = 0;
    *n = -1;
    const std::int32_t both = take_byte(record);
    const std::array<std::int32_t, 2> keys{both >> 4, both & 0xF};
    if (id0 > largest_start || keys[0] > last_key || keys[1] > last_key) {
        if (prnt != 0)
            std::printf("## impending integer overflow ## id0=%d keys=%d %d ipt=%d\n", id0, keys[0], keys[1],
                        ipt);
        ldcmprs = dcmprs_overflow;
        iovr = 1;
        return;
    }
    const std::int32_t taken = unpack_groups(record, room, keys, idat, fin, ovr);
    *n = taken - 1;
    if (record.holds(ipt - 1))
        stored += taken;
    for (std::int32_t i = 0; i < taken; ++i)
        idat[i] = id0 = wrapping_sum(idat[i], id0);
    id0 = idat[*n];
    if (*ovr != 0 || (ifr % frames_of_block != 0 && *fin == 0))
        return;
    check_block(record);
    if (*fin != 0)
        check_trailer(record, taken, idat[*n], eod);
}

std::int32_t Decompressor::decompress(const Record& record, std::int32_t maxx, std::int32_t* n,
                                      std::int32_t* idat, std::int32_t* eod, std::int32_t* ovr) {
    ipt = 1;
    const std::int32_t ia0 = take(record, 32, true);
    npt = take(record, 16, false);
    nct = first_frame - 1;
    ifr = 0;
    id0 = ia0;
    iovr = 0;
    ldcmprs = dcmprs_good;
    if (*n < 0) {
        *n = 0;
        idat[0] = ia0;
    } else if (idat[*n] != ia0) {
        if (prnt != 0)
            std::printf("########## ia0 mismatch ########## idat=%d ia0=%d\n", idat[*n], ia0);
        ldcmprs = dcmprs_first_mismatch;
    }
    const std::int64_t expected_last = std::int64_t{*n} + npt;
    stored = *n + 1;
    std::int32_t fin = 0;
    do {
        ++ifr;
        std::int32_t frame_last = -1;
        unpack_frame(record, std::int64_t{maxx} - *n - 1, &frame_last, idat + *n + 1, &fin, ovr, eod);
        if (iovr != 0) {
            const std::int64_t end = std::min<std::int64_t>(expected_last, maxx);
            for (std::int64_t i = *n + 1; i < end; ++i)
                idat[i] = 0;
            *n = static_cast<std::int32_t>(end - 1);
            fin = 1;
        } else {
            *n += frame_last + 1;
        }
        if (std::int64_t{maxx} - *n < 2)
            *ovr = 1;
    } while (*ovr == 0 && fin == 0);
    return ldcmprs;
}

// Runs on the variables of quarry/decoders.h.
template <class Run>
void run_on_variables(Run run) {
    Decompressor state{prnt, ipt, nct, ifr, iovr, ldcmprs, npt, id0};
    run(&state);
    ipt = state.ipt;
    nct = state.nct;
    ifr = state.ifr;
    iovr = state.iovr;
    ldcmprs = state.ldcmprs;
    npt = state.npt;
    id0 = state.id0;
}

} // namespace

std::int32_t decode_usnsn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    const std::int32_t size = std::max(nbytes, 0);
    if (byteswap != 0)
        swap_four(data, data, size / 4);
    std::vector<std::int32_t> idat;
    allocate_zeroed(idat, std::clamp(nsamples, 1, largest_usnsn_record), QUARRY_SITE("decode_usnsn"),
                    nsamples, "idat");
    std::int32_t n = -1;
    std::int32_t eod = 0;
    std::int32_t ovr = 0;
    run_on_variables([&](Decompressor* state) {
        state->decompress(Record(data, size), std::max(nsamples, 0), &n, idat.data(), &eod, &ovr);
    });
    for (std::int32_t i = 0; i <= n; ++i)
        *seismic_data_ptr++ = static_cast<float>(idat[static_cast<std::size_t>(i)]);
    return 0;
}

UsnsnRecord decompress_usnsn(std::span<const char> record, std::span<std::int32_t> samples) {
    Decompressor state;
    std::int32_t n = -1;
    std::int32_t eod = 0;
    std::int32_t ovr = 0;
    const std::int32_t result =
        state.decompress(Record(record.data(), std::ssize(record)), static_cast<std::int32_t>(samples.size()),
                         &n, samples.data(), &eod, &ovr);
    return {result, state.stored, eod != 0};
}

std::int32_t dcmprs(std::int32_t maxx, std::int32_t* n, std::int32_t* idat, std::int32_t* eod,
                    std::int32_t* ovr, const char* icmp) {
    run_on_variables(
        [&](Decompressor* state) { state->decompress(Record(icmp, unbounded), maxx, n, idat, eod, ovr); });
    return ldcmprs;
}

void unpacknsn(std::int32_t maxx, std::int32_t* n, std::int32_t* idat, std::int32_t* fin, std::int32_t* ovr,
               std::int32_t* eod, const char* icmp) {
    run_on_variables([&](Decompressor* state) {
        state->unpack_frame(Record(icmp, unbounded), maxx, n, idat, fin, ovr, eod);
    });
}

std::int32_t gnible(const char* ib, std::int32_t* ia, std::int32_t* ns, std::int32_t nb, std::int32_t n,
                    std::int32_t nrun, std::int32_t sgn) {
    unpack_fields(ib + (*ns - 1), nb, n, sgn != 0, ia);
    *ns = static_cast<std::int32_t>(*ns + std::int64_t{nrun} * nb / 8);
    return *ns;
}

std::int32_t dcmpbr() {
    const std::int32_t previous = prnt;
    prnt = prnt == 0 ? 1 : 0;
    return previous;
}

void dcmper(std::int32_t ierr) {
    switch (ierr) {
    case dcmprs_good:
        return;
    case dcmprs_first_mismatch:
        std::puts("IA0 mismatch in Dcmprs.");
        return;
    case dcmprs_overflow:
        std::puts("Integer overflow in Dcmprs.");
        return;
    case dcmprs_bytes_mismatch:
        std::puts("NCT mismatch in Dcmprs.");
        return;
    case dcmprs_count_mismatch:
        std::puts("KPT mismatch in Dcmprs.");
        return;
    case dcmprs_last_mismatch:
        std::puts("IAN mismatch in Dcmprs.");
        return;
    default:
        std::printf("Unknown error in Dcmprs (%d).\n", ierr);
        return;
    }
}

} // namespace quarry
