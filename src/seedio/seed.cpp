#include "seedio/seed.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "decode/decode.h"
#include "listing/fixup_dh.h"
#include "listing/pbrief.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"
#include "platform/text.h"
#include "seedio/rseed.h"
#include "state.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>

namespace quarry {

namespace {

// The image of one record: a logical record header that stands for the real ones, then the blockette or the
// data record from its byte 8 on, then at least one NUL.
constexpr int image_header_size = logical_header_size;
constexpr std::string_view image_header = "000000D ";
std::array<char, image_header_size + largest_blockette + 1> image;
char* const body = image.data() + image_header_size;

// How many bytes of the body the last call used.
int bufflength = largest_blockette;

constexpr int type_and_length_size = 7;
constexpr int data_record_head = 136; // enough for the fixed header and the first data blockettes
constexpr int fixed_header_size = 48;

std::string_view body_text(int length) {
    return {body, static_cast<std::size_t>(std::max(length, 0))};
}

// An end of the input is no system error: its text then says so.
void restore_read_error(const SeedInput* input) {
    errno = input->read_error;
}

void report_bad_blockette(const void* record, int type, std::string_view text) {
    text = up_to_nul(text);
    log_complain(0, "Error at BLK%03d : %.*s\n", type, static_cast<int>(text.size()), text.data());
    pbrief_blk(stderr, record, type);
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
void settle_type_and_length(blk_dh_t* dh) {
    const char* found_name = nullptr;
    int format = 0;
    int order = 0;
    const Steim* state = nullptr;
    const std::span<const char> raw(image.data(), data_record_head);
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

// The rest of a data record whose first bytes, as many as a control blockette's type and length take, are in
// the body.
int read_data_record(read_handle_t* handle, void** record, int* type) {
    SeedInput* input = handle->logical;
    count_within_sequence(handle, input->seq_num);
    constexpr int head = data_record_head - image_header_size;
    if (read_remainder(input, body + type_and_length_size, head - type_and_length_size) == 0) {
        restore_read_error(input);
        log_complain(1, "Unexpected end of file reading data header File #%d\n", Tapefile);
        return 0;
    }
    BlockettePointer owner(parse_blk(body_text(head), data_record_type), {data_record_type});
    auto* dh = static_cast<blk_dh_t*>(owner.get());
    if (Bad_blkflag != 0)
        report_bad_blockette(dh, data_record_type, body_text(fixed_header_size));
    dh->seq_num = handle->seq_num;
    dh->sub_seq_num = handle->sub_seq_num;
    fixup_dh(dh, handle);
    settle_type_and_length(dh);
    if (dh->length > largest_blockette)
        log_die(0, "Data blockette size = %d: too large for internal buffer.\n", dh->length);

    input->recsiz = dh->length;
    if (read_remainder(input, image.data() + data_record_head, dh->length - data_record_head) == 0) {
        restore_read_error(input);
        log_complain(1, "Unexpected end of file reading data record File #%d.\n", Tapefile);
        return 0;
    }
    bufflength = std::max(dh->length, head);
    dh->raw = image.data();
    // A beginning of data that no record of this length has points at no samples.
    dh->data = dh->beg_data >= 0 && dh->beg_data <= dh->length ? dh->raw + dh->beg_data : nullptr;
    *record = owner.release();
    *type = data_record_type;
    return 1;
}

// What a control blockette tells of the records that follow.
void apply_blockette(read_handle_t* handle, const void* record, int type) {
    switch (type) {
    case 10:
        setReadRecLen(handle->logical, static_cast<const blk_010_t*>(record)->rec_len);
        break;
    case 30:
        update_fmt_list(&handle->fmt_list, *static_cast<const blk_030_t*>(record));
        break;
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
    *type = integer_value(std::string_view(body, 3));
    const int length = integer_value(std::string_view(body + 3, 4));
    if (length > largest_blockette)
        log_die(0, "Blockette type %d size = %d: too large for internal buffer.\n", *type, length);
    if (sdminsz(*type) > length) {
        flush_output(stdout);
        log_complain(0, "Blockette type %d size = %d: too small! (file #%d)\n", *type, length, Tapefile);
    }
    if (read_remainder(handle->logical, body + type_and_length_size, length - type_and_length_size) == 0) {
        restore_read_error(handle->logical);
        log_complain(1, "Unexpected end of file reading blockette type %d file #%d\n", *type, Tapefile);
        return 0;
    }
    // A declared length that is shorter than its own field still leaves these bytes.
    bufflength = std::max(length, type_and_length_size);
    BlockettePointer owner(parse_blk(body_text(bufflength), *type), {*type});
    if (Bad_blkflag != 0)
        report_bad_blockette(owner.get(), *type, body_text(length));
    apply_blockette(handle, owner.get(), *type);
    *record = owner.release();
    return 1;
}

} // namespace

read_handle_t* seed_read(const char* name) {
    auto* handle = new (std::nothrow) read_handle_t{nullptr, 0, 0, new_rec_list(), new_order_list(), {}, {}};
    if (handle == nullptr)
        out_of_memory(QUARRY_SITE("seed"), sizeof(read_handle_t), "handle");
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

int read_blk(read_handle_t* handle, void** record, int* type) {
    SeedInput* input = handle->logical;
    *record = nullptr;
    *type = 0;
    for (;;) {
        std::copy(image_header.begin(), image_header.end(), image.begin());
        std::fill_n(body, bufflength, '\0');
        bufflength = largest_blockette; // in case this call ends before it knows better
        if (read_fixed_header(input, body, type_and_length_size) == 0)
            return 0;
        if (is_ok_quality(input->type_code))
            return read_data_record(handle, record, type);
        if (!is_blank(body_text(type_and_length_size)))
            return read_control_blockette(handle, record, type);
        // Padding up to the end of the logical record.
        bufflength = type_and_length_size;
        if (advanceLogicalRecord(input) != 0)
            return 0;
    }
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
