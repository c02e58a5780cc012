// SPDX-License-Identifier: Apache-2.0
// Exhausted memory: always fatal, always reported in the same words.
//
// The function's own name, the source line, the name of the source module, the number that the caller
// counts by (bytes, elements or records) and the name of what was being allocated fill the message.
#pragma once

#include <new>
#include <vector>

namespace quarry {

// Where an allocation stands: __func__, __LINE__ and the module's name.
struct AllocationSite {
    const char* function;
    int line;
    const char* module;
};

// Ends the process through the message log, with the system's error text.
[[noreturn]] void out_of_memory(AllocationSite site, unsigned long count, const char* what);

// One zeroed record, owned by the caller; `count` and `what` are for the message.
template <class T>
T* new_zeroed(AllocationSite site, unsigned long count, const char* what) {
    T* record = new (std::nothrow) T{};
    if (record == nullptr)
        out_of_memory(site, count, what);
    return record;
}

// Makes `array` hold `size` zeroed elements (none for a negative size); `count` and `what` are for the
// message.
template <class T>
void allocate_zeroed(std::vector<T>& array, int size, AllocationSite site, int count, const char* what) {
    try {
        array.assign(size > 0 ? static_cast<std::size_t>(size) : 0, T{});
    } catch (const std::bad_alloc&) {
        out_of_memory(site, static_cast<unsigned long>(count), what);
    }
}

} // namespace quarry

// The site of the calling line within the named module.
#define QUARRY_SITE(module)                                                                                  \
    ::quarry::AllocationSite {                                                                               \
        __func__, __LINE__, module                                                                           \
    }
