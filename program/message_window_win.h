#pragma once

#include <windows.h>

#include <functional>

#include "base/unique_handle_win.h"

namespace program {

/// The hidden window captioned "kesziel", which other programs find and send a
/// WM_COPYDATA to. Lives on the user-interface thread.
class KesMessage {
 public:
  /// `specials_changed` runs for dwData 1, from within any message loop of the
  /// thread; the data of the message is not read.
  explicit KesMessage(std::function<void()> specials_changed);
  /// Puts the former window procedure back before the window goes.
  ~KesMessage();
  KesMessage(const KesMessage&) = delete;
  KesMessage& operator=(const KesMessage&) = delete;

  [[nodiscard]] HWND handle() const { return window_.get(); }

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam,
                                    LPARAM lparam) noexcept;
  void onCopyData(LPARAM lparam) noexcept;

  std::function<void()> specials_changed_;
  base::UniqueHandle<HWND, DestroyWindow> window_;
  WNDPROC previous_ = nullptr;
};

}  // namespace program
