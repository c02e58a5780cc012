// SPDX-License-Identifier: Apache-2.0
#include "listing/epoch_lists.h"

#include "decode/data_record.h"
#include "listing/seed_utl.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>
#include <string_view>
#include <vector>

namespace quarry {

namespace {

int compare_channel(const rec_len_t& test, const rec_len_t& base) {
    if (const int order = std::strcmp(test.stn, base.stn); order != 0)
        return order;
    if (const int order = std::strcmp(test.chan_id, base.chan_id); order != 0)
        return order;
    return std::strcmp(test.loc_id, base.loc_id);
}

int compare_station(const order_t& test, const order_t& base) {
    return std::strcmp(test.stn, base.stn);
}

// At most `size` characters of a code, up to its NUL, as the digits of a number.
std::uint64_t packed(const char* code, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size && code[i] != '\0'; ++i)
        number = number << 8 | static_cast<unsigned char>(code[i]);
    return number;
}

std::uint64_t packed_station(const char* stn) {
    return packed(stn, sizeof rec_len_t::stn - 1);
}

// Longer codes are cut as those of the epochs are.
EpochGroup group_of_codes(std::uint64_t station_and_channel, std::uint64_t location) {
    return {{static_cast<std::uint32_t>(station_and_channel >> 32),
             static_cast<std::uint32_t>(station_and_channel), static_cast<std::uint32_t>(location)}};
}

EpochGroup channel_group(const char* stn, const char* chan_id, const char* loc_id) {
    constexpr std::size_t chan_id_size = sizeof rec_len_t::chan_id - 1;
    return group_of_codes(packed_station(stn) << (8 * chan_id_size) | packed(chan_id, chan_id_size),
                          packed(loc_id, sizeof rec_len_t::loc_id - 1));
}

EpochGroup station_group(const char* stn) {
    return group_of_codes(packed_station(stn), 0);
}

template <class Epoch>
int compare_time(const Epoch& test, const Epoch& base) {
    if (test.start >= base.start && test.start < base.end)
        return 0;
    return (test.start > base.start ? 1 : 0) - (test.start < base.start ? 1 : 0);
}

} // namespace

int rec_len_cmp(const rec_len_t& test, const rec_len_t& base) {
    const int order = compare_channel(test, base);
    return order != 0 ? order : compare_time(test, base);
}

int order_cmp(const order_t& test, const order_t& base) {
    const int order = compare_station(test, base);
    return order != 0 ? order : compare_time(test, base);
}

EpochGroup group_of(const rec_len_t& epoch) {
    return channel_group(epoch.stn, epoch.chan_id, epoch.loc_id);
}
EpochGroup group_of(const order_t& epoch) {
    return station_group(epoch.stn);
}

SortedSet<rec_len_t> new_rec_list() {
    return {};
}
SortedSet<order_t> new_order_list() {
    return {};
}

namespace {

std::string_view key_text(const std::vector<char>& key) {
    return up_to_nul({key.data(), key.size()});
}

// A copy whose keys take the room of their texts, without those behind the last text: a few bytes of a volume
// can declare many keys that are not there.
blk_030_t dictionary_entry(const blk_030_t& b030) {
    blk_030_t entry{b030.type, b030.length, {}, b030.format_id, b030.data_type, b030.num_keys, {}};
    copy_text(entry.name, member_text(b030.name));
    std::size_t count = b030.decode_key.size();
    while (count > 0 && key_text(b030.decode_key[count - 1]).empty())
        --count;
    for (const std::vector<char>& key : std::span(b030.decode_key).first(count)) {
        const std::string_view text = key_text(key);
        entry.decode_key.emplace_back(text.size() + 1);
        copy_text(entry.decode_key.back(), text);
    }
    return entry;
}

} // namespace

void update_fmt_list(List<blk_030_t>* fmt_list, const blk_030_t& b030) {
    if (const blk_030_t* old = fmt_list->get(b030.format_id); old != nullptr) {
        if (std::strcmp(old->name, b030.name) != 0)
            log_complain(0, "Data format id code #%d used for both %s and %s", b030.format_id, old->name,
                         b030.name);
        else
            log_complain(0, "Data format id code #%d used twice for %s", b030.format_id, old->name);
    }
    fmt_list->set(b030.format_id, dictionary_entry(b030));
}

void update_rec_list(SortedSet<rec_len_t>* rec_list, const char* stn, const List<blk_030_t>& fmt_list,
                     const blk_052_t& b052) {
    rec_len_t epoch{};
    copy_text(epoch.stn, stn);
    copy_text(epoch.loc_id, member_text(b052.loc_id));
    copy_text(epoch.chan_id, member_text(b052.chan_id));
    start_epoch(member_text(b052.start_date), &epoch.start);
    end_epoch(member_text(b052.end_date), &epoch.end);
    epoch.len = record_bytes(b052.record_length);
    if (const blk_030_t* format = fmt_list.get(b052.format_id); format != nullptr)
        copy_text(epoch.format, member_text(format->name));
    else
        log_complain(0, "No data format for format id %d sta=%s chan=%s loc=%s File #%d\n", b052.format_id,
                     stn, b052.chan_id, b052.loc_id, Tapefile);
    rec_list->add(epoch);
}

void update_order_list(SortedSet<order_t>* order_list, const blk_050_t& b050) {
    order_t epoch{};
    copy_text(epoch.stn, member_text(b050.station));
    start_epoch(member_text(b050.start_date), &epoch.start);
    end_epoch(member_text(b050.end_date), &epoch.end);
    epoch.long_order = b050.long_order;
    epoch.word_order = b050.word_order;
    order_list->add(epoch);
}

int lookup_rec_list(const SortedSet<rec_len_t>& rec_list, blk_dh_t* dh) {
    const rec_len_t* found = rec_list.find(channel_group(dh->stn_id, dh->chan_id, dh->loc_id), dh->epoch);
    if (found == nullptr)
        return 0;
    dh->length = found->len;
    static_assert(sizeof found->format <= sizeof dh->format);
    std::copy(std::begin(found->format), std::end(found->format), dh->format);
    return 1;
}

int lookup_order_list(const SortedSet<order_t>& order_list, const blk_dh_t& dh, int* long_order,
                      int* word_order) {
    double time;
    seed2epoch(member_text(dh.start_time), &time);
    const order_t* found = order_list.find(station_group(dh.stn_id), time);
    if (found == nullptr)
        return 0;
    *long_order = found->long_order;
    *word_order = found->word_order;
    return 1;
}

} // namespace quarry
