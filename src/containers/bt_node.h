// The node of a tree and its element, which sits directly behind the header.
// Left and right are handled through a side index, so that every balancing
// step is written once for both mirror images.
#pragma once

#include "zor_bt.h"

namespace bt {

enum Side { kLeft = 0, kRight = 1 };

constexpr Side opposite(Side side) { return side == kLeft ? kRight : kLeft; }

// The balance a subtree has when it is heavier on `side`.
constexpr int32_t weight(Side side) { return side == kLeft ? -1 : 1; }

inline BTNode*& child(BTNode* node, Side side) { return side == kLeft ? node->left : node->right; }

inline void* element(const BTNode* node)
{
    return const_cast<BTNode*>(node) + 1;
}

inline BTNode* node_of(const void* elem)
{
    return const_cast<BTNode*>(static_cast<const BTNode*>(elem)) - 1;
}

}
