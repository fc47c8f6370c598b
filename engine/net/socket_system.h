#pragma once

// The little in which the two socket interfaces differ. For socket.cpp and
// resolver.cpp only.
#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netdb.h>
#include <sys/socket.h>
#endif

#include <cstdint>

#include "engine/net/socket.h"
#include "engine/time/interrupt.h"

namespace engine {

#if defined(_WIN32)
using NativeSocket = SOCKET;
using SendSize = int;
inline constexpr int kSendFlags = 0;
#else
using NativeSocket = int;
using SendSize = size_t;
inline constexpr int kSendFlags = MSG_NOSIGNAL;
#endif

inline constexpr uintptr_t kNoSocket = ~uintptr_t{0};
inline NativeSocket native(uintptr_t socket) {
  return static_cast<NativeSocket>(socket);
}

enum class SocketEvent { ready, interrupted, timeout };

/// A non-blocking stream socket; `event` is what it signals, where there is such a
/// thing.
uintptr_t openSocket(int family, void*& event);
void closeSocket(uintptr_t socket);
void freeSocketEvent(void* event);
int lastError();
bool wouldBlock(int error);
NetError netError(int error);
/// Waits until the socket can be written (else: read), or has failed.
SocketEvent waitSocket(uintptr_t socket, void* event, Interrupt::Native interrupt, bool writable,
                       int milliseconds);
/// Keeps this code in memory until the process ends.
void pinModule();

}  // namespace engine
