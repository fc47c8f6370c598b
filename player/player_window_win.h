#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/captions.h"
#include "app/desktop.h"
#include "menu/menu_tree.h"
#include "player/player_skin_win.h"
#include "player/player_view.h"
#include "player/volume.h"
#include "player/volume_slider_win.h"
#include "window/control_hook.h"
#include "window/hot_control.h"
#include "window/menu.h"
#include "window/ui_queue.h"
#include "window/window.h"

namespace player {

/// What the listener asks of playback through the player window.
struct PlayerActions {
  std::function<void()> startplayer;
  std::function<void()> stopplayer;
  std::function<void()> toggle;                   ///< the space bar
  std::function<void(bool wanted)> recordstatus;  ///< of chkSave
};

/// What the player window is made from; all of it outlives the window. Nothing that is
/// queued runs after the window's end: its owner closes the queue before.
struct PlayerWindowParts {
  app::Captions& captions;
  app::Desktop& desktop;
  const menu::MenuTree& menu;  ///< its player entries name the buttons
  window::UiQueue& queue;
  Volume& volume;
};

/// The window `frmNetRadio`: station, song and stream, play and stop, record and
/// volume; frameless, dragged anywhere, also as one line. The labels may be written
/// from any thread, everything else is the user-interface thread's.
class PlayerWindow final : public window::Window, public PlayerView, private window::ControlHook {
 public:
  explicit PlayerWindow(const PlayerWindowParts& parts);
  ~PlayerWindow() override;

  /// Before the window is first shown.
  void connect(PlayerActions actions) { actions_ = std::move(actions); }

  /// Shows the hidden window or hides the shown one, and its Timer1 with it.
  void mnuplayerwindow_Click();
  void showPlayer();
  void hidePlayer();

  /// Place of the window in twips (1/1440 inch at the primary screen's density),
  /// as the settings keep it.
  [[nodiscard]] float Left() const;
  [[nodiscard]] float Top() const;
  void setLeft(float twips);
  void setTop(float twips);

  void lblName(std::string text) override;
  void lblSong(std::string text) override;
  void lblBPS(std::string text) override;
  void lblFormat(std::string text) override;
  void lbstation(std::string text) override;
  void showPlaying(bool playing) override;
  void showRecording(bool recording) override;
  void showError(std::string text) override;

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;
  void onDpiChanged() override { dress(); }

  // Making and placing.
  void addControls();
  HWND addButton(int id, DWORD style);
  void addTips();
  void readCaptions();
  /// New colours, fonts, pictures and places.
  void dress();
  /// Moves the window so that all of it is on a screen; from one that is gone to
  /// its first place.
  void bringIntoView();
  [[nodiscard]] POINT firstPlace() const;
  void moveTo(POINT place);

  // Messages.
  void onPaint();
  void onDrawItem(const DRAWITEMSTRUCT& item);
  void onCommand(int id);
  std::optional<LRESULT> onNotify(NMHDR& header);
  bool onKey(WPARAM key, int focused);
  std::optional<LRESULT> onCheckBox(HWND box, UINT message);
  void useKeyboard(bool keyboard);
  void Timer1_Timer();
  void chkSave_Click();
  void subontop_Click();
  void submini_Click();
  void mnupop(POINT at);

  // Painting of controls.
  void paintCheckBox(HWND box);
  void paintButton(window::Canvas& canvas, int id, const ControlLook& look);
  void paintLabel(window::Canvas& canvas, int id);
  [[nodiscard]] ControlLook look(HWND control, bool pressed, bool on) const;

  // Labels.
  void post(std::function<void()> change);
  void write(int id, const std::string& text);
  [[nodiscard]] std::wstring textOf(int id) const;
  [[nodiscard]] std::wstring shownText(int id) const;
  [[nodiscard]] HWND control(int id) const { return GetDlgItem(window::Window::handle(), id); }
  void nameChanged(const std::string& text);
  /// Wherever it shows.
  void repaintName();
  void showSongOrStation(bool station);
  void setPlaying(bool playing);
  [[nodiscard]] bool everShown() const { return skin_.has_value(); }

  PlayerWindowParts parts_;
  PlayerActions actions_;
  std::optional<PlayerSkin> skin_;  ///< made when the window first shows
  VolumeSlider slider_;
  HWND tips_ = nullptr;
  std::wstring tip_text_;
  window::PopupMenu* pop_ = nullptr;  ///< mnupop while it is open
  int captions_listener_ = 0;
  int volume_listener_ = 0;

  int buffered_ = -1;  ///< per cent, negative when not buffering
  bool playing_ = false;
  bool recording_ = false;
  bool on_top_ = false;
  bool mini_ = false;
  POINT place_{};             ///< of the window when not minimized
  bool by_keyboard_ = false;  ///< the listener tabs about: the focus shows
  window::HotControl hot_;
};

}  // namespace player
