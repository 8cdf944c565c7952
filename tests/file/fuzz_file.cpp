#include "file_fixture.h"

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"

TEST_CASE("fuzz: file records under random calls on random bytes")
{
    TempDir dir;
    NoLeak leak;
    const std::wstring name = dir.file(L"z");
    fuzz_loop(400, [&](FuzzRng& rng) {
        std::string bytes;
        for (uint32_t n = rng.below(rng.chance(20) ? 3 : 300); n; --n)
            bytes += rng.pick("\xFF\xFE\r\n\0ab\xE9");
        put_file(name, bytes);
        const uint32_t encodings[] = {0, 1, 2, 3, 0xFFFFFFFFu}, sizes[] = {0, 1, 2, 3, 7, 64, 70000};
        const uint32_t bufSize = rng.pick(sizes);
        TestFile f(name, bufSize, rng.pick(encodings));
        for (int op = 0; op < 16; ++op) {
            const uint32_t len = rng.chance(10) ? uint32_t(rng.extreme()) : rng.below(40);
            const int kind = int(rng.below(6));
            CAPTURE(kind);
            CAPTURE(len);
            ZORStatus status = 0;
            CAPTURE(status);
            if (kind == 0 && len <= 100000) {
                Fenced<wchar_t> dst(len);
                status = ZORFileGetLine(&f.rec, dst.data(), len);
                if (!status) {
                    std::wstring line(dst.data());
                    CHECK(line.size() < len);
                    CHECK(line.find_first_of(L"\r\n") == std::wstring::npos);
                    CHECK(std::wstring(dst.data() + line.size(), len - line.size()) == std::wstring(len - line.size(), 0));
                }
            } else if (kind == 1 && len <= 100000) {
                Fenced<char> buf(len);
                uint32_t got = len;
                status = ZORFileGetBlock(&f.rec, buf.data(), &got);
                CHECK(got <= len);
            } else if (kind == 2) {
                // Far positions fail to seek; none may grow the file far.
                status = ZORFileSetPos(&f.rec, rng.chance(80) ? rng.below(400) : 0x80000000u + rng.below(9));
            } else if (kind == 3 || kind == 4) {
                Fenced<char> buf(len % 50);
                auto write = kind == 3 ? ZORFileWriteBlock : ZORFileAppendBlock;
                status = write(&f.rec, buf.data(), uint32_t(buf.size()));
            } else if (kind == 5) {
                Fenced<wchar_t> text(rng.text(30, nullptr, true));
                status = ZORFileWriteLine(&f.rec, text.data(), uint32_t(text.size() - 1));
            }
            const ZORStatus allowed[] = {ZOR_S_OK, ZOR_E_HANDLE_EOF, ZOR_E_INVALIDARG, 0x80070083u};
            CHECK(std::find(std::begin(allowed), std::end(allowed), status) != std::end(allowed));
            CHECK(f.rec.dwBufPos <= f.rec.dwBufFill);
            CHECK(f.rec.dwBufFill <= 2 * bufSize);
        }
    });
}
