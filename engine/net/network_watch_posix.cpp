#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "engine/net/network_watch.h"

namespace engine {

struct NetworkWatch::System {
  int socket = -1;
};

NetworkWatch::NetworkWatch() : system_(std::make_unique<System>()) {
  system_->socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE);
  sockaddr_nl address = {};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
  // One that cannot be bound is never readable.
  [[maybe_unused]] const int bound =
      bind(system_->socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

NetworkWatch::~NetworkWatch() {
  if (system_->socket >= 0) close(system_->socket);
}

NetworkWatch::Woken NetworkWatch::wait(const Interrupt& interrupt, std::chrono::milliseconds time) {
  pollfd both[2] = {{interrupt.native(), POLLIN, 0}, {system_->socket, POLLIN, 0}};
  if (poll(both, 2, static_cast<int>(time.count())) <= 0) return Woken::by_time;
  if (both[0].revents != 0) return Woken::by_interrupt;
  std::array<char, 4096> news;
  while (recv(system_->socket, news.data(), news.size(), 0) > 0) {
  }
  return Woken::by_change;
}

}  // namespace engine
