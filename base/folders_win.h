#pragma once

#include <string>

namespace base {

/// Path of a special folder (CSIDL_APPDATA, ...) in UTF-8, without a backslash at
/// its end; empty where the system has none.
std::string specialfolder(int csidl);

/// Folder of the executable in UTF-8, without a backslash at its end.
std::string programFolder();

}  // namespace base
