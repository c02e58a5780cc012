// SPDX-License-Identifier: Apache-2.0
// Texts of parameter files through the check, the TOML library and the tables of texts.

#include "fuzz.h"

#include "platform/parameter_file.h"
#include "platform/toml_check.h"

#include <algorithm>

namespace quarry {

namespace {

void parse(std::string_view text) {
    const auto lines = static_cast<unsigned>(std::count(text.begin(), text.end(), '\n')) + 1;
    if (const std::optional<TomlFault> fault = find_toml_fault(text))
        fuzz::promise(fault->line >= 1 && fault->line <= lines && fault->column >= 1 &&
                          fault->column <= text.size() + 1 && fault->reason != nullptr,
                      "a fault has its place in the text");
    ParameterFile parameters;
    if (param_parse(text, "quarry.pf", &parameters) != 0) {
        fuzz::promise(parameters.path.empty() && parameters.tables.empty() && parameters.others.empty(),
                      "a text with a fault has no parameters");
        return;
    }
    for (const auto& [name, table] : parameters.tables) {
        const auto texts = param_get_map(parameters, name.c_str());
        fuzz::promise(name.find('\0') != std::string::npos || (texts && texts->size() <= table.size()),
                      "a table that is there");
    }
    for (const auto& [name, line] : parameters.others)
        fuzz::promise(line >= 1 && line <= lines, "the line of what is not a table");
    param_get_map(parameters, "data_type_aliases");
}

} // namespace

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::parse, quarry::fuzz::text_of(data, size));
    return 0;
}
