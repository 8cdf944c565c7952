#include "file_fixture.h"

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"

namespace {
// Lines as a plain reader sees them: a line feed ends a line, carriage
// returns vanish, the end of the file ends a line that has begun, and a line
// is handed out in pieces of at most len-1 units.
std::wstring split_reference(const std::wstring& text, uint32_t len)
{
    std::wstring out;
    for (size_t start = 0; start < text.size();) {
        size_t end = std::min(text.find(L'\n', start), text.size());
        std::wstring line;
        for (size_t i = start; i < end; ++i)
            line += text[i] == L'\r' ? L"" : std::wstring(1, text[i]);
        for (size_t at = 0; at == 0 || at < line.size(); at += len - 1)
            out += line.substr(at, len - 1) + L'|';
        start = end + 1;
    }
    return out;
}
}

TEST_CASE("fuzz: random files read by line and by block as a plain reader would, then random calls")
{
    TempDir dir;
    NoLeak leak;
    const std::wstring name = dir.file(L"z");
    fuzz_loop(300, [&](FuzzRng& rng) {
        // Encoding 0 is narrow; every encoding but 1 and 2 reads wide units and knows no mark.
        const uint32_t encodings[] = {0, 1, 2, 2, 3, 0xFFFFFFFFu}, sizes[] = {0, 1, 2, 3, 7, 64, 70000};
        const uint32_t encoding = rng.pick(encodings);
        const bool narrow = encoding <= 1, marked = encoding == 2 && rng.chance(50);
        // Mostly other units than line ends, so that lines grow long enough to be cut.
        const std::wstring text = rng.text(rng.chance(10) ? 4 : 1500, narrow ? L"abcdefgh \r\n" : L"a\xE9\x4E2D\xFFFD\xD83D \r\n");
        const std::string bytes = (marked ? "\xFF\xFE"s : ""s) + (narrow ? std::string(text.begin(), text.end()) : wide_bytes(text));
        put_file(name, bytes);
        const uint32_t bufSize = rng.chance(40) ? rng.pick(sizes) : 1 + rng.below(rng.chance(80) ? 300 : 70000);
        const uint32_t len = 2 + rng.below(rng.chance(50) ? 12 : 299);
        CAPTURE(bufSize);
        CAPTURE(len);
        TestFile f(name, bufSize, encoding);
        CHECK(f.lines(len) == (bufSize ? split_reference(text, len) : L""));
        ZORFileSetPos(&f.rec, marked ? 2 : 0);
        std::string blocks;
        for (f.last = 0; !f.last;)
            blocks += f.block(1 + rng.below(500));
        CHECK(blocks == (bufSize ? bytes.substr(marked ? 2 : 0) : ""));

        // Then anything at all: statuses and the buffer stay within bounds.
        for (int op = 0; op < 16; ++op) {
            const uint32_t n = std::min(rng.chance(10) ? uint32_t(rng.extreme()) : rng.below(40), 70000u);
            const std::string junk(n % 50, 'j');
            CAPTURE(f.last);
            switch (rng.below(6)) {
            case 0: f.lines(n, 1); break;
            case 1: f.block(n); break;
            // Far positions fail to seek; none may grow the file far.
            case 2: f.last = ZORFileSetPos(&f.rec, rng.chance(80) ? rng.below(400) : 0x80000000u + rng.below(9)); break;
            case 3: f.last = ZORFileWriteBlock(&f.rec, junk.data(), uint32_t(junk.size())); break;
            case 4: f.last = ZORFileAppendBlock(&f.rec, junk.data(), uint32_t(junk.size())); break;
            default:
                Fenced<wchar_t> line(rng.text(30, nullptr, true));
                f.last = ZORFileWriteLine(&f.rec, line.data(), uint32_t(line.size() - 1));
            }
            const ZORStatus allowed[] = {ZOR_S_OK, ZOR_E_HANDLE_EOF, ZOR_E_INVALIDARG, 0x80070083u};
            CHECK(std::find(std::begin(allowed), std::end(allowed), f.last) != std::end(allowed));
            CHECK(f.rec.dwBufPos <= f.rec.dwBufFill);
            CHECK(f.rec.dwBufFill <= 2 * bufSize);
        }
    });
}
