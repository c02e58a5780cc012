// SEED record helpers shared by the tool family: which letters mark a data record, the data blockettes that
// follow a fixed data header, and tables from numbers to names.
#pragma once

#include <span>

namespace quarry {

// Row of a table from a code to a name.
struct Xlat {
    const char* name;
    int num;
};

// Blockette 100, Sample Rate: the actual sample rate, samples per second.
struct S100 {
    int type;
    int next_blockette_offset;
    float sample_rate;
};

// Blockette 1000, Data Only SEED: encoding format (field 3), word order (field 4: 0 little, 1 big endian),
// record length as a power of two (field 5).
struct S1000 {
    int type;
    int next_blockette_offset;
    int dataformat;
    int sparc_order;
    int log2_record_length;
};

// Decoder state: the record image in hand and what its data blockettes say. Both blockettes are all zero
// where the record has none.
struct Steim {
    std::span<const char> record;
    int record_size;
    S100 s100;
    S1000 s1000;
};

// The years of a start time that tell a fixed data header in the host's byte order from a swapped one.
inline constexpr int first_plausible_year = 1970;
inline constexpr int last_plausible_year = 2030;

// Length in bytes of a record whose length is told as a power of two; at least 2. The power is at most 30.
int record_bytes(int power);

// True for the record type letters of data records (D, R, Q, M).
bool is_ok_quality(char code);

// Walks the data blockettes of `state->record` (from its sequence number on) in the byte order that the
// year of the header tells, up to the first blockette 1000, and fills in the blockettes 100 and 1000 and,
// from the latter, `record_size` in bytes. Looks at nothing beyond byte 136 or the record's end. Returns 0,
// or -1 for a record without a whole fixed header or with a blockette 1000 whose length exponent is not in
// 7 to 30.
int parse_data_record_header(Steim* state);

// Name of the row whose number is `code`, or null.
const char* translate_number(int code, std::span<const Xlat> table);

} // namespace quarry
