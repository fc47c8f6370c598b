#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace window {

/// Asks for an existing file. `filter` is "text|pattern|text|pattern"; the search
/// begins where `present` is, if that names a file. Nothing after Cancel.
[[nodiscard]] std::optional<std::string> chooseFile(HWND owner, std::string_view filter,
                                                    std::string_view present);

/// Whether the system can show the file's icon.
[[nodiscard]] bool isIconFile(const std::string& file);

}  // namespace window
