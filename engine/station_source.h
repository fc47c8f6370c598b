#pragma once

#include "engine/hls/hls_list.h"
#include "engine/net/byte_source.h"

namespace engine {

/// Asks for a station as openSource does, and makes of whatever is at its address a
/// stream of sound: follows playlists to the first entry that answers, HLS to its
/// segments, and a radio server's page to the stream behind it. `place` is where the
/// listener was in the latter; it follows the source, which it outlives.
OpenedSource openStation(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                         const ByteRange& range, HlsPlace& place);

}  // namespace engine
