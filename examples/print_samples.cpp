// Prints the samples of a SEED volume: print_samples VOLUME
//
// Each data record gives a line with its channel, start time and number of samples, then one line for each
// sample instant with the values of its components (three for the Geoscope formats, else one). Text that a
// channel records is printed as it is. Messages about damage go to standard error.

#include <quarry/blockette/blockette.h>
#include <quarry/platform/message_log.h>
#include <quarry/platform/parameter_file.h>
#include <quarry/seedio/decode.h>
#include <quarry/seedio/seed.h>
#include <quarry/state.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

void print_record(quarry::blk_dh_t* dh) {
    char* output = nullptr;
    const char* csstype = nullptr;
    quarry::decode_data(dh, &output, &csstype);
    const std::unique_ptr<char, Free> owner(output);

    std::printf("%s_%s_%s_%s %s %d samples\n", dh->network_code, dh->stn_id, dh->chan_id, dh->loc_id,
                dh->start_time, dh->nsamps);
    if (std::strcmp(csstype, "as") == 0) {
        std::printf("%.*s\n", dh->nsamps, output);
    } else if (std::strcmp(csstype, "t4") == 0) {
        const int components = quarry::seed_format_map[static_cast<std::size_t>(dh->type)].size / 4;
        const auto* samples = reinterpret_cast<const float*>(output);
        for (int i = 0; i < dh->nsamps; ++i)
            for (int j = 0; j < components; ++j)
                std::printf("%.9g%c", static_cast<double>(samples[j * dh->nsamps + i]),
                            j + 1 < components ? ' ' : '\n');
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s VOLUME\n", argv[0]);
        return 1;
    }
    quarry::log_init(argc, argv);
    quarry::param_read("quarry", &quarry::Parameters); // aliases of data formats, if there is such a file
    quarry::read_handle_t* handle = quarry::seed_read(argv[1]);
    void* record = nullptr;
    int type = 0;
    while (quarry::read_blk(handle, &record, &type) != 0) {
        const quarry::BlockettePointer owner(record, {type});
        if (record != nullptr && type == -1)
            print_record(static_cast<quarry::blk_dh_t*>(record));
    }
    quarry::free_handle(handle);
    return 0;
}
