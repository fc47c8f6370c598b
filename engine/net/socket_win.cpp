#include "engine/net/socket_system.h"
// After winsock2.h, which must come first.
#include <windows.h>

namespace engine {

NetworkStart::NetworkStart() {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
}

NetworkStart::~NetworkStart() {
  WSACleanup();
}

uintptr_t openSocket(int family, void*& event) {
  const SOCKET made = WSASocketW(family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                 WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (made == INVALID_SOCKET) return kNoSocket;
  event = WSACreateEvent();
  // Also makes the socket non-blocking.
  if (event == nullptr ||
      WSAEventSelect(made, event, FD_CONNECT | FD_READ | FD_WRITE | FD_CLOSE) != 0) {
    closesocket(made);
    return kNoSocket;
  }
  return made;
}

void closeSocket(uintptr_t socket) {
  closesocket(native(socket));
}

void freeSocketEvent(void* event) {
  WSACloseEvent(event);
}

int lastError() {
  return WSAGetLastError();
}

bool wouldBlock(int error) {
  return error == WSAEWOULDBLOCK;
}

NetError netError(int error) {
  if (error == WSAETIMEDOUT) return NetError::timeout;
  return error == WSAENETUNREACH || error == WSAENETDOWN ? NetError::no_network : NetError::failed;
}

SocketEvent waitSocket(uintptr_t socket, void* event, Interrupt::Native interrupt,
                       bool /*writable*/, int milliseconds) {
  const HANDLE both[2] = {interrupt, event};
  switch (WaitForMultipleObjects(2, both, FALSE, static_cast<DWORD>(milliseconds))) {
    case WAIT_OBJECT_0:
      return SocketEvent::interrupted;
    case WAIT_TIMEOUT:
      return SocketEvent::timeout;
    default:
      break;
  }
  // Clears the event. A failed connect is told here and nowhere else.
  WSANETWORKEVENTS events = {};
  WSAEnumNetworkEvents(native(socket), event, &events);
  return SocketEvent::ready;
}

void pinModule() {
  HMODULE self = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCWSTR>(reinterpret_cast<uintptr_t>(&pinModule)), &self);
}

}  // namespace engine
