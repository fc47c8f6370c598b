#include "tray/tray_icon_win.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "base/utf.h"
#include "res/resource.h"
#include "window/dpi.h"
#include "window/window.h"

namespace tray {
namespace {

// The record's first published form: 8-bit text, a tip of 64 characters, no more.
constexpr DWORD kRecordSize = NOTIFYICONDATAA_V1_SIZE;
constexpr std::size_t kTipSize = 64;
#ifdef _WIN64
static_assert(kRecordSize == 104, "the same record with 64-bit handles");
#else
static_assert(kRecordSize == 88, "the published size of the notify-icon record");
#endif

std::string toCodePage(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  if (units == 0) return {};
  const int bytes =
      WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), units, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

constexpr UINT kTryAgainAfter = 500;  // ms
constexpr int kTries = 120;           // a minute

UINT_PTR timerId(const TrayIconWin* icon) {
  return reinterpret_cast<UINT_PTR>(icon);
}

/// The taskbar's density decides which of an icon's pictures is sharp.
window::Dpi taskbarDpi() {
  return window::Dpi::of(FindWindowW(L"Shell_TrayWnd", nullptr));
}

HICON loadIcon(HINSTANCE module, const wchar_t* name, UINT flags) {
  const window::Dpi dpi = taskbarDpi();
  return static_cast<HICON>(LoadImageW(module, name, IMAGE_ICON, dpi.metric(SM_CXSMICON),
                                       dpi.metric(SM_CYSMICON), flags));
}

bool fileExists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace

const TrayIconWin::Role TrayIconWin::kNormal{"\\data\\kesnormal.ico", IDI_NORMAL};
const TrayIconWin::Role TrayIconWin::kWorking{"\\data\\keswork.ico", IDI_WORK};

std::string cutToCodePage(std::string_view text, std::size_t bytes) {
  std::wstring wide = base::toWide(text);
  // No character has fewer bytes than units, so what is further right cannot fit.
  wide.resize(std::min(wide.size(), bytes));
  std::string narrow = toCodePage(wide);
  while (narrow.size() > bytes || (!wide.empty() && IS_HIGH_SURROGATE(wide.back()))) {
    wide.pop_back();
    narrow = toCodePage(wide);
  }
  return narrow;
}

TrayIconWin::TrayIconWin(HWND main_window, std::string datapath, app::Desktop& desktop)
    : main_window_(main_window), datapath_(std::move(datapath)) {
  if (loadPicture(kNormal) == Loaded::file_broken) {
    desktop.messageBox("The Icon File ist not Correct!\r\nUse Internal Icon");
  }
}

TrayIconWin::~TrayIconWin() {
  KillTimer(main_window_, timerId(this));
  if (added_) trayicon(main_window_, picture1_.get(), {}, kDelete);
}

void TrayIconWin::addtrayicon() {
  tries_left_ = kTries;
  added_ = true;
  add();
  ShowWindow(main_window_, SW_HIDE);
}

void TrayIconWin::workicon() {
  loadPicture(kWorking);
  trayicon(main_window_, picture1_.get(), caption(), kModify);
}

void TrayIconWin::normalicon() {
  loadPicture(kNormal);
  trayicon(main_window_, picture1_.get(), caption(), kModify);
}

void TrayIconWin::setCaption(std::string_view text) {
  SetWindowTextW(main_window_, base::toWide(text).c_str());
}

void TrayIconWin::restore() {
  if (added_) add();
}

void TrayIconWin::add() {
  trayicon(main_window_, picture1_.get(), caption(), kAdd);
  // A shell that is still starting may refuse, or do it and answer too late; without
  // the icon there would be no way to the program.
  const bool there = Shell_NotifyIconA(NIM_MODIFY, &record_) != FALSE;
  if (there || tries_left_-- <= 0) {
    KillTimer(main_window_, timerId(this));
  } else {
    SetTimer(main_window_, timerId(this), kTryAgainAfter, tryAgain);
  }
}

void CALLBACK TrayIconWin::tryAgain(HWND, UINT, UINT_PTR self, DWORD) noexcept {
  reinterpret_cast<TrayIconWin*>(self)->add();
}

TrayIconWin::Loaded TrayIconWin::loadPicture(const Role& role) {
  const std::wstring file = base::toWide(datapath_ + role.file);
  const bool has_file = fileExists(file);
  HICON icon = has_file ? loadIcon(nullptr, file.c_str(), LR_LOADFROMFILE) : nullptr;
  const bool from_file = icon != nullptr;
  if (!from_file) icon = loadIcon(window::instance(), MAKEINTRESOURCEW(role.resource), 0);
  picture1_.reset(icon);
  if (from_file) return Loaded::from_file;
  return has_file ? Loaded::file_broken : Loaded::built_in;
}

void TrayIconWin::trayicon(HWND window, HICON picture, std::string_view tip, int action) {
  static constexpr DWORD kShellActions[] = {NIM_ADD, NIM_DELETE, NIM_MODIFY};
  if (action < kAdd || action > kModify) return;
  // The delete at the end goes by the record as it was sent last.
  if (action != kDelete) {
    record_ = {};
    record_.cbSize = kRecordSize;
    record_.hWnd = window;
    record_.uID = kId;
    record_.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    record_.uCallbackMessage = kMessage;
    record_.hIcon = picture;
    const std::string shown = cutToCodePage(tip, kTipSize - 1);
    std::copy(shown.begin(), shown.end(), std::begin(record_.szTip));
  }
  Shell_NotifyIconA(kShellActions[action], &record_);
}

std::string TrayIconWin::caption() const {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(main_window_)) + 1, L'\0');
  const int length = GetWindowTextW(main_window_, text.data(), static_cast<int>(text.size()));
  return base::toNarrow({text.data(), static_cast<std::size_t>(length)});
}

}  // namespace tray
