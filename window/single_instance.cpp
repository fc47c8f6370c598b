#include "window/single_instance.h"

#include <string>

namespace window {

SingleInstance::SingleInstance(const wchar_t* name)
    : mutex_(CreateMutexW(nullptr, FALSE, (std::wstring(L"Local\\") + name).c_str())),
      // Without a handle the name is another user's, started in this session.
      first_(!mutex_ || GetLastError() != ERROR_ALREADY_EXISTS) {}

}  // namespace window
