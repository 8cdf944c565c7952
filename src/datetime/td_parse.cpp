// Reading a date from text by a picture. The picture and the text are walked
// together: field letters take a field at the cursor, forgiving whatever
// stands in front of it, and every other unit must match the text exactly.
#include <wctype.h>

#include "td_calendar.h"

using namespace zor_td;

namespace {

enum Field { kDay, kMonth, kYear, kHour, kMinute, kSecond, kAmPm };

struct FieldLetter {
    wchar_t letter;
    Field field;
    int maxRun;  // letters beyond this start a repetition of the field
    // Where a number or a month name is stored, and the values it may take.
    uint16_t TDDate::*target;
    unsigned low, high;
};

const FieldLetter kLetters[] = {
    {L'd', kDay, 4, &TDDate::day, 1, 31},         {L'M', kMonth, 4, &TDDate::month, 1, 12},
    {L'y', kYear, 4, &TDDate::year, 0, 0},        {L'H', kHour, 2, &TDDate::hour, 0, 23},
    {L'h', kHour, 2, &TDDate::hour, 0, 11},       {L'm', kMinute, 2, &TDDate::minute, 0, 59},
    {L's', kSecond, 2, &TDDate::second, 0, 59},   {L't', kAmPm, 2, nullptr, 0, 0},
};

const FieldLetter* find_letter(wchar_t unit)
{
    for (const FieldLetter& entry : kLetters) {
        if (entry.letter == unit)
            return &entry;
    }
    return nullptr;
}

// Name buffers hold a run of at most this many units and the terminator.
constexpr int kNameUnits = 40;

struct NameList {
    LCTYPE first;
    int count;
};
const NameList kFullDayNames = {LOCALE_SDAYNAME1, 7};
const NameList kShortDayNames = {LOCALE_SABBREVDAYNAME1, 7};
const NameList kFullMonthNames = {LOCALE_SMONTHNAME1, 12};
const NameList kShortMonthNames = {LOCALE_SABBREVMONTHNAME1, 12};

// The decimal value of a digit, -1 for any other unit. Digits of other
// scripts that the runtime classes as such count by their folded value; one
// without a decimal value is no digit here.
int digit_value(wchar_t unit)
{
    if (!iswctype(unit, _DIGIT))
        return -1;
    if (unit >= L'0' && unit <= L'9')
        return unit - L'0';
    wchar_t folded = 0;
    if (FoldStringW(MAP_FOLDDIGITS, &unit, 1, &folded, 1) == 1 && folded >= L'0' && folded <= L'9')
        return folded - L'0';
    return -1;
}

int is_digit(wint_t unit)
{
    return digit_value(static_cast<wchar_t>(unit)) >= 0;
}

class PictureReader {
public:
    explicit PictureReader(const wchar_t* text) : m_cursor(text) { TDInit(&m_work); }

    bool read(const wchar_t* picture);
    const TDDate& result() const { return m_work; }

private:
    bool met(Field field) const { return (m_met & (1u << field)) != 0; }
    void read_field(const FieldLetter& entry, int run);
    unsigned read_number(int maxDigits);
    int read_name(int run, const NameList& shortNames, const NameList& fullNames);
    void read_am_pm(int run);
    void skip_until(int (*wanted)(wint_t));

    const wchar_t* m_cursor;
    TDDate m_work;
    unsigned m_met = 0;
    unsigned m_hoursToAdd = 0;
    bool m_error = false;
};

bool PictureReader::read(const wchar_t* picture)
{
    const wchar_t* p = picture;
    while (*p && !m_error) {
        if (*p == L'g') {
            ++p;
            continue;
        }
        const FieldLetter* entry = find_letter(*p);
        if (!entry) {
            if (*m_cursor != *p) {
                m_error = true;
                break;
            }
            ++m_cursor;
            ++p;
            continue;
        }
        if (met(entry->field)) {
            ++p;
            continue;
        }
        int run = 1;
        while (run < entry->maxRun && p[run] == *p)
            ++run;
        p += run;
        m_met |= 1u << entry->field;
        read_field(*entry, run);
    }

    if (!m_error && met(kAmPm)) {
        unsigned hour = m_work.hour + m_hoursToAdd;
        if (hour >= 24)
            m_error = true;
        else
            m_work.hour = static_cast<uint16_t>(hour);
    }
    if (met(kDay) && met(kMonth) && met(kYear) &&
        m_work.day > days_in_month(m_work.month, m_work.year))
        return false;
    return !m_error;
}

void PictureReader::read_field(const FieldLetter& entry, int run)
{
    if (entry.field == kAmPm) {
        read_am_pm(run);
        return;
    }
    if (entry.field == kYear) {
        m_work.year = static_cast<uint16_t>(run >= 3 ? read_number(4) : read_number(2) + 2000);
        return;
    }
    if (run >= 3 && entry.field == kDay) {
        // The names run from Monday, so the seventh place is Sunday, 0.
        m_work.dayOfWeek = static_cast<uint16_t>(read_name(run, kShortDayNames, kFullDayNames) % 7);
        return;
    }
    // Only the month reads a name from here on: the clock letters run to two.
    unsigned value = run >= 3 ? unsigned(read_name(run, kShortMonthNames, kFullMonthNames))
                              : read_number(2);
    if (value < entry.low || value > entry.high)
        m_error = true;
    m_work.*entry.target = static_cast<uint16_t>(value);
}

void PictureReader::skip_until(int (*wanted)(wint_t))
{
    while (*m_cursor && !wanted(*m_cursor))
        ++m_cursor;
}

unsigned PictureReader::read_number(int maxDigits)
{
    skip_until(is_digit);
    unsigned value = 0;
    for (int taken = 0; taken < maxDigits && is_digit(*m_cursor); ++taken)
        value = value * 10 + unsigned(digit_value(*m_cursor++));
    return value;
}

// The place of the matching name, from 1; 0 when none matches. A run of
// three letters reads an abbreviated name, four a full one.
int PictureReader::read_name(int run, const NameList& shortNames, const NameList& fullNames)
{
    const NameList& names = run == 3 ? shortNames : fullNames;
    int maxUnits = run == 3 ? 3 : kNameUnits - 1;
    skip_until(iswalpha);
    wchar_t taken[kNameUnits];
    int n = 0;
    while (n < maxUnits && *m_cursor && iswalnum(*m_cursor))
        taken[n++] = *m_cursor++;
    taken[n] = 0;

    for (int i = 0; i < names.count; ++i) {
        wchar_t name[kNameUnits];
        read_locale(names.first + LCTYPE(i), name, kNameUnits);
        if (_wcsicmp(name, taken) == 0)
            return i + 1;
    }
    return 0;
}

void PictureReader::read_am_pm(int run)
{
    skip_until(iswalpha);
    if (!*m_cursor) {
        if (run == 2)
            m_error = true;
        return;
    }
    wchar_t letter = *m_cursor++;
    if (letter == L'P' || letter == L'p')
        m_hoursToAdd = 12;
    else if (letter != L'A' && letter != L'a')
        m_error = true;
    if (run == 2 && !m_error) {
        if (*m_cursor == L'M' || *m_cursor == L'm')
            ++m_cursor;
        else
            m_error = true;
    }
}

}

TDDate* TDFromString(const wchar_t* text, const wchar_t* format, TDDate* date)
{
    wchar_t shortDate[100];
    if (!format) {
        read_locale(LOCALE_SSHORTDATE, shortDate, 100);
        format = shortDate;
    }
    PictureReader reader(text);
    if (!reader.read(format))
        return nullptr;
    *date = reader.result();
    return date;
}
