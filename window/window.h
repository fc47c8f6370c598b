#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "window/dpi.h"

namespace window {

/// What a window is made of. Sizes are those of the client area in 96-dpi units.
struct Creation {
  const wchar_t* class_name;  ///< a class of our own, registered at its first use
  std::string_view caption;
  DWORD style = WS_POPUP;
  DWORD ex_style = 0;
  int width = 0;
  int height = 0;
  HWND owner = nullptr;
  int background = COLOR_BTNFACE;  ///< system colour; -1 for none (the window paints all)
  int icon = 0;                    ///< icon resource of the caption bar, 0 for none
};

/// A native window and its C++ object. Either may die first: the destructor takes
/// the window down without calling the object again, and a window that the system
/// destroys leaves handle() null. Messages reach onMessage() on the thread that
/// made the window; an exception there is reported to the debugger and the message
/// handled by default.
class Window {
 public:
  virtual ~Window();
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  [[nodiscard]] HWND handle() const { return handle_; }
  [[nodiscard]] Dpi dpi() const { return dpi_; }
  [[nodiscard]] int scale(int units) const { return dpi_.scale(units); }
  [[nodiscard]] bool visible() const { return IsWindowVisible(handle_) != FALSE; }

  /// The window's text, 8-bit on this side (window/utf.h).
  void setText(std::string_view text);
  void hide() { ShowWindow(handle_, SW_HIDE); }
  /// Shows the window, from its minimized state too, in the foreground.
  void show();

 protected:
  Window() = default;

  /// Makes the window hidden, at the system's choice of place. To be called once,
  /// in the derived constructor; throws std::system_error when the system refuses.
  void create(const Creation& creation);

  /// Takes the window down now. A derived class whose onMessage() uses members must
  /// call it in its own destructor only if messages may come before ~Window().
  void destroy() noexcept;

  /// Handles a message, or nothing for the default treatment. WM_DPICHANGED comes
  /// as onDpiChanged() instead.
  virtual std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) = 0;

  /// The window is on another screen, dpi() is new and its place taken: build fonts
  /// and pictures again and place the controls.
  virtual void onDpiChanged() {}

  /// Adds a child control; it gets its place and font later. `id` is a command id.
  HWND addControl(const wchar_t* control_class, std::string_view text, DWORD style, int id,
                  DWORD ex_style = 0);
  /// Places a child by its rectangle in 96-dpi units.
  void place(HWND control, int x, int y, int width, int height) const;
  /// Resizes the client area to 96-dpi units at the present density, in place.
  void resizeClient(int width, int height);
  /// Centres the window in the work area of the primary screen, or of its own; one that
  /// the user can resize is made no larger than that.
  void centre(bool on_primary);

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam,
                                    LPARAM lparam) noexcept;
  std::optional<LRESULT> receive(UINT message, WPARAM wparam, LPARAM lparam);

  HWND handle_ = nullptr;
  Dpi dpi_{Dpi::kBase};
};

/// The whole text of a window or control of this process.
[[nodiscard]] std::wstring windowText(HWND window);

/// The module that this code is in: program or test.
[[nodiscard]] HINSTANCE instance();

}  // namespace window
