#pragma once

#include <list>
#include <memory>
#include <string>

#include "engine/delivery.h"
#include "engine/downloader.h"
#include "engine/playback.h"

namespace engine {

/// One stream from its address to the loudspeaker. Members may be called from any
/// thread; those that return int give a code of bass.h.
class Stream {
 public:
  Stream(const Url& url, Listener listener, OutputFactory& outputs);
  ~Stream();
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// Waits for the server and recognises the format. stop() ends the wait, with
  /// BASS_ERROR_HANDLE.
  int open(const std::vector<Codec>& codecs);
  /// Waits until so much of the reported buffer is filled, or no more comes.
  void prebuffer(unsigned percent);
  /// Ends sound and network use soon, without waiting for either.
  void stop();
  /// stop(), and waits until no callback can run any more; not from a callback. The
  /// sound may fade for a moment longer.
  void close();
  /// True when nothing of this stream runs any more after close().
  bool isOver() const { return playback_.isOver(); }
  /// After stop(): waits for the end of the sound.
  void waitForSilence() { playback_.join(); }
  /// close(), and waits for all of it.
  void join();
  /// True in one of this stream's callbacks.
  bool isOwnThread() const { return downloader_.isOwnThread() || delivery_.isOwnThread(); }

  int play();
  void setVolume(float volume) { playback_.setVolume(volume); }
  int position(BASS_DWORD mode, BASS_DWORD& bytes);
  /// Null without such a tag. The text lives as long as the stream; a title until 32
  /// others have been handed out.
  const char* tags(BASS_DWORD type);
  BASS_CHANNELINFO info();
  /// A title that no tags() call has seen yet is told at once, on this thread.
  void setTitleSync(HSYNC handle, HSTREAM channel, SYNCPROC* proc, uintptr_t user);

 private:
  struct TitleSync {
    HSYNC handle = 0;
    HSTREAM channel = 0;
    SYNCPROC* proc = nullptr;
    uintptr_t user = 0;
    void tell(const std::string& text) const;
  };

  void takeTitle(const std::string& text);
  int recognise(const std::vector<Codec>& codecs);
  bool matchCodec(const std::vector<Codec>& codecs, const std::vector<uint8_t>& head,
                  bool& undecided);
  uint32_t likelyBitrate() const;
  size_t reportedSize() const;
  unsigned cushionMilliseconds();

  Interrupt interrupt_;
  DownloadBuffer buffer_;

  // Set by open() before anyone else knows the stream.
  Codec codec_;
  std::vector<Codec> codecs_;
  kestrel_format format_ = {};
  uint32_t bitrate_ = 0;  ///< bit/s
  std::string icy_tags_;

  base::Mutex title_mutex_;
  std::string title_ GUARDED_BY(title_mutex_);
  bool title_seen_ GUARDED_BY(title_mutex_) = true;
  std::list<std::string> handed_out_ GUARDED_BY(title_mutex_);
  TitleSync sync_ GUARDED_BY(title_mutex_);

  // Last: their threads use the rest.
  Playback playback_;
  Delivery delivery_;
  Downloader downloader_;
};

}  // namespace engine
