#include <windows.h>
// After windows.h, which they build on.
#include <audioclient.h>
#include <mmdeviceapi.h>
#include <mmreg.h>
#include <mmsystem.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <vector>

#include "engine/output.h"
#include "engine/socket.h"

namespace engine {
namespace {

constexpr unsigned kUsualRate = 48000;
constexpr unsigned kBlockMilliseconds = 50;
// So much is queued at first: a change of the volume and the fade at the end are soon
// heard. A device that runs dry for want of processor time gets twice as much.
constexpr size_t kFewBlocks = 4;
constexpr size_t kManyBlocks = 8;
// A device that is there takes a block every 50 ms.
constexpr auto kDeviceSilence = std::chrono::seconds(2);
// Device blocks are asked after in steps of our own: being told of each one costs
// twice the wake-ups.
constexpr auto kNap = std::chrono::milliseconds(100);

template <class Interface>
struct Release {
  void operator()(Interface* object) const { object->Release(); }
};
template <class Interface>
using ComPtr = std::unique_ptr<Interface, Release<Interface>>;

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

ComPtr<IAudioClient> defaultClient() {
  void* raw = nullptr;
  if (FAILED(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL,
                              __uuidof(IMMDeviceEnumerator), &raw))) {
    return nullptr;
  }
  const ComPtr<IMMDeviceEnumerator> devices(static_cast<IMMDeviceEnumerator*>(raw));
  IMMDevice* found = nullptr;
  if (FAILED(devices->GetDefaultAudioEndpoint(eRender, eConsole, &found))) return nullptr;
  const ComPtr<IMMDevice> device(found);
  if (FAILED(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &raw))) return nullptr;
  return ComPtr<IAudioClient>(static_cast<IAudioClient*>(raw));
}

// The rate the default device mixes at, so that only our resampler touches the
// sound and not the system's cheaper one.
unsigned deviceRate() {
  const ComThread com;
  const ComPtr<IAudioClient> client = defaultClient();
  WAVEFORMATEX* format = nullptr;
  if (!client || FAILED(client->GetMixFormat(&format))) return kUsualRate;
  const unsigned rate = format->nSamplesPerSec;
  CoTaskMemFree(format);
  return rate >= 8000 && rate <= 192000 ? rate : kUsualRate;
}

class WaveOutput final : public Output {
 public:
  explicit WaveOutput(const Interrupt& interrupt) : interrupt_(interrupt) {}
  ~WaveOutput() override;
  WaveOutput(const WaveOutput&) = delete;
  WaveOutput& operator=(const WaveOutput&) = delete;

  bool open(unsigned rate);
  unsigned rate() const override { return rate_; }
  bool write(std::span<const float>& samples) override;
  void flush() override;
  unsigned pendingMilliseconds() override;
  void finish(std::span<const float> last) override;

 private:
  struct Block {
    WAVEHDR header = {};
    std::vector<float> samples;
  };
  bool isFree(const Block& block) const {
    // The driver's thread writes the flag.
    const volatile DWORD& flags = block.header.dwFlags;
    return (flags & WHDR_INQUEUE) == 0;
  }
  enum class Room { free, interrupted, gone };
  Room waitForRoom();
  bool addBlock();
  void fill(std::span<const float>& samples);
  bool submit();

  const Interrupt& interrupt_;
  HWAVEOUT device_ = nullptr;
  unsigned rate_ = 0;
  std::deque<Block> blocks_;  ///< the device knows their addresses
  size_t next_ = 0;           ///< block being filled
  size_t filled_ = 0;         ///< samples in it
  bool dry_ = true;           ///< it is no wonder if nothing is queued
};

bool WaveOutput::open(unsigned rate) {
  rate_ = rate;
  WAVEFORMATEX format = {};
  format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
  format.nChannels = kChannels;
  format.nSamplesPerSec = rate;
  format.wBitsPerSample = 32;
  format.nBlockAlign = kChannels * sizeof(float);
  format.nAvgBytesPerSec = rate * format.nBlockAlign;
  if (waveOutOpen(&device_, WAVE_MAPPER, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
    device_ = nullptr;
    return false;
  }
  // One more than is queued, for the end.
  while (blocks_.size() < kFewBlocks + 1) {
    if (!addBlock()) return false;
  }
  return true;
}

bool WaveOutput::addBlock() {
  Block& block = blocks_.emplace_back();
  block.samples.resize(rate_ * kBlockMilliseconds / 1000 * kChannels);
  block.header.lpData = reinterpret_cast<char*>(block.samples.data());
  block.header.dwBufferLength = static_cast<DWORD>(block.samples.size() * sizeof(float));
  return waveOutPrepareHeader(device_, &block.header, sizeof block.header) == MMSYSERR_NOERROR;
}

WaveOutput::~WaveOutput() {
  if (device_ == nullptr) return;
  waveOutReset(device_);
  for (Block& block : blocks_) waveOutUnprepareHeader(device_, &block.header, sizeof block.header);
  waveOutClose(device_);
}

// Full when all but one block are queued, that is when the one after the next is.
WaveOutput::Room WaveOutput::waitForRoom() {
  const auto start = Clock::now();
  const Block& last = blocks_[(next_ + 1) % blocks_.size()];
  while (!isFree(last)) {
    if (Clock::now() - start > kDeviceSilence) return Room::gone;
    if (interrupt_.wait(kNap)) return Room::interrupted;
  }
  const bool is_dry = std::all_of(blocks_.begin(), blocks_.end(),
                                  [this](const Block& block) { return isFree(block); });
  if (is_dry && !dry_ && blocks_.size() <= kFewBlocks + 1) {
    next_ = 0;
    while (blocks_.size() < kManyBlocks + 1 && addBlock()) {
    }
  }
  return Room::free;
}

void WaveOutput::fill(std::span<const float>& samples) {
  std::vector<float>& block = blocks_[next_].samples;
  const size_t step = std::min(samples.size(), block.size() - filled_);
  std::memcpy(block.data() + filled_, samples.data(), step * sizeof(float));
  filled_ += step;
  samples = samples.subspan(step);
}

bool WaveOutput::submit() {
  Block& block = blocks_[next_];
  block.header.dwBufferLength = static_cast<DWORD>(filled_ * sizeof(float));
  block.header.dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
  filled_ = 0;
  next_ = (next_ + 1) % blocks_.size();
  dry_ = false;
  return waveOutWrite(device_, &block.header, sizeof block.header) == MMSYSERR_NOERROR;
}

bool WaveOutput::write(std::span<const float>& samples) {
  while (!samples.empty()) {
    if (filled_ == 0) {
      const Room room = waitForRoom();
      if (room != Room::free) return room == Room::interrupted;
    }
    fill(samples);
    if (filled_ == blocks_[next_].samples.size() && !submit()) return false;
  }
  return true;
}

void WaveOutput::finish(std::span<const float> last) {
  // As much as there is room for.
  while (!last.empty() && isFree(blocks_[next_])) {
    fill(last);
    if (filled_ == blocks_[next_].samples.size() && !submit()) return;
  }
  if (filled_ != 0 && !submit()) return;
  const auto deadline = Clock::now() + kLongestEnd;
  while (pendingMilliseconds() != 0 && Clock::now() < deadline) Sleep(10);
}

void WaveOutput::flush() {
  // A device that is gone shows itself at the next write.
  if (filled_ != 0) submit();
  dry_ = true;
}

unsigned WaveOutput::pendingMilliseconds() {
  size_t bytes = 0;
  for (const Block& block : blocks_) {
    if (!isFree(block)) bytes += block.header.dwBufferLength;
  }
  return static_cast<unsigned>(bytes / (kChannels * sizeof(float)) * 1000 / rate_);
}

class WaveFactory final : public OutputFactory {
 public:
  std::unique_ptr<Output> open(const Interrupt& interrupt) override {
    auto output = std::make_unique<WaveOutput>(interrupt);
    if (!output->open(deviceRate())) return nullptr;
    return output;
  }
};

}  // namespace

std::unique_ptr<OutputFactory> makeSystemOutput() {
  return std::make_unique<WaveFactory>();
}

}  // namespace engine
