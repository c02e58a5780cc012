// SPDX-License-Identifier: Apache-2.0
// The decoders of samples as functions of their own: one for each data format, and decode_data, which finds
// it. For programs that use them already. New ones take quarry/samples.h, which keeps integers and has no
// state.
//
//     std::vector<float> samples(1000);                 // room for what is decoded
//     quarry::seismic_data_ptr = samples.data();
//     const std::int32_t status = quarry::decode_steim(data, 1000, bytes_of_data, is_swapped);
//     if (status < 0)
//         std::cerr << "samples are missing\n";
//
// One thread: the cursor, the state of USNSN and the names of formats are process-wide. Messages go to
// standard error; exhausted memory ends the process.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#pragma GCC visibility push(default)
namespace quarry {

// --- the form of a decoder -----------------------------------------------------------------------------

// A decoder decodes `nsamples` samples from the `nbytes` raw bytes at `data`. It writes floats in the host's
// order through seismic_data_ptr, which it advances. `byteswap` is non-zero when the data's byte order is not
// the host's; the raw words are then swapped in place, so a record can be decoded only once. Returns a
// status, negative for a failure.
using Decoder = std::int32_t (*)(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// Where the next decoded value goes. The caller points it at a buffer with room for all values; afterwards it
// points behind the last value.
inline float* seismic_data_ptr = nullptr;

// --- decoders of plain and gain-ranged words -----------------------------------------------------------
// They read as many bytes as `nsamples` need and ignore `nbytes`: the caller makes sure that `data` holds
// them. They return 0.

// Signed integers of 32 bits.
std::int32_t decode_32bit(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
// Signed integers of 16 bits, as the DWWSSN stations and others record.
std::int32_t decode_dwwssn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
// IEEE 754 numbers of single precision; their bits do not change.
std::int32_t decode_ieeefloat(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// The gain-ranged words of 16 bits of the CDSN and SRO stations, and those of ASRO, which are the same as
// SRO's.
std::int32_t decode_cdsn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_sro(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_asro(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// The multiplexed words of the Geoscope stations: three for each sample instant. All samples of the first
// component are written, then those of the second and the third: component j of instant i goes to index
// j * `nsamples` + i. The cursor moves on by `nsamples` floats only.
//   geo1  16 bits, of them 3 bits gain
//   geo2  3 bytes; the record's bytes stay as they are
//   geo3  16 bits, of them 4 bits gain
std::int32_t decode_geo1(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo3(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
// One of the three, by the number in its name. Any other number returns -1 and writes nothing.
std::int32_t decode_geoscope(char* raw, std::int32_t nsamples, std::int32_t nbytes, int byteswap, int code);

// --- decoders of compressed data -----------------------------------------------------------------------

// Steim level 1: differences of 8, 16 and 32 bits. Level 2: of 4, 5, 6, 8, 10, 15 and 30 bits. They read at
// most the `nbytes` at `data` and always store `nsamples` values: a sample that the data area lacks is zero.
// They return 0, or -1 with a message if samples are missing. Differences beyond `nsamples` are dropped
// without a message.
std::int32_t decode_steim(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_steim2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// USNSN: differences in groups of 4, 8 or 12, each group with a width of its own. Swaps each whole four bytes
// where `byteswap` is set, then reads the record most significant byte first; bytes beyond `nbytes` count as
// zero. Stores the samples that dcmprs finds, at most `nsamples`. For 0 or less it stores one, so the cursor
// must have room for it. Returns 0 also where dcmprs reports an error.
std::int32_t decode_usnsn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

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

// --- other decoders ------------------------------------------------------------------------------------

// Does not decode: points the cursor at the raw bytes themselves and returns -1.
std::int32_t decode_unknown(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// Text: copies `nsamples` bytes, ignoring `nbytes`, to where the cursor points, and does not move the cursor.
// Returns 1.
std::int32_t decode_ascii(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// --- the data formats ----------------------------------------------------------------------------------

struct SeedFormat {
    const char* seed;  // the format's name as volumes write it (blockette 030, field 3)
    const char* css;   // the CSS 3.0 datatype of the decoded output
    std::int32_t size; // bytes of decoded output for each sample instant
    Decoder convert;
    std::int32_t raw_size; // raw bytes of a sample instant, for a decoder that ignores `nbytes`; else 0
    int encoding;          // of blockette 1000 (field 3) that means this format, or -1
};

// The formats by data type number; number 0 is the unknown format.
extern const std::span<const SeedFormat> seed_format_map;
extern const int seed_format_count;

// Row of a table from a code to a name.
struct Xlat {
    const char* name;
    int num;
};

// The format names by encoding format of blockette 1000, in order of the codes.
extern const std::span<const Xlat> seedname;
extern const int nseedname;

// Name of the row whose number is `code`, or null.
const char* translate_number(int code, std::span<const Xlat> table);

// The data type number of a format name, after the aliases of the parameter file's table "data_type_aliases"
// if the program has read one; 0 when the name is not known.
int sd_data_type(std::string_view name);

// --- data records --------------------------------------------------------------------------------------

// The fixed header of a data record. Its binary fields are widened with their sign, also the 8-bit flag
// bytes: their users mask them. The reader of the listing fills in what the header itself does not say.
struct blk_dh_t {
    char stn_id[16];
    char loc_id[3];
    char chan_id[4];
    char channel[15]; // kept for the interface, unused here
    char network_code[3];
    char start_time[23]; // SEED time text, built by fix_dh
    int year;
    int doy;
    int hour;
    int minutes;
    int sec_int;
    int sec_frac; // 0.0001 s
    int length;   // of the record in bytes, set by the reader
    int nsamps;
    int rate_f; // sample rate factor
    int rate_m; // sample rate multiplier
    int activity;
    int io_flags;
    int quality;
    int blks_fol;     // number of blockettes that follow
    int time_cor;     // 0.0001 s
    int beg_data;     // byte offset of the first sample in the record
    int beg_blks;     // byte offset of the first data blockette in the record
    char* data;       // the samples, at beg_data of `raw`; null where that lies outside the record
    char* raw;        // the record, in the reader's buffer: both are valid until the next one is read
    double samp_rate; // samples per second, set by fix_dh
    int byteswap;     // 0 if the binary fields were in the host's order, -1 if they were swapped
    double epoch;     // start in epoch seconds, corrected, set by fixup_dh
    char format[51];  // data format name
    int seq_num;
    int sub_seq_num; // counts records that share a sequence number
    int type;        // data type number
};

// Decodes the samples of a data record by its `type`, from the `length` - `beg_data` bytes at `data`, whose
// words are swapped in place where `byteswap` is set: a record decodes once.
//
// `*output` receives the samples: `nsamps` floats of the host's order, three times as many for the Geoscope
// formats (the second component begins at index `nsamps`), or `nsamps` bytes of text for the format "as". The
// caller releases them with free. What the record lacks is zero; a negative `nsamps` counts as 0.
// `*csstype` receives the format's CSS 3.0 datatype, a constant.
//
// Returns the decoder's status, or -1 with a message where the record holds fewer samples than its header
// says. For an unknown format it writes a message and gives a copy of the raw bytes, the datatype "**" and
// the status -1. Exhausted memory is fatal.
std::int32_t decode_data(blk_dh_t* dh, char** output, const char** csstype);

// The bytes of a word reversed.
std::uint16_t swap_2byte(std::uint16_t word);
std::uint32_t swap_4byte(std::uint32_t word);

} // namespace quarry
#pragma GCC visibility pop
