#include <doctest/doctest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

#include "alloc_check.h"
#include "dll_image.h"
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

// Key ascending, equal keys newest (highest serial) first.
using Reference = std::set<std::pair<int32_t, int32_t>>;

// Up links, balances that are the true height differences; returns the height.
int check_subtree(const BTNode* node, const BTNode* parent, uint32_t* nodes)
{
    if (!node)
        return 0;
    ++*nodes;
    CHECK(node->up == parent);
    int left = check_subtree(node->left, node, nodes);
    int right = check_subtree(node->right, node, nodes);
    CHECK((node->balance == right - left && node->balance >= -1 && node->balance <= 1));
    return 1 + (left > right ? left : right);
}

int collect(void* arg, void* elem)
{
    static_cast<std::vector<const Item*>*>(arg)->push_back(static_cast<const Item*>(elem));
    return 1;
}

// The tree against the reference by every way of walking it, with each
// element still at the address that BTInsert gave.
void check_tree(BT* tree, const Reference& expected, const std::map<int32_t, const Item*>& where)
{
    uint32_t nodes = 0;
    check_subtree(tree->root, nullptr, &nodes);
    REQUIRE((BTCount(tree) == expected.size() && nodes == expected.size()));
    std::vector<const Item*> forward, backward, visited;
    for (void* e = BTFirst(tree); e; e = BTNext(e))
        forward.push_back(static_cast<const Item*>(e));
    for (void* e = BTLast(tree); e; e = BTPrev(e))
        backward.insert(backward.begin(), static_cast<const Item*>(e));
    BTForEach(tree, collect, &visited);
    REQUIRE(forward.size() == expected.size());
    CHECK((backward == forward && visited == forward));
    auto it = forward.begin();
    for (const auto& entry : expected)
        CHECK(((*it)->key == entry.first && *it++ == where.at(-entry.second)));
}

// Inserts with a running serial and keeps the reference in step.
struct Checked {
    BT* tree = BTCreate(by_key, sizeof(Item));
    Reference expected;  // (key, -serial)
    std::map<int32_t, const Item*> where;
    int32_t serial = 0;

    const Item* insert(int32_t key)
    {
        Item it{key, serial, 0.5};
        auto* stored = static_cast<const Item*>(BTInsert(tree, &it));
        if (stored) {
            CHECK(stored->serial == serial);
            expected.insert({key, -serial});
            where[serial] = stored;
        }
        ++serial;
        return stored;
    }
};
}

namespace {
std::vector<const void*> g_destroyed;
BT* g_dying;

int note_destroyed(void* elem)
{
    CHECK(g_dying->signature == BT_SIGNATURE_DESTROYED);
    g_destroyed.push_back(elem);
    return 0;
}

void post_order(const BTNode* node, std::vector<const void*>* out)
{
    if (node) {
        post_order(node->left, out);
        post_order(node->right, out);
        out->push_back(node + 1);
    }
}
}

TEST_CASE("long random runs of inserts and deletes keep the tree balanced, linked and in order")
{
    NoLeak leak;
    std::mt19937 random(4713);
    Checked t;
    CHECK(t.tree->signature == BT_SIGNATURE);
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
                CHECK((victim || t.expected.lower_bound({key, INT32_MIN}) ==
                                     t.expected.lower_bound({key + 1, INT32_MIN})));
            }
            check_tree(t.tree, t.expected, t.where);
        }
    }
    // Destruction calls back in post-order, with the tree already marked.
    std::vector<const void*> expected;
    post_order(t.tree->root, &expected);
    g_dying = t.tree;
    BTDestroy(t.tree, note_destroyed);
    CHECK((!expected.empty() && g_destroyed == expected));
}

TEST_CASE("a refused allocation leaves the tree as it was")
{
    NoLeak leak;
    CHECK(fail_each_allocation([](bool) {
              Checked t;
              if (!t.tree)
                  return;
              for (int32_t i = 0; i < 12; ++i) {
                  t.insert(i * 7 % 5);
                  check_tree(t.tree, t.expected, t.where);
              }
              BTDestroy(t.tree, nullptr);
          }) == 13);
}

TEST_CASE("the DLL exports the array and tree families")
{
    CHECK(missing_exports({"DACreate", "DADestroy", "DAGetSize", "DAGetElem", "DAAddElem",
                           "DASetElem", "DAInsertElem", "DADeleteLast", "BTCreate", "BTDestroy",
                           "BTInsert", "BTDelete", "BTSearch", "BTCount", "BTFirst", "BTLast",
                           "BTNext", "BTPrev", "BTForEach"}) == "");
}
