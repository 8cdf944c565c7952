// Insertion and deletion. Both recurse on the link that leads to the current
// subtree and rebalance on the way back, and both keep every element where
// it is: nodes are relinked, element bytes are never copied.
#include "zor_bt.h"

#include <string.h>

#include "../frame/zor_alloc.h"
#include "bt_node.h"

using namespace bt;

namespace {

// Lifts the child on `side` into the place of the node in `link`.
void promote(BTNode** link, Side side)
{
    BTNode* node = *link;
    BTNode* lifted = child(node, side);
    BTNode* moved = child(lifted, opposite(side));
    child(node, side) = moved;
    if (moved)
        moved->up = node;
    child(lifted, opposite(side)) = node;
    lifted->up = node->up;
    node->up = lifted;
    *link = lifted;
}

// The node in `link` is two levels heavier on `heavy`. Rotates it back into
// balance; true when the subtree came out one level lower than before the
// rotation, which only a sibling of balance 0 (after a deletion) prevents.
bool rotate_heavy(BTNode** link, Side heavy)
{
    BTNode* node = *link;
    BTNode* lifted = child(node, heavy);
    int32_t w = weight(heavy);
    if (lifted->balance == -w) {
        BTNode* middle = child(lifted, opposite(heavy));
        node->balance = middle->balance == w ? -w : 0;
        lifted->balance = middle->balance == -w ? w : 0;
        middle->balance = 0;
        promote(&child(node, heavy), opposite(heavy));
        promote(link, heavy);
        return true;
    }
    promote(link, heavy);
    if (lifted->balance == 0) {
        node->balance = w;
        lifted->balance = -w;
        return false;
    }
    node->balance = 0;
    lifted->balance = 0;
    return true;
}

// The subtree on `side` of the node in `link` grew by one level; returns
// whether the whole subtree grew.
bool grown_on(BTNode** link, Side side)
{
    BTNode* node = *link;
    int32_t w = weight(side);
    if (node->balance == -w) {
        node->balance = 0;
        return false;
    }
    if (node->balance == 0) {
        node->balance = w;
        return true;
    }
    rotate_heavy(link, side);
    return false;
}

// The subtree on `side` of the node in `link` shrank by one level; returns
// whether the whole subtree shrank.
bool shrunk_on(BTNode** link, Side side)
{
    BTNode* node = *link;
    int32_t w = weight(side);
    if (node->balance == w) {
        node->balance = 0;
        return true;
    }
    if (node->balance == 0) {
        node->balance = -w;
        return false;
    }
    return rotate_heavy(link, opposite(side));
}

void* insert(BT* tree, BTNode** link, BTNode* parent, const void* elem, bool* grown)
{
    BTNode* node = *link;
    if (!node) {
        node = static_cast<BTNode*>(zor_malloc(sizeof(BTNode) + tree->elemSize));
        if (!node)
            return nullptr;
        node->balance = 0;
        node->left = nullptr;
        node->right = nullptr;
        node->up = parent;
        memcpy(element(node), elem, tree->elemSize);
        *link = node;
        *grown = true;
        ++tree->count;
        return element(node);
    }
    // Equal keys go left, so that the newest of equals comes first in order.
    Side side = tree->compare(elem, element(node)) > 0 ? kRight : kLeft;
    void* stored = insert(tree, &child(node, side), node, elem, grown);
    if (stored && *grown)
        *grown = grown_on(link, side);
    return stored;
}

// Unhooks the rightmost node of the subtree in `link`, rebalancing the
// right sides on the way back.
BTNode* detach_rightmost(BTNode** link, bool* shrunk)
{
    BTNode* node = *link;
    if (node->right) {
        BTNode* detached = detach_rightmost(&node->right, shrunk);
        if (*shrunk)
            *shrunk = shrunk_on(link, kRight);
        return detached;
    }
    *link = node->left;
    if (node->left)
        node->left->up = node->up;
    *shrunk = true;
    return node;
}

// Puts `heir` into the place of `node`, header and all.
void take_place(BTNode** link, BTNode* node, BTNode* heir)
{
    heir->balance = node->balance;
    heir->left = node->left;
    heir->right = node->right;
    heir->up = node->up;
    if (heir->left)
        heir->left->up = heir;
    if (heir->right)
        heir->right->up = heir;
    *link = heir;
}

bool remove(BT* tree, BTNode** link, const void* key, bool* shrunk)
{
    BTNode* node = *link;
    if (!node) {
        *shrunk = false;
        return false;
    }
    int order = tree->compare(key, element(node));
    if (order != 0) {
        Side side = order < 0 ? kLeft : kRight;
        bool removed = remove(tree, &child(node, side), key, shrunk);
        if (removed && *shrunk)
            *shrunk = shrunk_on(link, side);
        return removed;
    }
    if (!node->right || !node->left) {
        BTNode* only = node->left ? node->left : node->right;
        if (only)
            only->up = node->up;
        *link = only;
        *shrunk = true;
    } else {
        BTNode* heir = detach_rightmost(&node->left, shrunk);
        take_place(link, node, heir);
        if (*shrunk)
            *shrunk = shrunk_on(link, kLeft);
    }
    --tree->count;
    zor_free(node);
    return true;
}

}

void* BTInsert(BT* tree, const void* elem)
{
    bool grown = false;
    return insert(tree, &tree->root, nullptr, elem, &grown);
}

void* BTDelete(BT* tree, const void* key)
{
    bool shrunk = false;
    return remove(tree, &tree->root, key, &shrunk) ? const_cast<void*>(key) : nullptr;
}
