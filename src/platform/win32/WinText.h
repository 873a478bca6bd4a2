#pragma once

// UTF-8 and UTF-16 for the wide Win32 calls.

#include <string>

namespace zelmor::platform::win32 {

std::wstring widen(const std::string& utf8);
std::string narrow(const wchar_t* utf16, int length = -1);

} // namespace zelmor::platform::win32
