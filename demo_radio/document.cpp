#include "demo_radio/document.h"

#include <algorithm>
#include <random>

namespace demo_radio {
namespace {

constexpr Milliseconds kForEver{24 * 3600 * 1000};

std::string statusLine(int status, const Habits& habits) {
  if (habits.has(Habit::icy_error)) return "ICY 401 Service Unavailable\r\n";
  if (habits.has(Habit::icy) && status == 200) return "ICY 200 OK\r\n";
  switch (status) {
    case 200:
      return "HTTP/1.1 200 OK\r\n";
    case 302:
      return "HTTP/1.1 302 Found\r\n";
    case 400:
      return "HTTP/1.1 400 Bad Request\r\n";
    case 404:
      return "HTTP/1.1 404 Not Found\r\n";
    case 405:
      return "HTTP/1.1 405 Method Not Allowed\r\n";
    default:
      return "HTTP/1.1 500 Internal Server Error\r\n";
  }
}

std::string headersOf(const Document& document, const Habits& habits, bool keep_alive) {
  const std::size_t missing = habits.has(Habit::short_body) ? 4096 : 0;
  std::string headers = statusLine(document.status, habits);
  headers += "Server: Harbour/1.0\r\n";
  if (!habits.has(Habit::no_type)) headers += "Content-Type: " + document.type + "\r\n";
  headers += "Content-Length: " + std::to_string(document.body.size() + missing) + "\r\n";
  if (!document.location.empty()) headers += "Location: " + document.location + "\r\n";
  return headers + (keep_alive ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n");
}

/// The body as the habits would have it sent; false when the connection is over.
bool sendBody(Socket& socket, std::string_view body, const Habits& habits) {
  if (habits.has(Habit::slow_drip)) return drip(socket, body, habits.value(Habit::slow_drip, 20));
  const bool hangs = habits.has(Habit::hang_body), resets = habits.has(Habit::reset);
  if (!hangs && !resets) return socket.send(body);
  const std::size_t half = body.size() / 2;
  const int size = habits.value(hangs ? Habit::hang_body : Habit::reset, static_cast<int>(half));
  if (!socket.send(body.substr(0, static_cast<std::size_t>(size)))) return false;
  if (hangs) return socket.pause(kForEver) && false;
  // A reset throws away what is still on its way: the client is to see the half first.
  if (!socket.pause(Milliseconds(200))) return false;
  socket.resetOnClose();
  return false;
}

}  // namespace

bool drip(Socket& socket, std::string_view bytes, int bytes_per_second) {
  const auto rate = static_cast<std::size_t>(std::max(1, bytes_per_second));
  const std::size_t portion = std::max<std::size_t>(1, rate / 10);
  const Milliseconds interval(1000 * portion / rate);
  while (!bytes.empty()) {
    if (!socket.send(bytes.substr(0, portion)) || !socket.pause(interval)) return false;
    bytes.remove_prefix(std::min(portion, bytes.size()));
  }
  return true;
}

std::string noise(std::size_t size) {
  std::minstd_rand random(7);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() >> 8U & 0xFFU);
  return bytes;
}

bool sendDocument(Socket& socket, const Document& document, const Habits& habits, bool keep_alive) {
  if (habits.has(Habit::hang)) return socket.pause(kForEver) && false;
  const bool keep = keep_alive && !habits.has(Habit::short_body) && !habits.has(Habit::icy);
  const std::string headers = headersOf(document, habits, keep);
  if (habits.has(Habit::hang_headers)) {
    const Milliseconds time(habits.value(Habit::hang_headers, kForEver.count()));
    if (socket.send(std::string_view(headers).substr(0, headers.size() / 2)) &&
        socket.pause(time) && habits.has(Habit::reset)) {
      socket.resetOnClose();
    }
    return false;
  }
  if (!socket.send(headers) || !sendBody(socket, document.body, habits)) return false;
  return keep;
}

}  // namespace demo_radio
