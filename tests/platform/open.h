// platform/open.h: a file opened with the call under test, shared with nobody.
#pragma once

#include "platform/platform.h"

namespace test {

inline lumo::HANDLE Open(const lumo::WCHAR *name, lumo::DWORD access, lumo::DWORD creation) {
  using namespace lumo;
  return CreateFileW(name, access, 0, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace test
