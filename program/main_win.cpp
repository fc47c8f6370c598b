#include <windows.h>

#include <shlobj.h>

#include <exception>
#include <memory>
#include <string_view>
#include <utility>

#include "app/captions.h"
#include "app/language_file.h"
#include "app/startup.h"
#include "base/folders_win.h"
#include "dialogs/language_chooser_win.h"
#include "program/desktop_win.h"
#include "program/program_win.h"
#include "program/splash_window_win.h"
#include "window/message_pump.h"
#include "window/single_instance.h"

namespace program {
namespace {

/// Brings the program up: at once, or from the timer of the splash window, which is
/// so on the screen while the rest loads.
class Starter {
 public:
  explicit Starter(app::Startup startup) : startup_(std::move(startup)) {
    if (startup_.splash_message) captions_.set("splash.Label1", *startup_.splash_message);
  }

  void start(bool quiet) {
    if (startup_.firstrun && !quiet) chooseLanguage();
    if (quiet || startup_.settings.showsplash != 1) return loadForm1();
    splash_ = std::make_unique<Splash>(captions_, KESTREL_VERSION, [this] { loadForm1(); });
    splash_->open();
  }

 private:
  void chooseLanguage() {
    app::copyShippedLanguages(startup_.paths);
    dialogs::Form4(captions_, startup_.paths, startup_.settings.language).open();
  }

  void loadForm1() {
    if (std::exchange(loaded_, true)) return;  // the timer runs on while messages show
    try {
      program_ = std::make_unique<Program>(startup_, captions_);
      if (!program_->start()) PostQuitMessage(1);
    } catch (const std::exception&) {  // no memory, no window
      MessageBoxW(nullptr, L"Kestrel can't be started.", L"Kestrel", MB_ICONERROR);
      PostQuitMessage(1);
    }
    splash_.reset();
  }

  app::Startup startup_;
  app::Captions captions_;
  std::unique_ptr<Splash> splash_;
  std::unique_ptr<Program> program_;
  bool loaded_ = false;
};

}  // namespace
}  // namespace program

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* command_line, int) {
  const window::SingleInstance instance(L"Kestrel-ardenware-kes");
  if (!instance.first()) return 0;
  program::Starter starter(
      app::prepareStartup(base::specialfolder(CSIDL_APPDATA), base::programFolder()));
  starter.start(std::wstring_view(command_line) == L"-nos");
  return window::runMessageLoop();
}
