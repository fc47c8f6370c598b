#pragma once

#include <windows.h>

#include <shellapi.h>

#include <string>
#include <string_view>

#include "app/desktop.h"
#include "app/tray_icon.h"
#include "base/unique_handle_win.h"

namespace tray {

/// The icon in the notification area, there from addtrayicon() until this object
/// goes. Its mouse messages arrive at the main window as `kMessage` with the mouse
/// message in lParam. Its tooltip is that window's caption. User-interface thread.
class TrayIconWin final : public app::TrayIcon {
 public:
  static constexpr UINT kMessage = 512;
  static constexpr UINT kId = 1;  ///< in wParam

  /// `main_window` outlives this. Loads the normal picture; an icon file in
  /// `datapath` that cannot be read is told to the user, once.
  TrayIconWin(HWND main_window, std::string datapath, app::Desktop& desktop);
  ~TrayIconWin() override;
  TrayIconWin(const TrayIconWin&) = delete;
  TrayIconWin& operator=(const TrayIconWin&) = delete;

  void addtrayicon();
  void workicon() override;
  void normalicon() override;
  void setCaption(std::string_view text) override;

  /// The shell has started anew and lost the icon: puts it back as it was.
  void restore();

 private:
  /// The program's own numbering of what is asked of the shell.
  static constexpr int kAdd = 0;
  static constexpr int kDelete = 1;
  static constexpr int kModify = 2;

  /// Where one of the two pictures comes from.
  struct Role {
    const char* file;  ///< below datapath
    int resource;
  };
  static const Role kNormal;
  static const Role kWorking;

  enum class Loaded { from_file, built_in, file_broken };

  Loaded loadPicture(const Role& role);
  void trayicon(HWND window, HICON picture, std::string_view tip, int action);
  void add();
  static void CALLBACK tryAgain(HWND window, UINT message, UINT_PTR self, DWORD time) noexcept;
  [[nodiscard]] std::string caption() const;

  HWND main_window_;
  std::string datapath_;
  base::UniqueIcon picture1_;
  NOTIFYICONDATAA record_{};
  bool added_ = false;
  int tries_left_ = 0;
};

/// `text` in the process's code page, cut to at most `bytes` without splitting a
/// character.
std::string cutToCodePage(std::string_view text, std::size_t bytes);

}  // namespace tray
