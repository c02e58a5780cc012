// SPDX-License-Identifier: Apache-2.0
#include "blockette/sdblknam.h"
#include "listing/element_lines.h"
#include "listing/pbrief.h"

namespace quarry {

namespace {

// One line for each value, with its error if that is not zero. Only the line of a pole with an error ends in
// a blank.
void print_complex_list(LineBuffer& out, const std::vector<Complex_t>& values,
                        const std::vector<Complex_t>& errors, const char* end_with_error) {
    const std::size_t filled = filled_elements(values.size(), values, errors);
    for (std::size_t i = 0; i < filled; ++i) {
        print_line<"\t%3d (%+12.5E %+12.5e)">(out, static_cast<int>(i), values[i].real, values[i].imag);
        const bool has_error = errors[i].real != 0.0 || errors[i].imag != 0.0;
        if (has_error)
            print_line<"   (%12.5e %12.5e)">(out, errors[i].real, errors[i].imag);
        out.append(has_error ? end_with_error : "\n"); // not as a value: those show an end of line as a code
    }
    print_numbered<"\t%3d (%+12.5E %+12.5e)\n", 1000>(out, filled, values.size(), 0.0, 0.0);
}

// As above for coefficients, whose errors stand after `gap`.
void print_real_list(LineBuffer& out, const std::vector<double>& values, const std::vector<double>& errors,
                     const char* gap) {
    const std::size_t filled = filled_elements(values.size(), values, errors);
    for (std::size_t i = 0; i < filled; ++i) {
        print_line<"\t%5i %+12.5E">(out, static_cast<int>(i), values[i]);
        if (errors[i] != 0.0)
            print_line<"%s%+12.5e">(out, gap, errors[i]);
        out.append("\n");
    }
    print_numbered<"\t%5i %+12.5E\n", 10000>(out, filled, values.size(), 0.0);
}

} // namespace

void list_053(LineBuffer& out, const blk_053_t* blk) {
    print_line<
        "B%03i %d Type:%c Stage#%2i Input Units:%3i Output Units:%3i Norm:%6.4e @%6.2fHz  %3i Poles %3i Zeros  <%s>\n">(
        out, blk->type, blk->length, blk->func_type, blk->stage_num, blk->input_units, blk->output_units,
        blk->normal_factor, blk->normal_freq, blk->num_poles, blk->num_zeros, sdblknam(blk->type));
    out.append("\t  n     Poles (r, i)                   Errors(r, i) \n");
    print_complex_list(out, blk->pole, blk->pole_error, " \n");
    out.append("\t  n     Zeros (r, i)                   Errors(r, i) \n");
    print_complex_list(out, blk->zero, blk->zero_error, "\n");
}

void list_054(LineBuffer& out, const blk_054_t* blk) {
    print_line<"B%03i %d Type:%c stage#%2i Input:%3i Output:%3i  %4i Numerators, %4i Denominators  <%s>\n">(
        out, blk->type, blk->length, blk->func_type, blk->stage_num, blk->input_units, blk->output_units,
        blk->num_numer, blk->num_denom, sdblknam(blk->type));
    print_real_list(out, blk->numer_coef, blk->numer_error, "  ");
    print_real_list(out, blk->denom_coef, blk->denom_error, " ");
}

void list_057(LineBuffer& out, const blk_057_t* blk) {
    print_line<
        "B%03i %d Stage#%2i SampRateIn:%6.2fHz Decimation:%5i Offset:%5i Delay:%6.3fs Correction:%6.3fs <%s>\n">(
        out, blk->type, blk->length, blk->stage_num, blk->samprate, blk->dec_factor, blk->dec_offset,
        blk->delay, blk->correction, sdblknam(blk->type));
}

void list_058(LineBuffer& out, const blk_058_t* blk) {
    print_line<"B%03i %3i Stage#%5i %s:%10.6e Freq:%8.4fHz <%s>\n">(
        out, blk->type, blk->length, blk->stage_num, blk->stage_num != 0 ? "Gain" : "Sensitivity:", blk->gain,
        blk->freq, sdblknam(blk->type));
}

void list_059(LineBuffer& out, const blk_059_t* blk) {
    print_line<"B%03i %d Start:%20s End:%20s Comment#%4i Level#%6i <%s>\n">(
        out, blk->type, blk->length, blk->beg_time, blk->end_time, blk->comment_key, blk->comment_level,
        sdblknam(blk->type));
}

void list_061(LineBuffer& out, const blk_061_t* blk) {
    print_line<"B%03i %d stage#%2i '%s' Symmetry: %c Input:%3i Output:%3i  %4d Coefficients: <%s>\n">(
        out, blk->type, blk->length, blk->stage_num, blk->response_name, blk->symmetry, blk->input_units,
        blk->output_units, blk->num_coef, sdblknam(blk->type));
    const std::size_t filled = filled_elements(blk->coef.size(), blk->coef);
    for (std::size_t i = 0; i < filled; ++i)
        print_line<"\t%5i %+12.5E\n">(out, static_cast<int>(i), blk->coef[i]);
    print_numbered<"\t%5i %+12.5E\n", 10000>(out, filled, blk->coef.size(), 0.0);
}

} // namespace quarry
