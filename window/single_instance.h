#pragma once

#include "base/unique_handle_win.h"

namespace window {

/// Tells whether this process is the first of its kind in the user's session, and
/// keeps that place while it lives.
class SingleInstance {
 public:
  /// `name` without backslashes.
  explicit SingleInstance(const wchar_t* name);

  [[nodiscard]] bool first() const { return first_; }

 private:
  base::UniqueKernel mutex_;
  bool first_;
};

}  // namespace window
