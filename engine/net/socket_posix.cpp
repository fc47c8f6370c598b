#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "engine/net/socket_system.h"

namespace engine {

NetworkStart::NetworkStart() = default;
NetworkStart::~NetworkStart() = default;

uintptr_t openSocket(int family, void*& /*event*/) {
  const int made = ::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  return made < 0 ? kNoSocket : static_cast<uintptr_t>(made);
}

void closeSocket(uintptr_t socket) {
  ::close(native(socket));
}

void freeSocketEvent(void* /*event*/) {}

int lastError() {
  return errno;
}

bool wouldBlock(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS || error == EINTR;
}

NetError netError(int error) {
  if (error == ETIMEDOUT) return NetError::timeout;
  return error == ENETUNREACH || error == ENETDOWN ? NetError::no_network : NetError::failed;
}

SocketEvent waitSocket(uintptr_t socket, void* /*event*/, Interrupt::Native interrupt,
                       bool writable, int milliseconds) {
  pollfd both[2] = {{interrupt, POLLIN, 0},
                    {native(socket), static_cast<short>(writable ? POLLOUT : POLLIN), 0}};
  const int ready = ::poll(both, 2, milliseconds);
  if (ready == 0) return SocketEvent::timeout;
  return ready > 0 && both[0].revents != 0 ? SocketEvent::interrupted : SocketEvent::ready;
}

void pinModule() {}

}  // namespace engine
