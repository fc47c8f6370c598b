#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/time/interrupt.h"

namespace engine {

enum class NetError {
  none,
  interrupted,  ///< the stream is being stopped
  name,         ///< no such host
  no_network,   ///< this machine has no road to it
  failed,       ///< refused, reset or closed early
  timeout,
  format,       ///< there, but nothing that can be played
  unsupported,  ///< a scheme or answer that is not spoken here
  gone,         ///< the server says that there is no such stream
};

using Clock = std::chrono::steady_clock;

/// Long waits go in steps, since the system does not count the time that the machine
/// sleeps towards a single one: after that, a deadline long past is noticed.
inline constexpr std::chrono::milliseconds kWaitStep{1000};

/// A socket address of either family, as the system keeps it.
struct Address {
  alignas(8) std::array<unsigned char, 128> bytes{};
  int length = 0;
  int family = 0;
};

/// Makes the process ready for sockets while it lives; nothing on systems where
/// they need no preparation.
class NetworkStart {
 public:
  NetworkStart();
  ~NetworkStart();
  NetworkStart(const NetworkStart&) = delete;
  NetworkStart& operator=(const NetworkStart&) = delete;
};

/// Addresses of a host, in the system's order. Returns at once when interrupted: a
/// lookup that the system cannot cancel is left to end by itself.
NetError resolveHost(const std::string& host, uint16_t port, const Interrupt& interrupt,
                     Clock::time_point deadline, std::vector<Address>& addresses);

/// What a request and its answer go over: bytes to and from one server, plain or
/// not. Waits end at the deadline, and at once when the stream is interrupted. One
/// thread.
class Link {
 public:
  virtual ~Link() = default;

  /// In place of the connection before, if there was one.
  [[nodiscard]] virtual NetError connect(const Address& address, Clock::time_point deadline) = 0;
  [[nodiscard]] virtual NetError sendAll(std::string_view bytes, Clock::time_point deadline) = 0;
  /// Waits for at least one byte. `got` 0 without an error: the server has closed.
  [[nodiscard]] virtual NetError receive(uint8_t* to, size_t room, Clock::time_point deadline,
                                         size_t& got) = 0;
};

/// A TCP connection whose waits end at once when `interrupt` is set.
class Socket final : public Link {
 public:
  explicit Socket(const Interrupt& interrupt);
  ~Socket() override;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  NetError connect(const Address& address, Clock::time_point deadline) override;
  NetError sendAll(std::string_view bytes, Clock::time_point deadline) override;
  NetError receive(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got) override;

 private:
  enum class Wait { readable, writable, connected };
  NetError wait(Wait what, Clock::time_point deadline);
  void close();

  const Interrupt& interrupt_;
  uintptr_t socket_;
  void* event_ = nullptr;  ///< Windows: what the socket signals
};

}  // namespace engine
