#include "demo_radio/pages.h"

#include "demo_radio/world_names.h"

namespace demo_radio {
namespace {

constexpr std::size_t kHugeStations = 20000;
constexpr std::size_t kHugeSize = std::size_t{64} << 20U;

std::string htmlText(const std::string& text) {
  std::string result;
  for (char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string pageHead(const std::string& heading) {
  return "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">\n"
         "<html><head><title>Harbour Station Directory</title>\n"
         "<link rel=\"stylesheet\" type=\"text/css\" href=\"/style/directory.css\">\n"
         "<script type=\"text/javascript\">function tune(f){if(1<2&&f)window.open(f)}</script>\n"
         "</head>\n<body bgcolor=\"#f4f1ea\">\n"
         "<table width=\"100%\"><tr><td><a href=\"/\"><img src=\"/img/harbour.gif\" alt=\"\"></a>"
         "</td><td><form action=\"/directory/index.phtml\"><input name=\"s\" size=\"20\">"
         "<input type=\"submit\" value=\"Search\"></form></td></tr></table>\n<h1>" +
         htmlText(heading) + "</h1>\n<table cellspacing=\"0\" class=\"stations\">\n";
}

std::string pageEnd() {
  return "</table>\n<p class=\"small\">Listener counts are a minute old. <a href=\"/about\">About "
         "this directory</a></p>\n</body></html>\n";
}

/// Some rows are written by another hand, in capitals.
void appendRow(std::string& page, const Station& station, int rank) {
  const bool capitals = station.id % 5 == 2;
  const std::string id = std::to_string(station.id);
  page +=
      "<tr class=\"row" + std::to_string(rank % 2) + "\"><td>" + std::to_string(rank) + ".</td>";
  page += capitals ? "<TD><A HREF=\"" : "<td><a href=\"";
  page += "/sbin/kestrel-playlist.pls?rn=" + id + "&file=filename.pls\">";
  page += "<img src=\"/img/tune-in.gif\" width=\"61\" height=\"21\" border=\"0\" alt=\"Tune in\">";
  page += capitals ? "</A></TD>\n<TD>[" : "</a></td>\n<td>[";
  page += std::string(kGenres[static_cast<std::size_t>(station.genre)].caption) + "] ";
  page += capitals ? "<A ID=\"s" : "<a id=\"s";
  page += id + "\" target=\"_blank\" href=\"/station/" + station.mount + "\">";
  page += htmlText(station.name);
  page += capitals ? "</A><BR>\n" : "</a><br>\n";
  page += "<span class=\"now\">Now playing: " + htmlText(songTitle(station, 0)) + "</span></td>";
  page += "<td>" + std::to_string(station.listeners) + "/5000</td><td>" +
          std::to_string(station.format().kbit) + "</td><td>" +
          (station.format().codec == Codec::mp3 ? "MP3" : "AAC") + "</td></tr>\n";
}

/// The station's own stream, then its relays.
std::vector<std::string> addresses(const Station& station, const std::string& host) {
  const std::string first = "http://" + host + "/stream/" + station.mount;
  std::vector<std::string> result = {first};
  for (int relay = 2; relay <= 3 + station.id % 4; ++relay)
    result.push_back(first + "/relay-" + std::to_string(relay));
  return result;
}

}  // namespace

std::string directoryPage(const std::vector<const Station*>& stations, const std::string& heading) {
  std::string page = pageHead(heading);
  if (stations.empty()) page += "<tr><td>There is no station here just now.</td></tr>\n";
  int rank = 0;
  for (const Station* station : stations) appendRow(page, *station, ++rank);
  return page + pageEnd();
}

std::string hugeDirectoryPage(const World& world) {
  static const std::string kFiller =
      "<tr class=\"detail\"><td colspan=\"6\">Kindly supported by the harbour's listeners. "
      "<i>Small type, old files, plain tables.</i></td></tr>\n";
  std::string page = pageHead("Every station there is");
  page.reserve(kHugeSize + 4096);
  const std::string end = pageEnd();
  const std::size_t begin = page.size(), rows = kHugeSize - begin - end.size();
  for (std::size_t i = 0; i < kHugeStations; ++i) {
    appendRow(page, world.all()[i % world.all().size()], static_cast<int>(i) + 1);
    const std::size_t row_end = begin + rows * (i + 1) / kHugeStations;
    while (page.size() + kFiller.size() < row_end) page += kFiller;
  }
  page.append(begin + rows - page.size(), ' ');
  page += end;
  return page;
}

std::string unrelatedPage(const std::string& heading) {
  return "<html><head><title>" + heading + "</title></head>\n<body><h1>" + heading +
         "</h1>\n<p>The harbour master has gone fishing. Please <a href=\"/\">come back</a> "
         "later.</p>\n</body></html>\n";
}

std::string plsPlaylist(const Station& station, const std::string& host) {
  const std::string end = station.id % 2 == 0 ? "\n" : "\r\n";
  const std::vector<std::string> streams = addresses(station, host);
  const std::string count = std::to_string(streams.size());
  std::string list = "[playlist]" + end + "numberofentries=" + count + end;
  for (std::size_t i = 1; i <= streams.size(); ++i) {
    const std::string n = std::to_string(i);
    list += "File" + n + "=" + streams[i - 1] + end;
    list += "Title" + n + "=(#" + n + " - " + std::to_string(station.listeners) + "/5000) " +
            station.name + end;
    list += "Length" + n + "=-1" + end;
  }
  return list + "Version=2" + end;
}

std::string m3uPlaylist(const Station& station, const std::string& host) {
  std::string list = "#EXTM3U\r\n";
  for (const std::string& address : addresses(station, host))
    list += "#EXTINF:-1," + station.name + "\r\n" + address + "\r\n";
  return list;
}

}  // namespace demo_radio
