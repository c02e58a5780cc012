// SPDX-License-Identifier: Apache-2.0
// Volumes through the reader and the lister, or through the reader and the decoders. The input is a volume as
// it stands in a file; its last byte also chooses the options.

#include "fuzz.h"

#include "blockette/blockette.h"
#include "quarry/decoders.h"
#include "sdd/sdd.h"
#include "seedio/rseed.h"
#include "seedio/seed.h"
#include "state.h"

#include <cstdlib>
#include <memory>

namespace quarry {

namespace {

struct HandleRelease {
    void operator()(read_handle_t* handle) const { free_handle(handle); }
};
using Handle = std::unique_ptr<read_handle_t, HandleRelease>;

void begin_as_a_new_process() {
    Tapefile = 0;
    Bad_blkflag = 0;
    Geoscope_channels = {};
    for (List<std::string>* dictionary : {&Tbl_031, &Tbl_033, &Tbl_034})
        dictionary->clear();
    blk_050 = {};
    blk_052 = {};
}

void decode(blk_dh_t* header) {
    char* samples = nullptr;
    const char* csstype = nullptr;
    const int status = decode_data(header, &samples, &csstype);
    const std::unique_ptr<char, decltype(&std::free)> owner(samples, std::free);
    fuzz::promise(samples != nullptr && csstype != nullptr && status >= -1 && status <= 1, "decode_data");
}

void decode_volume(read_handle_t* handle) {
    void* record = nullptr;
    int type = 0;
    while (read_blk(handle, &record, &type) != 0) {
        const BlockettePointer owner(record, {type});
        if (type == -1)
            decode(static_cast<blk_dh_t*>(record));
    }
    fuzz::promise(read_blk(handle, &record, &type) == 0 && record == nullptr, "the end stays the end");
}

void read(std::string_view volume) {
    begin_as_a_new_process();
    const unsigned choice = volume.empty() ? 0U : static_cast<unsigned char>(volume.back());
    Simplify = static_cast<int>(choice & 1);
    Verbose_Flag = static_cast<int>(choice & 2);
    const Handle handle(seed_read("/dev/null"));
    handle->logical->source = ByteSource::of_memory(volume);
    if ((choice & 12) == 12)
        decode_volume(handle.get());
    else
        list_volume(handle.get(), (choice & 12) == 8 ? 1 : 0);
}

} // namespace

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::read, quarry::fuzz::text_of(data, size));
    return 0;
}
