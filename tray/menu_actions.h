#pragma once

#include <string_view>

namespace tray {

/// What the menus ask of the parts beside them. User-interface thread.
class MenuActions {
 public:
  virtual ~MenuActions() = default;

  /// Plays entry `index` of the last playlist, or stops.
  virtual void startplayer(int index) = 0;
  virtual void stopplayer() = 0;

  virtual void mnuplayerwindow_Click() = 0;
  virtual void mnuplayervolume_Click() = 0;
  virtual void mnurecordstream_Click() = 0;

  /// The title of the station just chosen, for the player window.
  virtual void lbstation(std::string_view caption) = 0;

  /// Loads all visible genres again. Returns when that is over; messages are
  /// dispatched meanwhile, and it may be called again from within.
  virtual void mgenreall_Click() = 0;

  /// Shows the organiser of the favourites; it need not be closed on return.
  virtual void editfavs() = 0;

  /// Shows the search dialog and returns when it is closed, for whatever reason:
  /// by then the query's search text is what was typed, or "-" after Cancel.
  /// Messages are dispatched meanwhile. Called again while the dialog is open, it
  /// brings it to the front and returns at once. False if something else waits for an
  /// answer: that comes to the front, and there is nothing to search for.
  virtual bool searchform() = 0;

  /// Shows the settings, or the about box, and returns when it is closed. Messages
  /// are dispatched meanwhile.
  virtual void mnusetup_Click() = 0;
  virtual void mnuabout_Click() = 0;

  /// Ends the program. May be called while a transfer waits.
  virtual void mnuquit_Click() = 0;
};

}  // namespace tray
