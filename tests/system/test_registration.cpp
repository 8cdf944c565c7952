#include <doctest/doctest.h>

#include <algorithm>
#include <vector>

#include "alloc_check.h"
#include "system_test_support.h"

namespace {

// The stand-in's lines in the order the tools were started, without the
// creation times that put them in that order.
std::string tool_lines(const TempDir& logs)
{
    std::vector<std::string> lines;
    WIN32_FIND_DATAW found;
    HANDLE walk = FindFirstFileW(logs.file(L"*.txt").c_str(), &found);
    for (bool more = walk != INVALID_HANDLE_VALUE; more; more = FindNextFileW(walk, &found))
        lines.push_back(read_bytes(logs.file(found.cFileName)));
    FindClose(walk);
    std::sort(lines.begin(), lines.end());
    std::string joined;
    for (const std::string& line : lines)
        joined += line.substr(17);
    return joined;
}

// A tool that has just ended may still hold its image for a moment.
void replace_file(const std::wstring& name, const std::wstring& source)
{
    auto gone = [&] {
        return GetFileAttributesW(name.c_str()) == INVALID_FILE_ATTRIBUTES ||
               DeleteFileW(name.c_str());
    };
    for (int tries = 0; tries < 500 && !gone(); ++tries)
        Sleep(20);
    if (source.empty())
        write_bytes(name, "no program");
    else
        REQUIRE(CopyFileW(source.c_str(), name.c_str(), TRUE));
}

}

TEST_CASE("registration starts the tool for each file in order, unquoted, without waiting for it")
{
    TempDir current(true), logs;
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring standin = program;
    standin = standin.substr(0, standin.rfind(L'\\') + 1) + L"zor_standin.exe";
    replace_file(current.file(L"REGSVR32.EXE"), standin);
    const std::wstring suffix = std::to_wstring(GetCurrentProcessId());
    HANDLE gate = CreateEventW(nullptr, TRUE, FALSE, (L"zor-gate-" + suffix).c_str());
    HANDLE done = CreateSemaphoreW(nullptr, 0, 100, (L"zor-done-" + suffix).c_str());
    // The started tools inherit these; no other test reads them.
    const std::wstring environment[][2] = {{L"ZOR_STANDIN_LOG", logs.path()},
                                           {L"ZOR_STANDIN_GATE", L"zor-gate-" + suffix},
                                           {L"ZOR_STANDIN_DONE", L"zor-done-" + suffix}};
    for (const auto& variable : environment)
        SetEnvironmentVariableW(variable[0].c_str(), variable[1].c_str());

    const ZOROCXRegisterArgs calls[] = {
        {0, 0, {L"a.ocx"}}, {1, 0, {L"b.ocx"}}, {0, 1, {L"with blank.ocx"}},
        {1, 1, {L"c.ocx", L"d.ocx", L"e.ocx"}}, {1, 1, {}},
    };
    for (const ZOROCXRegisterArgs& call : calls)
        CHECK(ZOR_OCXRegister(&call) == 0);
    // Every tool waits at the gate, so no call waited for its tool to end.
    CHECK(tool_lines(logs) == "");
    SetEvent(gate);
    for (int tool = 0; tool < 6; ++tool)
        REQUIRE(WaitForSingleObject(done, 20000) == WAIT_OBJECT_0);
    CHECK(tool_lines(logs) == "REGSVR32.EXE a.ocx|1\nREGSVR32.EXE /u b.ocx|2\n"
                              "REGSVR32.EXE /s with blank.ocx|3\nREGSVR32.EXE /u /s c.ocx|3\n"
                              "REGSVR32.EXE /u /s d.ocx|3\nREGSVR32.EXE /u /s e.ocx|3\n");

    // A tool that is no program: its error, and the later files not tried
    // (one command line made).
    replace_file(current.file(L"REGSVR32.EXE"), L"");
    long requests = zor_alloc_probe::requests();
    CHECK(ZOR_OCXRegister(&calls[3]) == ZOR_STATUS_FROM_WIN32(ERROR_BAD_EXE_FORMAT));
    CHECK(zor_alloc_probe::requests() == requests + 1);
    CloseHandle(gate);
    CloseHandle(done);
    for (const auto& variable : environment)
        SetEnvironmentVariableW(variable[0].c_str(), nullptr);
}

TEST_CASE("update files and UpdateRegistry write texts under HKEY_LOCAL_MACHINE only")
{
    PrivateKey pk(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    TempDir dir;
    const std::wstring file = dir.file(L"update.txt");
    // "@" is the private key's path, which starts with "SOFTWARE\".
    const std::string path = narrow(pk.path());
    const std::string n97(97, 'n'), n98(98, 'n'), l1000(1000, 'l');
    const std::string deep = "[X\\@\\" + std::string(255 - path.size(), 'k') + "]\n";
    const struct {
        std::string text;
        int32_t rc;
        std::wstring tree;
    } rows[] = {
        {"REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\@\\a]\n\"x\"=\"1\"\n\n\"\"=\"d\"\n", 0,
         L"\\a = key\n\\a| = 1:d\n\\a|x = 1:1\n"},
        {"[HKEY_CURRENT_USER\\@\\b]\r\n\"x\"=\"a=\"b\"\r\n", 0, L"\\b = key\n\\b|x = 1:a=\"b\n"},
        {"[X\\@\\a]\n\"x\"=\"12\"", 0, L"\\a = key\n\\a|x = 1:1\n"},
        {"[X\\@\\a]\n\"x\"=\"1\"\n\"y\"=\"" + l1000 + "\"\n\"z\"=\"2\"\n", ERROR_INVALID_DATA,
         L"\\a = key\n\\a|x = 1:1\n"},
        {"[X\\@\\a]\n\"" + n97 + "\"=\"1\"\n\"" + n98 + "\"=\"2\"\n", ERROR_INVALID_DATA,
         L"\\a = key\n\\a|" + std::wstring(97, L'n') + L" = 1:1\n"},
        {"[X\\ELSEWHERE\\" + path.substr(9) + "\\a]\n\"x\"=\"1\"\n", ERROR_FILE_NOT_FOUND,
         L"\\a = key\n"},
        {"[X\\@\\a]\nno equals\n", ERROR_INVALID_DATA, L"\\a = key\n"},
        {"[X\\@\\a]\nx=\"1\"\n", ERROR_INVALID_DATA, L"\\a = key\n"},
        {"[X\\@\\a]\n\"x\"=\n", ERROR_INVALID_DATA, L"\\a = key\n"},
        {"[HKEY_LOCAL_MACHINE\\SOFTWARE]\n", ERROR_INVALID_DATA, L""},
        {"\"x\"=\"1\"\n[X\\@\\a]\n", ERROR_INVALID_DATA, L""},
        {"regedit4\n", ERROR_INVALID_DATA, L""},
        {deep, ERROR_INVALID_DATA, L""},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        write_bytes(file, with_key(row.text, path));
        CHECK(UpdateRegistryWithFile(file.c_str()) == row.rc);
        CHECK(tree_of(pk.key(), L"") == L" = key\n" + row.tree);
        for (const wchar_t* key : {L"\\a", L"\\b"})
            PrivateKey::delete_tree(pk.root(), pk.path() + key);
    }
    CHECK(UpdateRegistryWithFile(dir.file(L"missing.txt").c_str()) == 0);
    CHECK(UpdateRegistry((pk.path() + L"\\absent").c_str(), L"x", L"1") == ERROR_FILE_NOT_FOUND);
    CHECK(UpdateRegistry(pk.path().c_str(), L"null", nullptr) == 0);
    CHECK(tree_of(pk.key(), L"") == L" = key\n|null = 1:\n");
}
