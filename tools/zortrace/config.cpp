#include "config.h"

#include <errno.h>
#include <stdlib.h>
#include <wchar.h>
#include <wctype.h>

#include <windows.h>

#include "filter.h"
#include "output.h"
#include "zor_reg.h"
#include "zor_td.h"

namespace {

const wchar_t* const kRoot = L"HKEY_LOCAL_MACHINE\\";
const wchar_t* const kSlotPrefix = L"\\\\*\\mailslot\\";

enum class Kind { Number, Flag, Text };

// The values that TraceInit reads, in its order, with its buffers.
struct Setting {
    const wchar_t* name;
    Kind kind;
    uint32_t units;          // texts: the buffer, terminator included
    long minimum, maximum;   // numbers and flags that --set accepts
};
const Setting kSettings[] = {
    {L"TRACESIZE", Kind::Number, 0, 0, 2097151},  {L"TRACEDAYS", Kind::Number, 0, 0, 65535},
    {L"TRACELEVEL", Kind::Number, 0, 0, 0},       {L"TRACEDEBUG", Kind::Flag, 0, 0, 1},
    {L"TRACEFILE", Kind::Flag, 0, 0, 1},          {L"TRACEEVENTLOG", Kind::Flag, 0, 0, 1},
    {L"TRACEMAILSLOT", Kind::Flag, 0, 0, 1},      {L"DISABLED_FACILITIES", Kind::Text, 250, 0, 0},
    {L"EVENTSOURCE", Kind::Text, 30, 0, 0},       {L"TRACEPATH", Kind::Text, 100, 0, 0},
    {L"MAILSLOT", Kind::Text, 250, 0, 0},         {L"DEFAULT_TRACEFILE", Kind::Text, 255, 0, 0},
};
const size_t kSettingCount = sizeof kSettings / sizeof kSettings[0];

// What the fields of the trace object can hold.
constexpr size_t kMaxStem = 242;
constexpr size_t kPathUnits = 100;
constexpr size_t kSlotUnits = 100;
constexpr long kLargestSizeKB = 2097151;
constexpr long kLargestDays = 65535;
const wchar_t* const kLevelLetters = L"DIWEA";
constexpr uint32_t kLevelBits = 0x8000001Fu;

const Setting* find_setting(const std::wstring& name)
{
    for (const Setting& setting : kSettings)
        if (_wcsicmp(setting.name, name.c_str()) == 0)
            return &setting;
    return nullptr;
}

std::wstring quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

std::wstring hex(uint32_t bits)
{
    wchar_t text[16];
    swprintf(text, 16, L"0x%08X", bits);
    return text;
}

std::wstring level_letters(uint32_t mask)
{
    std::wstring letters;
    if (mask & 0x80000000u)
        letters += L'?';
    for (int bit = 0; bit < 5; ++bit)
        if (mask & (1u << bit))
            letters += kLevelLetters[bit];
    return letters;
}

// The facility numbers of a list as TraceInit walks it: every run of
// digits is one number, anything else separates.
std::vector<unsigned long> facility_numbers(const wchar_t* list)
{
    std::vector<unsigned long> numbers;
    while (*list) {
        if (*list < L'0' || *list > L'9') {
            ++list;
            continue;
        }
        numbers.push_back(uint32_t(_wtoi(list)));
        while (*list >= L'0' && *list <= L'9')
            ++list;
    }
    return numbers;
}

std::wstring today_digits()
{
    TDDate now;
    TDGetActTime(&now);
    wchar_t text[16];
    swprintf(text, 16, L"%04u%02u%02u", now.year, now.month, now.day);
    return text;
}

// The key as read, with what TraceInit would make of it.
struct Reading {
    uint32_t numbers[7] = {10000, 0, 0, 0, 0, 0, 0};
    std::wstring texts[5];
    std::vector<std::wstring> notes;
};

struct Presence {
    std::vector<std::wstring> names;
    bool has(const wchar_t* name) const
    {
        for (const std::wstring& present : names)
            if (_wcsicmp(present.c_str(), name) == 0)
                return true;
        return false;
    }
};

Presence value_names(HKEY key)
{
    Presence presence;
    std::vector<wchar_t> name(16384);
    for (uint32_t index = 0;; ++index) {
        uint32_t units = uint32_t(name.size());
        if (EnumRegValue(key, index, name.data(), &units, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        presence.names.emplace_back(name.data(), units);
    }
    return presence;
}

const wchar_t* type_name(DWORD type)
{
    switch (type) {
    case REG_SZ: return L"a text";
    case REG_EXPAND_SZ: return L"an expandable text";
    case REG_MULTI_SZ: return L"a list of texts";
    case REG_BINARY: return L"binary data";
    case REG_QWORD: return L"a 64-bit number";
    case REG_DWORD: return L"a 32-bit number";
    default: return L"data of another type";
    }
}

void read_values(HKEY key, const std::wstring& fileName, Reading& reading)
{
    Presence presence = value_names(key);
    const uint32_t defaults[] = {10000, 0, 0, 0, 0, 0, 0};
    const wchar_t* textDefaults[] = {L"", L"ZOR-STDTrace", L"", L"", L""};
    for (size_t i = 0; i < kSettingCount; ++i) {
        const Setting& setting = kSettings[i];
        if (setting.kind != Kind::Text) {
            int32_t code = setting.kind == Kind::Flag
                               ? QueryRegEntryBool(key, setting.name, &reading.numbers[i], defaults[i])
                               : QueryRegEntryLong(key, setting.name, &reading.numbers[i], defaults[i]);
            DWORD type = 0;
            RegQueryValueExW(key, setting.name, nullptr, &type, nullptr, nullptr);
            if (code != ERROR_SUCCESS && presence.has(setting.name))
                reading.notes.push_back(quoted(setting.name) + L" is " + type_name(type) +
                                        L" of more than 4 bytes: the default " +
                                        std::to_wstring(defaults[i]) + L" applies");
            else if (code == ERROR_SUCCESS && type != REG_DWORD)
                reading.notes.push_back(quoted(setting.name) + L" is stored as " + type_name(type) +
                                        L": its bytes read as the number " + std::to_wstring(reading.numbers[i]));
            continue;
        }
        size_t t = i - 7;
        if (setting.name == std::wstring(L"DEFAULT_TRACEFILE") && !fileName.empty()) {
            if (presence.has(setting.name))
                reading.notes.push_back(L"\"DEFAULT_TRACEFILE\" is not read: the application names the file");
            continue;
        }
        std::vector<wchar_t> buffer(setting.units);
        uint32_t units = setting.units;
        int32_t code = QueryRegEntryString(key, setting.name, buffer.data(), &units, textDefaults[t]);
        reading.texts[t] = buffer.data();
        if (code != ERROR_SUCCESS && presence.has(setting.name))
            reading.notes.push_back(quoted(setting.name) + L" does not fit its " + std::to_wstring(setting.units - 1) +
                                    L" units: the default " + quoted(textDefaults[t]) + L" applies");
    }
    for (const std::wstring& name : presence.names)
        if (!find_setting(name))
            reading.notes.push_back(quoted(name.empty() ? L"(default)" : name) + L" is not a value that the trace reads");
}

void print_field(const wchar_t* label, const std::wstring& value)
{
    std::wstring line = label;
    line.resize(14, L' ');
    write_out(line + value + L"\n");
}

void print_reading(const std::wstring& key, const std::wstring& fileName, Reading& reading)
{
    uint32_t* n = reading.numbers;
    std::wstring& disabledText = reading.texts[0];
    std::wstring& path = reading.texts[2];
    bool file = n[4] != 0, debug = n[3] != 0, events = n[5] != 0, slot = n[6] != 0;

    if (!path.empty() && path.back() != L'\\' && path.back() != L'/') {
        if (path.size() + 1 < kPathUnits) {
            path += L'\\';
        } else {
            reading.notes.push_back(L"\"TRACEPATH\" leaves no room for its separator: the file sink stays off");
            path.clear();
            file = false;
        }
    }
    std::wstring stem = fileName.empty() ? reading.texts[4] : fileName;
    std::wstring base = stem.empty() ? L"" : path + stem;
    if (base.size() > kMaxStem) {
        reading.notes.push_back(L"the stem " + quoted(base) + L" is longer than " + std::to_wstring(kMaxStem) +
                                L" units: the file sink stays off");
        base.clear();
        file = false;
    }
    std::wstring slotName = kSlotPrefix + reading.texts[3];
    if (slotName.size() >= kSlotUnits) {
        reading.notes.push_back(L"\"MAILSLOT\" is longer than " + std::to_wstring(kSlotUnits - 1 - wcslen(kSlotPrefix)) +
                                L" units: the mailslot sink stays off");
        slotName.clear();
        slot = false;
    }

    std::wstring lists[2];
    const struct {
        bool state;
        const wchar_t* name;
    } sinks[] = {{file, L"file"}, {debug, L"debug output"}, {events, L"event log"}, {slot, L"mailslot"}};
    for (const auto& sink : sinks) {
        std::wstring& list = lists[sink.state ? 0 : 1];
        list += (list.empty() ? L"" : L", ") + std::wstring(sink.name);
    }
    const std::wstring& on = lists[0];
    const std::wstring& off = lists[1];
    print_field(L"key", kRoot + key);
    print_field(L"sinks on", on.empty() ? L"none" : on);
    print_field(L"sinks off", off.empty() ? L"none" : off);
    std::wstring today = base + today_digits() + L".log";
    bool absolute = base.size() > 1 && (base[1] == L':' || (base[0] == L'\\' && base[1] == L'\\'));
    print_field(L"file today", (file ? L"" : L"(off) ") + today +
                                   (absolute ? L"" : L" in the application's current directory"));
    uint32_t mask = n[2];
    std::wstring letters = level_letters(mask);
    print_field(L"levels", (letters.empty() ? L"none" : letters) + L" (TRACELEVEL " + std::to_wstring(mask) + L")");
    if (mask & ~kLevelBits)
        reading.notes.push_back(L"\"TRACELEVEL\" has bits that name no level (" + hex(mask & ~kLevelBits) +
                                L"): they are ignored");
    std::wstring disabled;
    bool seen[256] = {};
    for (unsigned long number : facility_numbers(disabledText.c_str())) {
        if (number >= 256)
            reading.notes.push_back(L"facility " + std::to_wstring(number) +
                                    L" in \"DISABLED_FACILITIES\" has no switch: it stays on");
        else
            seen[number] = true;
    }
    for (int facility = 0; facility < 256; ++facility)
        if (seen[facility])
            disabled += (disabled.empty() ? L"" : L", ") + std::to_wstring(facility);
    print_field(L"disabled", disabled.empty() ? L"none" : disabled);
    long days = long(int32_t(n[1]));
    if (days > kLargestDays)
        reading.notes.push_back(L"\"TRACEDAYS\" " + std::to_wstring(days) + L" keeps " +
                                std::to_wstring(kLargestDays) + L" days");
    print_field(L"retention", days <= 0 ? L"all files kept"
                                        : std::to_wstring(days > kLargestDays ? kLargestDays : days) + L" days");
    long sizeKB = long(int32_t(n[0]));
    if (sizeKB > kLargestSizeKB)
        reading.notes.push_back(L"\"TRACESIZE\" " + std::to_wstring(sizeKB) + L" is beyond " +
                                std::to_wstring(kLargestSizeKB) + L" KiB: no limit");
    print_field(L"size limit", sizeKB <= 0 || sizeKB > kLargestSizeKB
                                   ? L"none"
                                   : std::to_wstring(sizeKB) + L" KiB (" + std::to_wstring(sizeKB * 1024LL) +
                                         L" bytes)");
    print_field(L"event source", reading.texts[1]);
    print_field(L"mailslot", slotName.empty() ? L"none" : (slot ? L"" : L"(off) ") + slotName);
    for (const std::wstring& note : reading.notes)
        print_field(L"note", note);
}

// The value of one --set as the registry will hold it; empty `error` when
// the trace can take it.
struct Assignment {
    const Setting* setting = nullptr;
    uint32_t number = 0;
    std::wstring text;
};

bool read_assignment(const std::wstring& set, Assignment& out, std::wstring& error)
{
    size_t equals = set.find(L'=');
    std::wstring name = set.substr(0, equals);
    std::wstring value = equals == std::wstring::npos ? L"" : set.substr(equals + 1);
    out.setting = find_setting(name);
    if (equals == std::wstring::npos || !out.setting) {
        error = equals == std::wstring::npos ? L"--set takes NAME=VALUE, not " + quoted(set)
                                             : quoted(name) + L" is not a value that the trace reads";
        return false;
    }
    const Setting& setting = *out.setting;
    if (setting.kind == Kind::Text) {
        out.text = value;
        size_t room = setting.units - 1;
        if (name == L"EVENTSOURCE" || name == L"DEFAULT_TRACEFILE")
            room = name == L"DEFAULT_TRACEFILE" ? kMaxStem : room;
        else if (name == L"TRACEPATH")
            room = kPathUnits - 2 + (!value.empty() && (value.back() == L'\\' || value.back() == L'/'));
        else if (name == L"MAILSLOT")
            room = kSlotUnits - 1 - wcslen(kSlotPrefix);
        if (value.size() > room) {
            error = quoted(setting.name) + L" holds at most " + std::to_wstring(room) + L" units";
            return false;
        }
        if (name == L"DISABLED_FACILITIES")
            for (unsigned long number : facility_numbers(value.c_str()))
                if (number > 255) {
                    error = L"facility " + std::to_wstring(number) + L" has no switch (0 to 255)";
                    return false;
                }
        return true;
    }
    std::wstring letters;
    if (name == L"TRACELEVEL" && read_levels(value, letters)) {
        for (wchar_t letter : letters)
            out.number |= letter == L'?' ? 0x80000000u : 1u << (wcschr(kLevelLetters, letter) - kLevelLetters);
        return true;
    }
    wchar_t* end = nullptr;
    errno = 0;
    unsigned long long number = value.empty() || value[0] == L'-' ? ~0ull : wcstoull(value.c_str(), &end, 0);
    bool numeric = !value.empty() && value[0] != L'-' && *end == 0 && errno == 0;
    if (name == L"TRACELEVEL") {
        if (!numeric || number > 0xFFFFFFFFull || (number & ~uint64_t(kLevelBits))) {
            error = L"\"TRACELEVEL\" takes letters of ?DIWEA or a mask of the bits 0 to 4 and 31, not " +
                    quoted(value);
            return false;
        }
    } else if (!numeric || number < uint64_t(setting.minimum) || number > uint64_t(setting.maximum)) {
        error = quoted(setting.name) + L" takes a number from " + std::to_wstring(setting.minimum) + L" to " +
                std::to_wstring(setting.maximum) + L", not " + quoted(value);
        return false;
    }
    out.number = uint32_t(number);
    return true;
}

} // namespace

int show_config(const std::wstring& key, const std::wstring& fileName)
{
    HKEY opened;
    int32_t code = OpenRegKey(HKEY_LOCAL_MACHINE, key.c_str(), KEY_READ, &opened);
    if (code != ERROR_SUCCESS) {
        write_err(L"zortrace: cannot open " + std::wstring(kRoot) + key + L": " + system_message(DWORD(code)) +
                  L"; TraceInit would leave every sink off\n");
        return 1;
    }
    Reading reading;
    read_values(opened, fileName, reading);
    CloseRegKey(opened);
    print_reading(key, fileName, reading);
    return 0;
}

int set_config(const std::wstring& key, const std::vector<std::wstring>& sets)
{
    std::vector<Assignment> assignments(sets.size());
    for (size_t i = 0; i < sets.size(); ++i) {
        std::wstring error;
        if (!read_assignment(sets[i], assignments[i], error)) {
            write_err(L"zortrace: " + error + L"\n");
            return 2;
        }
    }
    HKEY opened;
    int32_t code = CreateRegKey(HKEY_LOCAL_MACHINE, key.c_str(), KEY_WRITE, &opened);
    bool created = code == ERROR_SUCCESS;
    for (size_t i = 0; i < assignments.size() && code == ERROR_SUCCESS; ++i) {
        const Assignment& a = assignments[i];
        if (a.setting->kind == Kind::Text)
            code = RegSetValueExW(opened, a.setting->name, 0, REG_SZ, reinterpret_cast<const BYTE*>(a.text.c_str()),
                                  DWORD((a.text.size() + 1) * sizeof(wchar_t)));
        else
            code = RegSetValueExW(opened, a.setting->name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&a.number),
                                  sizeof a.number);
        if (code == ERROR_SUCCESS)
            write_out(L"set " + std::wstring(a.setting->name) + L" = " +
                      (a.setting->kind == Kind::Text ? quoted(a.text) : std::to_wstring(a.number)) + L"\n");
    }
    if (created)
        CloseRegKey(opened);
    if (code != ERROR_SUCCESS) {
        write_err(L"zortrace: cannot write " + std::wstring(kRoot) + key + L": " + system_message(DWORD(code)) + L"\n");
        return 1;
    }
    return 0;
}

long long configured_limit(const std::wstring& key)
{
    uint32_t sizeKB = 10000;
    HKEY opened;
    if (OpenRegKey(HKEY_LOCAL_MACHINE, key.c_str(), KEY_READ, &opened) == ERROR_SUCCESS) {
        QueryRegEntryLong(opened, L"TRACESIZE", &sizeKB, 10000);
        CloseRegKey(opened);
    }
    long signedKB = long(int32_t(sizeKB));
    return signedKB <= 0 || signedKB > kLargestSizeKB ? 0 : signedKB * 1024LL;
}
