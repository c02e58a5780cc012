// SPDX-License-Identifier: Apache-2.0
#include "seedio/rseed.h"

#include "decode/data_record.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace quarry {

namespace {

constexpr int header_size = logical_header_size;
// The buffer is filled up to more than this, which always covers the longest logical record.
constexpr int enough_bytes = 1 << largest_record_power;
constexpr int read_buffer_size = 2 * enough_bytes + 2;

ByteSource open_source(const char* name) {
    if (*name == '\0' || std::strcmp(name, "-") == 0)
        return ByteSource::of_descriptor(STDIN_FILENO);
    ByteSource source = ByteSource::of_path(name);
    if (source.error().kind != ByteError::Kind::none) {
        errno = source.error().number;
        log_die(1, "Can't open input file %s\n", name);
    }
    return source;
}

// Reports why a read failed. Compressed data that are damaged end the input, but are not a read error.
void report_failed_read(SeedInput* input) {
    const ByteError& error = input->source.error();
    const std::string reason(error.reason);
    switch (error.kind) {
    case ByteError::Kind::damaged:
        log_complain(0, "Decompressing %s ended badly: %s\n", input->name.c_str(), reason.c_str());
        break;
    case ByteError::Kind::trailing:
        log_complain(0, "Decompressing %s: %s\n", input->name.c_str(), reason.c_str());
        break;
    default:
        errno = input->read_error = error.number;
        log_complain(1, "input read error\n");
    }
}

void parse_sequence_number(SeedInput* input, std::string_view field) {
    const ParsedInteger parsed = parse_integer(field);
    input->seq_num = static_cast<int>(parsed.value);
    if (input->announce != nullptr)
        input->announce(input->seq_num);
    if (parsed.length == field.size() || (parsed.length > 0 && is_blank(field.substr(parsed.length))))
        return;
    const std::string_view text = up_to_nul(field);
    log_complain(0, "Bad logical block header sequence number = '%.*s'", static_cast<int>(text.size()),
                 text.data());
}

// Bytes left in the current logical record; negative when a read went beyond a record made shorter.
int left_in_record(const SeedInput* input) {
    return input->recsiz + input->start - input->cur;
}

// Adds what one read gives to the buffer; the end or a failure sets `eof`.
void read_piece(SeedInput* input) {
    if (input->before_read != nullptr)
        input->before_read();
    const auto room = std::span(input->buffer).subspan(static_cast<std::size_t>(input->pbytes));
    const ssize_t result = input->source.read(room);
    if (result > 0) {
        input->pbytes += static_cast<int>(result);
        input->totbytes += result;
        input->nreads += 1;
        return;
    }
    input->eof = 1;
    if (result < 0)
        report_failed_read(input);
}

// The end, for every later call too.
void end_input(SeedInput* input) {
    input->start = input->cur = input->pbytes;
}

// Reads on to the current logical record if the one before ends in padding that has not been read yet.
void pass_over_missing(SeedInput* input) {
    while (input->start > input->pbytes && input->eof == 0) {
        input->start -= input->pbytes;
        input->cur = input->start;
        input->pbytes = 0;
        read_piece(input);
    }
}

// Copies from the buffer, which then holds that many bytes from the cursor on, unless the input ends before.
bool copy_buffered(SeedInput* input, char* out, int count) {
    while (input->pbytes - input->cur < count && input->eof == 0)
        read_piece(input);
    if (input->pbytes - input->cur < count) {
        end_input(input);
        return false;
    }
    std::copy_n(input->buffer.data() + input->cur, count, out);
    input->cur += count;
    return true;
}

} // namespace

SeedInput* newSeedInput(const char* name) {
    auto* input = new_zeroed<SeedInput>(QUARRY_SITE("rseed"), sizeof(SeedInput), "handle");
    input->name = name;
    input->source = open_source(name);
    input->fd = input->source.descriptor();
    input->sZphysical = read_buffer_size;
    allocate_zeroed(input->buffer, read_buffer_size, QUARRY_SITE("rseed"), read_buffer_size,
                    "handle->buffer");
    input->fileno = -1;
    clrSeedInput(input);
    return input;
}

void clrSeedInput(SeedInput* input) {
    input->fileno += 1;
    input->pbytes = input->eof = input->read_error = 0;
    input->nreads = input->totbytes = input->recno = 0;
    input->start = input->cur = input->recsiz = input->seq_num = 0;
    input->type_code = input->cont_code = '#';
}

void freeSeedInput(SeedInput* input) {
    delete input;
}

int moredata(SeedInput* input) {
    char* buffer = input->buffer.data();
    pass_over_missing(input);
    if (input->start > 0) {
        const int tail = std::max(input->pbytes - input->start, 0);
        std::copy_n(buffer + input->pbytes - tail, tail, buffer);
        input->pbytes = tail;
        input->start = 0;
        input->cur = 0;
    }
    // A record whose writer is slow is used as soon as it is there.
    while (input->eof == 0 && input->pbytes <= enough_bytes &&
           (input->pbytes < header_size || !input->source.would_wait()))
        read_piece(input);
    return input->read_error != 0 || (input->eof != 0 && input->pbytes == 0) ? -1 : 0;
}

int advanceLogicalRecord(SeedInput* input) {
    if (input->eof != 0 && input->start >= input->pbytes)
        return -1;
    input->start += input->recsiz;
    input->cur = input->start;
    if (input->eof == 0 && input->pbytes <= input->start + enough_bytes && moredata(input) != 0)
        return -1;
    if (input->pbytes - input->start < header_size) {
        end_input(input);
        return -1;
    }

    const char* header = input->buffer.data() + input->start;
    parse_sequence_number(input, {header, 6});
    input->type_code = header[6];
    input->cont_code = header[7];
    input->recno += 1;
    input->cur += header_size;
    if (input->recsiz == 0)
        input->recsiz = default_record_size;
    return 0;
}

int read_fixed_header(SeedInput* input, char* out, int count) {
    if (left_in_record(input) < count && advanceLogicalRecord(input) != 0)
        return 0;
    return copy_buffered(input, out, count) ? 1 : 0;
}

int read_remainder(SeedInput* input, char* out, int count) {
    while (count > 0) {
        const int piece = std::clamp(left_in_record(input), 0, count);
        if (!copy_buffered(input, out, piece))
            return 0;
        out += piece;
        count -= piece;
        if (count > 0 && advanceLogicalRecord(input) != 0)
            return 0;
    }
    return 1;
}

bool ends_after(SeedInput* input, int count) {
    while (input->pbytes - input->start <= count && input->eof == 0)
        read_piece(input);
    return input->pbytes - input->start == count;
}

void setReadRecLen(SeedInput* input, int power) {
    if (power > largest_record_power) {
        log_complain(0, "Logical record length 2^%d is too large: keeping %d\n", power, input->recsiz);
        return;
    }
    input->recsiz = record_bytes(power);
}

} // namespace quarry
