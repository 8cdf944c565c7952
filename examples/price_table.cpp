// ZORBaseUx64 from C++: a small table printed through one print mask. FSc
// cuts the mask once into constant text and placeholders; each line then
// fills the placeholders with FMFormatStr (text) or FMFormatDouble (numbers).
#include <fcntl.h>
#include <io.h>
#include <locale.h>
#include <stdio.h>

#include <string>
#include <vector>

#include <zorbase.h>

namespace {

struct Piece {
    int32_t kind; // FSC_CONSTANT or one of the placeholder codes
    std::wstring text;
};

std::vector<Piece> cut(const wchar_t* mask)
{
    std::vector<Piece> pieces;
    FScScanner scanner;
    // The scanner's buffer must hold the longest piece: the whole line.
    if (FScInit(&scanner, uint32_t(wcslen(mask) + 1)))
        return pieces;
    FScSetLine(&scanner, mask);
    for (int32_t kind; (kind = FScGetNextSym(&scanner)) != FSC_EOL;)
        pieces.push_back({kind, std::wstring(FScGetAlpha(&scanner), FScGetAlphaLen(&scanner))});
    FScRelease(&scanner);
    return pieces;
}

struct Row {
    const wchar_t* item;
    double qty, price;
};

} // namespace

int main()
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    TSSetLocale(LC_ALL, L"en-US");

    // Slashes: a text field of their width, longer texts cut; # a digit left
    // blank while it has nothing to show; $ a digit always shown.
    const std::vector<Piece> pieces = cut(L"/            / ### x #,###.$$ = ##,###.$$");
    const Row rows[] = {{L"Bolts M8", 250, 0.12}, {L"Hinge, steel", 12, 14.5},
                        {L"Cabinet door (oak)", 2, 1289.9}};
    for (const Row& row : rows) {
        const double numbers[] = {row.qty, row.price, row.qty * row.price};
        size_t next = 0;
        std::wstring line;
        for (const Piece& piece : pieces) {
            // Locale separators may be wider than their letter: room to spare.
            wchar_t out[128];
            int32_t len = int32_t(piece.text.size());
            if (piece.kind == FSC_INTEGER || piece.kind == FSC_DOUBLE)
                out[FMFormatDouble(nullptr, piece.text.c_str(), len, numbers[next++], out, nullptr)] = 0;
            else if (FScIsPlaceholder(piece.kind))
                FMFormatStr(piece.text.c_str(), len, row.item, out);
            else
                wcscpy(out, piece.text.c_str());
            line += out;
        }
        wprintf(L"%ls\n", line.c_str());
    }
    return 0;
}
