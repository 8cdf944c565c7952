#include "zor_bt.h"

#include "../frame/zor_alloc.h"
#include "bt_node.h"

using namespace bt;

namespace {

void destroy_subtree(BTNode* node, BTDestroyFn destroy)
{
    if (!node)
        return;
    destroy_subtree(node->left, destroy);
    destroy_subtree(node->right, destroy);
    if (destroy)
        destroy(element(node));
    zor_free(node);
}

void visit_in_order(BTNode* node, BTVisitFn fn, void* arg)
{
    for (; node; node = node->right) {
        visit_in_order(node->left, fn, arg);
        fn(arg, element(node));
    }
}

BTNode* outermost(BTNode* node, Side side)
{
    while (child(node, side))
        node = child(node, side);
    return node;
}

void* end_element(const BT* tree, Side side)
{
    return tree->root ? element(outermost(tree->root, side)) : nullptr;
}

// The neighbour on `side` in order: the nearest node of that child's subtree,
// else the first ancestor reached from the other side.
void* step(const void* elem, Side side)
{
    BTNode* node = node_of(elem);
    if (child(node, side))
        return element(outermost(child(node, side), opposite(side)));
    while (node->up && child(node->up, side) == node)
        node = node->up;
    return node->up ? element(node->up) : nullptr;
}

}

BT* BTCreate(BTCompareFn compare, uint32_t elemSize)
{
    BT* tree = static_cast<BT*>(zor_malloc(sizeof(BT)));
    if (!tree)
        return nullptr;
    tree->signature = BT_SIGNATURE;
    tree->elemSize = elemSize;
    tree->count = 0;
    tree->root = nullptr;
    tree->compare = compare;
    return tree;
}

void BTDestroy(BT* tree, BTDestroyFn destroy)
{
    tree->signature = BT_SIGNATURE_DESTROYED;
    destroy_subtree(tree->root, destroy);
    zor_free(tree);
}

void* BTSearch(const BT* tree, const void* key)
{
    BTNode* node = tree->root;
    while (node) {
        int order = tree->compare(key, element(node));
        if (order == 0)
            return element(node);
        node = order < 0 ? node->left : node->right;
    }
    return nullptr;
}

uint32_t BTCount(const BT* tree)
{
    return tree->count;
}

void* BTFirst(const BT* tree)
{
    return end_element(tree, kLeft);
}

void* BTLast(const BT* tree)
{
    return end_element(tree, kRight);
}

void* BTNext(const void* elem)
{
    return step(elem, kRight);
}

void* BTPrev(const void* elem)
{
    return step(elem, kLeft);
}

void BTForEach(BT* tree, BTVisitFn fn, void* arg)
{
    visit_in_order(tree->root, fn, arg);
}
