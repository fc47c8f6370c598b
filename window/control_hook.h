#pragma once

#include <windows.h>

#include <optional>

namespace window {

/// A window that sees its controls' messages before they do: keys, wheel, and the
/// painting of those that are painted whole. The controls must be gone before it.
class ControlHook {
 public:
  ControlHook() = default;
  ControlHook(const ControlHook&) = delete;
  ControlHook& operator=(const ControlHook&) = delete;

 protected:
  ~ControlHook() = default;

  void hook(HWND control);
  /// Nothing: the control handles it. UI thread.
  virtual std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                           LPARAM lparam) = 0;

 private:
  static LRESULT CALLBACK procedure(HWND control, UINT message, WPARAM wparam, LPARAM lparam,
                                    UINT_PTR id, DWORD_PTR self) noexcept;
};

}  // namespace window
