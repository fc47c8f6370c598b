#pragma once

#include <string>

namespace player {

/// The labels of the player window that playback writes. Callable from any
/// thread: the window takes each text over on the user-interface thread, in
/// order. Texts are 8-bit.
class PlayerView {
 public:
  virtual ~PlayerView() = default;

  virtual void lblName(std::string text) = 0;  ///< station name, "buffering… n%", "play", "stop"
  virtual void lblSong(std::string text) = 0;
  virtual void lblBPS(std::string text) = 0;
  virtual void lblFormat(std::string text) = 0;  ///< stream type in lower case
  virtual void lbstation(std::string text) = 0;  ///< title of the chosen menu entry

  /// Picture of the play/stop button and of the record mark.
  virtual void showPlaying(bool playing) = 0;
  virtual void showRecording(bool recording) = 0;

  /// A message box with an exclamation mark over the player, titled "Error";
  /// returns at once when called from another thread than the user interface's.
  virtual void showError(std::string text) = 0;
};

}  // namespace player
