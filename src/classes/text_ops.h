// The operations the three string classes share, written once over the unit
// type. Each class derives from TextOps<itself, unit, layout> and states its
// differences by what it declares itself (hiding the mixin's member of that
// name), by its layout and by two constants:
//   kEmptyOnFailedReserve: a conversion whose reservation fails leaves an
//                    empty text instead of the old one;
//   kReplaceCopies:  Replace copies its arguments even when they lie outside
//                    the object's block.
// The mixin holds the layout's three fields and the one virtual operation,
// the destructor, so that an object is its pointer to that destructor and
// the fields in the layout's order. Copying copies the text.
//
// Common rules: nothing throws; an operation that cannot get memory leaves
// the text as it was. Every source argument may point into the object's own
// block. A negative count given with a text measures it up to its
// terminator, like -1.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

namespace zorlib {
namespace detail {

// True when two byte ranges overlap or touch, false when either is null.
bool blocks_overlap(const void* a, size_t asize, const void* b, size_t bsize);

// `capacity` counts the bytes of the block, terminator included.
template <class U>
struct SizedBlock {
    static constexpr bool kCapacityIsRoom = false;
    U* buffer = nullptr;
    uint32_t capacity = 0;
    uint32_t length = 0;  // units of text
};

// `capacity` counts room for text; the block has one unit more.
template <class U>
struct RoomBlock {
    static constexpr bool kCapacityIsRoom = true;
    U* buffer = nullptr;
    uint32_t length = 0;  // units of text
    uint32_t capacity = 0;
};

template <class Self, class U, class Layout>
class TextOps : public Layout {
public:
    virtual ~TextOps();

    // A null text releases the block.
    Self& operator=(const U* text) { Assign(text, -1); return self(); }
    Self& operator=(U unit) { Assign(&unit, 1); return self(); }
    // Units of text, the terminator not counted.
    uint32_t GetLength() const { return self().length; }
    // The text, or a shared empty text; never null.
    const U* GetStr() const;

    // Comparisons of the text with x: 0 when x is this object's own buffer;
    // a null x compares as the empty text against a non-empty object; an
    // empty object is below any non-empty x. The rest as the runtime's
    // comparison reports it, not normalised.
    int Compare(const U* x) const;
    int Compare(const Self& other) const { return Compare(other.GetStr()); }
    int CompareNoCase(const U* x) const;
    int CompareNoCase(const Self& other) const { return CompareNoCase(other.GetStr()); }
    // Over the shorter of n and the text; n 0 puts a non-empty object above x.
    int CompareN(const U* x, int n) const;
    int CompareNoCaseN(const U* x, int n) const;
    // 1 or 0. StartsWith compares over the shorter length, so "ab" starts
    // with "abc"; EndsWith wants all of x, so "ab" does not end with "cab".
    // A null or empty x gives 1, an empty object then 0.
    int StartsWith(const U* x) const;
    int StartsWith(const Self& x) const { return StartsWith(x.GetStr()); }
    int EndsWith(const U* x) const;
    int EndsWith(const Self& x) const { return EndsWith(x.GetStr()); }
    // Pointer into the buffer to the first occurrence at or after `start`
    // (negative counts as 0), or null.
    U* Find(const U* text, int start) const;
    // Position of the first unit that occurs in `set`, or -1.
    int FindOneOf(const U* set) const;

    // New objects; negative counts and positions count as 0, counts past the
    // end are cut.
    Self Left(int n) const;
    Self Right(int n) const;
    Self Mid(int start, int count) const;
    Self Mid(int start) const { return self().Mid(start, int(self().length) - start); }

    // A null text releases the block, a count of 0 empties and keeps it.
    void Assign(const U* text, int n);
    // A null text or a count of 0 does nothing.
    void Append(const U* text, int n = -1);

    Self& MakeLower();
    Self& MakeUpper();
    Self& Trim() { TrimRight(); return TrimLeft(); }
    Self& Trim(U ch) { TrimRight(ch); return TrimLeft(ch); }
    Self& TrimLeft();
    Self& TrimLeft(U ch);
    Self& TrimRight();
    Self& TrimRight(U ch);
    // Every occurrence, left to right, without overlap.
    Self& Remove(const U* text);
    Self& RemoveChars(const U* set);
    Self& KeepChars(const U* set);
    // Each run of `ch` becomes one `ch`.
    Self& RemoveRepeats(U ch);
    // Non-overlapping occurrences left to right; inserted text is not
    // searched again. An empty or null `to` removes.
    Self& Replace(const U* from, const U* to);
    // Units in `set` become `ch`; `ch` 0 removes them.
    Self& ReplaceChars(const U* set, U ch);
    // C escapes rewritten in place; an escape gives one unit of at most 0xFF.
    Self& Unescape();

    // Formats into a block sized by the format estimate; text that passes
    // the estimate is cut, never longer. A null format empties the text.
    // Arguments must not point into this object's block.
    Self& Format(const U* format, ...);
    Self& FormatV(const U* format, va_list args);
    // Fixed-point text; a negative precision gives six places. `trimZeros`
    // drops trailing zeros behind a decimal separator, then the separator
    // if nothing is left behind it: 100 stays "100", 2.50 gives "2.5".
    Self& FromDouble(double value, int precision, int trimZeros);
    Self& FromInt(int32_t value);
    Self& FromLong(int32_t value);
    Self& FromUInt(uint32_t value);
    Self& FromULong(uint32_t value);

    // Room for n units: the block grows to the exact size and never shrinks.
    // keep 0 drops the text; keep 1 cuts it to n. 0 when memory runs out or
    // the size does not fit 32 bits (the object then stays as it was).
    int Reserve(int n, int keep);
    // Writable room for n units and a terminator; null on exhaustion, and
    // also for n 0 on an object that has no block yet.
    U* GetBuffer(int n);
    // Ends writing: a negative n measures up to the first zero unit within
    // the room, a larger n is cut to the room.
    void ReleaseBuffer(int n = -1);
    // Hands the block over (null when there is none) and leaves the object
    // empty without one; the block goes back with zor_free.
    U* Detach();

protected:
    TextOps() = default;
    TextOps(const TextOps& other);
    TextOps(TextOps&& other) noexcept;
    TextOps& operator=(const TextOps& other) { copy_from(static_cast<const Self&>(other)); return *this; }
    TextOps& operator=(TextOps&& other) noexcept { take_over(static_cast<Self&>(other)); return *this; }

    Self& self() { return static_cast<Self&>(*this); }
    const Self& self() const { return static_cast<const Self&>(*this); }

    uint32_t room() const;
    size_t block_bytes() const;
    bool overlaps(const U* source, size_t units) const;
    void clear(bool release);
    void set_length(uint32_t n);
    // Reallocates to exactly n units and a terminator.
    bool take_block(uint32_t n);
    Self& copy_from(const Self& other);
    Self& take_over(Self& other);
    Self copy_of(const U* text, size_t units) const;
    // The counted setter of the class's own unit: as Assign, but a null text,
    // an empty one measured and a count of 0 all empty and keep the block.
    Self& set_counted(const U* text, int n);
    // When `units` of `source` lie in this object's block, runs redo(copy)
    // on a private copy (nothing when the copy cannot be had) and gives true.
    template <class Redo>
    bool redo_on_copy(const U* source, size_t units, Redo redo);

    template <class Compare3>
    int guarded_compare(const U* x, Compare3 compare) const;
    template <class CompareN3>
    int guarded_compare_n(const U* x, int n, CompareN3 compare) const;
    // Keeps the units for which keep(unit) holds, in place.
    template <class Keep>
    Self& keep_units(Keep keep);
    template <class Drop>
    Self& trim_left_while(Drop drop);
    template <class Drop>
    Self& trim_right_while(Drop drop);

    // Sets the text from `count` elements of `src` converted by `routine`
    // into room for (count + roomExtra) * roomFactor units; a negative count
    // measures. With `withTerminator` the source's terminator is converted
    // too, so that output which does not fit fails instead of being cut.
    template <class V>
    Self& convert_from(const V* src, int count, int64_t roomExtra, int64_t roomFactor,
                       bool withTerminator, int (*routine)(U*, const V*, int, int));

private:
    void replace_shorter(const U* from, size_t fromLen, const U* to, size_t toLen);
    void replace_longer(const U* from, size_t fromLen, const U* to, size_t toLen);
    template <class V>
    Self& number_text(void (*write)(V, U*), V value);
};

}
}
