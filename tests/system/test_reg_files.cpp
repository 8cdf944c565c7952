#include <doctest/doctest.h>

#include <random>
#include <vector>

#include "alloc_check.h"
#include "system_test_support.h"

namespace {

const char kHead[] = "REGEDIT4\r\n\r\n";

ZORStatus export_key(const std::wstring& key, const std::wstring& file, int append = 0,
                     int noHeader = 0, int recursive = 1)
{
    ZORRegExportArgs args{append, recursive, noHeader, key.c_str(), file.c_str()};
    return ZOR_RegExport(&args);
}

ZORStatus import_files(std::vector<std::wstring> files)
{
    return ZOR_RegImport(&files);
}

// Files with sections are compared without blank lines, which the profile
// functions may drop; a file without sections is compared byte for byte.
bool same_sections(std::string a, std::string b)
{
    for (std::string* text : {&a, &b})
        for (size_t at; b.find('[') != std::string::npos &&
                        (at = text->find("\r\n\r\n")) != std::string::npos;)
            text->erase(at, 2);
    return a == b;
}

// Random values of every kind and subkeys below `inner` of `tree`; `kept`
// models what a trip through a file keeps: texts (expandable ones as plain
// texts) and numbers, in their keys and the keys above them.
void random_tree(std::mt19937& random, HKEY tree, const std::wstring& inner, int depth,
                 RegModel& kept)
{
    HKEY key = nullptr;
    REQUIRE(CreateRegKey(tree, inner.c_str(), KEY_ALL_ACCESS, &key) == 0);
    const std::wstring at = inner.empty() ? L"" : L"\\" + inner;
    const struct {
        DWORD type;
        int size; // -1: the text's
    } kinds[] = {{REG_SZ, -1}, {REG_EXPAND_SZ, -1}, {REG_DWORD, 4}, {REG_BINARY, 3}, {REG_SZ, 0}};
    for (unsigned i = random() % 4; i > 0; --i) {
        std::wstring text(random() % 3 ? random() % 25 : 0, L' ');
        for (wchar_t& unit : text)
            unit = L"abXY09 \"\\=;[]#%\u00e9\u20ac"[random() % 16];
        uint32_t number = random() % 3 ? random() % 2 * 0xFFFFFFFFu : uint32_t(random());
        const auto& kind = kinds[random() % 5];
        const void* data = kind.type == REG_DWORD ? static_cast<const void*>(&number)
                                                  : static_cast<const void*>(text.c_str());
        DWORD size = kind.size < 0 ? DWORD(text.size() + 1) * 2 : DWORD(kind.size);
        std::wstring name = i == 1 && random() % 3 == 0 ? L"" : L"v" + std::to_wstring(i) + L" n;";
        REQUIRE(RegSetValueExW(key, name.c_str(), 0, kind.type, static_cast<const BYTE*>(data),
                               size) == 0);
        if (size == 0 || kind.type == REG_BINARY)
            continue;
        kept[at + L"|" + name] =
            describe_value(kind.type == REG_DWORD ? REG_DWORD : REG_SZ, data, size);
        for (size_t cut = 0; cut != std::wstring::npos; cut = at.find(L'\\', cut + 1))
            kept[at.substr(0, cut)] = L"key";
        kept[at] = L"key";
    }
    RegCloseKey(key);
    for (unsigned i = depth < 3 ? random() % 3 : 0; i > 0; --i)
        random_tree(random, tree, inner + (inner.empty() ? L"k" : L"\\k") + std::to_wstring(i),
                    depth + 1, kept);
}

}

TEST_CASE("random trees come back from a file, also when exports are appended to one another")
{
    PrivateKey pk;
    TempDir dir;
    std::mt19937 random(31);
    const std::wstring file = dir.file(L"trees.reg");
    const wchar_t* roots[] = {L"HKEY_CURRENT_USER\\", L"hkey_current_user\\",
                              L"Hkey_Current_User\\"};
    for (int round = 0; round < 3; ++round) {
        RegModel kept[3];
        std::wstring paths[3];
        for (int tree = 0; tree < 3; ++tree) {
            PrivateKey key(pk.root(), pk.path());
            random_tree(random, key.key(), L"", 0, kept[tree]);
            paths[tree] = key.path();
            // The first export makes the file, the second keeps its head
            // line, the third writes none; a key path may end in a backslash.
            CHECK(export_key(roots[tree] + key.path() + (tree == 1 ? L"\\" : L""), file, tree > 0,
                             tree == 2) == 0);
        }
        std::string bytes = read_bytes(file);
        CHECK(bytes.compare(0, 8, kHead, 8) == 0);
        CHECK(bytes.find("REGEDIT4", 1) == std::string::npos);
        CHECK(import_files({file}) == 0);
        for (int tree = 0; tree < 3; ++tree)
            CHECK(tree_of(pk.key(), paths[tree].substr(pk.path().size() + 1)) == shown(kept[tree]));
    }
}

TEST_CASE("imported entries follow the quoting rules, and a bad line stops the file there")
{
    PrivateKey pk;
    TempDir dir;
    const std::wstring file = dir.file(L"in.reg");
    const std::string overlong = "[@\\a]\r\n\"v\"=1\r\n[@\\" + std::string(250, 'x') + "]\r\n";
    const struct {
        std::string text;
        ZORStatus status;
        std::wstring tree;
    } rows[] = {
        {"REGEDIT4\r\n\r\n[@\\a]\r\n\"x\"=\"1\"\r\n[HKEY_NOWHERE\\b]\r\n\"y\"=\"2\"\r\n",
         ZOR_E_INVALIDARG, L"\\a = key\n\\a|x = 1:1\n"},
        {"[HKEY_CURRENT_USER]\r\n\"y\"=\"2\"\r\n", ZOR_E_INVALIDARG, L""},
        {"[@\\a]\r\n\"x\"=\"1\"\r\nno equals\r\n\"y\"=\"2\"\r\n", ZOR_E_INVALIDARG,
         L"\\a = key\n\\a|x = 1:1\n"},
        {"[@\\a]\r\n\"x\"=\"open\r\n", ZOR_E_INVALIDARG, L"\\a = key\n"},
        {"[@\\a]\r\nn=17\r\nm=-1\r\nbig=4294967297\r\nword=abc\r\n\"q\"=5\r\n", 0,
         L"\\a = key\n\\a|big = 4:01000000\n\\a|m = 4:ffffffff\n\\a|n = 4:11000000\n"
         L"\\a|q = 4:05000000\n\\a|word = 4:00000000\n"},
        {"[@\\a]\r\n\"a\"b\"=\"x\"y\"\r\nplain=\"t\"\r\n\"\"=\"default\"\r\n\"e=q\"=\"1\"\r\n", 0,
         L"\\a = key\n\\a| = 1:default\n\\a|a = 1:x\"y\n\\a|e = 1:=\"1\n\\a|plain = 1:t\n"},
        {"[@\\empty]\r\n[@\\b]\r\n\"v\"=\"\"\r\n", 0, L"\\b = key\n\\b|v = 1:\n\\empty = key\n"},
        {overlong, ZOR_E_INVALIDARG, L"\\a = key\n\\a|v = 4:01000000\n"},
        {"REGEDIT4\r\n\r\n", 0, L""},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        write_bytes(file, with_key(row.text, hkcu(pk)));
        CHECK(import_files({file}) == row.status);
        CHECK(tree_of(pk.key(), L"") == L" = key\n" + row.tree);
        for (const wchar_t* key : {L"\\a", L"\\b", L"\\empty"})
            PrivateKey::delete_tree(pk.root(), pk.path() + key);
    }
    // Files in order, the first failure ends the list, an empty list is no work.
    write_bytes(dir.file(L"good.reg"), with_key("[@\\a]\r\n\"v\"=1\r\n", hkcu(pk)));
    write_bytes(dir.file(L"bad.reg"), "[HKEY_NOWHERE\\a]\r\n");
    write_bytes(dir.file(L"late.reg"), with_key("[@\\b]\r\n\"v\"=2\r\n", hkcu(pk)));
    CHECK(import_files({}) == 0);
    CHECK(import_files({dir.file(L"good.reg"), dir.file(L"missing.reg"), dir.file(L"late.reg")}) ==
          ZOR_STATUS_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    CHECK(import_files({dir.file(L"bad.reg"), dir.file(L"late.reg")}) == ZOR_E_INVALIDARG);
    CHECK(import_files({std::wstring(270, L'f')}) == ZOR_E_INVALIDARG);
    CHECK(tree_of(pk.key(), L"") == L" = key\n\\a = key\n\\a|v = 4:01000000\n");

    // 60 sections, and one section's 300 entries, each more than one read of 4096 units.
    PrivateKey::delete_tree(pk.root(), pk.path() + L"\\a");
    std::string text = kHead, many = "[@\\many]\r\n";
    RegModel kept{{L"", L"key"}, {L"\\many", L"key"}};
    for (int i = 0; i < 300; ++i) {
        const std::string n = std::to_string(i), section = "\\" + std::string(70, 'p') + n;
        if (i < 60) {
            text += "[@" + section + "]\r\n\"v\"=" + n + "\r\n";
            kept[widen(section)] = L"key";
            kept[widen(section) + L"|v"] = describe_value(REG_DWORD, &i, 4);
        }
        many += "\"e" + n + "\"=\"" + n + std::string(20, 'p') + "\"\r\n";
        kept[L"\\many|e" + widen(n)] = L"1:" + widen(n) + std::wstring(20, L'p');
    }
    write_bytes(file, with_key(text + many, hkcu(pk)));
    CHECK(import_files({file}) == 0);
    CHECK(tree_of(pk.key(), L"") == shown(kept));
}

TEST_CASE("the export refuses bad paths before touching the file and spares foreign files")
{
    PrivateKey pk;
    TempDir dir;
    pk.set_dword(L"v", 7);
    PrivateKey empty(pk.root(), pk.path());
    const std::wstring key = widen(hkcu(pk)), file = dir.file(L"out.reg");
    const std::string section = "[" + narrow(key) + "]\r\n\"v\"=7\r\n";
    const std::string foreign = "[x]\r\nkeep=1\r\n";
    const struct {
        std::wstring key;
        const char* before; // null: no file yet
        int append, noHeader;
        ZORStatus status;
        std::string after;
    } rows[] = {
        {L"HKEY_CURRENT_USER", "keep", 0, 0, ZOR_E_INVALIDARG, "keep"},
        {L"HKEY_NOWHERE\\Software", "keep", 0, 0, ZOR_E_INVALIDARG, "keep"},
        {L"HKEY_CURRENT_USERS\\Software", "keep", 0, 0, ZOR_E_INVALIDARG, "keep"},
        {key + L"\\absent", "keep", 0, 0, ZOR_STATUS_FROM_WIN32(ERROR_FILE_NOT_FOUND), kHead},
        {L"HKEY_CURRENT_USER\\" + empty.path(), nullptr, 0, 0, 0, kHead},
        {L"HKEY_CURRENT_USER\\" + empty.path(), nullptr, 1, 1, 0, ""},
        {key, foreign.c_str(), 1, 0, ZOR_E_INVALID_DATA, foreign},
        {key, "REGED", 1, 0, ZOR_E_INVALID_DATA, "REGED"},
        {key, "", 1, 0, 0, kHead + section},
        {key, nullptr, 0, 1, 0, section},
        {key, foreign.c_str(), 1, 1, 0, foreign + section},
    };
    for (const auto& row : rows) {
        CAPTURE(row.key);
        CAPTURE(row.before);
        DeleteFileW(file.c_str());
        if (row.before)
            write_bytes(file, row.before);
        CHECK(export_key(row.key, file, row.append, row.noHeader, 0) == row.status);
        CHECK(same_sections(read_bytes(file), row.after));
    }
    CHECK(export_key(key, dir.file(std::wstring(270, L'f'))) == ZOR_E_INVALIDARG);
    CHECK(export_key(key, L"") == ZOR_E_INVALIDARG);
}

TEST_CASE("overlong values end their key quietly, overlong names and paths end the export")
{
    PrivateKey pk;
    TempDir dir;
    const std::wstring file = dir.file(L"limits.reg"), key = widen(hkcu(pk));
    // Names sort in the order they are made, so that the platform's order is
    // that order on either platform. The binary value is passed over.
    pk.set_bytes(L"a1", "\1\2", 2);
    pk.set_text(L"a2", L"1");
    pk.set_text(L"a3", std::wstring(300, L't'));
    pk.set_text(L"a4", L"2");
    PrivateKey sub(pk.root(), pk.path());
    sub.set_text(L"d", L"3");
    sub.set_text(std::wstring(300, L'n').c_str(), L"4");
    sub.set_text(L"z", L"5");
    CHECK(export_key(key, file) == 0);
    std::string text = read_bytes(file);
    for (const char* entry : {"\"a2\"=\"1\"", "\"d\"=\"3\""})
        CHECK(text.find(entry) != std::string::npos);
    for (const char* name : {"\"a1\"", "\"a3\"", "\"a4\"", "\"nn", "\"z\""})
        CHECK(text.find(name) == std::string::npos);

    // A full path of 255 units fits and one of 256 does not, which ends the
    // walk behind it; a subkey name of 128 units does not fit its area.
    auto make_key = [&](const std::wstring& path) {
        HKEY made = nullptr;
        REQUIRE(CreateRegKey(pk.key(), path.c_str(), KEY_ALL_ACCESS, &made) == 0);
        const DWORD six = 6;
        RegSetValueExW(made, L"v", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&six), 4);
        CloseRegKey(made);
    };
    for (size_t total : {255u, 256u}) {
        CAPTURE(total);
        std::wstring path = L"f\\";
        while (key.size() + 1 + path.size() < total)
            path += path.size() % 100 ? L'x' : L'\\';
        make_key(path);
        CHECK(export_key(key + L"\\f", file) == (total == 255 ? 0 : ZOR_E_INVALIDARG));
        CHECK(read_bytes(file).find("\"v\"=6") != std::string::npos);
    }
    make_key(L"w\\" + std::wstring(128, L'w'));
    CHECK(export_key(key + L"\\w", file) == ZOR_STATUS_FROM_WIN32(ERROR_MORE_DATA));
}

TEST_CASE("exhaustion in either direction gives E_OUTOFMEMORY, keeps earlier work, leaks nothing")
{
    PrivateKey pk;
    TempDir dir;
    NoLeak leak;
    const std::wstring file = dir.file(L"oom.reg"), key = widen(hkcu(pk));
    PrivateKey a(pk.root(), pk.path()), b(pk.root(), a.path());
    a.set_text(L"a", L"1");
    b.set_text(L"b", L"2");
    const std::wstring whole = tree_of(pk.key(), L"");
    const std::vector<ZORStatus> oom_then_done{ZOR_E_OUTOFMEMORY, ZOR_E_OUTOFMEMORY,
                                               ZOR_E_OUTOFMEMORY, 0};
    std::vector<ZORStatus> statuses;
    std::vector<std::string> files;
    // One data area for each key: the private key, a, b.
    CHECK(fail_each_allocation([&] {
              statuses.push_back(export_key(key, file));
              files.push_back(read_bytes(file));
          }) == 3);
    CHECK(statuses == oom_then_done);
    CHECK(files[1] == kHead);
    CHECK(files[2].find("\"a\"=\"1\"") != std::string::npos);
    CHECK(files[2].find("\"b\"") == std::string::npos);

    statuses.clear();
    std::vector<std::wstring> trees;
    // The list of sections, then the entries of each of the two sections.
    CHECK(fail_each_allocation([&] {
              PrivateKey::delete_tree(pk.root(), a.path());
              statuses.push_back(import_files({file}));
              trees.push_back(tree_of(pk.key(), L""));
          }) == 3);
    CHECK(statuses == oom_then_done);
    std::wstring aName = a.path().substr(pk.path().size());
    CHECK(trees[0] == L" = key\n");
    CHECK(trees[1] == L" = key\n" + aName + L" = key\n");
    CHECK(trees[2].find(aName + L"|a = 1:1") != std::wstring::npos);
    CHECK(trees[2].find(L"|b") == std::wstring::npos);
    CHECK(trees[3] == whole);
}
