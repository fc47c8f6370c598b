#include "engine/net/socket.h"

#include <algorithm>

#include "engine/net/socket_system.h"

namespace engine {
namespace {

// Milliseconds left, rounded up so that a wait never ends just before its time.
int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, 3'600'000));
}

}  // namespace

Socket::Socket(const Interrupt& interrupt) : interrupt_(interrupt), socket_(kNoSocket) {}

Socket::~Socket() {
  close();
}

void Socket::close() {
  if (socket_ != kNoSocket) closeSocket(socket_);
  socket_ = kNoSocket;
  if (event_ != nullptr) freeSocketEvent(event_);
  event_ = nullptr;
}

NetError Socket::connect(const Address& address, Clock::time_point deadline) {
  close();
  socket_ = openSocket(address.family, event_);
  if (socket_ == kNoSocket) return NetError::failed;
  if (::connect(native(socket_), reinterpret_cast<const sockaddr*>(address.bytes.data()),
                static_cast<socklen_t>(address.length)) == 0) {
    return NetError::none;
  }
  if (!wouldBlock(lastError())) return netError(lastError());
  if (const NetError error = wait(Wait::connected, deadline); error != NetError::none) return error;
  int code = 0;
  socklen_t size = sizeof code;
  getsockopt(native(socket_), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&code), &size);
  return code == 0 ? NetError::none : netError(code);
}

NetError Socket::sendAll(std::string_view bytes, Clock::time_point deadline) {
  while (!bytes.empty()) {
    const auto sent =
        ::send(native(socket_), bytes.data(), static_cast<SendSize>(bytes.size()), kSendFlags);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<size_t>(sent));
    } else if (!wouldBlock(lastError())) {
      return netError(lastError());
    } else if (const NetError error = wait(Wait::writable, deadline); error != NetError::none) {
      return error;
    }
  }
  return NetError::none;
}

NetError Socket::receive(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got) {
  got = 0;
  while (!interrupt_.isSet()) {
    const auto count =
        ::recv(native(socket_), reinterpret_cast<char*>(to), static_cast<SendSize>(room), 0);
    if (count >= 0) {
      got = static_cast<size_t>(count);
      return NetError::none;
    }
    if (!wouldBlock(lastError())) return netError(lastError());
    if (const NetError error = wait(Wait::readable, deadline); error != NetError::none) {
      return error;
    }
  }
  return NetError::interrupted;
}

NetError Socket::wait(Wait what, Clock::time_point deadline) {
  const int step = static_cast<int>(kWaitStep.count());
  do {
    switch (waitSocket(socket_, event_, interrupt_.native(), what != Wait::readable,
                       std::min(millisecondsUntil(deadline), step))) {
      case SocketEvent::interrupted:
        return NetError::interrupted;
      case SocketEvent::ready:
        return NetError::none;
      case SocketEvent::timeout:
        break;
    }
  } while (!interrupt_.isSet() && Clock::now() < deadline);
  return interrupt_.isSet() ? NetError::interrupted : NetError::timeout;
}

}  // namespace engine
