#include "dll_image.h"

namespace {
const IMAGE_OPTIONAL_HEADER& optional_header(HMODULE module)
{
    auto base = reinterpret_cast<const BYTE*>(module);
    auto dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew)->OptionalHeader;
}

const IMAGE_DATA_DIRECTORY& directory(HMODULE module, int which)
{
    return optional_header(module).DataDirectory[which];
}
}

HMODULE zor_load_dll()
{
    static HMODULE module = LoadLibraryW(L"ZORBaseUx64.dll");
    return module;
}

std::pair<WORD, WORD> dll_image_version(HMODULE module)
{
    const IMAGE_OPTIONAL_HEADER& header = optional_header(module);
    return {header.MajorImageVersion, header.MinorImageVersion};
}

std::set<std::string> dll_export_names(HMODULE module)
{
    std::set<std::string> names;
    auto base = reinterpret_cast<const BYTE*>(module);
    const IMAGE_DATA_DIRECTORY& dir = directory(module, IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (!dir.VirtualAddress)
        return names;
    auto exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + dir.VirtualAddress);
    auto nameRvas = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.insert(reinterpret_cast<const char*>(base + nameRvas[i]));
    return names;
}

std::set<std::string> dll_import_modules(HMODULE module)
{
    std::set<std::string> names;
    auto base = reinterpret_cast<const BYTE*>(module);
    const IMAGE_DATA_DIRECTORY& dir = directory(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
    auto desc = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + dir.VirtualAddress);
    for (; dir.VirtualAddress && desc->Name; ++desc) {
        std::string name = reinterpret_cast<const char*>(base + desc->Name);
        for (char& c : name)
            c = char(tolower(static_cast<unsigned char>(c)));
        names.insert(name);
    }
    return names;
}

std::string missing_exports(const std::set<std::string>& expected)
{
    std::set<std::string> have = dll_export_names(zor_load_dll());
    std::string missing;
    for (const std::string& name : expected)
        if (!have.count(name))
            missing += name + " ";
    return missing;
}
