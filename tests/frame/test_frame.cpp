#include <doctest/doctest.h>

#include <windows.h>

#include "dll_image.h"
#include "zor_frame.h"

TEST_CASE("GCD gives the same divisor in either argument order")
{
    const uint32_t rows[][3] = {{12, 18, 6}, {7, 7, 7}, {1, 0xFFFFFFFFu, 1},
                                {0xFFFFFFFEu, 0x80000000u, 2}, {1071, 462, 21}};
    for (const auto& row : rows) {
        CHECK(GCD(row[0], row[1]) == row[2]);
        CHECK(GCD(row[1], row[0]) == row[2]);
    }
}

namespace {
using Member = void (*)(void*);

struct Contender {
    Member lock, unlock;
    void* section;
    HANDLE acquired;
};

DWORD WINAPI take_lock(void* arg)
{
    auto* c = static_cast<Contender*>(arg);
    c->lock(c->section);
    SetEvent(c->acquired);
    c->unlock(c->section);
    return 0;
}
}

// Through the MSVC-named exports, as a caller built with that compiler uses
// the class; the constructor there must hand back the object it built.
TEST_CASE("ZORCritSect is recursive and excludes other threads until fully left")
{
    auto ctor = dll_proc<void* (*)(void*)>("??0ZORCritSect@@QEAA@XZ");
    auto dtor = dll_proc<Member>("??1ZORCritSect@@QEAA@XZ");
    alignas(16) unsigned char storage[sizeof(ZORCritSect)];
    Contender c{dll_proc<Member>("?Lock@ZORCritSect@@QEAAXXZ"),
                dll_proc<Member>("?UnLock@ZORCritSect@@QEAAXXZ"), storage,
                CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    REQUIRE(bool(ctor));
    REQUIRE(bool(dtor));
    REQUIRE(bool(c.lock));
    REQUIRE(bool(c.unlock));
    CHECK(ctor(storage) == storage);
    c.lock(storage);
    c.lock(storage);
    HANDLE thread = CreateThread(nullptr, 0, take_lock, &c, 0, nullptr);
    CHECK(WaitForSingleObject(c.acquired, 100) == WAIT_TIMEOUT);
    c.unlock(storage);
    CHECK(WaitForSingleObject(c.acquired, 100) == WAIT_TIMEOUT);
    c.unlock(storage);
    CHECK(WaitForSingleObject(c.acquired, 5000) == WAIT_OBJECT_0);
    WaitForSingleObject(thread, 5000);
    CloseHandle(thread);
    CloseHandle(c.acquired);
    dtor(storage);
}

TEST_CASE("the DLL exports the frame under its names and imports only system modules")
{
    REQUIRE(zor_load_dll());
    CHECK(missing_exports({"ZORBaseFormatMessage", "ZORBaseFormatMessageVA", "GCD",
                           "??0ZORCritSect@@QEAA@XZ", "??1ZORCritSect@@QEAA@XZ",
                           "?Lock@ZORCritSect@@QEAAXXZ", "?UnLock@ZORCritSect@@QEAAXXZ",
                           "??4ZORCritSect@@QEAAAEAV0@AEBV0@@Z"}) == "");
    for (const std::string& name : dll_import_modules(zor_load_dll())) {
        CAPTURE(name);
        bool crt = name.rfind("api-ms-win-crt-", 0) == 0;
        bool system = name == "kernel32.dll" || name == "advapi32.dll" || name == "user32.dll" ||
                      name == "winspool.drv" || name == "ole32.dll";
        CHECK((crt || system));
    }
    // The allocation probe stays inside the static core.
    for (const std::string& name : dll_export_names(zor_load_dll()))
        CHECK(name.find("alloc") == std::string::npos);
}
