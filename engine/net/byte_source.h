#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/net/byte_range.h"
#include "engine/net/icy.h"
#include "engine/net/socket.h"
#include "engine/net/url.h"

namespace engine {

/// An open stream of bytes from a server. One thread.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual const ResponseHead& head() const = 0;
  /// Waits for at least one byte. `got` 0 without an error: the stream has ended.
  [[nodiscard]] virtual NetError read(uint8_t* to, size_t room, size_t& got) = 0;
  /// A title, in UTF-8, that counts from the bytes on which the last read gave;
  /// nothing when it goes on. For sources that have titles of their own.
  virtual std::optional<std::string> takeTitle() { return std::nullopt; }
  /// The stream has ended for good: asking again would bring it from its beginning.
  virtual bool isOver() const { return false; }
};

struct OpenedSource {
  std::unique_ptr<ByteSource> source;  ///< null unless the server gave a stream
  NetError error = NetError::none;
  Url url{};  ///< where it was found, past all redirects
};

/// Takes what the listener may be told while a stream opens: a text that ends with
/// a zero; an answer's head is a row of such texts with an empty one at its end.
using StatusSink = std::function<void(const std::string& text)>;

/// Asks the server for that range of the stream, following at most 10 redirects.
/// Without status 206 in the answer, it is the whole stream.
OpenedSource openSource(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                        const ByteRange& range = {});

/// How a server is asked.
struct Asking {
  ByteRange range;
  /// In HTTP 1.1 and not 1.0, which leaves the server no chunks, and which old radio
  /// servers know best.
  bool newer = false;
};

/// One answer over a plain connection.
OpenedSource openHttp(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                      const Asking& asking);
/// One answer over TLS, from a server whose certificate the system trusts.
OpenedSource openHttps(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                       const Asking& asking);

}  // namespace engine
