#include <doctest/doctest.h>

#include <windows.h>

#include "dll_image.h"
#include "zor_frame.h"

TEST_CASE("GCD gives the same divisor in either argument order")
{
    const uint32_t rows[][3] = {{12, 18, 6}, {7, 7, 7}, {1, 0xFFFFFFFFu, 1},
                                {0xFFFFFFFEu, 0x80000000u, 2}, {1071, 462, 21}};
    for (const auto& row : rows)
        CHECK((GCD(row[0], row[1]) == row[2] && GCD(row[1], row[0]) == row[2]));
}

namespace {
struct Contender {
    ZORCritSect* lock;
    HANDLE acquired;
};

DWORD WINAPI take_lock(void* arg)
{
    auto* c = static_cast<Contender*>(arg);
    c->lock->Lock();
    SetEvent(c->acquired);
    c->lock->UnLock();
    return 0;
}
}

TEST_CASE("ZORCritSect is recursive and excludes other threads until fully left")
{
    ZORCritSect lock;
    Contender c{&lock, CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    lock.Lock();
    lock.Lock();
    HANDLE thread = CreateThread(nullptr, 0, take_lock, &c, 0, nullptr);
    CHECK(WaitForSingleObject(c.acquired, 100) == WAIT_TIMEOUT);
    lock.UnLock();
    CHECK(WaitForSingleObject(c.acquired, 100) == WAIT_TIMEOUT);
    lock.UnLock();
    CHECK(WaitForSingleObject(c.acquired, 5000) == WAIT_OBJECT_0);
    WaitForSingleObject(thread, 5000);
    CloseHandle(thread);
    CloseHandle(c.acquired);
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

TEST_CASE("the MSVC-named constructor returns the object it built")
{
    using Member = void (*)(void*);
    auto ctor = dll_proc<void* (*)(void*)>("??0ZORCritSect@@QEAA@XZ");
    auto lock = dll_proc<Member>("?Lock@ZORCritSect@@QEAAXXZ");
    auto unlock = dll_proc<Member>("?UnLock@ZORCritSect@@QEAAXXZ");
    auto dtor = dll_proc<Member>("??1ZORCritSect@@QEAA@XZ");
    REQUIRE((ctor && lock && unlock && dtor) == true);
    alignas(16) unsigned char storage[sizeof(CRITICAL_SECTION)];
    CHECK(ctor(storage) == storage);
    lock(storage);
    lock(storage);  // recursive through the exports as well
    unlock(storage);
    unlock(storage);
    dtor(storage);
}
