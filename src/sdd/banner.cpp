// SPDX-License-Identifier: Apache-2.0
#include "sdd/banner.h"

#include "build_info.h"
#include "platform/text.h"
#include "state.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <sys/stat.h>
#include <sys/utsname.h>

namespace quarry {

namespace {

constexpr std::size_t longest_version = 511;

std::string clean_version(std::string_view version) {
    std::string text(version.substr(0, longest_version));
    for (const std::string_view keyword : {"$Revision: ", "$Date: "})
        if (delstr(&text, keyword) != 0)
            delstr(&text, " $");
    delstr(&text, "$Revision$");
    delstr(&text, "$Date$");
    return text;
}

void print_modification_time(const std::string& path) {
    struct stat status {};
    std::array<char, 26> text{};
    if (path.empty() || stat(path.c_str(), &status) != 0 || ctime_r(&status.st_mtime, text.data()) == nullptr)
        return;
    const std::string_view line = text.data();
    std::fprintf(stderr, "    %.*s <#>\n", static_cast<int>(line.find_last_not_of('\n') + 1), line.data());
}

} // namespace

int delstr(std::string* text, std::string_view sub) {
    const std::size_t at = text->find(sub);
    if (at == std::string::npos)
        return 0;
    text->erase(at, sub.size());
    return 1;
}

void banner(std::string_view name, std::string_view version) {
    const std::string path = program_path();
    std::string shown(name);
    if (shown.empty())
        shown = Program_Name.empty() ? path : Program_Name;
    utsname system{};
    uname(&system);

    std::fprintf(stderr, "\n%s %s <#>\n", shown.c_str(), clean_version(version).c_str());
    print_modification_time(path);
    std::fprintf(stderr, "    Tarn Release %s %s %s %s  <#>\n", quarry_release, system.sysname,
                 system.release, quarry_build_date);
    std::fprintf(stderr, "    %s  <#>\n", quarry_revision);
    std::fputs("\n"
               "    The Quarry project\n"
               "    Source and issues are kept in the project's repository, quarry;\n"
               "    report problems among its issues.\n"
               "\n",
               stderr);
}

} // namespace quarry
