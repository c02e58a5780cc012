// SPDX-License-Identifier: Apache-2.0
#include "state.h"

namespace quarry {

std::string Program_Name;
ParameterFile Parameters;
StorePointer Db = store_invalid();
int Simplify = 0;
int Verbose_Flag = 0;
int File_No = 0;
int File_Flag = 0;
int Tapefile = 0;
Map<char> Geoscope_channels;
List<std::string> Tbl_031;
List<std::string> Tbl_033;
List<std::string> Tbl_034;
int Bad_blkflag = 0;

} // namespace quarry
