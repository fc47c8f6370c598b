#include "engine/downloader.h"

#include <algorithm>

#include "engine/text/title.h"

namespace engine {
namespace {

constexpr size_t kReadSize = 16 * 1024;
// Bytes are fetched in batches while there is sound in hand: each look at the
// network costs, a little later costs nothing.
constexpr unsigned kLongestNap = 250;
constexpr unsigned kSmallestCushion = 100;

}  // namespace

Downloader::Downloader(Url url, const Interrupt& interrupt, DownloadBuffer& buffer,
                       StatusSink status)
    : url_(std::move(url)), interrupt_(interrupt), buffer_(buffer), status_(std::move(status)) {}

void Downloader::start() {
  const base::Lock lock(join_mutex_);
  thread_ = std::thread([this] { run(); });
}

Downloader::~Downloader() {
  join();
}

void Downloader::join() {
  const base::Lock lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
}

NetError Downloader::waitForAnswer() {
  const base::Lock lock(mutex_);
  while (!answered_) changed_.wait(mutex_);
  return error_;
}

void Downloader::accept(std::function<unsigned()> cushion) {
  const base::Lock lock(mutex_);
  cushion_ = std::move(cushion);
  // What is all here stays finished.
  if (waiting_) buffer_.resume();
  changed_.notifyAll();
}

void Downloader::cancel() {
  const base::Lock lock(mutex_);
  cancelled_ = true;
  changed_.notifyAll();
}

// Whoever recognises the format is not kept waiting for more meanwhile.
bool Downloader::isAccepted() {
  const base::Lock lock(mutex_);
  waiting_ = !cushion_;
  if (waiting_) buffer_.finish();
  while (!cushion_ && !cancelled_) changed_.wait(mutex_);
  return !cancelled_;
}

void Downloader::run() {
  id_ = std::this_thread::get_id();
  Connection connection(url_, interrupt_, status_);
  NetError error = NetError::failed;
  try {
    error = connection.open();
    if (error == NetError::none) head_ = connection.head();
  } catch (const std::exception&) {
    error = NetError::failed;
  }
  {
    const base::Lock lock(mutex_);
    answered_ = true;
    error_ = error;
    changed_.notifyAll();
  }
  if (error != NetError::none) return;
  for (bool more = true; more;) {
    try {
      download(connection);
      more = !connection.isComplete() && isAccepted() && connection.openAgain();
    } catch (const std::exception&) {
      // Out of memory: the next connection may fare better.
      connection.close();
      more = !interrupt_.wait(kMemoryRetry);
    }
  }
  buffer_.finish();
}

void Downloader::download(Connection& connection) {
  const auto bytes = std::make_unique<uint8_t[]>(kReadSize);
  IcyReader reader(connection.head().number("icy-metaint").value_or(0));
  bool open = true;
  uint64_t position = buffer_.level().written;
  const auto sound = [&](const uint8_t* piece, size_t length) {
    open = open && buffer_.write({piece, length});
    position += length;
  };
  // The title at the first opportunity is that of the sound before it.
  const uint64_t first_title_end = position + reader.interval();
  const auto title = [&](const std::string& block) {
    auto tag = titleTag(block);
    const bool first = position == first_title_end;
    if (tag) buffer_.markTitle(std::move(*tag), first ? position - reader.interval() : position);
  };
  while (open) {
    size_t got = 0;
    if (connection.read(bytes.get(), kReadSize, got) != NetError::none || got == 0) return;
    if (const auto own = connection.takeTitle()) buffer_.markTitle(titleTagOf(*own), position);
    reader.feed(bytes.get(), got, sound, title);
    if (got < kReadSize) nap();
  }
}

void Downloader::nap() {
  std::function<unsigned()> cushion;
  {
    const base::Lock lock(mutex_);
    cushion = cushion_;
  }
  const unsigned milliseconds = cushion ? cushion() : 0;
  if (milliseconds < kSmallestCushion) return;
  interrupt_.wait(std::chrono::milliseconds(std::min(milliseconds / 2, kLongestNap)));
}

}  // namespace engine
