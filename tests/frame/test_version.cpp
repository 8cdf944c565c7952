#include <doctest/doctest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "dll_image.h"
#include "wide_text.h"
#include "zorbase.h"

namespace {
std::wstring widen(const std::string& ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

std::wstring version_text(const std::vector<BYTE>& info, const wchar_t* name)
{
    std::wstring path = std::wstring(L"\\StringFileInfo\\040904B0\\") + name;
    void* value = nullptr;
    UINT len = 0;
    if (!VerQueryValueW(info.data(), path.c_str(), &value, &len))
        return L"(missing)";
    return static_cast<const wchar_t*>(value);
}
}

// The header, the resource and the image header are written from one number
// by the build; a slip in any template shows here.
TEST_CASE("The DLL's version resource and image header agree with zor_version.h")
{
    wchar_t path[MAX_PATH];
    REQUIRE(GetModuleFileNameW(zor_load_dll(), path, MAX_PATH) > 0);
    DWORD size = GetFileVersionInfoSizeW(path, nullptr);
    REQUIRE(size > 0);
    std::vector<BYTE> info(size);
    REQUIRE(GetFileVersionInfoW(path, 0, size, info.data()));

    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT len = 0;
    REQUIRE(VerQueryValueW(info.data(), L"\\", reinterpret_cast<void**>(&fixed), &len));
    const DWORD high = MAKELONG(ZORBASE_VERSION_MINOR, ZORBASE_VERSION_MAJOR);
    const DWORD low = MAKELONG(0, ZORBASE_VERSION_PATCH);
    CHECK(fixed->dwFileVersionMS == high);
    CHECK(fixed->dwFileVersionLS == low);
    CHECK(fixed->dwProductVersionMS == high);
    CHECK(fixed->dwProductVersionLS == low);
    CHECK(fixed->dwFileType == VFT_DLL);

    const std::wstring number = widen(ZORBASE_VERSION_STRING);
    CHECK(version_text(info, L"FileVersion") == number);
    CHECK(version_text(info, L"ProductVersion") == number);
    CHECK(version_text(info, L"ProductName") == L"ZORBaseUx64");
    CHECK(version_text(info, L"OriginalFilename") == L"ZORBaseUx64.dll");

    const auto image = dll_image_version(zor_load_dll());
    CHECK(image.first == ZORBASE_VERSION_MAJOR);
    CHECK(image.second == ZORBASE_VERSION_MINOR);
    CHECK(number == widen(std::to_string(ZORBASE_VERSION_MAJOR) + "." +
                          std::to_string(ZORBASE_VERSION_MINOR) + "." +
                          std::to_string(ZORBASE_VERSION_PATCH)));
}
