#include "zor_fm.h"

#include "../frame/zor_platform.h"

// Callers read DefaultDblFormat as text that runs on into LLDblFormat, so the
// two are placed one behind the other and only the second is terminated.
alignas(16) ZOR_ORDERED_DATA(1) wchar_t DefaultDblFormat[8] = {L'#', L'$', L'*', L'*',
                                                               L'.', L',', L'+', L'-'};
alignas(16) ZOR_ORDERED_DATA(2) wchar_t LLDblFormat[9] = L"#&*$.,+-";

wchar_t* GetDefaultDblFormat(void)
{
    return DefaultDblFormat;
}

wchar_t* GetLLDblFormat(void)
{
    return LLDblFormat;
}
