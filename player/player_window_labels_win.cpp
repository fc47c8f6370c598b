#include "player/player_window_win.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "base/utf.h"
#include "player/player_ids.h"

// What playback writes into the player window, from any thread.

namespace player {
namespace {

constexpr std::string_view kBuffering = "buffering... ";

}  // namespace

void PlayerWindow::post(std::function<void()> change) {
  parts_.queue.post(std::move(change));
}

void PlayerWindow::lblName(std::string text) {
  post([this, text = std::move(text)] { nameChanged(text); });
}

void PlayerWindow::lblSong(std::string text) {
  post([this, text = std::move(text)] {
    write(kIdlblSong, text);
    if (!text.empty()) showSongOrStation(false);
  });
}

void PlayerWindow::lblBPS(std::string text) {
  post([this, text = std::move(text)] { write(kIdlblBPS, text); });
}

void PlayerWindow::lblFormat(std::string text) {
  post([this, text = std::move(text)] { write(kIdlblFormat, text); });
}

void PlayerWindow::lbstation(std::string text) {
  post([this, text = std::move(text)] {
    write(kIdlbstation, text);
    repaintName();  // it may stand in for one
  });
}

void PlayerWindow::showPlaying(bool playing) {
  post([this, playing] { setPlaying(playing); });
}

void PlayerWindow::showRecording(bool recording) {
  post([this, recording] {
    recording_ = recording;
    SendMessageW(control(kIdchkSave), BM_SETCHECK, recording ? BST_CHECKED : BST_UNCHECKED, 0);
    InvalidateRect(control(kIdchkSave), nullptr, FALSE);
  });
}

void PlayerWindow::showError(std::string text) {
  const auto show_box = [this, text = std::move(text)] {
    parts_.desktop.messageBox(text, "Error", app::Desktop::Icon::exclamation);
  };
  const DWORD thread = GetWindowThreadProcessId(window::Window::handle(), nullptr);
  if (thread == GetCurrentThreadId())
    show_box();
  else
    post(show_box);
}

void PlayerWindow::nameChanged(const std::string& text) {
  const bool buffering = text.starts_with(kBuffering);
  const int former = std::exchange(
      buffered_, buffering ? std::clamp(std::atoi(text.c_str() + kBuffering.size()), 0, 100) : -1);
  write(kIdlblName, text);
  repaintName();
  if (former != buffered_ && everShown())
    InvalidateRect(window::Window::handle(), &skin_->layout().progress, FALSE);
  if (text == "play") setPlaying(true);
  if (text == "stop") setPlaying(false);
}

void PlayerWindow::repaintName() {
  InvalidateRect(control(kIdlblName), nullptr, FALSE);
  if (mini_) InvalidateRect(control(kIdlblSong), nullptr, FALSE);
}

void PlayerWindow::setPlaying(bool playing) {
  if (std::exchange(playing_, playing) == playing) return;
  // The rings round the button are below the labels too.
  RedrawWindow(window::Window::handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void PlayerWindow::showSongOrStation(bool station) {
  ShowWindow(control(kIdlbstation), station ? SW_SHOWNA : SW_HIDE);
  ShowWindow(control(kIdlblSong), station ? SW_HIDE : SW_SHOWNA);
}

void PlayerWindow::write(int id, const std::string& text) {
  const std::wstring wide = base::toWide(text);
  if (wide == textOf(id)) return;
  SetWindowTextW(control(id), wide.c_str());
  InvalidateRect(control(id), nullptr, FALSE);
}

std::wstring PlayerWindow::textOf(int id) const {
  return window::windowText(control(id));
}

std::wstring PlayerWindow::shownText(int id) const {
  std::wstring text = textOf(id);
  if (id == kIdlblSong && text.empty() && mini_) return shownText(kIdlblName);
  if (id != kIdlblName || (text != L"play" && text != L"stop" && !text.empty())) return text;
  // The two words only switch the picture; until the server tells its name the
  // chosen entry's stands here.
  text = textOf(kIdlbstation);
  return text.empty() ? L"Kestrel" : text;
}

}  // namespace player
