// SPDX-License-Identifier: Apache-2.0
#include "seedio/seed.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "decode/catalogue.h"
#include "listing/fixup_dh.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "quarry/decoders.h"
#include "seedio/rseed.h"
#include "state.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

namespace quarry {

namespace {

// The record image: a logical record header that stands for the real ones, then the blockette or the data
// record from its byte 8 on, then at least one NUL.
constexpr int image_header_size = logical_header_size;
constexpr std::string_view image_header = "000000D ";
constexpr int image_size = image_header_size + largest_blockette + 1;

constexpr int type_and_length_size = blockette_head_size;
// What is read of a data record before its length is known, without the logical record header.
constexpr int front_size = record_front_size - image_header_size;

// The blockette, or the data record from its byte 8 on.
char* body(read_handle_t* handle) {
    return handle->image.data() + image_header_size;
}

std::string_view body_text(read_handle_t* handle, int length) {
    return {body(handle), static_cast<std::size_t>(std::max(length, 0))};
}

// The end of the input is not a system error: the message then ends in "Success".
void restore_read_error(const SeedInput* input) {
    errno = input->read_error;
}

void count_within_sequence(read_handle_t* handle, int seq_num) {
    if (handle->seq_num != seq_num) {
        handle->seq_num = seq_num;
        handle->sub_seq_num = 0;
    }
    handle->sub_seq_num += 1;
}

// Settles sample type and record length: what a blockette 1000 says wins over what the control headers
// declared.
void settle_type_and_length(blk_dh_t* dh, std::span<const char> raw) {
    const char* found_name = nullptr;
    int format = 0;
    int order = 0;
    const Steim* state = nullptr;
    const int found = parse_b1000(raw, &found_name, &format, &order, &state);
    const int declared = sd_data_type(member_text(dh->format));
    dh->type = declared;
    if (found == 0)
        return;
    if (declared != 0 && declared != found)
        b030_problem(*dh, dh->format, found_name);
    dh->type = found;
    if (state->record_size != dh->length)
        log_complain(0, "different record sizes in 030 blockette (%d) and 1000 blockette (%d)", dh->length,
                     state->record_size);
    dh->length = state->record_size;
}

// How much of a data record is read before its length is known: where the record may be one of the shortest,
// only as much as that has.
int front_of(SeedInput* input) {
    constexpr int shortest = shortest_record_size;
    return input->recsiz == shortest || ends_after(input, shortest) ? shortest : int{record_front_size};
}

// Reads the front of a data record, whose first bytes are in the body, and settles its header. What a shorter
// front lacks counts as zero. Returns the header, or none at the end of the input.
BlockettePointer read_data_header(read_handle_t* handle, int front) {
    SeedInput* input = handle->logical;
    BlockettePointer owner(nullptr, {data_record_type});
    constexpr int in_body = image_header_size + type_and_length_size;
    std::fill(handle->image.begin() + front, handle->image.begin() + record_front_size, '\0');
    if (read_remainder(input, handle->image.data() + in_body, front - in_body) == 0) {
        restore_read_error(input);
        log_complain(1, "Unexpected end of file reading data header File #%d\n", Tapefile);
        return owner;
    }
    owner.reset(parse_blk(body_text(handle, front_size), data_record_type));
    auto* dh = static_cast<blk_dh_t*>(owner.get());
    if (Bad_blkflag != 0)
        handle->bad_blockette(dh, data_record_type, up_to_nul(body_text(handle, fixed_header_size)));
    dh->seq_num = handle->seq_num;
    dh->sub_seq_num = handle->sub_seq_num;
    fixup_dh(dh, handle);
    settle_type_and_length(dh, std::span(handle->image).first(record_front_size));
    return owner;
}

// Reads the rest of a data record, of which the front is in the image. Returns 1, or 0 at the end of the
// input.
int read_data(read_handle_t* handle, blk_dh_t* dh, int front) {
    SeedInput* input = handle->logical;
    if (dh->length > largest_blockette)
        log_die(0, "Data blockette size = %d: too large for internal buffer.\n", dh->length);
    input->recsiz = dh->length;
    if (read_remainder(input, handle->image.data() + front, dh->length - front) == 0) {
        restore_read_error(input);
        log_complain(1, "Unexpected end of file reading data record File #%d.\n", Tapefile);
        return 0;
    }
    handle->bufflength = std::max(dh->length - image_header_size, front_size);
    dh->raw = handle->image.data();
    // A beginning of data outside the record points at no samples.
    dh->data = dh->beg_data >= 0 && dh->beg_data <= dh->length ? dh->raw + dh->beg_data : nullptr;
    return 1;
}

// The rest of a data record whose first bytes, as many as a control blockette's type and length take, are in
// the body.
int read_data_record(read_handle_t* handle, void** record, int* type) {
    count_within_sequence(handle, handle->logical->seq_num);
    const int front = front_of(handle->logical);
    BlockettePointer owner = read_data_header(handle, front);
    if (owner == nullptr || read_data(handle, static_cast<blk_dh_t*>(owner.get()), front) == 0)
        return 0;
    *record = owner.release();
    *type = data_record_type;
    return 1;
}

// Keeps what a control blockette says about the records that follow. The dictionaries outlive the blockettes,
// so they take copies.
void apply_blockette(read_handle_t* handle, const void* record, int type) {
    switch (type) {
    case 10:
        setReadRecLen(handle->logical, static_cast<const blk_010_t*>(record)->rec_len);
        break;
    case 30:
        update_fmt_list(&handle->fmt_list, *static_cast<const blk_030_t*>(record));
        break;
    case 31: {
        const auto* b031 = static_cast<const blk_031_t*>(record);
        Tbl_031.set(b031->comment_id, b031->comment);
        break;
    }
    case 33: {
        const auto* b033 = static_cast<const blk_033_t*>(record);
        Tbl_033.set(b033->abbrev_id, b033->abbrev);
        break;
    }
    case 34: {
        const auto* b034 = static_cast<const blk_034_t*>(record);
        Tbl_034.set(b034->unit_id, b034->unit_name);
        break;
    }
    case 50: {
        const auto* b050 = static_cast<const blk_050_t*>(record);
        copy_text(handle->stn, member_text(b050->station));
        update_order_list(&handle->order_list, *b050);
        break;
    }
    case 52:
        update_rec_list(&handle->rec_list, handle->stn, handle->fmt_list,
                        *static_cast<const blk_052_t*>(record));
        break;
    default:
        break;
    }
}

// The rest of a control blockette whose type and length are in the body.
int read_control_blockette(read_handle_t* handle, void** record, int* type) {
    const std::string_view head = body_text(handle, type_and_length_size);
    *type = integer_value(head.substr(0, 3));
    const int length = integer_value(head.substr(3));
    if (length > largest_blockette)
        log_die(0, "Blockette type %d size = %d: too large for internal buffer.\n", *type, length);
    if (sdminsz(*type) > length)
        log_complain(0, "Blockette type %d size = %d: too small! (file #%d)\n", *type, length, Tapefile);
    if (read_remainder(handle->logical, body(handle) + type_and_length_size, length - type_and_length_size) ==
        0) {
        restore_read_error(handle->logical);
        log_complain(1, "Unexpected end of file reading blockette type %d file #%d\n", *type, Tapefile);
        return 0;
    }
    // A declared length that is shorter than its own field still leaves these bytes.
    handle->bufflength = std::max(length, type_and_length_size);
    BlockettePointer owner(parse_blk(body_text(handle, handle->bufflength), *type), {*type});
    if (Bad_blkflag != 0)
        handle->bad_blockette(owner.get(), *type, up_to_nul(body_text(handle, length)));
    apply_blockette(handle, owner.get(), *type);
    *record = owner.release();
    return 1;
}

// As read_blk, but bytes of the record before may be left in the image behind this one.
int read_into_image(read_handle_t* handle, void** record, int* type) {
    SeedInput* input = handle->logical;
    for (;;) {
        if (read_fixed_header(input, body(handle), type_and_length_size) == 0)
            return 0;
        if (is_ok_quality(input->type_code))
            return read_data_record(handle, record, type);
        if (!is_blank(body_text(handle, type_and_length_size)))
            return read_control_blockette(handle, record, type);
        // Padding up to the end of the logical record.
        if (advanceLogicalRecord(input) != 0)
            return 0;
    }
}

// Nothing of an earlier record is left behind a shorter one.
void clear_behind(read_handle_t* handle, int used_before) {
    std::fill(body(handle) + std::min(handle->bufflength, used_before), body(handle) + used_before, '\0');
}

} // namespace

read_handle_t* seed_read(const char* name) {
    auto* handle = new (std::nothrow)
        read_handle_t{nullptr, 0, 0, new_rec_list(), new_order_list(), {}, {}, report_bad_blockette, {}, 0};
    if (handle == nullptr)
        out_of_memory(QUARRY_SITE("seed"), sizeof(read_handle_t), "handle");
    allocate_zeroed(handle->image, image_size, QUARRY_SITE("seed"), image_size, "handle->image");
    handle->logical = newSeedInput(name);
    return handle;
}

void free_handle(read_handle_t* handle) {
    freeSeedInput(handle->logical);
    delete handle;
}

int reinit_handle(read_handle_t* handle) {
    handle->rec_list.clear();
    handle->order_list.clear();
    handle->fmt_list.clear();
    return 0;
}

void report_bad_blockette(const void* /*record*/, int type, std::string_view text) {
    log_complain(0, "Error at BLK%03d : %.*s\n", type, static_cast<int>(text.size()), text.data());
}

void fixup_dh(blk_dh_t* header, const read_handle_t* handle) {
    complete_header(header, handle->rec_list);
}

int read_blk(read_handle_t* handle, void** record, int* type) {
    *record = nullptr;
    *type = 0;
    std::copy(image_header.begin(), image_header.end(), handle->image.begin());
    const int used_before = std::exchange(handle->bufflength, largest_blockette); // unless it becomes known
    const int delivered = read_into_image(handle, record, type);
    clear_behind(handle, used_before);
    return delivered;
}

int parse_b1000(std::span<const char> raw, const char** name, int* format, int* order, const Steim** state) {
    static Steim decoder_state;
    decoder_state = {};
    decoder_state.record = raw;
    decoder_state.record_size = 256;
    *state = &decoder_state;
    if (parse_data_record_header(&decoder_state) != 0)
        return 0;
    *format = decoder_state.s1000.dataformat;
    *order = decoder_state.s1000.sparc_order;
    const char* translated = translate_number(*format, seedname);
    *name = translated;
    return translated != nullptr ? sd_data_type(translated) : 0;
}

void b030_problem(const blk_dh_t& dh, const char* declared, const char* found) {
    static Map<bool> reported;
    std::string channel = std::string(dh.network_code) + "_" + dh.stn_id + "_" + dh.chan_id;
    if (dh.loc_id[0] != '\0')
        channel.append("_").append(dh.loc_id);
    if (reported.get(channel) != nullptr)
        return;
    reported.set(channel, true);
    log_complain(0,
                 "\n*** Serious inconsistency in seed volume.\n"
                 "    For the channel %s, the 030 blockettes indicate the datatype\n"
                 "        %s\n"
                 "    but the blockette 1000 embedded in the data says the data is\n"
                 "        %s\n"
                 "    This inconsistency may cause problems.",
                 channel.c_str(), declared, found);
}

} // namespace quarry
