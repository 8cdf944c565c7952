// Stands in for the registration tool. Once the event named by
// ZOR_STANDIN_GATE is set (when there is one), it writes its command line
// and the number of its arguments into a file of its own in the folder
// named by ZOR_STANDIN_LOG, headed by its creation time so that the lines
// of tools that ran side by side can be put in the order they were started,
// and then releases the semaphore named by ZOR_STANDIN_DONE.
#include <stdio.h>

#include <windows.h>

int main(int argc, char**)
{
    wchar_t folder[MAX_PATH], gateName[64], doneName[64];
    if (!GetEnvironmentVariableW(L"ZOR_STANDIN_LOG", folder, MAX_PATH))
        return 2;
    if (GetEnvironmentVariableW(L"ZOR_STANDIN_GATE", gateName, 64)) {
        HANDLE gate = OpenEventW(SYNCHRONIZE, FALSE, gateName);
        WaitForSingleObject(gate, 30000);
        CloseHandle(gate);
    }
    FILETIME created, unused[3];
    GetProcessTimes(GetCurrentProcess(), &created, &unused[0], &unused[1], &unused[2]);
    wchar_t name[MAX_PATH + 16];
    _snwprintf(name, MAX_PATH + 16, L"%ls\\%lu.txt", folder, GetCurrentProcessId());
    FILE* log = _wfopen(name, L"wb");
    if (!log)
        return 3;
    fprintf(log, "%08lx%08lx %ls|%d\n", created.dwHighDateTime, created.dwLowDateTime,
             GetCommandLineW(), argc - 1);
    fclose(log);
    if (GetEnvironmentVariableW(L"ZOR_STANDIN_DONE", doneName, 64)) {
        HANDLE done = OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, doneName);
        ReleaseSemaphore(done, 1, nullptr);
        CloseHandle(done);
    }
    return 0;
}
