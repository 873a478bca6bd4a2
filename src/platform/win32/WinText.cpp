#include "WinText.h"

#include <windows.h>

namespace zelmor::platform::win32 {

std::wstring widen(const std::string& utf8)
{
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), nullptr, 0);
    std::wstring out(std::size_t(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), out.data(), length);
    return out;
}

std::string narrow(const wchar_t* utf16, int length)
{
    if (length < 0) length = int(wcslen(utf16));
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, utf16, length, nullptr, 0, nullptr, nullptr);
    std::string out(std::size_t(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, utf16, length, out.data(), bytes, nullptr, nullptr);
    return out;
}

} // namespace zelmor::platform::win32
