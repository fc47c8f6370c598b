#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "engine/hls/hls_list.h"
#include "engine/net/byte_source.h"

namespace engine {

class NetworkWatch;

/// The connection to a station, made again when it is lost: after half a second at
/// first, then at intervals that double up to half a minute, for as long as nobody
/// interrupts. One thread.
class Connection {
 public:
  /// `interrupt` outlives this.
  Connection(Url url, const Interrupt& interrupt, StatusSink status);

  /// The first try, and the only one of its kind: a station that was never there is
  /// not waited for.
  NetError open();
  /// Waits and tries until there is a connection again. False: there will be none
  /// (interrupted, or the server says that the stream is gone).
  bool openAgain();
  /// Drops the connection: nothing can be read until there is another.
  void close() { source_.reset(); }
  /// All that the server announced is here.
  bool isComplete() const;

  /// The answer to the last open.
  const ResponseHead& head() const { return head_; }
  /// As ByteSource's.
  std::optional<std::string> takeTitle();
  [[nodiscard]] NetError read(uint8_t* to, size_t room, size_t& got);

 private:
  OpenedSource tryOpen();
  bool pause(NetworkWatch& network);

  const Url url_;
  const Interrupt& interrupt_;
  const StatusSink status_;
  HlsPlace place_;
  std::unique_ptr<ByteSource> source_;
  ResponseHead head_;
  std::optional<uint64_t> file_length_;  ///< nothing for a station
  uint64_t received_ = 0;                ///< over all connections
  uint64_t brought_ = 0;                 ///< by the present one
  uint64_t to_skip_ = 0;  ///< the start of a file, from a server that cannot leave it out
  std::chrono::milliseconds pause_;
};

}  // namespace engine
