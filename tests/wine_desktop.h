#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "app/desktop.h"

namespace test {

/// Dispatches messages until the condition holds; false after the time.
bool pumpUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(10));

/// The same without dispatching, for a thread beside the user interface.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(10));

/// Real input, as the user's hands give it. Screen coordinates.
void moveMouse(POINT at);
void clickMouse(POINT at, bool left = true);
void pressKey(WORD key);

/// The open popup menus (windows), the one opened last first.
std::vector<HWND> openMenus();
/// Texts of an open popup of this process.
std::vector<std::wstring> menuTexts(HWND popup);

/// Whether the window's icon 1 is in the taskbar.
bool hasTrayIcon(HWND window);
/// The tips of the taskbar's icons as they were last pointed at, and perhaps of some
/// icons that were there before.
std::vector<std::string> trayTips();
/// The middle of the icon that is there alone.
POINT trayIconPlace();

/// What a leak would raise: objects of the graphics system, kernel handles, and the
/// highest window or menu handle in use.
struct Resources {
  int graphics;
  int kernel;
  int user;
};
Resources resources();

/// Runs a function on a thread while the test's own thread is in a menu or dialog.
class Hands {
 public:
  explicit Hands(std::function<void()> work);
  ~Hands();
  Hands(const Hands&) = delete;
  Hands& operator=(const Hands&) = delete;

 private:
  HANDLE thread_;
  std::function<void()> work_;
};

class FakeDesktop final : public app::Desktop {
 public:
  void messageBox(std::string_view text, std::string_view, Icon) override {
    boxes.emplace_back(text);
  }
  void shellopen(std::string_view) override {}
  bool isDangerousExtension(std::string_view) override { return false; }
  void beep() override {}

  std::vector<std::string> boxes;
};

}  // namespace test
