#include "engine/stream.h"

#include <algorithm>

namespace engine {
namespace {

// About half a minute of a usual stream.
constexpr size_t kCapacity = 512 * 1024;
constexpr auto kRecogniseTime = std::chrono::seconds(12);
// The buffer that is reported: the player starts when three quarters of it are
// full. So much sound bridges a server's uneven pace, and is quickly there from one
// that sends no faster than it plays.
constexpr uint32_t kReportedMilliseconds = 350;
// A server that bursts fills that buffer within a few milliseconds of its first
// byte. Waiting for it here spares the player a first look at a nearly empty buffer,
// and with that a pause before its next one.
constexpr auto kBurstTime = std::chrono::milliseconds(20);
// Somebody may still read them.
constexpr size_t kKeptTitles = 32;
constexpr uint32_t kUnknownBitrate = 128'000;

int bassError(NetError error) {
  switch (error) {
    case NetError::none:
      return BASS_OK;
    case NetError::interrupted:
      return BASS_ERROR_HANDLE;
    case NetError::no_network:
      return BASS_ERROR_NONET;
    case NetError::timeout:
      return BASS_ERROR_TIMEOUT;
    case NetError::format:
      return BASS_ERROR_FILEFORM;
    case NetError::name:
    case NetError::failed:
    case NetError::unsupported:
    case NetError::gone:
      break;
  }
  return BASS_ERROR_FILEOPEN;
}

}  // namespace

Stream::Stream(const Url& url, Listener listener, OutputFactory& outputs)
    : buffer_(kCapacity),
      playback_(outputs, interrupt_, buffer_),
      delivery_(listener, interrupt_, buffer_,
                [this](const std::string& text) { takeTitle(text); }),
      downloader_(url, interrupt_, buffer_,
                  [this](const std::string& text) { delivery_.tellStatus(text); }) {}

Stream::~Stream() {
  stop();
}

void Stream::stop() {
  interrupt_.set();
  buffer_.close();
  playback_.cancel();
  downloader_.cancel();
}

void Stream::close() {
  stop();
  downloader_.join();
  delivery_.join();
}

void Stream::join() {
  close();
  playback_.join();
}

int Stream::open(const std::vector<Codec>& codecs) {
  downloader_.start();
  const NetError error = downloader_.waitForAnswer();
  if (interrupt_.isSet()) return BASS_ERROR_HANDLE;
  if (error != NetError::none) return bassError(error);
  icy_tags_ = downloader_.head().icyTags();
  if (const int code = recognise(codecs); code != BASS_OK) return code;
  codecs_ = codecs;
  bitrate_ = likelyBitrate();
  downloader_.accept([this] { return cushionMilliseconds(); });
  buffer_.waitFilled(reportedSize(), Clock::now() + kBurstTime);
  return BASS_OK;
}

int Stream::recognise(const std::vector<Codec>& codecs) {
  const auto deadline = Clock::now() + kRecogniseTime;
  for (size_t wanted = 1; buffer_.waitFilled(wanted, deadline);) {
    const std::vector<uint8_t> head = buffer_.peek(buffer_.capacity());
    bool undecided = false;
    if (matchCodec(codecs, head, undecided)) return BASS_OK;
    wanted = head.size() + 1;
    if (!undecided || wanted > buffer_.capacity()) return BASS_ERROR_FILEFORM;
  }
  if (interrupt_.isSet()) return BASS_ERROR_HANDLE;
  return buffer_.level().finished ? BASS_ERROR_FILEFORM : BASS_ERROR_TIMEOUT;
}

bool Stream::matchCodec(const std::vector<Codec>& codecs, const std::vector<uint8_t>& head,
                        bool& undecided) {
  for (const Codec& codec : codecs) {
    const int match =
        codec.functions->recognise(head.data(), static_cast<int>(head.size()), &format_);
    if (match == KESTREL_YES) {
      codec_ = codec;
      return true;
    }
    undecided = undecided || match == KESTREL_MORE;
  }
  return false;
}

// Measured over a few frames; a server that says more is believed up to twice that,
// since a quiet beginning makes small frames.
uint32_t Stream::likelyBitrate() const {
  const uint64_t told = uint64_t{downloader_.head().number("icy-br").value_or(0)} * 1000;
  if (format_.bitrate == 0 && told >= 8000 && told <= 2'000'000) return static_cast<uint32_t>(told);
  const uint32_t measured = format_.bitrate != 0 ? format_.bitrate : kUnknownBitrate;
  return static_cast<uint32_t>(std::clamp<uint64_t>(told, measured, uint64_t{2} * measured));
}

size_t Stream::reportedSize() const {
  return bitrate_ / 8 * kReportedMilliseconds / 1000;
}

unsigned Stream::cushionMilliseconds() {
  const uint64_t unread = buffer_.level().unread();
  return static_cast<unsigned>(unread * 8000 / bitrate_) + playback_.pendingMilliseconds();
}

void Stream::prebuffer(unsigned percent) {
  buffer_.waitFilled(reportedSize() * std::min(percent, 100u) / 100);
}

int Stream::play() {
  if (interrupt_.isSet()) return BASS_ERROR_NOPLAY;
  playback_.play(codec_, codecs_, bitrate_);
  return BASS_OK;
}

int Stream::position(BASS_DWORD mode, BASS_DWORD& bytes) {
  const DownloadBuffer::Level level = buffer_.level();
  switch (mode) {
    case BASS_FILEPOS_DECODE:
      bytes = static_cast<BASS_DWORD>(level.consumed);
      return BASS_OK;
    case BASS_FILEPOS_DOWNLOAD:
      bytes = static_cast<BASS_DWORD>(level.written);
      return BASS_OK;
    case BASS_FILEPOS_END: {
      // Nothing more to wait for: whoever waits for a filled buffer must hear of it.
      if (level.closed || (level.finished && level.unread() == 0)) return BASS_ERROR_NOTAVAIL;
      const size_t size = std::max<size_t>(reportedSize(), 1);
      bytes = static_cast<BASS_DWORD>(level.finished ? std::min(size, level.unread()) : size);
      return BASS_OK;
    }
    default:
      return BASS_ERROR_ILLPARAM;
  }
}

const char* Stream::tags(BASS_DWORD type) {
  if (type == BASS_TAG_ICY) return icy_tags_.empty() ? nullptr : icy_tags_.data();
  if (type != BASS_TAG_META) return nullptr;
  const base::Lock lock(title_mutex_);
  if (title_.empty()) return nullptr;
  title_seen_ = true;
  if (handed_out_.empty() || handed_out_.back() != title_) handed_out_.push_back(title_);
  if (handed_out_.size() > kKeptTitles) handed_out_.pop_front();
  return handed_out_.back().c_str();
}

BASS_CHANNELINFO Stream::info() {
  const kestrel_format heard = playback_.format();
  const kestrel_format& now = heard.rate != 0 ? heard : format_;
  return {now.rate, now.channels, 0, now.ctype};
}

void Stream::TitleSync::tell(const std::string& text) const {
  if (proc != nullptr) proc(handle, channel, reinterpret_cast<uintptr_t>(text.c_str()), user);
}

void Stream::setTitleSync(HSYNC handle, HSTREAM channel, SYNCPROC* proc, uintptr_t user) {
  const TitleSync sync{handle, channel, proc, user};
  std::string missed;
  {
    const base::Lock lock(title_mutex_);
    sync_ = sync;
    if (!title_seen_) missed = title_;
    title_seen_ = true;
  }
  if (!missed.empty()) sync.tell(missed);
}

void Stream::takeTitle(const std::string& text) {
  TitleSync sync;
  {
    const base::Lock lock(title_mutex_);
    // Some servers repeat the title every few seconds.
    if (text == title_) return;
    title_ = text;
    sync = sync_;
    title_seen_ = sync.proc != nullptr;
  }
  sync.tell(text);
}

}  // namespace engine
