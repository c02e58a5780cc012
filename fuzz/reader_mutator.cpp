// SPDX-License-Identifier: Apache-2.0
// Changes volumes as damage and malice would: whole blockettes and data records, their lengths, types and
// fields, and the length of the records that hold them. A part of the changes is libFuzzer's own.

#include "volume_builder.h"
#include "volume_parts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t largest);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,
                                               unsigned int seed);

namespace quarry::fuzz {

namespace {

constexpr std::size_t length_at = 3; // of a blockette, 4 digits

struct Volume {
    std::vector<VolumePart> parts;
    int record_size;
};

class Mutator {
public:
    Mutator(Volume* volume, unsigned int seed) : volume_(*volume), random_(seed) {}

    void change() {
        constexpr std::array changes{&Mutator::remove,        &Mutator::duplicate,
                                     &Mutator::swap,          &Mutator::insert_known,
                                     &Mutator::insert_known,  &Mutator::change_bytes,
                                     &Mutator::change_bytes,  &Mutator::resize,
                                     &Mutator::change_length, &Mutator::change_letter,
                                     &Mutator::change_type,   &Mutator::change_digits,
                                     &Mutator::change_digits, &Mutator::change_header,
                                     &Mutator::change_header, &Mutator::change_record_size};
        (this->*changes[below(changes.size())])();
    }

    std::size_t below(std::size_t limit) { return random_() % std::max<std::size_t>(limit, 1); }

private:
    std::vector<VolumePart>& parts() { return volume_.parts; }
    auto place(std::size_t index) { return parts().begin() + static_cast<std::ptrdiff_t>(index); }
    VolumePart& any() { return parts()[below(parts().size())]; }

    void remove() {
        if (parts().size() > 1)
            parts().erase(place(below(parts().size())));
    }
    void duplicate() {
        const VolumePart copy = any();
        parts().insert(place(below(parts().size() + 1)), copy);
    }
    void swap() { std::swap(any(), any()); }

    void insert_known() {
        int record_size;
        static const std::vector<VolumePart> known = take_apart(demonstration_volume(), &record_size);
        parts().insert(place(below(parts().size() + 1)), known[below(known.size())]);
    }

    // Makes the declared length right, three times out of four.
    void settle_length(VolumePart* part) {
        if (!is_data(*part) && part->bytes.size() >= length_at + 4 && below(4) != 0)
            part->bytes.replace(length_at, 4, digits(static_cast<int>(part->bytes.size()), 4).substr(0, 4));
    }

    void change_bytes() {
        VolumePart& part = any();
        const std::size_t before = part.bytes.size();
        part.bytes.resize(before + 64);
        part.bytes.resize(
            LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(part.bytes.data()), before, before + 64));
        settle_length(&part);
    }

    void resize() {
        VolumePart& part = any();
        const std::size_t longest = is_data(part) ? 4096 : below(8) == 0 ? 9999 : 2 * part.bytes.size();
        part.bytes.resize(below(longest + 1), " ~0\0"[below(4)]);
        settle_length(&part);
    }

    void replace(VolumePart* part, std::size_t at, std::string_view text) {
        if (at + text.size() <= part->bytes.size())
            part->bytes.replace(at, text.size(), text);
    }

    void change_length() { replace(&any(), length_at, digits(static_cast<int>(below(10000)), 4)); }

    void change_type() {
        constexpr std::array types{0,  5,  10, 11, 12, 30, 31, 32, 33, 34, 41, 50, 51, 52, 53,
                                   54, 55, 57, 58, 59, 60, 61, 70, 71, 72, 73, 74, 75, 999};
        replace(&any(), 0, digits(types[below(types.size())], 3));
    }

    void change_letter() {
        VolumePart& part = any();
        part.letter = "VASTDRQM #"[below(10)];
        if (is_data(part))
            part.bytes.replace(0, 0, "000001" + std::string(1, part.letter) + ' ');
    }

    // Digits become others, which make counts, codes and times.
    void change_digits() {
        VolumePart& part = any();
        const std::size_t at = part.bytes.find_first_of("0123456789", below(part.bytes.size()));
        if (at == std::string::npos)
            return;
        constexpr std::array<std::string_view, 12> texts{"9999", "999", "99", "9",    "0",  "-1",
                                                         "1",    "~",   " ",  "+9.9", "1E", "00002"};
        replace(&part, at, texts[below(texts.size())]);
    }

    // A binary field of the fixed header or the data blockette behind it.
    void change_header() {
        VolumePart& part = any();
        constexpr std::array<std::uint16_t, 12> values{0,   1,   2,    47,    48,     64,
                                                       255, 256, 1000, 32767, 0x8000, 0xFFFF};
        const std::uint32_t value =
            below(2) == 0 ? values[below(values.size())] : static_cast<std::uint32_t>(below(65536));
        replace(&part, 20 + 2 * below(22),
                number(value, below(4) == 0 ? 1 : 2, below(2) == 0 ? Order::big : Order::little));
    }

    // The records become of another length; one blockette 010 may say so.
    void change_record_size() {
        const std::size_t power = 7 + below(7);
        volume_.record_size = 1 << power;
        for (VolumePart& part : parts())
            if (part.bytes.substr(0, 3) == "010" && below(4) != 0)
                replace(&part, 11, digits(static_cast<int>(below(20) == 0 ? below(100) : power), 2));
    }

    Volume& volume_;
    std::minstd_rand random_;
};

} // namespace

} // namespace quarry::fuzz

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,
                                    unsigned int seed) {
    using namespace quarry::fuzz;
    Volume volume;
    const char* text = reinterpret_cast<const char*>(data);
    volume.parts = take_apart({text, size}, &volume.record_size);
    Mutator mutator(&volume, seed);
    if (volume.parts.empty() || mutator.below(4) == 0)
        return LLVMFuzzerMutate(data, size, largest);
    for (std::size_t changes = 1 + mutator.below(4); changes > 0; --changes)
        mutator.change();
    // The last byte chooses the options of the target.
    std::string changed = put_together(volume.parts, volume.record_size).substr(0, largest);
    if (!changed.empty())
        changed.back() = static_cast<char>(mutator.below(4) == 0 ? mutator.below(16) : data[size - 1]);
    std::copy(changed.begin(), changed.end(), reinterpret_cast<char*>(data));
    return changed.size();
}
