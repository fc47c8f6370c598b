#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace demo_radio {

/// What real servers do to their clients. Names in addresses and in /control are
/// those of habits.cpp's table; "name-N" gives a number along.
enum class Habit {
  hang,           ///< takes the request and never answers
  hold,           ///< takes the request and answers when the switch of its kind is next set
  hang_headers,   ///< stops in the middle of the headers; a page's after N ms for good
  hang_body,      ///< stops in the body: half of a page, or after N bytes of a stream (20000)
  slow_drip,      ///< sends N bytes a second (pages 20, streams 2000)
  reset,          ///< resets the connection where hang_body stops
  drop,           ///< ends a stream properly after N seconds (3)
  stall,          ///< a stream falls silent for N seconds (3) after its first two seconds
  short_body,     ///< announces more bytes than come (streams: ends after 50000)
  empty,          ///< an empty body
  garbage,        ///< noise instead of a page or of sound
  not_found,      ///< 404
  server_error,   ///< 500
  html,           ///< 200 with a page that is about something else
  no_stations,    ///< a directory page without a station
  huge,           ///< 64 MiB: a directory page of 20,000 stations, anything else padding
  redirect,       ///< 302 to the same thing, well-behaved
  redirect_loop,  ///< 302 for ever
  icy,            ///< status line "ICY 200 OK"
  icy_error,      ///< "ICY 401 Service Unavailable"
  no_burst,       ///< a stream starts at the live position
  burst,          ///< a stream starts N bytes before it
  no_type,        ///< no Content-Type
  wrong_metaint,  ///< titles come N bytes (1000) later than announced
};

class Habits {
 public:
  Habits() = default;
  /// Comma-separated names. Nothing when one of them is unknown; "none" is empty.
  static std::optional<Habits> parse(std::string_view names);
  static std::string known();  ///< all names, for a message

  [[nodiscard]] bool has(Habit habit) const { return values_.count(habit) != 0; }
  [[nodiscard]] int value(Habit habit, int otherwise) const;

 private:
  std::map<Habit, std::optional<int>> values_;
};

/// "/bad/NAMES/rest" without its prefix, with the habits. Nothing for an unknown
/// name. "/good/rest" asks for no habits whatever is switched on.
struct Asked {
  std::string target;
  std::optional<Habits> habits;  ///< nothing: as switched
};
std::optional<Asked> askedHabits(std::string_view target);

/// Habits switched on for ordinary addresses, by kind of document ("directory",
/// "playlist", "stream"). Any thread.
class HabitSwitch {
 public:
  /// For the next `count` requests of that kind; 0: until changed.
  void set(const std::string& kind, Habits habits, int count);
  /// Takes one request off the count.
  Habits take(const std::string& kind);
  /// How often that kind was set.
  [[nodiscard]] int times(const std::string& kind);

 private:
  struct Entry {
    Habits habits;
    int left;
  };
  std::mutex mutex_;
  std::map<std::string, int> times_;
  std::map<std::string, Entry> entries_;
};

}  // namespace demo_radio
