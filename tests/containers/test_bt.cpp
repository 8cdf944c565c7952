#include <doctest/doctest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

#include "alloc_check.h"
#include "dll_image.h"
#include "walk.h"
#include "zor_bt.h"

namespace {
// The key comes first, so that a bare int serves as a search key.
struct Item {
    int32_t key;
    int32_t serial;
    double padding;
};

int by_key(const void* key, const void* elem)
{
    int32_t a = *static_cast<const int32_t*>(key), b = static_cast<const Item*>(elem)->key;
    return a < b ? -3 : a > b ? 7 : 0;  // only the sign may count
}

// The height of the subtree, or -1 when an up link or a balance is wrong.
int height(const BTNode* node, const BTNode* parent, uint32_t* nodes)
{
    if (!node)
        return 0;
    ++*nodes;
    int left = height(node->left, node, nodes), right = height(node->right, node, nodes);
    bool sound = left >= 0 && right >= 0 && node->up == parent && node->balance == right - left;
    return sound && left - right <= 1 && right - left <= 1 ? 1 + (left > right ? left : right) : -1;
}

// A tree beside a reference multiset: (key, -serial) sorts by key with the
// newest of equals first, and maps to the address that the insert gave.
struct Checked {
    BT* tree = BTCreate(by_key, sizeof(Item));
    std::map<std::pair<int32_t, int32_t>, void*> expected;
    int32_t serial = 0;

    void* insert(int32_t key)
    {
        Item it{key, serial, 0.5};
        void* stored = BTInsert(tree, &it);
        if (stored) {
            CHECK(static_cast<Item*>(stored)->serial == serial);
            expected[{key, -serial}] = stored;
        }
        ++serial;
        return stored;
    }

    // The tree's shape, and every way of walking it against the reference.
    void check() const
    {
        uint32_t nodes = 0;
        CHECK(height(tree->root, nullptr, &nodes) >= 0);
        REQUIRE(nodes == expected.size());
        REQUIRE(BTCount(tree) == nodes);
        std::vector<void*> visited, placed;
        BTForEach(tree, [](void* seen, void* e) {
            static_cast<std::vector<void*>*>(seen)->push_back(e);
            return 0;
        }, &visited);
        for (const auto& entry : expected)
            placed.push_back(entry.second);
        CHECK(walk_both_ways(BTFirst(tree), BTNext, BTLast(tree), BTPrev, nodes) == placed);
        CHECK(visited == placed);
    }
};

std::set<const void*> g_destroyed;

// Each element once, in post-order: both children of a node have gone before it.
int note_destroyed(void* elem)
{
    const BTNode* node = static_cast<const BTNode*>(elem) - 1;
    CHECK(g_destroyed.insert(elem).second);
    for (const BTNode* child : {node->left, node->right})
        CHECK((!child || g_destroyed.count(child + 1)));
    return 0;
}
}

TEST_CASE("long random runs of inserts and deletes keep the tree balanced, linked and in order")
{
    NoLeak leak;
    std::mt19937 random(4713);
    Checked t;
    // Phases lean towards inserting, then deleting, over few keys and then
    // more, so that the tree grows, empties again and holds many equal keys.
    for (int phase = 0; phase < 8; ++phase) {
        for (int op = 0; op < 1500; ++op) {
            int32_t key = int32_t(random() % (phase < 4 ? 40u : 400u));
            if (random() % 100 < (phase % 2 == 0 ? 70u : 30u)) {
                REQUIRE(t.insert(key));
            } else {
                // Search and delete stop at the same one of the equals.
                auto* victim = static_cast<const Item*>(BTSearch(t.tree, &key));
                int32_t serial = victim ? victim->serial : -1;
                CHECK(BTDelete(t.tree, &key) == (victim ? &key : nullptr));
                CHECK(t.expected.erase({key, -serial}) == (victim ? 1u : 0u));
                auto next = t.expected.lower_bound({key, INT32_MIN});
                CHECK((victim || next == t.expected.end() || next->first.first != key));
            }
            t.check();
        }
    }
    size_t left = t.expected.size();
    REQUIRE(left > 0);
    BTDestroy(t.tree, note_destroyed);
    CHECK(g_destroyed.size() == left);
}

TEST_CASE("a refused allocation leaves the tree as it was")
{
    NoLeak leak;
    CHECK(fail_each_allocation([]() {
              Checked t;
              for (int32_t i = 0; t.tree && i < 12; ++i) {
                  t.insert(i * 7 % 5);
                  t.check();
              }
              if (t.tree)
                  BTDestroy(t.tree, nullptr);
          }) == 13);
}

TEST_CASE("the DLL exports the container families")
{
    CHECK(missing_exports({"DACreate", "DADestroy", "DAGetSize", "DAGetElem", "DAAddElem", "DASetElem",
                           "DAInsertElem", "DADeleteLast", "BTCreate", "BTDestroy", "BTInsert", "BTDelete",
                           "BTSearch", "BTCount", "BTFirst", "BTLast", "BTNext", "BTPrev", "BTForEach",
                           "DLCreateHeader", "DLCreateElement", "DLGetElementValue", "DLGetFirstElement",
                           "DLGetLastElement", "DLGetNextElement", "DLGetPrevElement", "DLInsertElement",
                           "DLInsertFirstElement", "DLInsertLastElement", "DLInsertNextElement",
                           "DLInsertPrevElement", "DLRemoveElement", "DLRemoveHeader", "LLCreate", "LLDestroy",
                           "LLCount", "LLFirst", "LLLast", "LLNext", "LLPushFront", "LLPushBack", "LLRemove",
                           "LLApply", "LLApplyPar", "MPCreate", "MPAlloc", "MPDestroy", "BTTrace",
                           "DLListElements"}) == "");
}
