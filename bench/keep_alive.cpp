// keep_alive PORT COUNT: asks a loopback server COUNT times on one connection, and
// does nothing else.
#include <windows.h>
#include <winhttp.h>

#include <array>
#include <cwchar>

namespace {

bool ask(HINTERNET connection) {
  const HINTERNET request = WinHttpOpenRequest(connection, L"GET", L"/", nullptr,
                                               WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, 0);
  bool good = WinHttpSendRequest(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, nullptr, 0, 0, 0) &&
              WinHttpReceiveResponse(request, nullptr);
  std::array<char, 65536> buffer;
  for (DWORD got = 1; good && got > 0;) {
    good =
        WinHttpReadData(request, buffer.data(), static_cast<DWORD>(buffer.size()), &got) != FALSE;
  }
  WinHttpCloseHandle(request);
  return good;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 3) return 2;
  const auto port = static_cast<INTERNET_PORT>(std::wcstol(arguments[1], nullptr, 10));
  const HINTERNET session =
      WinHttpOpen(L"keep_alive", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
  const HINTERNET connection = WinHttpConnect(session, L"127.0.0.1", port, 0);
  bool good = true;
  for (long left = std::wcstol(arguments[2], nullptr, 10); good && left > 0; --left) {
    good = ask(connection);
  }
  WinHttpCloseHandle(connection);
  WinHttpCloseHandle(session);
  return good ? 0 : 1;
}
