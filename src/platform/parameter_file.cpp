// SPDX-License-Identifier: Apache-2.0
#include "platform/parameter_file.h"

#include "platform/message_log.h"
#include "platform/text.h"
#include "platform/toml_check.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

namespace quarry {

namespace {

// Where an installed program finds its configuration: QUARRY_SYSCONFDIR is relative to the folder of
// programs, another place is etc beside that folder. A program elsewhere (in the folder of its build) has
// none.
void add_configuration_directories(std::vector<std::string>* directories) {
    const std::string program = program_path();
    const std::string folder = program.substr(0, program.rfind('/') + 1);
    if (!folder.ends_with("/bin/"))
        return;
    directories->push_back(folder + QUARRY_SYSCONFDIR "/quarry");
    directories->push_back(folder + "../etc/quarry");
}

std::vector<std::string> search_path() {
    const char* path = std::getenv("QUARRY_PARAM_PATH");
    std::vector<std::string> directories;
    if (path == nullptr || *path == '\0')
        directories.emplace_back(".");
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const std::string_view directory = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
        if (!directory.empty())
            directories.emplace_back(directory);
    }
    add_configuration_directories(&directories);
    return directories;
}

std::string find_parameter_file(const std::string& file_name) {
    for (const std::string& directory : search_path()) {
        std::string path =
            directory == "." ? file_name : std::string(directory).append("/").append(file_name);
        if (access(path.c_str(), F_OK) == 0 || errno == ELOOP)
            return path;
    }
    return {};
}

constexpr std::size_t largest_file = std::size_t{1} << 20;

// Reads a regular file. Returns the reason if it cannot be read, otherwise null.
const char* read_whole(const std::string& path, std::string* content) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::strerror(errno);
    if (!S_ISREG(status.st_mode)) // opening a FIFO would wait for its writer
        return S_ISDIR(status.st_mode) ? std::strerror(EISDIR) : "Not a regular file";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file)
        return std::strerror(errno);
    std::array<char, 4096> piece;
    while (const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get())) {
        content->append(piece.data(), length);
        if (content->size() > largest_file)
            return std::strerror(EFBIG);
    }
    return std::ferror(file.get()) != 0 ? std::strerror(errno) : nullptr;
}

void note_fault(const std::string& path, unsigned line, unsigned column, std::string_view reason) {
    log_note("%s:%u:%u: %.*s\n", path.c_str(), line, column, static_cast<int>(reason.size()), reason.data());
}

std::map<std::string, ParameterValue> table_values(const toml::table& table) {
    std::map<std::string, ParameterValue> values;
    for (const auto& [key, node] : table)
        values[std::string(key.str())] = {node.value_exact<std::string>(), node.source().begin.line};
    return values;
}

} // namespace

int param_parse(std::string_view content, const std::string& path, ParameterFile* parameters) {
    *parameters = {};
    if (const std::optional<TomlFault> fault = find_toml_fault(content)) {
        note_fault(path, fault->line, fault->column, fault->reason);
        return -1;
    }
    const toml::parse_result result = toml::parse(content, path);
    if (!result) {
        const toml::parse_error& error = result.error();
        note_fault(path, error.source().begin.line, error.source().begin.column, error.description());
        return -1;
    }
    parameters->path = path;
    for (const auto& [key, node] : result.table())
        if (const toml::table* table = node.as_table())
            parameters->tables[std::string(key.str())] = table_values(*table);
        else
            parameters->others[std::string(key.str())] = node.source().begin.line;
    return 0;
}

int param_read(const char* name, ParameterFile* parameters) {
    *parameters = {};
    const std::string path = find_parameter_file(std::string(name) + ".pf");
    if (path.empty())
        return -1;
    std::string content;
    if (const char* reason = read_whole(path, &content); reason != nullptr) {
        log_note("Can't read %s: %s\n", path.c_str(), reason);
        return -1;
    }
    return param_parse(content, path, parameters);
}

std::optional<Map<std::string>> param_get_map(const ParameterFile& parameters, const char* key) {
    Map<std::string> texts;
    if (const auto other = parameters.others.find(key); other != parameters.others.end()) {
        log_complain(0, "%s:%u: %s is no table\n", parameters.path.c_str(), other->second, key);
        return texts;
    }
    const auto table = parameters.tables.find(key);
    if (table == parameters.tables.end())
        return std::nullopt;
    for (const auto& [name, value] : table->second) {
        if (value.text)
            texts.set(name, *value.text);
        else
            log_complain(0, "%s:%u: %s: the value of '%s' is no text\n", parameters.path.c_str(), value.line,
                         key, name.c_str());
    }
    return texts;
}

} // namespace quarry
