#include <windows.h>
// After windows.h, which they build on.
#include <audioclient.h>
#include <mmdeviceapi.h>
#include <mmreg.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "engine/net/socket.h"
#include "engine/sound/output.h"

// The system's audio sessions directly: the older interface above them costs two
// threads more.

namespace engine {
namespace {

// So much is queued at first: a change of the volume and the fade at the end are soon
// heard. A device that runs dry for want of processor time gets twice as much.
constexpr unsigned kSmallQueue = 200;  // ms
constexpr unsigned kLargeQueue = 400;  // ms
// Room is asked after in steps of our own: being told of each piece costs more
// wake-ups.
constexpr auto kNap = std::chrono::milliseconds(100);
constexpr auto kDeviceSilence = std::chrono::seconds(2);
constexpr auto kDefaultCheck = std::chrono::seconds(2);

template <class Interface>
struct Release {
  void operator()(Interface* object) const { object->Release(); }
};
template <class Interface>
using ComPtr = std::unique_ptr<Interface, Release<Interface>>;

struct FreeTask {
  void operator()(void* memory) const { CoTaskMemFree(memory); }
};

/// This thread's membership in COM.
class ComThread {
 public:
  ComThread() : joined_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
  ~ComThread() {
    if (joined_) CoUninitialize();
  }
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;

 private:
  bool joined_;
};

ComPtr<IMMDeviceEnumerator> deviceList() {
  void* raw = nullptr;
  if (FAILED(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL,
                              __uuidof(IMMDeviceEnumerator), &raw))) {
    return nullptr;
  }
  return ComPtr<IMMDeviceEnumerator>(static_cast<IMMDeviceEnumerator*>(raw));
}

ComPtr<IMMDevice> defaultDevice(IMMDeviceEnumerator& devices) {
  IMMDevice* found = nullptr;
  if (FAILED(devices.GetDefaultAudioEndpoint(eRender, eConsole, &found))) return nullptr;
  return ComPtr<IMMDevice>(found);
}

std::wstring nameOf(IMMDevice& device) {
  wchar_t* id = nullptr;
  if (FAILED(device.GetId(&id))) return {};
  const std::unique_ptr<wchar_t, FreeTask> owned(id);
  return id;
}

WAVEFORMATEX stereoFormat(unsigned rate) {
  WAVEFORMATEX format = {};
  format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
  format.nChannels = Output::kChannels;
  format.nSamplesPerSec = rate;
  format.wBitsPerSample = 32;
  format.nBlockAlign = Output::kChannels * sizeof(float);
  format.nAvgBytesPerSec = rate * format.nBlockAlign;
  return format;
}

class WasapiOutput final : public Output {
 public:
  explicit WasapiOutput(const Interrupt& interrupt) : interrupt_(interrupt) {}
  ~WasapiOutput() override {
    if (started_) client_->Stop();
  }
  WasapiOutput(const WasapiOutput&) = delete;
  WasapiOutput& operator=(const WasapiOutput&) = delete;

  bool open();
  unsigned rate() const override { return rate_; }
  bool write(std::span<const float>& samples) override;
  // Nothing waits for more to come.
  void flush() override { dry_ = true; }
  unsigned pendingMilliseconds() override;
  void finish(std::span<const float> last) override;

 private:
  bool findRate();
  bool isDefault();
  bool waitForRoom(UINT32& room);
  bool put(std::span<const float>& samples, UINT32 room);

  // The order in which they come and go.
  ComThread com_;
  const Interrupt& interrupt_;
  ComPtr<IMMDeviceEnumerator> devices_;
  std::wstring name_;
  ComPtr<IAudioClient> client_;
  ComPtr<IAudioRenderClient> queue_;

  unsigned rate_ = 0;
  UINT32 room_ = 0;   ///< of the system's queue, in frames
  UINT32 limit_ = 0;  ///< of that, used
  bool started_ = false;
  bool dry_ = true;  ///< it is no wonder if the device has nothing to play
  Clock::time_point checked_ = Clock::now();
};

bool WasapiOutput::open() {
  devices_ = deviceList();
  const auto device = devices_ ? defaultDevice(*devices_) : nullptr;
  if (!device) return false;
  name_ = nameOf(*device);
  void* raw = nullptr;
  if (FAILED(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &raw))) return false;
  client_.reset(static_cast<IAudioClient*>(raw));
  if (!findRate()) return false;
  const WAVEFORMATEX format = stereoFormat(rate_);
  // In units of 100 ns. The system brings stereo to as many loudspeakers as there are.
  constexpr REFERENCE_TIME kDuration = REFERENCE_TIME{kLargeQueue} * 10'000;
  if (FAILED(client_->Initialize(
          AUDCLNT_SHAREMODE_SHARED,
          AUDCLNT_STREAMFLAGS_AUTOCONVERTPCM | AUDCLNT_STREAMFLAGS_SRC_DEFAULT_QUALITY, kDuration,
          0, &format, nullptr)) ||
      FAILED(client_->GetBufferSize(&room_)) ||
      FAILED(client_->GetService(__uuidof(IAudioRenderClient), &raw))) {
    return false;
  }
  queue_.reset(static_cast<IAudioRenderClient*>(raw));
  limit_ = std::min(room_, rate_ * kSmallQueue / 1000);
  return true;
}

// The rate the device mixes at, so that only our resampler touches the sound and not
// the system's cheaper one.
bool WasapiOutput::findRate() {
  WAVEFORMATEX* format = nullptr;
  if (FAILED(client_->GetMixFormat(&format))) return false;
  const std::unique_ptr<WAVEFORMATEX, FreeTask> owned(format);
  rate_ = format->nSamplesPerSec;
  return rate_ >= 8000 && rate_ <= 192000;
}

bool WasapiOutput::isDefault() {
  if (Clock::now() - checked_ < kDefaultCheck) return true;
  checked_ = Clock::now();
  const auto device = defaultDevice(*devices_);
  return device && nameOf(*device) == name_;
}

// False: the device is gone. No room and no error: interrupted.
bool WasapiOutput::waitForRoom(UINT32& room) {
  room = 0;
  UINT32 queued = 0;
  UINT32 last = 0;
  auto progress = Clock::now();
  for (;;) {
    if (FAILED(client_->GetCurrentPadding(&queued))) return false;
    if (queued < limit_) break;
    if (queued != std::exchange(last, queued)) progress = Clock::now();
    if (Clock::now() - progress > kDeviceSilence) return false;
    if (interrupt_.wait(kNap)) return true;
  }
  if (queued == 0 && !dry_) limit_ = std::min(room_, rate_ * kLargeQueue / 1000);
  room = limit_ - queued;
  return true;
}

bool WasapiOutput::put(std::span<const float>& samples, UINT32 room) {
  const UINT32 frames = std::min(room, static_cast<UINT32>(samples.size() / kChannels));
  if (frames == 0) return true;
  BYTE* to = nullptr;
  if (FAILED(queue_->GetBuffer(frames, &to))) return false;
  const size_t count = size_t{frames} * kChannels;
  std::memcpy(to, samples.data(), count * sizeof(float));
  samples = samples.subspan(count);
  if (FAILED(queue_->ReleaseBuffer(frames, 0))) return false;
  dry_ = false;
  if (!started_) started_ = SUCCEEDED(client_->Start());
  return started_;
}

bool WasapiOutput::write(std::span<const float>& samples) {
  if (!isDefault()) return false;
  while (samples.size() >= kChannels) {
    UINT32 room = 0;
    if (!waitForRoom(room)) return false;
    if (room == 0) return true;
    if (!put(samples, room)) return false;
  }
  return true;
}

unsigned WasapiOutput::pendingMilliseconds() {
  UINT32 queued = 0;
  if (FAILED(client_->GetCurrentPadding(&queued))) return 0;
  return queued * 1000 / rate_;
}

void WasapiOutput::finish(std::span<const float> last) {
  UINT32 queued = 0;
  // What is beyond the limit was kept free for this.
  if (FAILED(client_->GetCurrentPadding(&queued)) || !put(last, room_ - queued)) return;
  const auto deadline = Clock::now() + kLongestEnd;
  while (pendingMilliseconds() != 0 && Clock::now() < deadline) Sleep(10);
}

class WasapiFactory final : public OutputFactory {
 public:
  std::unique_ptr<Output> open(const Interrupt& interrupt) override {
    auto output = std::make_unique<WasapiOutput>(interrupt);
    if (!output->open()) return nullptr;
    return output;
  }
};

}  // namespace

std::unique_ptr<OutputFactory> makeSystemOutput() {
  return std::make_unique<WasapiFactory>();
}

}  // namespace engine
