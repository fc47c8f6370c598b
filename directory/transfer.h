#pragma once

#include <string>
#include <string_view>

namespace directory {

struct TransferResult {
  enum class Outcome {
    completed,   ///< the whole body arrived (of any HTTP status)
    timed_out,   ///< one of the transfer's time limits passed
    failed,      ///< refused, unresolved, cut off, too large, not HTTP
    superseded,  ///< a newer request took its place: say nothing
    ended,       ///< the program ends: say nothing, and ask for nothing more
  };
  Outcome outcome = Outcome::failed;
  std::string body;  ///< bytes as received; empty unless completed
};

/// One HTTP GET at a time, on the user-interface thread. It blocks its caller
/// and dispatches window messages meanwhile, so that a Cancel button lives. A
/// get() called from within such a message ends the waiting one as superseded.
class Transfer {
 public:
  virtual ~Transfer() = default;

  /// `url` is sent as it stands, blanks and all.
  [[nodiscard]] virtual TransferResult get(std::string_view url) = 0;

  /// Ends a waiting get(), and every later one at once.
  virtual void shutDown() = 0;
};

}  // namespace directory
