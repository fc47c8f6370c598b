#pragma once

namespace dialogs {

/// Whether a shortcut to this program stands in the user's Startup folder.
[[nodiscard]] bool startsWithWindows();

/// Makes the shortcut (with "-nos") or removes it. False: the system refused.
[[nodiscard]] bool setStartsWithWindows(bool on);

}  // namespace dialogs
