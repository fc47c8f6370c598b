#pragma once

namespace player {

/// Control ids of the player window and the volume popup. The inherited names are
/// those of their controls.
enum ControlId : int {
  kIdImage1 = 1001,  ///< play
  kIdImage2,         ///< stop
  kIdlblName,        ///< station, or how far the buffer is
  kIdlbstation,      ///< title of the chosen menu entry
  kIdlblSong,
  kIdlblBPS,
  kIdlblFormat,
  kIdchkSave,   ///< record
  kIdSlider1,   ///< volume
  kIdsubontop,  ///< pin: always on top
  kIdsubmini,   ///< one line or the whole window
  kIdHide,
};

enum TimerId : unsigned { kIdTimer1 = 1 };

}  // namespace player
