#include "demo_radio/socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace demo_radio {
namespace {

constexpr Milliseconds kSendTimeout{20000};

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Descriptor::Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

Descriptor::~Descriptor() {
  if (fd_ >= 0) close(fd_);
}

Socket::Socket(Descriptor socket, int stop) : socket_(std::move(socket)), stop_(stop) {
  // An answer of two writes must not wait for the client's acknowledgement.
  const int on = 1;
  setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Socket::Event Socket::wait(short events, Milliseconds timeout) const {
  std::array<pollfd, 2> fds{{{socket_.get(), events, 0}, {stop_, POLLIN, 0}}};
  const auto end = Clock::now() + timeout;
  for (;;) {
    const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now()).count();
    const int ready = poll(fds.data(), fds.size(), static_cast<int>(std::max<long>(0, left)));
    if (ready < 0 && errno == EINTR) continue;
    if (ready == 0) return Event::timeout;
    return ready > 0 && fds[1].revents == 0 ? Event::ready : Event::stopped;
  }
}

bool Socket::send(std::string_view bytes) {
  while (!bytes.empty()) {
    if (wait(POLLOUT, kSendTimeout) != Event::ready) return false;
    const ssize_t sent =
        ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

ssize_t Socket::receive(char* buffer, std::size_t size, Milliseconds timeout) {
  if (wait(POLLIN, timeout) != Event::ready) return -1;
  return recv(socket_.get(), buffer, size, 0);
}

bool Socket::pause(Milliseconds time) {
  return wait(POLLRDHUP, time) == Event::timeout;
}

void Socket::resetOnClose() {
  reset_ = true;
  const linger now{1, 0};
  setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

void Socket::finish() {
  if (reset_) return;
  // Unread request bytes would turn the close into a reset and lose the answer's end.
  shutdown(socket_.get(), SHUT_WR);
  std::array<char, 4096> rest{};
  const auto end = Clock::now() + Milliseconds(1000);
  while (Clock::now() < end && receive(rest.data(), rest.size(), Milliseconds(200)) > 0) {
  }
}

Descriptor listenOnLoopback(int port) {
  Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (listener.get() < 0) fail("socket");
  const int on = 1;
  setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    fail("port " + std::to_string(port));
  if (listen(listener.get(), 128) != 0) fail("listen");
  return listener;
}

int portOf(const Descriptor& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
    fail("getsockname");
  return ntohs(address.sin_port);
}

}  // namespace demo_radio
