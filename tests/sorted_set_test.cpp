// SPDX-License-Identifier: Apache-2.0
// The index of epochs: compared with a plain model, and what it costs.

#include "listing/epoch_lists.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quarry {
namespace {

// The rules, in terms of the comparison alone.
const rec_len_t* find(const std::vector<rec_len_t>& model, const rec_len_t& sought) {
    const rec_len_t* first = nullptr;
    for (const rec_len_t& stored : model)
        if (rec_len_cmp(sought, stored) == 0 && (first == nullptr || stored.start < first->start))
            first = &stored;
    return first;
}
void add(std::vector<rec_len_t>* model, const rec_len_t& epoch) {
    if (std::isnan(epoch.start))
        return;
    for (rec_len_t& stored : *model)
        if (stored.start == epoch.start && rec_len_cmp(epoch, stored) == 0) {
            stored = epoch;
            return;
        }
    if (find(*model, epoch) == nullptr)
        model->push_back(epoch);
}

class RandomEpochs {
public:
    // Channels whose codes, one after the other, read the same.
    rec_len_t epoch(int channels, int range) {
        const int channel = number_below(channels);
        rec_len_t made{};
        copy_text(made.stn, channel % 2 == 0 ? "A" : "AA");
        copy_text(made.chan_id, channel / 2 % 2 == 0 ? "AB" : "B");
        copy_text(made.loc_id, channel < 4 ? "" : std::to_string(channel / 4));
        made.start = time(range);
        made.end = number_below(2) == 0 ? time(range) : made.start + number_below(4);
        return made;
    }

private:
    int number_below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    // Mostly a small integer, so that times coincide often.
    double time(int range) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr std::array damaged = {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, -0.0};
        const auto kind = static_cast<std::size_t>(number_below(100));
        return kind < damaged.size() ? damaged[kind] : number_below(range);
    }

    std::mt19937 random_;
};

TEST(SortedSet, AgreesWithTheModel) {
    RandomEpochs random;
    struct {
        int channels, range;
    } const mixtures[] = {{1, 8}, {1, 40}, {1, 1000}, {8, 40}, {120, 10}};
    for (const auto& [channels, range] : mixtures)
        for (int round = 0; round < 20; ++round) {
            SortedSet<rec_len_t> list = new_rec_list();
            std::vector<rec_len_t> model;
            for (int number = 1; number <= 500; ++number) {
                rec_len_t added = random.epoch(channels, range);
                added.len = number;
                list.add(added);
                add(&model, added);
                ASSERT_EQ(list.size(), model.size());
                for (int i = 0; i < 4; ++i) {
                    const rec_len_t sought = random.epoch(channels, range);
                    const rec_len_t* found = list.find(group_of(sought), sought.start);
                    const rec_len_t* expected = find(model, sought);
                    ASSERT_EQ(found != nullptr ? found->len : 0, expected != nullptr ? expected->len : 0)
                        << sought.start << " after " << number << " of " << channels << ", " << range;
                }
            }
        }
}

// Times and groups that count how often they are compared. All groups agree in their hash.
std::size_t comparisons;

struct Counted {
    double value;

    bool operator==(const Counted& other) const {
        ++comparisons;
        return value == other.value;
    }
    auto operator<=>(const Counted& other) const {
        ++comparisons;
        return value <=> other.value;
    }
};

struct CountedEpoch {
    Counted group;
    Counted start, end;
};

Counted group_of(const CountedEpoch& epoch) {
    return epoch.group;
}
std::uint64_t hash_of(const Counted&) {
    return 0;
}

TEST(SortedSet, CostIsLogarithmicInAnyOrder) {
    constexpr int count = 1 << 14;
    constexpr std::size_t most = std::size_t{12} * 14 * count; // 12 n log2 n
    constexpr std::size_t most_of_one = 42;                    // 2 at each of 1.45 log2 n levels, 2 before
    constexpr auto at = [](double group, double start, double end) {
        return CountedEpoch{{group}, {start}, {end}};
    };
    const std::pair<const char*, std::function<CountedEpoch(double)>> orders[] = {
        {"ascending", [&](double i) { return at(0, i, i + 1); }},
        {"descending", [&](double i) { return at(0, -i, 1 - i); }},
        {"ascending twice",
         [&](double i) { return i < count / 2 ? at(0, i, i + 1) : at(0, i - count, i - count + 1); }},
        {"from the inside out", [&](double i) { return at(0, -i, i + 1); }},
        {"groups ascending", [&](double i) { return at(i, 0, 1); }},
        {"groups descending", [&](double i) { return at(-i, 0, 1); }},
    };
    for (const auto& [order, epoch] : orders) {
        SCOPED_TRACE(order);
        SortedSet<CountedEpoch> list;
        comparisons = 0;
        for (int i = 0; i < count; ++i)
            list.add(epoch(i));
        ASSERT_EQ(list.size(), count);
        ASSERT_LT(comparisons, most);

        comparisons = 0;
        const CountedEpoch last = epoch(count - 1);
        for (int i = 0; i < count; ++i) {
            CountedEpoch again = last;
            again.end.value += i % 2;
            list.add(again);
        }
        ASSERT_EQ(list.size(), count);
        ASSERT_LT(comparisons, most);

        std::size_t found = 0;
        std::size_t most_found = 0;
        for (int i = 0; i < count; ++i) {
            comparisons = 0;
            found += list.find(epoch(i).group, epoch(i).start) != nullptr ? 1U : 0U;
            most_found = std::max(most_found, comparisons);
        }
        ASSERT_EQ(found, count);
        ASSERT_LE(most_found, most_of_one);
    }
}

} // namespace
} // namespace quarry
