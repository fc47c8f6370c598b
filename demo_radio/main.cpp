// The demo radio: a station directory, playlists and endless streams on the
// loopback address, with the bad habits of real servers on request. A server of
// its own because it must send what no library would: broken answers.
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <list>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "demo_radio/pages.h"
#include "demo_radio/radio.h"

namespace {

constexpr std::size_t kMostConnections = 1000;

struct Options {
  int port = 0;
  int stations = 25;
  bool with_parent = false;
  std::string port_file, log_file, huge_page_file;
  demo_radio::Broadcast::Options broadcast;
};

const char* const kUsage =
    "usage: demo_radio --sounds DIR [--port N] [--port-file FILE] [--log FILE] [--stations N]\n"
    "                  [--burst BYTES] [--song-seconds N] [--metaint BYTES] [--with-parent]\n"
    "       demo_radio --write-huge-page FILE\n"
    "Port 0, the default, chooses a free one.\n";

int number(const std::string& text, int least, int most) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < least || value > most)
    throw std::invalid_argument("not a number from " + std::to_string(least) + " to " +
                                std::to_string(most) + ": " + text);
  return static_cast<int>(value);
}

Options readOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--with-parent") {
      options.with_parent = true;
      continue;
    }
    if (++i == argc) throw std::invalid_argument("unknown or without a value: " + name);
    const std::string value = argv[i];
    if (name == "--port")
      options.port = number(value, 0, 65535);
    else if (name == "--port-file")
      options.port_file = value;
    else if (name == "--log")
      options.log_file = value;
    else if (name == "--sounds")
      options.broadcast.sounds = value;
    else if (name == "--stations")
      options.stations = number(value, 1, 1000);
    else if (name == "--burst")
      options.broadcast.burst = number(value, 0, 1 << 20);
    else if (name == "--song-seconds")
      options.broadcast.song_seconds = number(value, 1, 3600);
    else if (name == "--metaint")
      options.broadcast.metaint = number(value, 1, 1 << 20);
    else if (name == "--write-huge-page")
      options.huge_page_file = value;
    else
      throw std::invalid_argument("unknown option " + name);
  }
  if (options.huge_page_file.empty() && options.broadcast.sounds.empty())
    throw std::invalid_argument("--sounds is missing");
  return options;
}

/// Written beside and renamed, so that whoever waits for it never reads half of it.
void writeFile(const std::string& path, const std::string& text) {
  const std::string beside = path + ".new";
  std::FILE* file = std::fopen(beside.c_str(), "wb");
  if (file == nullptr) throw std::runtime_error("cannot write " + path);
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (std::fclose(file) != 0 || !written || std::rename(beside.c_str(), path.c_str()) != 0)
    throw std::runtime_error("cannot write " + path);
}

/// One thread for each connection. The destructor ends them all. Used by one thread.
class Connections {
 public:
  explicit Connections(demo_radio::Radio& radio) : radio_(radio), stop_(eventfd(0, EFD_CLOEXEC)) {}
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;

  ~Connections() {
    const std::uint64_t one = 1;
    if (write(stop_.get(), &one, sizeof one) != sizeof one) std::abort();
  }

  void take(demo_radio::Descriptor socket) {
    open_.remove_if([](const Connection& connection) { return connection.over.load(); });
    if (open_.size() >= kMostConnections) return;
    Connection& connection = open_.emplace_back();
    connection.thread = std::jthread([this, &connection, client = std::move(socket)]() mutable {
      {
        demo_radio::Socket mine(std::move(client), stop_.get());
        radio_.serve(mine);
      }
      connection.over = true;
    });
  }

 private:
  struct Connection {
    std::atomic<bool> over = false;
    std::jthread thread;
  };

  demo_radio::Radio& radio_;
  demo_radio::Descriptor stop_;
  std::list<Connection> open_;
};

/// From here on SIGTERM and SIGINT arrive in the descriptor only.
demo_radio::Descriptor catchSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return demo_radio::Descriptor(signalfd(-1, &signals, SFD_CLOEXEC));
}

void run(const Options& options) {
  const demo_radio::Descriptor signals = catchSignals();
  if (options.with_parent) prctl(PR_SET_PDEATHSIG, SIGTERM);
  demo_radio::Radio radio(options.stations, options.broadcast, options.log_file);
  const demo_radio::Descriptor listener = demo_radio::listenOnLoopback(options.port);
  const std::string port = std::to_string(demo_radio::portOf(listener));
  std::printf("listening on 127.0.0.1:%s\n", port.c_str());
  std::fflush(stdout);
  if (!options.port_file.empty()) writeFile(options.port_file, port + "\n");

  Connections connections(radio);
  std::array<pollfd, 2> fds{{{listener.get(), POLLIN, 0}, {signals.get(), POLLIN, 0}}};
  for (;;) {
    if (poll(fds.data(), fds.size(), -1) < 0) continue;
    if (fds[1].revents != 0) return;
    demo_radio::Descriptor client(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (client.get() >= 0) connections.take(std::move(client));
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = readOptions(argc, argv);
    if (!options.huge_page_file.empty())
      writeFile(options.huge_page_file,
                demo_radio::hugeDirectoryPage(demo_radio::World(options.stations)));
    else
      run(options);
    return 0;
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "demo_radio: %s\n%s", error.what(), kUsage);
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "demo_radio: %s\n", error.what());
    return 1;
  }
}
