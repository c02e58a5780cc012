// SPDX-License-Identifier: Apache-2.0
#include "blockette/response.h"

#include "blockette/scan.h"
#include "blockette/station.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

namespace quarry {

namespace {

template <class Record>
void copy_channel_context(Record* blk) {
    copy_text(blk->station, member_text(blk_050.station));
    copy_text(blk->network_code, member_text(blk_050.network_code));
    copy_text(blk->channel, member_text(blk_052.channel));
    copy_text(blk->start_date, member_text(blk_052.start_date));
    copy_text(blk->end_date, member_text(blk_052.end_date));
    blk->instr_id = blk_052.instr_id;
    if constexpr (requires { blk->sample_rate; })
        blk->sample_rate = blk_052.sample_rate;
    if constexpr (requires { blk->units_signal; })
        blk->units_signal = blk_052.units_signal;
}

// The functions below read lists whose arrays have their declared count and are zeroed. When the text has
// ended, the elements that are left stay zero: a missing field is 0 and cannot fail to convert.

// True, with a note, if the blockette has failed before element `index` of the named list.
bool aborted(const char* list, std::size_t index) {
    if (Bad_blkflag == 0)
        return false;
    log_note("Aborting input of %s at #%d\n", list, static_cast<int>(index));
    return true;
}

Complex_t scan_complex(std::string_view* str) {
    const double real = scan_double(str, 12);
    const double imag = scan_double(str, 12);
    return {real, imag};
}

// Values with their errors, 12 characters each part. Returns false when the reading was aborted.
bool scan_complex_list(std::string_view* str, const char* list, std::vector<Complex_t>* values,
                       std::vector<Complex_t>* errors) {
    for (std::size_t i = 0; i < values->size(); ++i) {
        if (aborted(list, i))
            return false;
        if (str->empty())
            break;
        (*values)[i] = scan_complex(str);
        (*errors)[i] = scan_complex(str);
    }
    return true;
}

bool scan_real_list(std::string_view* str, const char* list, std::vector<double>* values,
                    std::vector<double>* errors) {
    for (std::size_t i = 0; i < values->size(); ++i) {
        if (aborted(list, i))
            return false;
        if (str->empty())
            break;
        (*values)[i] = scan_double(str, 12);
        (*errors)[i] = scan_double(str, 12);
    }
    return true;
}

} // namespace

void init_053(blk_053_t* blk) {
    *blk = {};
    blk->type = 53;
    blk->func_type = ' ';
    blk->normal_factor = 1.0;
}

//  1 type                       int 3
//  2 length                     int 4
//  3 transfer function type     char
//  4 stage                      int 2
//  5 input units key            int 3
//  6 output units key           int 3
//  7 normalization factor       real 12
//  8 normalization frequency    real 12
//  9 number of zeros            int 3
//    for each zero:
// 10   real, imaginary, real error, imaginary error   4 x real 12
// 11 number of poles            int 3
//    for each pole:
// 12   the same four values     4 x real 12
void parse_053(blk_053_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->func_type = scan_char(&buff);
    blk->stage_num = scan_int(&buff, 2);
    blk->input_units = scan_int(&buff, 3);
    blk->output_units = scan_int(&buff, 3);
    blk->normal_factor = scan_double(&buff, 12);
    blk->normal_freq = scan_double(&buff, 12);
    copy_channel_context(blk);

    const int zeros = blk->num_zeros = scan_int(&buff, 3);
    allocate_zeroed(blk->zero, zeros, QUARRY_SITE("blockette"), zeros, "blk->zero");
    allocate_zeroed(blk->zero_error, zeros, QUARRY_SITE("blockette"), zeros, "blk->zero_error");
    if (!scan_complex_list(&buff, "paz zeros", &blk->zero, &blk->zero_error))
        return;
    const int poles = blk->num_poles = scan_int(&buff, 3);
    allocate_zeroed(blk->pole, poles, QUARRY_SITE("blockette"), poles, "blk->pole");
    allocate_zeroed(blk->pole_error, poles, QUARRY_SITE("blockette"), poles, "blk->pole_error");
    scan_complex_list(&buff, "paz poles", &blk->pole, &blk->pole_error);
}

void init_054(blk_054_t* blk) {
    *blk = {};
    blk->type = 54;
    blk->func_type = ' ';
}

//  1 type                      int 3
//  2 length                    int 4
//  3 response type             char
//  4 stage                     int 2
//  5 input units key           int 3
//  6 output units key          int 3
//  7 number of numerators      int 4
//    for each numerator:
//  8   coefficient, error      2 x real 12
//  9 number of denominators    int 4
//    for each denominator:
// 10   coefficient, error      2 x real 12
void parse_054(blk_054_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->func_type = scan_char(&buff);
    blk->stage_num = scan_int(&buff, 2);
    blk->input_units = scan_int(&buff, 3);
    blk->output_units = scan_int(&buff, 3);
    copy_channel_context(blk);

    const int numers = blk->num_numer = scan_int(&buff, 4);
    allocate_zeroed(blk->numer_coef, numers, QUARRY_SITE("blockette"), numers, "blk->numer_coef");
    allocate_zeroed(blk->numer_error, numers, QUARRY_SITE("blockette"), numers, "blk->numer_error");
    if (!scan_real_list(&buff, "fir numerators", &blk->numer_coef, &blk->numer_error))
        return;
    const int denoms = blk->num_denom = scan_int(&buff, 4);
    allocate_zeroed(blk->denom_coef, denoms, QUARRY_SITE("blockette"), denoms, "blk->denom_coef");
    allocate_zeroed(blk->denom_error, denoms, QUARRY_SITE("blockette"), denoms, "blk->denom_error");
    scan_real_list(&buff, "fir denominators", &blk->denom_coef, &blk->denom_error);
}

void init_057(blk_057_t* blk) {
    *blk = {};
    blk->type = 57;
}

// 1 type                  int 3
// 2 length                int 4
// 3 stage                 int 2
// 4 input sample rate     real 10
// 5 decimation factor     int 5
// 6 decimation offset     int 5
// 7 estimated delay       real 11
// 8 correction applied    real 11
void parse_057(blk_057_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->stage_num = scan_int(&buff, 2);
    blk->samprate = scan_double(&buff, 10);
    blk->dec_factor = scan_int(&buff, 5);
    blk->dec_offset = scan_int(&buff, 5);
    blk->delay = scan_double(&buff, 11);
    blk->correction = scan_double(&buff, 11);
    copy_channel_context(blk);
}

void init_058(blk_058_t* blk) {
    *blk = {};
    blk->type = 58;
}

// 1 type                  int 3
// 2 length                int 4
// 3 stage                 int 2
// 4 sensitivity or gain   real 12
// 5 frequency             real 12
//   the calibration history that follows is not read
void parse_058(blk_058_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->stage_num = scan_int(&buff, 2);
    blk->gain = scan_double(&buff, 12);
    blk->freq = scan_double(&buff, 12);
    copy_channel_context(blk);
}

void init_059(blk_059_t* blk) {
    *blk = {};
    blk->type = 59;
}

// 1 type               int 3
// 2 length             int 4
// 3 beginning time     var 23
// 4 end time           var 23
// 5 comment code key   int 4
// 6 comment level      int 6
void parse_059(blk_059_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_var_str(&buff, blk->beg_time);
    scan_var_str(&buff, blk->end_time);
    blk->comment_key = scan_int(&buff, 4);
    blk->comment_level = scan_int(&buff, 6);
    copy_channel_context(blk);
}

void init_061(blk_061_t* blk) {
    *blk = {};
    blk->type = 61;
    blk->symmetry = ' ';
}

// 1 type                     int 3
// 2 length                   int 4
// 3 stage                    int 2
// 4 response name            var 26
// 5 symmetry code            char
// 6 input units key          int 3
// 7 output units key         int 3
// 8 number of coefficients   int 4
//   for each coefficient:
// 9   FIR coefficient        real 14
void parse_061(blk_061_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->stage_num = scan_int(&buff, 2);
    scan_var_str(&buff, blk->response_name);
    blk->symmetry = scan_char(&buff);
    blk->input_units = scan_int(&buff, 3);
    blk->output_units = scan_int(&buff, 3);
    const int coefs = blk->num_coef = scan_int(&buff, 4);
    copy_channel_context(blk);

    allocate_zeroed(blk->coef, coefs, QUARRY_SITE("blockette"), coefs, "blk->coef");
    for (std::size_t i = 0; i < blk->coef.size(); ++i) {
        if (aborted("061 fir coefficient", i))
            return;
        if (buff.empty())
            break;
        blk->coef[i] = scan_double(&buff, 14);
    }
}

} // namespace quarry
