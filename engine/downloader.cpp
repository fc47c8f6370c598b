#include "engine/downloader.h"

#include <algorithm>

namespace engine {
namespace {

constexpr size_t kReadSize = 16 * 1024;
// Bytes are fetched in batches while there is sound in hand: each look at the
// network costs, a little later costs nothing.
constexpr unsigned kLongestNap = 250;
constexpr unsigned kSmallestCushion = 100;

}  // namespace

Downloader::Downloader(Url url, Listener listener, const Interrupt& interrupt,
                       DownloadBuffer& buffer, TitleSink title)
    : url_(std::move(url)),
      listener_(listener),
      interrupt_(interrupt),
      buffer_(buffer),
      title_(std::move(title)),
      thread_([this] { run(); }) {}

Downloader::~Downloader() {
  join();
}

void Downloader::join() {
  const Lock lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
}

NetError Downloader::waitForAnswer() {
  const Lock lock(mutex_);
  while (!answered_) changed_.wait(mutex_);
  return error_;
}

void Downloader::setCushion(std::function<unsigned()> milliseconds) {
  const Lock lock(mutex_);
  cushion_ = std::move(milliseconds);
}

void Downloader::tell(const void* bytes, size_t length) const {
  if (listener_.proc == nullptr || interrupt_.isSet()) return;
  listener_.proc(bytes, static_cast<BASS_DWORD>(length), listener_.user);
}

void Downloader::run() {
  id_ = std::this_thread::get_id();
  OpenedSource opened;
  try {
    opened = openSource(url_, interrupt_, [this](const std::string& text) {
      if (listener_.wants_status) tell(text.c_str(), 0);
    });
  } catch (const std::exception&) {
    opened.error = NetError::failed;
  }
  if (opened.source) head_ = opened.source->head();
  {
    const Lock lock(mutex_);
    answered_ = true;
    error_ = opened.error;
    changed_.notifyAll();
  }
  if (!opened.source) return;
  try {
    download(*opened.source);
  } catch (const std::exception&) {
    // Out of memory: what has been downloaded still plays.
  }
  tell(nullptr, 0);
  buffer_.finish();
}

void Downloader::download(ByteSource& source) {
  const auto bytes = std::make_unique<uint8_t[]>(kReadSize);
  IcyReader reader(head_.number("icy-metaint").value_or(0));
  bool open = true;
  const auto sound = [&](const uint8_t* piece, size_t length) {
    if (!open) return;
    tell(piece, length);
    open = buffer_.write({piece, length});
  };
  const auto title = [&](const std::string& text) {
    if (open && !interrupt_.isSet()) title_(text);
  };
  while (open) {
    size_t got = 0;
    if (source.read(bytes.get(), kReadSize, got) != NetError::none || got == 0) return;
    reader.feed(bytes.get(), got, sound, title);
    if (got < kReadSize) nap();
  }
}

void Downloader::nap() {
  std::function<unsigned()> cushion;
  {
    const Lock lock(mutex_);
    cushion = cushion_;
  }
  const unsigned milliseconds = cushion ? cushion() : 0;
  if (milliseconds < kSmallestCushion) return;
  interrupt_.wait(std::chrono::milliseconds(std::min(milliseconds / 2, kLongestNap)));
}

}  // namespace engine
