#pragma once

#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "demo_radio/broadcast.h"
#include "demo_radio/document.h"
#include "demo_radio/habits.h"
#include "demo_radio/request.h"
#include "demo_radio/world.h"

namespace demo_radio {

/// Every request, one line each: method, target, User-Agent, Icy-MetaData,
/// separated by tabs, bytes as received. Any thread.
class RequestLog {
 public:
  /// Also appends to the file; empty for none.
  explicit RequestLog(const std::string& file);
  ~RequestLog();
  RequestLog(const RequestLog&) = delete;
  RequestLog& operator=(const RequestLog&) = delete;
  void add(const Request& request);
  [[nodiscard]] std::string text();
  void clear();

 private:
  std::mutex mutex_;
  std::string text_;
  std::FILE* file_ = nullptr;
};

/// Answers requests: directory, playlists, streams, and /control. Any thread.
class Radio {
 public:
  Radio(int stations_per_genre, Broadcast::Options options, const std::string& log_file);

  /// Answers all requests of one connection.
  void serve(Socket& socket);

 private:
  bool answer(Socket& socket, const Request& request);
  bool answerDocument(Socket& socket, Document document, const Request& request,
                      const Habits& habits);
  bool answerStream(Socket& socket, const Station& station, const Request& request,
                    const Habits& habits);
  Document control(const Target& target);
  Document setHabit(const Target& target);
  [[nodiscard]] std::string stationTable() const;
  [[nodiscard]] Document directory(const Target& target, const Habits& habits) const;
  [[nodiscard]] Document playlist(const Target& target, const Request& request) const;

  World world_;
  Broadcast broadcast_;
  RequestLog log_;
  HabitSwitch switch_;
};

}  // namespace demo_radio
