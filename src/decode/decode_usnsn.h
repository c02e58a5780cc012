// USNSN compression: differences in groups of 4, 8 or 12, each group with a width of its own.
//
// decompress_usnsn is re-entrant. The other functions keep the decompressor's position and counters in the
// variables below: one thread.
#pragma once

#include <cstdint>
#include <span>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Swaps each whole four bytes where `byteswap` is set, then reads the
// record most significant byte first; bytes beyond `nbytes` count as zero. Stores the samples that dcmprs
// finds, at most `nsamples`. For 0 or less it stores one, so the cursor must have room for it. Returns 0 also
// where dcmprs reports an error.
std::int32_t decode_usnsn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// What a record of USNSN holds.
struct UsnsnRecord {
    std::int32_t result = 0;  // as dcmprs returns it
    std::int64_t samples = 0; // in it: those after its end or after an overflow do not count
    bool has_trailer = false;
};

// Decompresses the record, most significant byte first, to `samples`, at least one and as many as it and they
// hold; bytes beyond it count as zero. Prints nothing.
UsnsnRecord decompress_usnsn(std::span<const char> record, std::span<std::int32_t> samples);

// Results of dcmprs, and which earlier results each replaces.
inline constexpr std::int32_t dcmprs_good = 1;
inline constexpr std::int32_t dcmprs_first_mismatch = 0;  // ia0: the record does not continue the series
inline constexpr std::int32_t dcmprs_overflow = -1;       // stops the record; never replaced
inline constexpr std::int32_t dcmprs_bytes_mismatch = -4; // nct: bytes of a block; replaces all but -1
inline constexpr std::int32_t dcmprs_count_mismatch = -5; // kpt: the last frame's count; replaces 0 and 1
inline constexpr std::int32_t dcmprs_last_mismatch = -6;  // ian: the last sample; replaces 0 and 1

// Decompresses the record at `icmp` into `idat`, which has room for `maxx` values, at least one. `*n` is the
// index of the last value there, -1 for none, and is moved on. `*eod` is set to 1 when the record's trailer
// was found, else to 0; `*ovr` to 1 when no further value fits. Trusts that the record is whole.
std::int32_t dcmprs(std::int32_t maxx, std::int32_t* n, std::int32_t* idat, std::int32_t* eod,
                    std::int32_t* ovr, const char* icmp);

// Decompresses the frame at position ipt of the record: up to `maxx` values to `idat`, behind the last value
// so far (which must exist at idat[-1]). `*n` is set to the index of the last value stored, -1 for none;
// `*fin` to 1 at the record's last frame, `*ovr` when the room ran out, `*eod` when the record has a trailer,
// each to 0 otherwise.
void unpacknsn(std::int32_t maxx, std::int32_t* n, std::int32_t* idat, std::int32_t* fin, std::int32_t* ovr,
               std::int32_t* eod, const char* icmp);

// Extracts `n` fields of `nb` bits (1 to 32), packed most significant bit first from position `*ns` of `ib`
// (counted from 1), into `ia`; with their sign if `sgn` is non-zero. Moves `*ns` past `nrun` fields, down to
// whole bytes, and returns it.
std::int32_t gnible(const char* ib, std::int32_t* ia, std::int32_t* ns, std::int32_t nb, std::int32_t n,
                    std::int32_t nrun, std::int32_t sgn);

// Switches the diagnostics on standard output off and on; returns the previous setting. They start as on (1).
std::int32_t dcmpbr();

// Prints what a result of dcmprs other than 1 means on standard output.
void dcmper(std::int32_t ierr);

// The state of the decompressor. The namespace is inline: quarry::ipt and quarry::usnsn::ipt are one.
inline namespace usnsn {
inline std::int32_t prnt = 1;    // diagnostics are printed
inline std::int32_t ipt = 0;     // position in the record, counted from 1
inline std::int32_t nct = 0;     // position before the current block, whose bytes are counted
inline std::int32_t ifr = 0;     // frames decoded
inline std::int32_t iovr = 0;    // 1: an impending overflow stopped the record
inline std::int32_t ldcmprs = 0; // result so far
inline std::int32_t npt = 0;     // differences still expected
inline std::int32_t id0 = 0;     // the last value
} // namespace usnsn

} // namespace quarry
