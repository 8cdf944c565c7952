#include "fuzz.h"

#include <float.h>
#include <limits.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <windows.h>

namespace {

std::string g_testCase;
long        g_failedChecks;
bool        g_inLoop;
uint64_t    g_seed;

// Follows the running test case and counts failed checks, so that a loop
// knows which iteration failed and a crash report can name the case.
struct FuzzListener : doctest::IReporter {
    explicit FuzzListener(const doctest::ContextOptions&) {}
    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats&) override {}
    void test_case_start(const doctest::TestCaseData& data) override { g_testCase = data.m_name; }
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_end(const doctest::CurrentTestCaseStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData& data) override { g_failedChecks += data.m_failed; }
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};
REGISTER_LISTENER("zor_fuzz", 1, FuzzListener);

bool environment(const char* name, uint64_t* value)
{
    const char* text = getenv(name);
    if (!text || !*text)
        return false;
    *value = strtoull(text, nullptr, 0);
    return true;
}

// The family is the name of the test program behind "test_".
std::string family()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string name = path;
    name = name.substr(name.find_last_of("\\/") + 1);
    if (name.rfind("test_", 0) == 0)
        name = name.substr(5);
    return name.substr(0, name.rfind('.'));
}

// Regular runs are the same every time: the base seed comes from the name.
uint64_t seed_of(const std::string& name)
{
    uint64_t hash = 1469598103934665603ull;
    for (unsigned char c : name)
        hash = (hash ^ c) * 1099511628211ull;
    return hash;
}

}

int32_t FuzzRng::extreme()
{
    static const int32_t boundaries[] = {INT_MIN, INT_MIN + 1, -65536, -513, -512, -2, -1, 0, 1, 2, 3,
                                         255, 256, 511, 512, 513, 65535, 65536, INT_MAX - 1, INT_MAX};
    switch (below(4)) {
    case 0: return pick(boundaries);
    case 1: return int32_t(next());
    default: return between(-4, 40);
    }
}

double FuzzRng::number()
{
    static const double specials[] = {NAN, -NAN, INFINITY, -INFINITY, DBL_MAX, -DBL_MAX, DBL_MIN,
                                      4.9406564584124654e-324, -0.0, 0.0, 1e308, -1e308, 0.5, 2.5,
                                      -2.5, 1e15, 9007199254740993.0, 4294967295.0, -2147483648.0, 1e-7};
    switch (below(5)) {
    case 0: return pick(specials);
    case 1: {
        uint64_t bits = next();
        double value;
        memcpy(&value, &bits, sizeof value);
        return value;
    }
    case 2: return double(int32_t(next()) % 100000) / pick({1.0, 10.0, 100.0, 1000.0});
    default: return ldexp(double(next() >> 11), between(-80, 80)) * (chance(50) ? 1 : -1);
    }
}

std::wstring FuzzRng::text(uint32_t maxLength, const wchar_t* alphabet, bool zeros)
{
    static const wchar_t hostile[] = L"0123456789+-.,  #$*<&/^abcXYZ\t\n\"'()[]{}=!~%;:_\\"
                                     L"\x00A0\x1ABC\xD800\xDC00\xDBFF\xDFFF\xFFFF\xFEFF\x00E4\x20AC";
    const wchar_t* units = alphabet ? alphabet : hostile;
    const uint32_t count = uint32_t(wcslen(units));
    std::wstring result(below(maxLength + 1), L' ');
    for (wchar_t& unit : result)
        unit = zeros && chance(3) ? L'\0' : units[below(count)];
    return result;
}

const char* fuzz_test_case()
{
    return g_testCase.c_str();
}

std::string fuzz_replay()
{
    if (!g_inLoop)
        return {};
    char line[200];
    snprintf(line, sizeof line, "seed 0x%016llx; replay: ./build.sh fuzz 0 %s 0x%016llx",
             (unsigned long long)g_seed, family().c_str(), (unsigned long long)g_seed);
    return line;
}

void fuzz_loop(long iterations, const std::function<void(FuzzRng&)>& iteration)
{
    uint64_t only = 0, seconds = 0;
    const bool replay = environment("ZOR_FUZZ_SEED", &only);
    const bool timed = !replay && environment("ZOR_FUZZ_SECONDS", &seconds);
    uint64_t base = seed_of(g_testCase);
    if (timed)
        base ^= seed_of(std::to_string(GetTickCount64()) + std::to_string(GetCurrentProcessId()));
    const ULONGLONG end = GetTickCount64() + seconds * 1000;
    long done = 0;
    bool failed = false;
    g_inLoop = true;
    for (; replay ? done < 1 : timed ? GetTickCount64() < end : done < iterations; ++done) {
        g_seed = replay ? only : FuzzRng(base + uint64_t(done)).next();
        FuzzRng rng(g_seed);
        const long before = g_failedChecks;
        INFO(fuzz_replay());
        iteration(rng);
        if (g_failedChecks != before) {
            failed = true;
            ++done;
            break;
        }
    }
    g_inLoop = false;
    if (timed || replay || failed)
        printf("fuzz \"%s\": %ld iterations, %d failed\n", g_testCase.c_str(), done, failed ? 1 : 0);
}
