#include "filter.h"

#include <wchar.h>
#include <wctype.h>

namespace {

struct MomentForm {
    const wchar_t* picture;
    bool today;               // the text holds no date
    uint16_t step[3];         // day, minute, second of the span it names
};

// Longest forms first: a picture ignores what follows its last field.
const MomentForm kForms[] = {
    {L"yyyy-MM-dd HH:mm:ss", false, {0, 0, 1}}, {L"yyyy-MM-ddTHH:mm:ss", false, {0, 0, 1}},
    {L"yyyy-MM-dd HH:mm", false, {0, 1, 0}},    {L"yyyy-MM-ddTHH:mm", false, {0, 1, 0}},
    {L"yyyy-MM-dd", false, {1, 0, 0}},          {L"HH:mm:ss", true, {0, 0, 1}},
    {L"HH:mm", true, {0, 1, 0}},
};

// What stands between the fields: the separators of a text without its
// digits, or of a picture without its field letters.
std::wstring separators(const wchar_t* text, const wchar_t* fields)
{
    std::wstring kept;
    for (const wchar_t* at = text; *at; ++at)
        if (!wcschr(fields, *at))
            kept += *at;
    return kept;
}

} // namespace

std::wstring lower(std::wstring text)
{
    for (wchar_t& unit : text)
        unit = wchar_t(towlower(unit));
    return text;
}

bool read_moment(const std::wstring& text, TDDate& start, TDDate& end)
{
    for (const MomentForm& form : kForms) {
        TDDate read;
        TDInit(&read);
        // The picture reader passes over what stands before a field and
        // ignores what follows the last: only a text with the same
        // separators and nothing else is of this form.
        if (separators(text.c_str(), L"0123456789") != separators(form.picture, L"yMdHms") ||
            !TDFromString(text.c_str(), form.picture, &read))
            continue;
        if (form.today) {
            TDDate now;
            TDGetActTime(&now);
            TDSetInterval(&read, now.year, now.month, now.day, read.hour, read.minute, read.second, 0);
        }
        TDCopy(&start, &read);
        TDDate step;
        TDSetInterval(&step, 0, 0, form.step[0], 0, form.step[1], form.step[2], 0);
        TDCopy(&end, &read);
        TDAdd(&end, &step);
        return true;
    }
    return false;
}

bool read_levels(const std::wstring& text, std::wstring& levels)
{
    levels.clear();
    for (wchar_t unit : text) {
        wchar_t letter = wchar_t(towupper(unit));
        if (!wcschr(L"?DIWEA", letter) || letter == 0)
            return false;
        levels += letter;
    }
    return !levels.empty();
}

bool Filter::keeps(const Record& record) const
{
    if (record.stamped) {
        if (!levels.empty() && levels.find(record.stamp.letter) == std::wstring::npos)
            return false;
        if (hasSince && TDCmp(&record.stamp.time, &since) < 0)
            return false;
        if (hasUntil && TDCmp(&record.stamp.time, &until) >= 0)
            return false;
    }
    if (grep.empty())
        return true;
    for (const std::wstring& line : record.lines)
        if (lower(line).find(grep) != std::wstring::npos)
            return true;
    return false;
}
