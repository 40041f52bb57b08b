#include "vancorexml/main/parser/ValueMisfit.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <vector>

#include <QHash>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>
#include <xercesc/validators/datatype/ListDatatypeValidator.hpp>

#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/StaticObject.h"
#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/SimpleTypes.h"
#include "vancorexml/main/parser/TypeDescription.h"
#include "vancorexml/main/parser/XMLCharacters.h"

namespace {

using namespace SimpleTypes;
using MessageWords::Quote;
using xercesc::SchemaSymbols;

// Messages cut longer values, so none is proposed.
constexpr int LongestProposal = 60;
// In longer values, only lengths are checked.
constexpr int LongestValue = 1000;

constexpr std::array<const char*, 12> months{"January",
    "February",
    "March",
    "April",
    "May",
    "June",
    "July",
    "August",
    "September",
    "October",
    "November",
    "December"};

QString TimeZone()
{
    return QStringLiteral("(?:Z|[+-]\\d\\d:\\d\\d)?");
}

bool IsBlank(QChar unit)
{
    return unit == QLatin1Char(' ') || unit == QLatin1Char('\t') || unit == QLatin1Char('\n') ||
        unit == QLatin1Char('\r');
}

// Removes the white space of XML at both ends.
QString Trim(const QString& text)
{
    int start = 0;
    int end = text.size();
    while (start < end && IsBlank(text[start]))
        ++start;
    while (end > start && IsBlank(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

// Replaces each run of the white space of XML by one blank, and removes it at both ends.
QString Collapse(const QString& text)
{
    QString collapsed;
    for (const QChar unit : Trim(text)) {
        if (!IsBlank(unit))
            collapsed += unit;
        else if (!collapsed.endsWith(QLatin1Char(' ')))
            collapsed += QLatin1Char(' ');
    }
    return collapsed;
}

void FinishMatches();

// All threads share the cache: the destructor of an object of a thread would keep the library loaded until the thread
// ends.
struct Expressions {
    // The first match of the process constructs static objects of Qt. Exit handlers run in reverse order, so the
    // matches end before Qt destroys these objects.
    Expressions()
    {
        QRegularExpression(QStringLiteral("a")).match(QStringLiteral("a"));
        std::atexit(FinishMatches);
    }

    std::shared_mutex matching;  // each match holds it
    std::mutex mutex;
    QHash<QString, QRegularExpression> known;  // guarded by mutex
};

// Waits for the threads that match. Windows has stopped them.
void FinishMatches()
{
#if !defined(_WIN32)
    if (IsProcessEnding())
        const std::lock_guard lock(GetStaticObject<Expressions>().matching);
#endif
}

// Compiling an expression takes longer than matching it. The expressions of this file are few, so all are cached.
QRegularExpression Compile(const QString& expression)
{
    auto& expressions = GetStaticObject<Expressions>();
    const std::lock_guard lock(expressions.mutex);
    QRegularExpression& regex = expressions.known[expression];
    if (regex.pattern().isEmpty())
        regex.setPattern(QRegularExpression::anchoredPattern(expression));
    return regex;
}

// Returns the parts of the text that the groups of the expression match, or nothing if the whole text does not match.
// While the process ends, nothing matches.
std::optional<QStringList> Match(const QString& text, const QString& expression)
{
    const QRegularExpression regex = Compile(expression);
    const std::shared_lock lock(GetStaticObject<Expressions>().matching);
    if (IsProcessEnding())
        return std::nullopt;
    const QRegularExpressionMatch match = regex.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    QStringList parts = match.capturedTexts();
    while (parts.size() <= regex.captureCount())
        parts.append(QString());
    return parts;
}

// Compares without the case of letters.
bool IsOneOf(const QString& word, std::initializer_list<const char*> words)
{
    return std::any_of(words.begin(), words.end(), [&](const char* each) {
        return word.compare(QLatin1String(each), Qt::CaseInsensitive) == 0;
    });
}

// Returns the first character that is not in `allowed`, or an empty text.
QString FindForeign(const QString& text, QLatin1String allowed)
{
    for (int i = 0; i < text.size(); ++i) {
        if (!allowed.contains(text[i]))
            return text.mid(i, text[i].isHighSurrogate() ? 2 : 1);
    }
    return QString();
}

QString TwoDigits(const QString& number)
{
    return number.rightJustified(2, QLatin1Char('0'));
}

VString Number(int number)
{
    return VString::number(static_cast<std::int32_t>(number));
}

VString Count(const VString& number, const char* unit)
{
    return number + " " + unit + (number == "1" ? "" : "s");
}

int CountCharacters(const QString& text)
{
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](QChar unit) { return !unit.isLowSurrogate(); }));
}

int DaysOf(int month, int year)
{
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 ? (isLeap ? 29 : 28) : month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

// Describes the fault in the fields of a date. Returns an empty text if there is none.
VString DescribeDateFields(const QString& year, const QString& month, const QString& day)
{
    const int monthNumber = month.toInt();
    if (year.toInt() == 0)
        return "there is no year " + VString(year);
    if (monthNumber < 1 || monthNumber > 12)
        return "there is no month " + VString(month);
    if (day.toInt() < 1)
        return "there is no day " + VString(day);
    const int days = DaysOf(monthNumber, year.toInt());
    if (day.toInt() <= days)
        return VString();
    const VString name = months[static_cast<std::size_t>(monthNumber - 1)];
    return name + (monthNumber == 2 ? " " + VString(year) : VString()) + " has " + Number(days) + " days";
}

// Describes the fault in the fields of a time. Returns an empty text if there is none. Xerces allows the time 24:00:00
// and the leap second 60.
VString DescribeTimeFields(const QString& hour, const QString& minute, const QString& second)
{
    if (hour.toInt() > 24)
        return "there is no hour " + VString(hour);
    if (minute.toInt() > 59)
        return "there is no minute " + VString(minute);
    return second.toInt() > 60 ? "there is no second " + VString(second) : VString();
}

// Finds the fault of one value of an atomic type.
class MisfitFinder {
public:
    MisfitFinder(Type& type, const QString& text)
        : m_type(type),
          m_text(text),
          m_builtIn(*FindBuiltIn(type)),
          m_isWhole(IsWhole(type))
    {}

    VString Find() const;

private:
    VString FindInBoolean() const;
    VString FindInNumber() const;
    VString FindInWrittenNumber() const;
    VString FindGroups() const;
    VString FindAffix() const;
    VString FindInDate() const;
    VString FindInDateTime() const;
    VString FindInTime() const;
    VString FindInBase64() const;
    VString FindInHex() const;
    VString FindInName() const;
    VString FindInText() const;
    VString FindBounds() const;
    VString FindDigits() const;

    bool Fits(const QString& value) const { return value.size() <= LongestProposal && IsValid(m_type, VString(value)); }
    // True if the type of XML Schema allows the value.
    bool IsWellFormed(const QString& value) const
    {
        Type* const type = xercesc::DatatypeValidatorFactory::getBuiltInRegistry()->get(m_builtIn.name.data());
        return type && IsValid(*type, VString(value));
    }
    VString Is(const VString& reason) const
    {
        const bool isHex = m_builtIn.name == u"hexBinary";
        return "is not " +
            VString(m_isWhole ? "a whole number"
                    : isHex   ? "hexadecimal"
                              : m_builtIn.words) +
            ": " + reason;
    }
    // Returns advice to write the value, or an empty text if the type does not allow it.
    VString Write(const QString& value) const { return Fits(value) ? Is("write " + Quote(value)) : VString(); }

    Type& m_type;
    const QString m_text;
    const BuiltInType& m_builtIn;
    const bool m_isWhole;
};

VString MisfitFinder::Find() const
{
    const std::u16string_view name = m_builtIn.name;
    if (m_text.size() > LongestValue)
        return m_builtIn.kind == Kind::Text && IsWellFormed(m_text) ? FindInText() : VString();
    if (m_type.getType() == Type::Boolean)
        return FindInBoolean();
    if (m_builtIn.kind == Kind::Number)
        return FindInNumber();
    if (IsWellFormed(m_text))
        return m_builtIn.kind == Kind::Time ? FindBounds() : FindInText();
    if (name == u"date")
        return FindInDate();
    if (name == u"dateTime")
        return FindInDateTime();
    if (name == u"time")
        return FindInTime();
    if (name == u"base64Binary")
        return FindInBase64();
    if (name == u"hexBinary")
        return FindInHex();
    if (name == u"language")
        return Write(QString(m_text).replace(QLatin1Char('_'), QLatin1Char('-')));
    return FindInName();
}

VString MisfitFinder::FindInBoolean() const
{
    const bool isTrue = IsOneOf(m_text, {"true", "yes", "y", "on", "t", "1", "ja", "oui", "si", "wahr", "enabled"});
    if (!isTrue && !IsOneOf(m_text, {"false", "no", "n", "off", "f", "0", "nein", "non", "falsch", "disabled"}))
        return VString();
    const char* const names[] = {isTrue ? "true" : "false", isTrue ? "1" : "0"};
    for (const char* const value : names) {
        if (Fits(QLatin1String(value)))
            return (IsWellFormed(m_text) ? "is not allowed here: write " : "is not true or false: write ") +
                Quote(value);
    }
    return VString();
}

VString MisfitFinder::FindInNumber() const
{
    const std::optional<QStringList> fraction = Match(m_text, QStringLiteral("([+-]?\\d+)\\.(\\d*)"));
    // Zeros behind the point do no harm if the type is derived from xs:decimal.
    if (m_isWhole && fraction && !IsWellFormed(m_text)) {
        // In some languages "1.000" is a thousand.
        const QString& digits = fraction->at(2);
        const bool isZero = digits.count(QLatin1Char('0')) == digits.size() && digits.size() != 3;
        const VString advice = isZero ? Write(fraction->at(1)) : VString();
        return advice.IsEmpty() ? Is("digits after the point are not allowed") : advice;
    }
    if (!IsWellFormed(m_text))
        return FindInWrittenNumber();
    const VString bounds = FindBounds();
    return bounds.IsEmpty() ? FindDigits() : bounds;
}

// The value is not a number as XML Schema writes it.
VString MisfitFinder::FindInWrittenNumber() const
{
    for (const QChar minus : {QChar(0x2212), QChar(0x2013)}) {
        if (m_text.startsWith(minus) && Fits(QLatin1Char('-') + m_text.mid(1)))
            return Is("write '-' in place of " + Quote(QString(minus)));
    }
    if (const auto exponent = Match(m_text, QStringLiteral("[+-]?(?:\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)")))
        return Is("an exponent such as " + Quote(exponent->at(1)) + " is not allowed");
    if (Match(m_text, QStringLiteral("0[xX][0-9a-fA-F]+")))
        return Is("write it without '0x', in decimal digits");
    for (const char* const special : {"INF", "-INF", "NaN"}) {
        const QString lower = m_text.toLower().replace(QLatin1String("infinity"), QLatin1String("inf"));
        if (lower == QString::fromLatin1(special).toLower())
            return Write(QLatin1String(special));
    }
    if (Match(m_text, QStringLiteral("[+-]\\s+[\\d.]+")) && Fits(QString(m_text).remove(QLatin1Char(' '))))
        return Is("remove the blank");
    const bool isGroup = Match(m_text, QStringLiteral("[+-]?\\d{1,3},\\d{3}")).has_value();
    if (isGroup && !m_isWhole)
        return Is("write '.' before the decimals, and nothing between thousands");
    if (Match(m_text, QStringLiteral("[+-]?\\d*,\\d+")) && !isGroup) {
        if (m_isWhole)
            return Is("digits after a comma are not allowed");
        return Fits(QString(m_text).replace(QLatin1Char(','), QLatin1Char('.'))) ? Is("write '.' in place of ','")
                                                                                 : VString();
    }
    const VString groups = FindGroups();
    return groups.IsEmpty() ? FindAffix() : groups;
}

// Finds thousands in groups, as in "1,234.50" or "1 234".
VString MisfitFinder::FindGroups() const
{
    for (const QChar group : std::u16string_view(u",. '\u2019\u00A0\u202F")) {
        for (const QChar point : std::u16string_view(u".,")) {
            const QString expression =
                QStringLiteral("[+-]?\\d{1,3}(?:%1\\d{3})+(?:%2\\d+)?")
                    .arg(QRegularExpression::escape(QString(group)), QRegularExpression::escape(QString(point)));
            VString advice = group != point && Match(m_text, expression)
                ? Write(QString(m_text).remove(group).replace(point, QLatin1Char('.')))
                : VString();
            if (!advice.IsEmpty())
                return advice;
        }
    }
    return VString();
}

// Finds a unit or a currency before or behind the number.
VString MisfitFinder::FindAffix() const
{
    const auto parts = Match(m_text,
        QStringLiteral(
            "([\\p{L}\\p{Sc}%\u00B0\u00B5]{0,3})\\s*([+-]?\\d+(?:[.,]\\d+)?)\\s*([\\p{L}\\p{Sc}%\u00B0\u00B5]{0,3})"));
    if (!parts)
        return VString();
    const QString affix = parts->at(1) + parts->at(3);
    const bool hasBoth = !parts->at(1).isEmpty() && !parts->at(3).isEmpty();
    // These change the number.
    const bool isFactor = IsOneOf(affix,
        {"k",
            "m",
            "g",
            "t",
            "b",
            "x",
            "e",
            "kk",
            "mn",
            "bn",
            "tsd",
            "mio",
            "mrd",
            "mil",
            "tn",
            "ca",
            "max",
            "min",
            "not",
            "no"});
    if (hasBoth || affix.isEmpty() || isFactor)
        return VString();
    const QString number = parts->at(2);
    if (Fits(number))
        return Is("remove " + Quote(affix));
    const bool isDecimal = number.contains(QLatin1Char(',')) && !Match(number, QStringLiteral(".*,\\d{3}"));
    return isDecimal ? Write(QString(number).replace(QLatin1Char(','), QLatin1Char('.'))) : VString();
}

// The value must be well-formed.
VString MisfitFinder::FindBounds() const
{
    const Bounds bounds(m_type);
    const auto compare = [&](const VString& bound) {
        try {
            return m_type.compare(VString(m_text).utf16(), bound.utf16());
        } catch (const xercesc::XMLException&) {
            return 0;
        }
    };
    const bool isTime = m_builtIn.kind == Kind::Time && m_builtIn.name != u"duration";
    if (bounds.minimum && compare(*bounds.minimum) == -1) {
        return bounds.includesMinimum ? (isTime ? "is before " : "is less than ") + *bounds.minimum + ", the " +
                (isTime ? "earliest" : "smallest") + " value allowed"
                                      : (isTime ? "must be after " : "must be greater than ") + *bounds.minimum;
    }
    if (bounds.maximum && compare(*bounds.maximum) == 1) {
        return bounds.includesMaximum ? (isTime ? "is after " : "is greater than ") + *bounds.maximum + ", the " +
                (isTime ? "latest" : "largest") + " value allowed"
                                      : (isTime ? "must be before " : "must be less than ") + *bounds.maximum;
    }
    if (bounds.minimum && !bounds.includesMinimum && compare(*bounds.minimum) == 0 && !IsValid(m_type, VString(m_text)))
        return (isTime ? "must be after " : "must be greater than ") + *bounds.minimum;
    if (bounds.maximum && !bounds.includesMaximum && compare(*bounds.maximum) == 0 && !IsValid(m_type, VString(m_text)))
        return (isTime ? "must be before " : "must be less than ") + *bounds.maximum;
    return VString();
}

// The value must be well-formed.
VString MisfitFinder::FindDigits() const
{
    const auto parts = Match(m_text, QStringLiteral("[+-]?0*(\\d*)(?:\\.(\\d*?)(0*))?"));
    if (!parts)
        return VString();
    const std::optional<VString> fraction = Facet(m_type, SchemaSymbols::fgELT_FRACTIONDIGITS);
    const std::optional<VString> total = Facet(m_type, SchemaSymbols::fgELT_TOTALDIGITS);
    const int decimals = parts->at(2).size();
    // Zeros at the end do not count, but the reader sees them.
    const int written = decimals + parts->at(3).size();
    if (m_isWhole && decimals > 0)
        return Is("digits after the point are not allowed");
    if (fraction && decimals > fraction->toDouble()) {
        return "has " + Count(Number(written), "digit") + " after the point, but at most " + *fraction +
            (*fraction == "1" ? " is" : " are") + " allowed";
    }
    const int digits = parts->at(1).size() + (parts->at(1).isEmpty() ? 0 : decimals);
    if (total && digits > total->toDouble()) {
        return "has " + Count(Number(digits), "digit") + ", but at most " + *total + (*total == "1" ? " is" : " are") +
            " allowed";
    }
    return VString();
}

VString MisfitFinder::FindInDate() const
{
    if (const auto fields = Match(m_text, QStringLiteral("(\\d{4,9})-(\\d\\d)-(\\d\\d)") + TimeZone())) {
        const VString problem = DescribeDateFields(fields->at(1), fields->at(2), fields->at(3));
        const QString swapped = fields->at(1) + QLatin1Char('-') + fields->at(3) + QLatin1Char('-') + fields->at(2);
        const bool isSwapped = fields->at(2).toInt() > 12 && Fits(swapped);
        return problem.IsEmpty() ? VString() : Is(problem + (isSwapped ? "; write " + Quote(swapped) : VString()));
    }
    if (const auto parts = Match(m_text, QStringLiteral("(\\d{4}-\\d\\d-\\d\\d)[T ]\\d\\d:\\d\\d.*"))) {
        if (Fits(parts->at(1)))
            return "has a time, but only a date is allowed: write " + Quote(parts->at(1));
    }
    if (const auto parts = Match(m_text, QStringLiteral("(\\d{4})([./-]?)(\\d{1,2})\\2(\\d{1,2})"))) {
        const bool isFull = !parts->at(2).isEmpty() || m_text.size() == 8;
        return isFull ? Write(parts->at(1) + QLatin1Char('-') + TwoDigits(parts->at(3)) + QLatin1Char('-') +
                            TwoDigits(parts->at(4)))
                      : VString();
    }
    const auto parts = Match(m_text, QStringLiteral("(\\d{1,2})([./-]) ?(\\d{1,2})\\2 ?(\\d{4})"));
    if (!parts)
        return VString();
    const QString first = TwoDigits(parts->at(1));
    const QString second = TwoDigits(parts->at(3));
    QStringList dates{parts->at(4) + QLatin1Char('-') + second + QLatin1Char('-') + first};
    // With points, the day always stands first.
    if (parts->at(2) != QLatin1String(".") && first != second)
        dates.append(parts->at(4) + QLatin1Char('-') + first + QLatin1Char('-') + second);
    dates.erase(
        std::remove_if(dates.begin(), dates.end(), [&](const QString& date) { return !Fits(date); }), dates.end());
    return dates.isEmpty() ? VString()
                           : Is("write the year first, such as " + VString(dates.join(QLatin1String(" or "))));
}

VString MisfitFinder::FindInDateTime() const
{
    const QString full =
        QStringLiteral("(\\d{4,9})-(\\d\\d)-(\\d\\d)T(\\d\\d):(\\d\\d):(\\d\\d)(?:\\.\\d+)?") + TimeZone();
    if (const auto fields = Match(m_text, full)) {
        const VString date = DescribeDateFields(fields->at(1), fields->at(2), fields->at(3));
        const VString problem = date.IsEmpty() ? DescribeTimeFields(fields->at(4), fields->at(5), fields->at(6)) : date;
        return problem.IsEmpty() ? VString() : Is(problem);
    }
    if (Match(m_text, QStringLiteral("\\d{4}-\\d\\d-\\d\\d"))) {
        const QString example = m_text + QLatin1String("T00:00:00");
        return Fits(example) ? "has no time: write for example " + Quote(example) : VString();
    }
    const auto parts = Match(m_text,
        QStringLiteral("(\\d{4}-\\d\\d-\\d\\d)[Tt ] ?(\\d{1,2}):(\\d\\d)(:\\d\\d)?"
                       "(?:[.,](\\d+))? ?(?:(Z|z|UTC)|([+-]\\d\\d):?(\\d\\d))?"));
    if (!parts)
        return VString();
    const QString proposal = parts->at(1) + QLatin1Char('T') + TwoDigits(parts->at(2)) + QLatin1Char(':') +
        parts->at(3) + (parts->at(4).isEmpty() ? QStringLiteral(":00") : parts->at(4)) +
        (parts->at(5).isEmpty() ? QString() : QLatin1Char('.') + parts->at(5)) +
        QLatin1String(parts->at(6).isEmpty() ? "" : "Z") +
        (parts->at(7).isEmpty() ? QString() : parts->at(7) + QLatin1Char(':') + parts->at(8));
    const bool isOnlyBlank =
        QString(m_text).replace(10, 1, QLatin1Char('T')) == proposal && m_text[10] == QLatin1Char(' ');
    return isOnlyBlank && Fits(proposal) ? Is("write 'T' in place of the blank") : Write(proposal);
}

VString MisfitFinder::FindInTime() const
{
    if (const auto fields = Match(m_text, QStringLiteral("(\\d\\d):(\\d\\d):(\\d\\d)(?:\\.\\d+)?") + TimeZone())) {
        const VString problem = DescribeTimeFields(fields->at(1), fields->at(2), fields->at(3));
        return problem.IsEmpty() ? VString() : Is(problem);
    }
    const auto parts = Match(m_text, QStringLiteral("(\\d{1,2}):(\\d\\d)(:\\d\\d)?(?: ?([AaPp])\\.?[Mm]\\.?)?"));
    if (!parts)
        return VString();
    const QString half = parts->at(4).toLower();
    const int hour = parts->at(1).toInt();
    if (!half.isEmpty() && (hour < 1 || hour > 12))
        return VString();
    const int fullHour = half.isEmpty() ? hour : hour % 12 + (half == QLatin1String("p") ? 12 : 0);
    return Write(TwoDigits(QString::number(fullHour)) + QLatin1Char(':') + parts->at(2) +
        (parts->at(3).isEmpty() ? QStringLiteral(":00") : parts->at(3)));
}

VString MisfitFinder::FindInBase64() const
{
    if (m_text.contains(QLatin1Char('-')) || m_text.contains(QLatin1Char('_'))) {
        QString standard =
            QString(m_text).replace(QLatin1Char('-'), QLatin1Char('+')).replace(QLatin1Char('_'), QLatin1Char('/'));
        while (standard.size() % 4 != 0)
            standard += QLatin1Char('=');
        if (IsValid(m_type, VString(standard)))
            return Is("write '+' in place of '-', and '/' in place of '_'");
    }
    const QString foreign =
        FindForeign(m_text, QLatin1String("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= "));
    if (!foreign.isEmpty())
        return Is("it must not contain " + Quote(foreign));
    for (const char* const end : {"=", "=="}) {
        if (IsValid(m_type, VString(m_text + QLatin1String(end))))
            return Is(Quote(end) + " is missing at the end");
    }
    const int count = m_text.size() - m_text.count(QLatin1Char(' '));
    return count % 4 != 0 ? Is("it has " + Count(Number(count), "character") + ", not a multiple of 4") : VString();
}

VString MisfitFinder::FindInHex() const
{
    if (m_text.startsWith(QLatin1String("0x")) && IsValid(m_type, VString(m_text.mid(2))))
        return Is("remove '0x'");
    const QString foreign = FindForeign(m_text, QLatin1String("0123456789ABCDEFabcdef"));
    if (!foreign.isEmpty())
        return Is("it must not contain " + (foreign == QLatin1String(" ") ? VString("a blank") : Quote(foreign)));
    return m_text.size() % 2 == 1 ? Is("it has " + Count(Number(m_text.size()), "digit") + ", not an even number")
                                  : VString();
}

// The value is not a name as XML Schema defines it.
VString MisfitFinder::FindInName() const
{
    if (m_text.contains(QLatin1Char(' ')))
        return IsWellFormed(QString(m_text).remove(QLatin1Char(' '))) ? "must not contain a blank" : VString();
    if (m_text.isEmpty() || m_text[0].isHighSurrogate())
        return VString();
    const VString first = Quote(m_text.left(1));
    if (IsWellFormed(QLatin1Char('_') + m_text) && m_builtIn.name != u"QName")
        return "begins with " + first + ", but must begin with a letter or '_'";
    for (const QChar unit : m_text) {
        if (IsWellFormed(QString(m_text).remove(unit)))
            return "must not contain " + Quote(QString(unit));
    }
    return VString();
}

// The value must be well-formed.
VString MisfitFinder::FindInText() const
{
    const bool isBinary = m_builtIn.name == u"base64Binary" || m_builtIn.name == u"hexBinary";
    if (isBinary)
        return VString();
    const Lengths lengths(m_type);
    const int count = CountCharacters(m_text);
    const bool isExact = lengths.minimum && lengths.maximum && *lengths.minimum == *lengths.maximum;
    const bool isLong = lengths.maximum && count > lengths.maximum->toDouble();
    const bool isShort = lengths.minimum && m_text.size() < lengths.minimum->toDouble();
    if (isLong || isShort) {
        const VString limit = isLong ? *lengths.maximum : *lengths.minimum;
        return "has " + Count(Number(count), "character") + ", but " +
            (isExact         ? "exactly "
                    : isLong ? "at most "
                             : "at least ") +
            limit + (limit == "1" ? " is " : " are ") + (isLong && !isExact ? "allowed" : "needed");
    }
    if (FindPatterns(m_type).empty() || m_text.size() > LongestProposal)
        return VString();
    for (const QString& proposal : {m_text.toUpper(), m_text.toLower()}) {
        if (Fits(proposal))
            return "has letters in the wrong case: write " + Quote(proposal);
    }
    const QString joined = QString(m_text).remove(QLatin1Char(' '));
    return joined != m_text && Fits(joined) ? "must not contain blanks: write " + Quote(joined) : VString();
}

VString DescribeListMisfit(Type& type, const QString& text)
{
    const QStringList items = text.split(QLatin1Char(' '));
    Type& itemType = *static_cast<xercesc::ListDatatypeValidator&>(type).getItemTypeDTV();
    const QString separated = Collapse(QString(text)
                                           .replace(QLatin1Char(','), QLatin1Char(' '))
                                           .replace(QLatin1Char(';'), QLatin1Char(' '))
                                           .replace(QLatin1Char('|'), QLatin1Char(' ')));
    if (separated != text && separated.size() <= LongestProposal && IsValid(type, VString(separated)))
        return "must be separated by blanks: write " + Quote(separated);
    for (const QString& item : items) {
        if (IsValid(itemType, VString(item)))
            continue;
        VString misfit = DescribeMisfit(itemType, VString(item));
        if (misfit.IsEmpty()) {
            misfit = MessageWords::WithSuggestion(
                "is not " + DescribeType(itemType).words, FindNearestName(VString(item), CollectValues(itemType)));
        }
        return "contains " + Quote(item) + ", which " + misfit;
    }
    const Lengths lengths(type);
    const bool isLong = lengths.maximum && items.size() > lengths.maximum->toDouble();
    const bool isShort = lengths.minimum && items.size() < lengths.minimum->toDouble();
    if (!isLong && !isShort)
        return VString();
    const bool isExact = lengths.minimum && lengths.maximum && *lengths.minimum == *lengths.maximum;
    const VString limit = isLong ? *lengths.maximum : *lengths.minimum;
    return "has " + Count(Number(items.size()), "value") + ", but " +
        (isExact         ? "exactly "
                : isLong ? "at most "
                         : "at least ") +
        limit + (limit == "1" ? " is " : " are ") + (isLong && !isExact ? "allowed" : "needed");
}

// Returns an empty text if the union has too many members, or further facets.
VString DescribeUnionMisfit(Type& type)
{
    constexpr std::size_t MostMembers = 4;
    std::vector<VString> words;
    for (Type* const member : FindMembers(type)) {
        const VString described = DescribeType(*member).words;
        if (std::find(words.begin(), words.end(), described) == words.end())
            words.push_back(described);
        if (words.size() > MostMembers)
            return VString();
    }
    return words.size() < 2 || HasFacets(type) ? VString() : "is neither " + VString::join(words, ", nor ");
}

// Finds white space at an end of the value and invisible characters, without which the type would allow the value.
VString DescribeInvisible(Type& type, const QString& text)
{
    const QString trimmed = Trim(text);
    if (trimmed != text && !trimmed.isEmpty() && IsValid(type, VString(trimmed))) {
        const bool isBefore = IsBlank(text[0]);
        const bool isBehind = IsBlank(text[text.size() - 1]);
        return VString(isBefore && isBehind ? "begins and ends"
                       : isBefore           ? "begins"
                                            : "ends") +
            " with white space; remove it";
    }
    for (const QChar unit : {QChar(0xA0), QChar(0x202F), QChar(0x200B), QChar(0x200E), QChar(0xFEFF), QChar(0xAD)}) {
        if (text.contains(unit) && text.size() > 1 && IsValid(type, VString(QString(text).remove(unit)))) {
            return "contains the invisible character " + DescribeCharacter(unit.unicode()) + "; remove it";
        }
    }
    return VString();
}

}  // namespace

VString DescribeMisfit(xercesc::DatatypeValidator& type, const VString& value)
{
    // The parser leaves the white space of a union to its members.
    const bool isCollapsed =
        type.getType() == Type::List || (type.getWSFacet() == Type::COLLAPSE && type.getType() != Type::Union);
    const QString text = isCollapsed ? Collapse(value.ToQString()) : value.ToQString();
    if (text.isEmpty() || IsValid(type, VString(text)))
        return VString();
    VString invisible = text.size() <= LongestValue ? DescribeInvisible(type, text) : VString();
    if (!invisible.IsEmpty())
        return invisible;
    if (type.getType() == Type::List)
        return CollectValues(type).empty() ? DescribeListMisfit(type, text) : VString();
    const bool hasValues = type.getType() != Type::Boolean && !CollectValues(type).empty();
    if (hasValues)
        return VString();
    return type.getType() == Type::Union ? DescribeUnionMisfit(type) : MisfitFinder(type, text).Find();
}
