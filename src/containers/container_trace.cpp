// The two containers that can dump themselves for diagnosis. They write
// through the library's own trace object, so that a process that never
// started it gets nothing and pays a few loads per line.
#include "zor_bt.h"
#include "zor_dl.h"
#include "zor_trace.h"

#include <string.h>

#include "bt_node.h"

namespace {

constexpr int32_t kDumpLevel = 5;
constexpr uint32_t kTreeFacility = 18;

// The lines show pointers as 32 bits, enough to tell a tree's nodes apart;
// the value handed to %lx must be 32 bits wide itself.
unsigned long low32(const void* p)
{
    return static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p) & 0xFFFFFFFFu);
}

wchar_t balance_mark(int32_t balance)
{
    return balance < 0 ? L'<' : balance > 0 ? L'>' : L'-';
}

// Pre-order: each node, then its left subtree, then its right one. The
// empty text takes a width of two blanks a level as the indent.
void trace_subtree(TraceObject* obj, const BTNode* node, int32_t depth, const wchar_t* label)
{
    if (!node)
        return;
    TraceVAF(obj, kDumpLevel, kTreeFacility,
             L"%02d-%s: %*.*s N:%08lx L:%08lx R:%08lx U:%08lx B:%c", depth, label, 2 * depth,
             2 * depth, L"", low32(node), low32(node->left), low32(node->right), low32(node->up),
             balance_mark(node->balance));
    trace_subtree(obj, node->left, depth + 1, L"Left");
    trace_subtree(obj, node->right, depth + 1, L"Rght");
}

}

void BTTrace(const BT* tree)
{
    TraceObject* obj = GetTraceObj();
    TraceVAF(obj, kDumpLevel, kTreeFacility, L"ROOT: %08lx Anz:%d", low32(tree->root),
             static_cast<int32_t>(tree->count));
    trace_subtree(obj, tree->root, 0, L"ROOT");
}

void DLListElements(const DLHeader* header)
{
    TraceObject* obj = GetTraceObj();
    size_t shown = header->nElemSize < 4 ? static_cast<size_t>(header->nElemSize) : 4;
    int32_t number = 0;
    for (const DLElement* element = header->pFirst; element; element = element->pNext) {
        // A shorter value is read only as far as it goes; the rest is 0.
        int32_t first = 0;
        memcpy(&first, element->pValue, shown);
        TraceVA(obj, kDumpLevel, L"Element:%d - %d\n", ++number, first);
    }
}
