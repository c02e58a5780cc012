// SPDX-License-Identifier: Apache-2.0
// Sums the samples of many volumes, on all processors: a thread reads one volume after the other. Records
// without a blockette 1000 that names a known encoding do not count, nor do texts.
//
//     sum_samples VOLUME...
#include <quarry/samples.h>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <thread>
#include <type_traits>

namespace {

struct Sum {
    std::size_t samples = 0;
    double sum = 0;
    std::int64_t damages = 0;
    std::string error = {}; // why the volume could not be read; empty if it could
};

void add(const quarry::DataRecord& record, Sum* sum) {
    const std::optional<quarry::Samples> samples = quarry::samples_of(record);
    if (!samples)
        return; // an encoding that is not known
    const auto add_all = [sum](const auto& values) {
        if constexpr (!std::is_same_v<decltype(values), const std::string&>) {
            sum->samples += values.size();
            for (const auto value : values)
                sum->sum += static_cast<double>(value);
        }
    };
    std::visit(add_all, samples->values);
}

Sum sum_of(const char* path) {
    Sum sum;
    quarry::VolumeReader reader = quarry::VolumeReader::of_path(path);
    while (const quarry::Item* item = reader.next())
        if (const auto* record = std::get_if<quarry::DataRecord>(item))
            add(*record, &sum);
    sum.damages = reader.totals().damages;
    if (reader.error().kind == quarry::ByteError::Kind::system)
        sum.error = quarry::describe(reader.error());
    else if (!reader.totals().holds_seed())
        sum.error = "holds no SEED";
    return sum;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: " << argv[0] << " VOLUME...\n";
        return 2;
    }
    const std::vector<const char*> paths(argv + 1, argv + argc);
    std::vector<Sum> sums(paths.size());
    std::atomic<std::size_t> next = 0; // volume that no thread has taken yet
    const auto work = [&] {
        for (std::size_t i = next++; i < paths.size(); i = next++)
            sums[i] = sum_of(paths[i]);
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned i = std::max(std::thread::hardware_concurrency(), 1U); i-- > 0;)
            threads.emplace_back(work);
    } // waits for all

    bool all_read = true;
    std::cout.precision(15);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (sums[i].error.empty()) {
            std::cout << paths[i] << ": " << sums[i].samples << " samples, sum " << sums[i].sum << ", "
                      << sums[i].damages << " damages\n";
        } else {
            std::cerr << paths[i] << ": " << sums[i].error << '\n';
            all_read = false;
        }
    }
    return all_read ? 0 : 2;
}
