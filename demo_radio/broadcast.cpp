#include "demo_radio/broadcast.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "demo_radio/document.h"
#include "demo_radio/world_names.h"

namespace demo_radio {
namespace {

constexpr Milliseconds kPortion{50};  ///< one portion of a stream
constexpr Milliseconds kForEver{24 * 3600 * 1000};
constexpr double kPastSeconds = 3600;  ///< so that the past has room for any burst
constexpr std::uint64_t kLargestSend = 16384;

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (bytes.empty()) throw std::runtime_error("no sound in " + path);
  return bytes;
}

/// A title block: its length in units of 16 bytes, then the text, padded.
std::string titleBlock(const std::string& title) {
  std::string text = "StreamTitle='" + title + "';StreamUrl='';";
  text.resize((text.size() + 15) / 16 * 16);
  return static_cast<char>(text.size() / 16) + text;
}

std::string streamHeaders(const Station& station, int metaint, const Habits& habits) {
  const Format format = station.format();
  std::string headers = habits.has(Habit::icy) ? "ICY 200 OK\r\n" : "HTTP/1.0 200 OK\r\n";
  headers += "icy-notice1:<BR>This stream needs a radio<BR>\r\n";
  headers += "icy-name:" + station.name + "\r\n";
  headers +=
      "icy-genre:" + std::string(kGenres[static_cast<std::size_t>(station.genre)].caption) + "\r\n";
  headers += "icy-pub:1\r\nicy-br:" + std::to_string(format.kbit) + "\r\n";
  if (metaint > 0) headers += "icy-metaint:" + std::to_string(metaint) + "\r\n";
  if (!habits.has(Habit::no_type))
    headers +=
        format.codec == Codec::mp3 ? "Content-Type:audio/mpeg\r\n" : "Content-Type:audio/aacp\r\n";
  if (habits.has(Habit::short_body)) headers += "Content-Length:1000000\r\n";
  return headers + "\r\n";
}

}  // namespace

/// One listener's way through the endless sequence of a station's bytes.
class Broadcast::Sender {
 public:
  Sender(Socket& socket, const Station& station, const std::string& loop, const Habits& habits,
         const Options& options, int metaint)
      : socket_(socket),
        station_(station),
        loop_(loop),
        habits_(habits),
        rate_(static_cast<double>(loop.size()) / kLoopSeconds),
        song_bytes_(static_cast<std::uint64_t>(rate_ * options.song_seconds)),
        interval_(metaint == 0 ? 0
                               : metaint + habits.value(Habit::wrong_metaint, 1000) *
                                               (habits.has(Habit::wrong_metaint) ? 1 : 0)),
        until_title_(static_cast<std::uint64_t>(interval_)) {}

  /// The station's position at a time since the server's start, in bytes.
  [[nodiscard]] std::uint64_t live(Clock::duration since_start) const {
    return static_cast<std::uint64_t>(
        (std::chrono::duration<double>(since_start).count() + kPastSeconds) * rate_);
  }

  void run(Clock::time_point start, int burst) {
    const auto began = Clock::now();
    position_ = live(began - start) - static_cast<std::uint64_t>(burst);
    const std::uint64_t first = position_;
    const std::uint64_t last = first + lastByte();
    Clock::duration silence{};
    for (;;) {
      const auto heard = Clock::now() - began;
      if (habits_.has(Habit::drop) && heard >= std::chrono::seconds(habits_.value(Habit::drop, 3)))
        return;
      if (habits_.has(Habit::stall) && silence == Clock::duration{} &&
          heard >= std::chrono::seconds(2)) {
        silence = std::chrono::seconds(habits_.value(Habit::stall, 3));
        if (!socket_.pause(std::chrono::duration_cast<Milliseconds>(silence))) return;
        continue;
      }
      const std::uint64_t target = std::min(last, due(began - start, heard - silence));
      // A listener who cannot keep up is let go, as real servers do.
      if (target >
          position_ + static_cast<std::uint64_t>(burst) + static_cast<std::uint64_t>(15 * rate_))
        return;
      if (position_ < target) {
        if (!sendSome(target)) return;
      } else if (position_ == last) {
        atLastByte();
        return;
      } else if (!socket_.pause(kPortion)) {
        return;
      }
    }
  }

 private:
  /// How far a listener who came at `came` is to be after listening for `heard`.
  [[nodiscard]] std::uint64_t due(Clock::duration came, Clock::duration heard) const {
    if (!habits_.has(Habit::slow_drip)) return live(came + heard);
    const double dripped =
        std::chrono::duration<double>(heard).count() * habits_.value(Habit::slow_drip, 2000);
    return live(came) + static_cast<std::uint64_t>(dripped);
  }

  [[nodiscard]] std::uint64_t lastByte() const {
    if (habits_.has(Habit::hang_body))
      return static_cast<std::uint64_t>(habits_.value(Habit::hang_body, 20000));
    if (habits_.has(Habit::reset))
      return static_cast<std::uint64_t>(habits_.value(Habit::reset, 20000));
    if (habits_.has(Habit::short_body))
      return static_cast<std::uint64_t>(habits_.value(Habit::short_body, 50000));
    return std::uint64_t{1} << 60U;
  }

  void atLastByte() {
    if (habits_.has(Habit::hang_body)) static_cast<void>(socket_.pause(kForEver));
    // A reset throws away what is still on its way: the listener is to get it first.
    if (habits_.has(Habit::reset) && socket_.pause(Milliseconds(200))) socket_.resetOnClose();
  }

  bool sendSome(std::uint64_t target) {
    std::string out;
    const std::uint64_t end = std::min(target, position_ + kLargestSend);
    while (position_ < end) {
      std::uint64_t size = end - position_;
      if (interval_ > 0) size = std::min(size, until_title_);
      const std::uint64_t at = position_ % loop_.size();
      size = std::min<std::uint64_t>(size, loop_.size() - at);
      out.append(loop_, at, size);
      position_ += size;
      if (interval_ > 0 && (until_title_ -= size) == 0) {
        out += nextTitle();
        until_title_ = static_cast<std::uint64_t>(interval_);
      }
    }
    return socket_.send(out);
  }

  /// The block that is due: a title only when it changed.
  std::string nextTitle() {
    const std::uint64_t song = position_ / song_bytes_;
    if (song == song_) return std::string(1, '\0');
    song_ = song;
    return titleBlock(songTitle(station_, song));
  }

  Socket& socket_;
  const Station& station_;
  const std::string& loop_;
  const Habits& habits_;
  double rate_;  ///< bytes a second
  std::uint64_t song_bytes_;
  int interval_;  ///< bytes between titles, 0 without
  std::uint64_t until_title_;
  std::uint64_t position_ = 0;
  std::uint64_t song_ = ~std::uint64_t{0};
};

Broadcast::Broadcast(Options options) : options_(std::move(options)), noise_(noise(65536)) {
  for (int mood = 0; mood < kMoodCount; ++mood)
    for (int tone = 0; tone < kTones; ++tone) {
      const std::string file = soundFile(mood, tone);
      loops_[file] = readFile(options_.sounds + "/" + file);
    }
}

const std::string& Broadcast::loopOf(const Station& station) const {
  return loops_.at(soundFile(station.mood, station.tone));
}

void Broadcast::listen(Socket& socket, const Station& station, const Request& request,
                       const Habits& habits) {
  if (habits.has(Habit::hang)) {
    static_cast<void>(socket.pause(kForEver));
    return;
  }
  const int metaint = request.header("icy-metadata") == "1" ? options_.metaint : 0;
  const std::string headers = streamHeaders(station, metaint, habits);
  if (habits.has(Habit::hang_headers)) {
    if (socket.send(std::string_view(headers).substr(0, headers.size() / 2)))
      static_cast<void>(socket.pause(kForEver));
    return;
  }
  if (!socket.send(headers)) return;
  ++listeners_;
  const std::string& loop = habits.has(Habit::garbage) ? noise_ : loopOf(station);
  const bool no_past = habits.has(Habit::no_burst) || habits.has(Habit::slow_drip);
  Sender sender(socket, station, loop, habits, options_, metaint);
  sender.run(start_, no_past ? 0 : habits.value(Habit::burst, options_.burst));
  --listeners_;
}

}  // namespace demo_radio
