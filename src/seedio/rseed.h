// SPDX-License-Identifier: Apache-2.0
// Logical record input: the bytes of a volume as logical records.
//
// A volume is a sequence of logical records of one length at a time, each beginning with 8 bytes: sequence
// number (6 digits), record type letter, continuation character. This module owns the byte stream: it steps
// from record to record, consumes those 8 bytes and hands out what lies between them. It never uses a byte
// that was not read.
#pragma once

#include "platform/byte_source.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quarry {

inline constexpr int default_record_size = 512; // until the volume says otherwise
inline constexpr int largest_record_power = 16; // no logical record of a volume is longer than 65536 bytes

struct SeedInput {
    std::string name; // of the input, for messages
    ByteSource source;
    int fd;                   // the descriptor that the source reads
    int fileno;               // number of the current tape file; 1 in the first pass
    std::vector<char> buffer; // of read_buffer_size bytes
    int sZphysical;           // its size
    int pbytes;               // valid bytes in it
    int eof;                  // 1 once a read found the end or failed
    int read_error;           // errno of a failed read, else 0
    std::int64_t nreads;      // since the last reset: successful reads,
    std::int64_t totbytes;    //   bytes read,
    std::int64_t recno;       //   logical record headers consumed
    int start;                // offset of the current logical record in the buffer
    int cur;                  // offset of the next unread byte
    int recsiz;               // current logical record length, 0 before the first header
    int seq_num;              // of the current logical record
    char type_code;           // its record type letter, "#" after a reset
    char cont_code;           // its continuation character, "#" after a reset

    // Hooks of the program, unless null: called at the beginning of each logical record, and before a read
    // that may wait for input.
    void (*announce)(int seq_num);
    void (*before_read)();
};

// Opens the named input, standard input for an empty name or "-"; compressed input is decompressed. Fatal if
// it cannot be opened. Released by freeSeedInput.
SeedInput* newSeedInput(const char* name);

// Starts the next pass: forgets what is buffered and the end of the file, counts from 0.
void clrSeedInput(SeedInput* input);

// Releases the state with all that newSeedInput opened; standard input stays open.
void freeSeedInput(SeedInput* input);

// Moves what is unread to the buffer's front and fills it. Returns 0, or -1 on a read error (reported)
// or when the input is exhausted.
int moredata(SeedInput* input);

// Moves to the next logical record and consumes its header; a sequence number that is not a number is
// reported. Returns 0, or -1 at the end of the input (fewer than 8 bytes are not a record) or on a read
// error.
int advanceLogicalRecord(SeedInput* input);

// Copies `count` bytes that lie within one logical record: where fewer are left in the current one, they are
// passed over and the bytes are taken from the next. Returns 1, or 0 at the end of the input.
int read_fixed_header(SeedInput* input, char* out, int count);

// Copies `count` bytes, going on in the next logical records as needed. Returns 1, or 0 at the end of the
// input.
int read_remainder(SeedInput* input, char* out, int count);

// True if the input ends exactly `count` bytes after the beginning of the current logical record.
bool ends_after(SeedInput* input, int count);

// Sets the logical record length to 2 to the given power (at least 2 bytes), in force from the next record
// on. A power above largest_record_power is reported and changes nothing.
void setReadRecLen(SeedInput* input, int power);

} // namespace quarry
