#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

/// What an answer's body turns out to be by its first bytes.
enum class BodyKind {
  undecided,  ///< more bytes are needed
  sound,      ///< nothing of the following
  playlist,   ///< PLS, M3U or HLS
  page,       ///< HTML
};

/// `head` are the first bytes; `type` the Content-Type, which is believed where the
/// bytes leave it open: a list of relative addresses looks like nothing.
BodyKind bodyKind(std::string_view head, std::string_view type);

/// Addresses in a PLS or M3U file, as written there and in their order.
std::vector<std::string> playlistAddresses(std::string_view text);

/// The lines of a text file without their ends and the space around them; no empty
/// ones, no byte order mark.
std::vector<std::string_view> textLines(std::string_view text);

}  // namespace engine
