#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace engine {

/// Cuts a stream into whole Ogg pages (RFC 3533), past any damage, and tells where a
/// new link of a chain begins. One thread.
class OggPages {
 public:
  /// As kestrel_input::read.
  using Read = std::function<int(uint8_t* to, int room)>;

  explicit OggPages(Read read) : read_(std::move(read)) {}

  /// Copies bytes of the present link: how many, 0 at its end, negative when the
  /// stream has ended or is being stopped.
  int read(uint8_t* to, int room);
  /// Goes on with the next link, past what is left of the present one.
  void nextLink();

 private:
  bool nextPage();
  bool fill(size_t wanted);

  Read read_;
  std::vector<uint8_t> bytes_;  ///< from the present page on
  size_t page_ = 0;             ///< length of that page, 0: it is still to be found
  size_t taken_ = 0;            ///< of these, handed out
  bool in_sound_ = false;       ///< a page that begins nothing has been seen in this link
  bool over_ = false;           ///< the present page begins the next link
};

/// Length of the good page (its check sum fits) that the bytes begin with; 0: they
/// begin with none; more than there are: so many are needed to tell.
size_t oggPageLength(std::span<const uint8_t> bytes);

}  // namespace engine
