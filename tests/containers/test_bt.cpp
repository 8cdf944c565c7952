#include <doctest/doctest.h>

#include <stdint.h>
#include <map>
#include <random>
#include <set>
#include <utility>
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
    int32_t a = *static_cast<const int32_t*>(key);
    int32_t b = static_cast<const Item*>(elem)->key;
    return a < b ? -3 : a > b ? 7 : 0;  // only the sign may count
}

const Item* item(const BTNode* node)
{
    return reinterpret_cast<const Item*>(node + 1);
}

// Walks the nodes: up links, balances that are the true height differences,
// and the node count. Returns the height.
int check_subtree(const BTNode* node, const BTNode* parent, uint32_t* nodes)
{
    if (!node)
        return 0;
    ++*nodes;
    CHECK(node->up == parent);
    int left = check_subtree(node->left, node, nodes);
    int right = check_subtree(node->right, node, nodes);
    CHECK(node->balance == right - left);
    CHECK((node->balance >= -1 && node->balance <= 1));
    return 1 + (left > right ? left : right);
}

// Equal keys in order of insertion, newest first.
struct NewestFirst {
    bool operator()(const std::pair<int32_t, int32_t>& a,
                    const std::pair<int32_t, int32_t>& b) const
    {
        return a.first != b.first ? a.first < b.first : a.second > b.second;
    }
};
using Reference = std::set<std::pair<int32_t, int32_t>, NewestFirst>;

int collect(void* arg, void* elem)
{
    auto* seen = static_cast<std::vector<const Item*>*>(arg);
    seen->push_back(static_cast<const Item*>(elem));
    return 1;
}

// The whole tree against the reference, by every way of walking it, and
// every element at the address that it was stored at.
void check_tree(BT* tree, const Reference& expected, const std::map<int32_t, const Item*>& where)
{
    uint32_t nodes = 0;
    check_subtree(tree->root, nullptr, &nodes);
    REQUIRE(BTCount(tree) == expected.size());
    CHECK(nodes == expected.size());

    std::vector<const Item*> forward, backward, visited;
    for (void* e = BTFirst(tree); e; e = BTNext(e))
        forward.push_back(static_cast<const Item*>(e));
    for (void* e = BTLast(tree); e; e = BTPrev(e))
        backward.insert(backward.begin(), static_cast<const Item*>(e));
    BTForEach(tree, collect, &visited);
    REQUIRE(forward.size() == expected.size());
    CHECK(backward == forward);
    CHECK(visited == forward);

    size_t i = 0;
    for (const auto& entry : expected) {
        CHECK(forward[i]->key == entry.first);
        CHECK(forward[i]->serial == entry.second);
        CHECK(forward[i] == where.at(entry.second));
        ++i;
    }
}

BT* tree_of(std::initializer_list<int32_t> keys)
{
    BT* tree = BTCreate(by_key, sizeof(Item));
    REQUIRE(tree);
    int32_t serial = 0;
    for (int32_t key : keys) {
        Item it{key, serial++, 0.0};
        REQUIRE(BTInsert(tree, &it));
    }
    return tree;
}

std::vector<int32_t> keys_in_order(BT* tree)
{
    std::vector<int32_t> keys;
    for (void* e = BTFirst(tree); e; e = BTNext(e))
        keys.push_back(static_cast<Item*>(e)->key);
    return keys;
}
}

TEST_CASE("long random runs of inserts and deletes keep the tree balanced and linked")
{
    NoLeak leak;
    std::mt19937 random(4713);
    BT* tree = BTCreate(by_key, sizeof(Item));
    REQUIRE(tree);
    CHECK(tree->signature == BT_SIGNATURE);
    Reference expected;
    std::map<int32_t, const Item*> where;
    int32_t serial = 0;
    // Phases that lean towards inserting and towards deleting, over few keys,
    // so that the tree grows, empties again and holds many equal keys.
    for (int phase = 0; phase < 8; ++phase) {
        unsigned insertShare = phase % 2 == 0 ? 70 : 30;
        int32_t keyRange = phase < 4 ? 40 : 400;
        for (int op = 0; op < 1500; ++op) {
            int32_t key = int32_t(random() % unsigned(keyRange));
            if (random() % 100 < insertShare) {
                Item it{key, serial, 1.5};
                const Item* stored = static_cast<const Item*>(BTInsert(tree, &it));
                REQUIRE(stored);
                CHECK(stored != &it);
                CHECK(stored->serial == serial);
                expected.insert({key, serial});
                where[serial++] = stored;
            } else {
                // Search and delete stop at the same equal element.
                const Item* victim = static_cast<const Item*>(BTSearch(tree, &key));
                void* result = BTDelete(tree, &key);
                if (victim) {
                    CHECK(result == &key);
                    CHECK(expected.erase({key, victim->serial}) == 1);
                } else {
                    CHECK(result == nullptr);
                    CHECK(expected.lower_bound({key, INT32_MAX}) == expected.upper_bound({key, INT32_MIN}));
                }
            }
            check_tree(tree, expected, where);
        }
    }
    BTDestroy(tree, nullptr);
}

TEST_CASE("small trees take the expected shape")
{
    NoLeak leak;
    for (auto keys : {std::vector<int32_t>{1, 2, 3}, {3, 1, 2}, {3, 2, 1}, {1, 3, 2}}) {
        BT* tree = BTCreate(by_key, sizeof(Item));
        for (int32_t k : keys) {
            Item it{k, 0, 0.0};
            BTInsert(tree, &it);
        }
        REQUIRE(tree->root);
        CHECK(item(tree->root)->key == 2);
        CHECK(tree->root->balance == 0);
        CHECK(tree->root->left->balance == 0);
        CHECK(tree->root->right->balance == 0);
        BTDestroy(tree, nullptr);
    }

    BT* empty = BTCreate(by_key, sizeof(Item));
    CHECK(BTFirst(empty) == nullptr);
    CHECK(BTLast(empty) == nullptr);
    CHECK(BTCount(empty) == 0);
    int32_t key = 1;
    CHECK(BTSearch(empty, &key) == nullptr);
    CHECK(BTDelete(empty, &key) == nullptr);
    BTDestroy(empty, nullptr);

    BT* tree = tree_of({5, 5});
    CHECK(BTCount(tree) == 2);
    CHECK(static_cast<Item*>(BTFirst(tree))->serial == 1);
    CHECK(BTNext(BTLast(tree)) == nullptr);
    CHECK(BTPrev(BTFirst(tree)) == nullptr);
    key = 4;
    CHECK(BTDelete(tree, &key) == nullptr);
    CHECK(BTCount(tree) == 2);
    BTDestroy(tree, nullptr);
}

TEST_CASE("deletion rebalances upwards only as far as the height changed")
{
    NoLeak leak;
    // 4 over 2 and 6, 6 over 5 and 7. Deleting 2 leaves 4 two levels
    // right-heavy with a sibling of balance 0: one rotation, height kept.
    BT* tree = tree_of({4, 2, 6, 5, 7});
    int32_t key = 2;
    REQUIRE(BTDelete(tree, &key));
    uint32_t nodes = 0;
    check_subtree(tree->root, nullptr, &nodes);
    CHECK(item(tree->root)->key == 6);
    CHECK(tree->root->balance == -1);
    CHECK(keys_in_order(tree) == std::vector<int32_t>{4, 5, 6, 7});
    BTDestroy(tree, nullptr);

    // 10 over 5 (3, 7 over 8) and 12 (13). Deleting 3 rotates at 5 with a
    // sibling leaning the same way, which lowers that subtree: the root,
    // left-heavy before, must come out even.
    tree = tree_of({10, 5, 12, 3, 7, 13, 8});
    REQUIRE(tree->root->balance == -1);
    key = 3;
    REQUIRE(BTDelete(tree, &key));
    nodes = 0;
    check_subtree(tree->root, nullptr, &nodes);
    CHECK(nodes == 6);
    CHECK(item(tree->root->left)->key == 7);
    CHECK(tree->root->balance == 0);
    CHECK(keys_in_order(tree) == std::vector<int32_t>{5, 7, 8, 10, 12, 13});
    BTDestroy(tree, nullptr);
}

namespace {
std::vector<int32_t> g_destroyed;
BT* g_dying;

int note_destroyed(void* elem)
{
    CHECK(g_dying->signature == BT_SIGNATURE_DESTROYED);
    g_destroyed.push_back(static_cast<Item*>(elem)->key);
    return 0;
}

void post_order(const BTNode* node, std::vector<int32_t>* keys)
{
    if (!node)
        return;
    post_order(node->left, keys);
    post_order(node->right, keys);
    keys->push_back(item(node)->key);
}

int sum_keys(void* arg, void* elem)
{
    *static_cast<int64_t*>(arg) += static_cast<Item*>(elem)->key;
    return 0;
}
}

TEST_CASE("destruction visits in post-order and callbacks get their arguments in order")
{
    NoLeak leak;
    BT* tree = tree_of({10, 20, 30, 40, 50, 25, 5});
    int64_t sum = 0;
    BTForEach(tree, sum_keys, &sum);
    CHECK(sum == 180);
    std::vector<int32_t> expected;
    post_order(tree->root, &expected);
    g_destroyed.clear();
    g_dying = tree;
    BTDestroy(tree, note_destroyed);
    CHECK(g_destroyed == expected);
}

TEST_CASE("an exhausted heap leaves the tree as it was")
{
    NoLeak leak;
    {
        AllAllocationsFail fail;
        CHECK(BTCreate(by_key, sizeof(Item)) == nullptr);
    }
    long made = fail_each_allocation([](bool) {
        BT* tree = BTCreate(by_key, sizeof(Item));
        if (!tree)
            return;
        Reference expected;
        std::map<int32_t, const Item*> where;
        for (int32_t serial = 0; serial < 12; ++serial) {
            Item it{serial * 7 % 5, serial, 0.0};
            const Item* stored = static_cast<const Item*>(BTInsert(tree, &it));
            if (stored) {
                expected.insert({it.key, serial});
                where[serial] = stored;
            }
            check_tree(tree, expected, where);
        }
        BTDestroy(tree, nullptr);
    });
    CHECK(made == 13);
}

TEST_CASE("the DLL exports the tree family")
{
    CHECK(missing_exports({"BTCreate", "BTDestroy", "BTInsert", "BTDelete", "BTSearch", "BTCount",
                           "BTFirst", "BTLast", "BTNext", "BTPrev", "BTForEach"}) == "");
}
