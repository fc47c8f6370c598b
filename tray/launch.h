#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/desktop.h"
#include "app/settings.h"
#include "directory/query.h"
#include "tray/menu_actions.h"
#include "tray/playlist.h"

namespace tray {

/// Plays a saved playlist the way the settings say: by the system's default
/// application, the user's command or the internal player.
class Launch final : public directory::PlaylistLauncher {
 public:
  Launch(const app::Settings& settings, app::Desktop& desktop, Playlist& playlist,
         MenuActions& actions)
      : settings_(settings), desktop_(desktop), playlist_(playlist), actions_(actions) {}

  /// Playlists come from strangers: what the system would execute is not handed
  /// to it.
  [[nodiscard]] bool refuses(std::string_view extension) override;
  void launch(std::string_view url, const std::string& file) override;

 private:
  const app::Settings& settings_;
  app::Desktop& desktop_;
  Playlist& playlist_;
  MenuActions& actions_;
};

/// The number a text stands for, 0 if it stands for none.
[[nodiscard]] std::int32_t ToLng(std::string_view value);
[[nodiscard]] bool FileExists(const std::string& path);
/// The path with a backslash at its end.
[[nodiscard]] std::string RPP(std::string_view path);
/// What stands behind the last backslash.
[[nodiscard]] std::string_view GetFileName(std::string_view path);

}  // namespace tray
