#include "tray/launch.h"

#include <algorithm>
#include <iterator>

#include "base/files.h"
#include "base/text.h"

namespace tray {
namespace {

constexpr std::int16_t kDefaultApplication = 0;
constexpr std::int16_t kCommand = 1;
constexpr std::int16_t kInternalPlayer = 2;

// Run, installed or interpreted when opened. In addition to the system's own
// judgement, which knows nothing of interpreters that were installed later.
constexpr std::string_view kDangerous[] = {"ade",
                                           "adp",
                                           "application",
                                           "appinstaller",
                                           "appref-ms",
                                           "appx",
                                           "appxbundle",
                                           "bas",
                                           "bat",
                                           "chm",
                                           "cmd",
                                           "com",
                                           "cpl",
                                           "crt",
                                           "diagcab",
                                           "dll",
                                           "exe",
                                           "gadget",
                                           "hlp",
                                           "hta",
                                           "inf",
                                           "ins",
                                           "iso",
                                           "isp",
                                           "jar",
                                           "job",
                                           "jnlp",
                                           "js",
                                           "jse",
                                           "library-ms",
                                           "lnk",
                                           "mde",
                                           "msc",
                                           "msh",
                                           "msi",
                                           "msix",
                                           "msixbundle",
                                           "msp",
                                           "mst",
                                           "ocx",
                                           "pif",
                                           "pl",
                                           "ps1",
                                           "ps1xml",
                                           "ps2",
                                           "psc1",
                                           "psd1",
                                           "psm1",
                                           "py",
                                           "pyc",
                                           "pyw",
                                           "pyz",
                                           "rb",
                                           "rdp",
                                           "reg",
                                           "scf",
                                           "scr",
                                           "sct",
                                           "search-ms",
                                           "searchconnector-ms",
                                           "settingcontent-ms",
                                           "sh",
                                           "shb",
                                           "shs",
                                           "slk",
                                           "sys",
                                           "theme",
                                           "themepack",
                                           "udl",
                                           "url",
                                           "vb",
                                           "vbe",
                                           "vbs",
                                           "vhd",
                                           "vhdx",
                                           "website",
                                           "ws",
                                           "wsb",
                                           "wsc",
                                           "wsf",
                                           "wsh",
                                           "xbap",
                                           "xll",
                                           "xnk"};

}  // namespace

bool Launch::refuses(std::string_view extension) {
  if (settings_.player != kDefaultApplication) return false;
  const std::string lower = base::lowerCased(base::trimBlanks(extension));
  const bool listed =
      std::find(std::begin(kDangerous), std::end(kDangerous), lower) != std::end(kDangerous);
  return listed || desktop_.isDangerousExtension("." + lower);
}

void Launch::launch(std::string_view url, const std::string& file) {
  if (settings_.player == kDefaultApplication) {
    // The setting may have changed while the playlist was on its way.
    if (refuses(base::behindLast(file, '.'))) {
      desktop_.messageBox("Can't Connect. Error in Datafile");
      return;
    }
    desktop_.shellopen(file);
  } else if (settings_.player == kCommand) {
    // One argument for the shell; the quotes are the command's own.
    const std::string command =
        base::replaceIgnoringCase(settings_.playerpath, "%1", '"' + file + '"');
    if (!command.empty()) desktop_.shellopen(command);
  } else if (settings_.player == kInternalPlayer) {
    if (url.size() <= 2 || !FileExists(file)) return;
    playlist_.playlisteinlesen(file);
    actions_.startplayer(0);
  }
}

std::int32_t ToLng(std::string_view value) {
  return base::toInt32(value).value_or(0);
}

bool FileExists(const std::string& path) {
  return base::fileExists(path);
}

std::string RPP(std::string_view path) {
  std::string result(path);
  if (!result.ends_with('\\')) result += '\\';
  return result;
}

std::string_view GetFileName(std::string_view path) {
  return base::behindLast(path, '\\');
}

}  // namespace tray
