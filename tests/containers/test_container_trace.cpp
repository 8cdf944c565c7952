#include <doctest/doctest.h>

#include <stdio.h>
#include <string.h>

#include <fstream>
#include <string>
#include <vector>

#include <windows.h>

#include "fenced.h"
#include "private_key.h"
#include "temp_dir.h"
#include "zor_bt.h"
#include "zor_dl.h"
#include "zor_trace.h"

namespace {
using Lines = std::vector<std::string>;

int by_value(const void* key, const void* elem)
{
    return *static_cast<const int32_t*>(key) - *static_cast<const int32_t*>(elem);
}

uint32_t low32(const void* p) { return uint32_t(reinterpret_cast<uintptr_t>(p)); }

// What the dump of a tree must say, from a walk of its nodes in pre-order.
void expect_subtree(const BTNode* node, int depth, const char* label, Lines& lines)
{
    if (!node)
        return;
    char line[200];
    snprintf(line, sizeof line, "%02d-%s: %s N:%08x L:%08x R:%08x U:%08x B:%c", depth, label,
             std::string(size_t(2 * depth), ' ').c_str(), low32(node), low32(node->left),
             low32(node->right), low32(node->up), "<->"[node->balance + 1]);
    lines.push_back(line);
    expect_subtree(node->left, depth + 1, "Left", lines);
    expect_subtree(node->right, depth + 1, "Rght", lines);
}

// The lines of the trace file from line `from` on, each without its level
// and time prefix, which must be that of level 5; `from` moves past them.
Lines fresh_lines(size_t& from)
{
    std::ifstream file(GetTraceObj()->szFile);
    Lines lines;
    size_t number = 0;
    for (std::string line; std::getline(file, line); ++number) {
        if (number < from)
            continue;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty()) {
            REQUIRE(line.size() >= 18);
            CHECK(line[0] == 'A');
            line.erase(0, 18);
        }
        lines.push_back(line);
    }
    from = number;
    return lines;
}
}

TEST_CASE("the dumps reach the trace once it is started, at level 5, the tree's at facility 18")
{
    BT* tree = BTCreate(by_value, sizeof(int32_t));
    for (int32_t i = 0; i < 40; ++i) {
        int32_t key = i * 37 % 41;
        BTInsert(tree, &key);
    }
    BT* no_tree = BTCreate(by_value, sizeof(int32_t));
    // Only the first 32 bits of a value count, as a signed number.
    DLHeader* list = DLCreateHeader(sizeof(int64_t));
    for (int64_t value : {int64_t(7), (int64_t(3) << 32) | 0xFFFFFFFB})
        DLInsertLastElement(list, DLCreateElement(list, &value));
    DLHeader* no_list = DLCreateHeader(sizeof(int64_t));
    auto dump_all = [&]() {
        BTTrace(tree);
        BTTrace(no_tree);
        DLListElements(list);
        DLListElements(no_list);
    };
    dump_all();  // before the start: the lines must go nowhere

    TempDir dir;
    PrivateKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    key.set_dword(L"TRACEFILE", 1);
    key.set_dword(L"TRACELEVEL", 1u << 4);
    key.set_text(L"TRACEPATH", dir.path());
    TraceInit(GetTraceObj(), key.path().c_str(), L"dump", 0);
    size_t read = 0;
    CHECK(fresh_lines(read).size() == 2);  // the start's own lines and nothing else

    char head[40];
    snprintf(head, sizeof head, "ROOT: %08x Anz:40", low32(tree->root));
    Lines expected{head};
    expect_subtree(tree->root, 0, "ROOT", expected);
    expected.push_back("ROOT: 00000000 Anz:0");
    // The list's own line break comes on top of the file's.
    Lines list_lines{"Element:1 - 7", "", "Element:2 - -5", ""};
    expected.insert(expected.end(), list_lines.begin(), list_lines.end());
    dump_all();
    CHECK(fresh_lines(read) == expected);

    TraceObject* obj = GetTraceObj();
    obj->dwLevelMask = ~(1u << 4);
    dump_all();
    CHECK(fresh_lines(read).empty());
    obj->dwLevelMask = 1u << 4;
    EnableTrace(obj, 18, 0);
    dump_all();
    CHECK(fresh_lines(read) == list_lines);
    EnableTrace(obj, 18, 1);

    // A value of two bytes that ends where readable memory ends: the dump
    // must not read on, and shows the two bytes with zero high bytes.
    Fenced<char> fenced{2};
    DLHeader* shorts = DLCreateHeader(2);
    DLElement* element = DLInsertFirstElement(shorts, DLCreateElement(shorts, "\xFE\xFF"));
    void* own = element->pValue;
    element->pValue = memcpy(fenced.data(), own, 2);
    DLListElements(shorts);
    element->pValue = own;
    CHECK(fresh_lines(read) == Lines{"Element:1 - 65534", ""});

    DLRemoveHeader(shorts);
    DLRemoveHeader(no_list);
    DLRemoveHeader(list);
    BTDestroy(no_tree, nullptr);
    BTDestroy(tree, nullptr);
}
