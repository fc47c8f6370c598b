#include "player/playback.h"

#include <chrono>
#include <cmath>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/files.h"
#include "base/text.h"
#include "player/audio_setup.h"
#include "player/channel_type.h"
#include "player/title_tag.h"

namespace player {
namespace {

constexpr int kPollMs = 50;
constexpr long kEnoughPercent = 75;
constexpr int kUnchanged = -1;
constexpr int kPanUnchanged = -101;

/// Fill of the buffer, to the nearest per cent. The positions wrap at 4 GB.
long percentFilled(BASS_DWORD downloaded, BASS_DWORD current, BASS_DWORD total) {
  if (total == 0) return 0;
  return std::lrint(static_cast<double>(downloaded - current) * 100 / total);
}

/// "HTTP/1.0 200 OK" and the like.
bool isGoodAnswer(std::string_view status_line) {
  const std::size_t space = status_line.find(' ');
  return space != std::string_view::npos && status_line.substr(space + 1).starts_with('2') &&
         (status_line.starts_with("HTTP/") || status_line.starts_with("ICY "));
}

}  // namespace

std::atomic<Playback*> Playback::current_ = nullptr;

Playback::Playback(const PlaybackParts& parts) : parts_(parts) {
  current_ = this;
  volume_listener_ = parts_.volume.listen([this](int volume) {
    if (!parts_.library.isLoaded()) return;
    const HSTREAM playing = stream();
    if (playing != 0)
      parts_.library.ChannelSetAttributes(playing, kUnchanged, volume, kPanUnchanged);
  });
}

Playback::~Playback() {
  parts_.volume.forget(volume_listener_);
  shutDown();
  current_ = nullptr;
}

void Playback::startplayer(int index) {
  if (parts_.streamlist.empty() || !playlistSaved()) return;
  if (playerthread_) {
    parts_.view.lblName("stop");
    parts_.desktop.beep();
    parts_.view.showPlaying(active_);  // the label has changed the picture
    return;
  }
  if (worker_.joinable()) worker_.join();  // it has ended
  addresses_ = parts_.streamlist;
  msgplayerstatus_ = parts_.messages.msgplayerstatus;
  {
    const base::Lock lock(mutex_);
    stopped_ = false;
    playerthread_ = true;
    active_ = true;
    parts_.view.lblName("stop");
  }
  parts_.view.showPlaying(true);  // before the worker can say otherwise
  try {
    worker_ = std::jthread([this, index] { PlayStreamThread(index); });
  } catch (const std::system_error&) {  // the system gives no thread
    playerthread_ = false;
    active_ = false;
    parts_.view.showPlaying(false);
  }
}

bool Playback::playlistSaved() const {
  const std::string stem = parts_.datapath + "\\tmpdata.";
  return base::fileExists(stem + "pls") || base::fileExists(stem + "m3u");
}

void Playback::stopplayer() {
  requestStop();
  // While the library is still connecting there is no handle yet, and 0 stands for
  // that connection.
  if (parts_.library.isLoaded()) parts_.library.ChannelStop(stream());
  parts_.recorder.end();
  parts_.icon.normalicon();
  parts_.subplayerplay.Checked = false;
  parts_.view.lblName("stop");
}

void Playback::toggle() {
  if (active_)
    stopplayer();
  else
    startplayer(0);
}

void Playback::recordstatus(bool wanted) {
  parts_.mnurecordstream.Checked = wanted;
  parts_.recorder.recordflag = wanted;
  parts_.view.showRecording(wanted);
}

void Playback::shutDown() {
  requestStop();
  if (parts_.library.isLoaded()) {
    parts_.library.PluginFree(0);
    parts_.library.Free();  // wakes a worker that is still connecting
  }
  if (worker_.joinable()) worker_.join();
  parts_.recorder.end();
}

void Playback::PlayStreamThread(int entry) {
  try {
    if (openStream(entry) && fillBuffer()) {
      readHeaders();
      play();
    }
  } catch (const std::exception&) {  // no memory
    active_ = false;
    showNothingPlays();
  }
  const base::Lock lock(mutex_);
  playerthread_ = false;
  if (ended_) showEnd();
}

void Playback::showNothingPlays() noexcept {
  try {
    show(&PlayerView::lblSong, "not playing");
    parts_.view.showPlaying(false);
  } catch (const std::exception&) {  // not even memory to say so
  }
}

bool Playback::openStream(int entry) {
  show(&PlayerView::lblSong, msgplayerstatus_);
  show(&PlayerView::lblBPS, "");
  freeStream();
  {
    const base::Lock lock(mutex_);
    ended_ = false;
    bitrate_.clear();
  }
  parts_.recorder.begin();

  // An entry that the mapping sends beyond the list has no address to play.
  const auto element = static_cast<std::size_t>(elementOf(entry));
  const std::string address = element < addresses_.size() ? addresses_[element] : std::string();
  if (stopped()) return false;
  const HSTREAM opened =
      parts_.library.StreamCreateURL(address.c_str(), 0, BASS_STREAM_STATUS, DownloadProc, 0);
  if (opened != 0) {
    const base::Lock lock(mutex_);
    hStream_ = opened;
  }
  if (stopped()) {
    freeStream();
    return false;
  }
  if (opened == 0) {
    active_ = false;
    show(&PlayerView::lblSong, "not playing");
    ShowBassError(parts_.library, parts_.view, "Can't play the stream");
    parts_.view.showPlaying(false);
  }
  return opened != 0;
}

bool Playback::fillBuffer() {
  const AudioLibrary& library = parts_.library;
  const HSTREAM filling = stream();
  for (;;) {
    const BASS_DWORD total = library.StreamGetFilePosition(filling, BASS_FILEPOS_END);
    if (total == BASS_FILEPOS_ERROR) {
      active_ = false;
      show(&PlayerView::lblName, "stop");
      return false;
    }
    const BASS_DWORD downloaded = library.StreamGetFilePosition(filling, BASS_FILEPOS_DOWNLOAD);
    const BASS_DWORD current = library.StreamGetFilePosition(filling, BASS_FILEPOS_DECODE);
    const long progress = percentFilled(downloaded, current, total);
    if (progress > kEnoughPercent) return !stopped();
    show(&PlayerView::lblName, "buffering... " + std::to_string(progress) + "%");
    if (stoppedWithin(kPollMs)) return false;
  }
}

void Playback::readHeaders() {
  const AudioLibrary& library = parts_.library;
  const HSTREAM opened = stream();
  bool named = false;
  const char* header = library.ChannelGetTags(opened, BASS_TAG_ICY);
  for (; header != nullptr && *header != '\0';
       header += std::char_traits<char>::length(header) + 1) {
    constexpr std::string_view kName = "icy-name:";
    constexpr std::string_view kBitrate = "icy-br:";
    const std::string_view text(header);
    if (text.starts_with(kName)) {
      named = true;
      show(&PlayerView::lblName, std::string(text.substr(kName.size())));
    } else if (text.starts_with(kBitrate)) {
      const std::string bitrate = "bitrate: " + std::string(text.substr(kBitrate.size()));
      show(&PlayerView::lblBPS, bitrate);
      const base::Lock lock(mutex_);
      bitrate_ = bitrate;
    }
  }
  // Without a name the label would go on telling of the buffer.
  if (!named) show(&PlayerView::lblName, "play");

  DoMeta(library.ChannelGetTags(opened, BASS_TAG_META));
  library.ChannelSetSync(opened, BASS_SYNC_META, 0, MetaSync, 0);
  alignas(BASS_CHANNELINFO) std::byte room[BASS_CHANNELINFO_ROOM] = {};
  auto* const info = new (room) BASS_CHANNELINFO{};
  library.ChannelGetInfo(opened, info);
  show(&PlayerView::lblFormat, base::lowerCased(GetCTypeName(info->ctype)));
}

void Playback::play() {
  const AudioLibrary& library = parts_.library;
  const HSTREAM opened = stream();
  int volume;
  do {  // again if the slider moved meanwhile
    volume = parts_.volume.get();
    library.ChannelSetAttributes(opened, kUnchanged, volume, kPanUnchanged);
  } while (volume != parts_.volume.get());
  if (stopped()) return;
  library.ChannelPlay(opened, 0);
  // A stop between the question and the answer found nothing to stop.
  if (stopped()) library.ChannelStop(opened);
}

void BASS_CALL Playback::DownloadProc(const void* buffer, BASS_DWORD length, uintptr_t) {
  Playback* const playback = current_;
  if (playback == nullptr) return;
  try {
    playback->received(buffer, length);
  } catch (const std::exception&) {  // no memory: this block is lost
  }
}

void BASS_CALL Playback::MetaSync(HSYNC, BASS_DWORD, uintptr_t data, uintptr_t) {
  Playback* const playback = current_;
  if (playback == nullptr) return;
  try {
    playback->DoMeta(reinterpret_cast<const char*>(data));
  } catch (const std::exception&) {  // no memory: the title stays as it was
  }
}

void Playback::DoMeta(const char* tag) {
  if (tag == nullptr) return;
  const std::optional<std::string_view> title = titleOf(tag);
  if (!title) return;
  show(&PlayerView::lblSong, std::string(*title));
  parts_.recorder.title(*title);
}

void Playback::received(const void* buffer, BASS_DWORD length) {
  if (buffer == nullptr)
    ended();
  else if (length == 0)
    serverText(static_cast<const char*>(buffer));
  else
    parts_.recorder.bytes({static_cast<const std::byte*>(buffer), length});
}

void Playback::serverText(const std::string& text) {
  // A stop may have come just before the library knew of the connection.
  if (stopped()) {
    parts_.library.ChannelStop(stream());
    return;
  }
  show(&PlayerView::lblBPS, text);
  // A lost connection is there again: nothing more to tell of it.
  const std::string bitrate = isGoodAnswer(text) ? shownBitrate() : "";
  if (!bitrate.empty()) show(&PlayerView::lblBPS, bitrate);
}

void Playback::ended() {
  parts_.recorder.downloadEnded();
  const base::Lock lock(mutex_);
  ended_ = true;
  if (!playerthread_) showEnd();
}

void Playback::showEnd() {
  if (stopped_) return;
  active_ = false;
  parts_.view.lblName("stop");
}

std::string Playback::shownBitrate() {
  const base::Lock lock(mutex_);
  return bitrate_;
}

HSTREAM Playback::stream() {
  const base::Lock lock(mutex_);
  return hStream_;
}

void Playback::freeStream() {
  HSTREAM old = 0;
  {
    const base::Lock lock(mutex_);
    old = std::exchange(hStream_, 0);
  }  // the library waits for callbacks, and they may want the lock
  if (old != 0) parts_.library.StreamFree(old);
}

void Playback::show(void (PlayerView::*label)(std::string), std::string text) {
  const base::Lock lock(mutex_);
  if (!stopped_) (parts_.view.*label)(std::move(text));
}

bool Playback::stopped() {
  const base::Lock lock(mutex_);
  return stopped_;
}

bool Playback::stoppedWithin(int milliseconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  const base::Lock lock(mutex_);
  while (!stopped_ && stop_signal_.waitUntil(mutex_, deadline)) continue;
  return stopped_;
}

void Playback::requestStop() {
  active_ = false;
  const base::Lock lock(mutex_);
  stopped_ = true;
  stop_signal_.notifyAll();
}

}  // namespace player
