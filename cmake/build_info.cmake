# SPDX-License-Identifier: Apache-2.0
# Writes OUTPUT, the header with the release, the source revision and the day of the build; run at every
# build, it touches the header only when its content changes.
#
# The revision comes from git, in a source archive from the file that git filled in, and is 40 zeros where
# neither knows it. SOURCE_DATE_EPOCH, where set, gives the day.
cmake_minimum_required(VERSION 3.25)

string(REPEAT "0" 40 revision)
file(STRINGS ${SOURCE}/cmake/source-revision.txt archived LIMIT_COUNT 1)
if(EXISTS ${SOURCE}/.git)
  execute_process(COMMAND git -C ${SOURCE} rev-parse HEAD
    OUTPUT_VARIABLE from_git OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(failed EQUAL 0)
    set(revision ${from_git})
  endif()
elseif(archived MATCHES "^[0-9a-f]+$")
  set(revision ${archived})
endif()
string(TIMESTAMP build_date "%Y-%m-%d" UTC)
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT
"// Made by the build: what the banner says of it.
#pragma once

inline constexpr const char* quarry_release = \"@RELEASE@\";
inline constexpr const char* quarry_revision = \"@revision@\";
inline constexpr const char* quarry_build_date = \"@build_date@\";
")
