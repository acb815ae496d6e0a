#include "platform/engine/pg_functions.h"

#include "platform/engine/errors.h"
#include "platform/rt_error.h"

#include <QRegularExpression>

namespace engine::pg {

namespace {

// The calendar the runtime's dates keep to: serials of 1 Jan 100 to 31 Dec 9999, the last day
// taking any time that doesn't round to the next midnight.
constexpr double kFirstDay = -657434;
constexpr double kLastDay = 2958465;
constexpr double kSecondsPerDay = 86400;
constexpr double kLastSerial = kLastDay + 1 - 0.5 / kSecondsPerDay;

QString literal(const QString& text) {
    return "'" + QString(text).replace('\'', QLatin1String("''")) + "'";
}

// A double written so that the server reads back the very same value.
QString real(double value) {
    return literal(QString::number(value, 'g', 17)) + "::double precision";
}

QString sqlState(int number) {
    return number < 1000 ? QStringLiteral("OV%1").arg(number, 3, 10, QChar('0'))
                         : QStringLiteral("O%1").arg(number, 4, 10, QChar('0'));
}

// `message` is a PL/pgSQL expression; by default the runtime's text of the failure.
QString raise(int number, const QString& message = QString()) {
    return QStringLiteral("RAISE EXCEPTION USING ERRCODE = '%1', MESSAGE = %2")
        .arg(sqlState(number), message.isEmpty() ? literal(rt::errorText(number)) : message);
}

// The engine's text for a pattern with a [ that isn't closed, as a PL/pgSQL expression of the
// variable `pattern`.
QString patternErrorMessage() {
    const QString marker = QStringLiteral("\x01");
    const QString text =
        engine::error(SyntaxError, QStringLiteral("Invalid pattern string"), marker).description();
    const qsizetype at = text.indexOf(marker);
    return literal(text.left(at)) + " || pattern || " + literal(text.mid(at + marker.size()));
}

// Fills the {name} places of a definition.
QString filled(QString text) {
    text.replace(QLatin1String("{OVERFLOW}"), raise(rt::Overflow));
    text.replace(QLatin1String("{INVALID}"), raise(rt::InvalidProcedureCall));
    text.replace(QLatin1String("{DIVISION}"), raise(rt::DivisionByZero));
    text.replace(QLatin1String("{MISMATCH}"), raise(rt::TypeMismatch));
    text.replace(QLatin1String("{BAD_PATTERN}"), raise(SyntaxError, patternErrorMessage()));
    text.replace(QLatin1String("{FIRST_DAY}"), real(kFirstDay));
    text.replace(QLatin1String("{LAST_DAY}"), real(kLastDay));
    text.replace(QLatin1String("{LAST_SERIAL}"), real(kLastSerial));
    return text;
}

// Helpers first: the runtime's conversions, and its dates split into whole days and seconds. Their
// names lie outside the dialect_ prefix, so that no query of the dialect can call them.
const char* const kDefinitions[] = {
    // CLng and CInt: half to even, as the server's round of a double does; Overflow past the
    // type.
    R"sql(CREATE OR REPLACE FUNCTION engine_long(number double precision) RETURNS integer
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE rounded double precision := round(number);
BEGIN
    IF NOT (rounded >= -2147483648 AND rounded <= 2147483647) THEN
        {OVERFLOW};
    END IF;
    RETURN rounded::integer;
END $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION engine_short(number double precision) RETURNS integer
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE rounded double precision := round(number);
BEGIN
    IF NOT (rounded >= -32768 AND rounded <= 32767) THEN
        {OVERFLOW};
    END IF;
    RETURN rounded::integer;
END $$)sql",
    // A count of characters, which below `lowest` is an invalid argument.
    R"sql(CREATE OR REPLACE FUNCTION engine_count(number double precision, lowest integer)
RETURNS integer LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE count integer := engine_long(number);
BEGIN
    IF count < lowest THEN
        {INVALID};
    END IF;
    RETURN count;
END $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION engine_floor_div(a bigint, b bigint) RETURNS bigint
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT CASE WHEN a >= 0 THEN a / b ELSE -((-a + b - 1) / b) END
$$)sql",
    // A negative serial carries its time as a positive fraction (-1.25 is 29 Dec 1899 at 6:00),
    // and a time that rounds to midnight belongs to the next day on either side of the epoch.
    // The seconds round half away from zero; the server's round of a double would go to even.
    R"sql(CREATE OR REPLACE FUNCTION engine_day_seconds(serial double precision, OUT day bigint,
    OUT seconds bigint)
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    whole double precision;
    fraction double precision;
BEGIN
    IF NOT (serial > {FIRST_DAY} - 1::double precision AND serial < {LAST_SERIAL}) THEN
        {OVERFLOW};
    END IF;
    whole := trunc(serial);
    day := whole::bigint;
    fraction := abs(serial - whole) * 86400::double precision;
    seconds := floor(fraction)::bigint
        + CASE WHEN fraction - floor(fraction) >= 0.5::double precision THEN 1 ELSE 0 END;
    IF seconds >= 86400 THEN
        seconds := seconds - 86400;
        day := day + 1;
    END IF;
END $$)sql",
    // The seconds since the epoch's midnight, which, unlike serials, run evenly before it too.
    R"sql(CREATE OR REPLACE FUNCTION engine_moment(serial double precision) RETURNS bigint
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT day * 86400 + seconds FROM engine_day_seconds(serial)
$$)sql",
    // A computed moment back as a serial; off the calendar is an invalid argument, as DateSerial
    // has it.
    R"sql(CREATE OR REPLACE FUNCTION engine_serial(moment bigint) RETURNS double precision
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    day bigint := engine_floor_div(moment, 86400);
    fraction double precision := (moment - day * 86400)::double precision / 86400::double precision;
BEGIN
    IF day::double precision < {FIRST_DAY} OR day::double precision > {LAST_DAY} THEN
        {INVALID};
    END IF;
    IF day >= 0 THEN
        RETURN day::double precision + fraction;
    END IF;
    RETURN day::double precision - fraction;
END $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION engine_date(serial double precision) RETURNS date
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT DATE '1899-12-30' + day::integer FROM engine_day_seconds(serial)
$$)sql",
    // How far one step of an interval goes: a number of months, or else of seconds.
    R"sql(CREATE OR REPLACE FUNCTION engine_step(unit text, OUT in_months boolean, OUT size bigint)
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
BEGIN
    CASE lower(unit COLLATE "C")
        WHEN 'yyyy' THEN in_months := true; size := 12;
        WHEN 'q' THEN in_months := true; size := 3;
        WHEN 'm' THEN in_months := true; size := 1;
        WHEN 'y', 'd', 'w' THEN in_months := false; size := 86400;
        WHEN 'ww' THEN in_months := false; size := 7 * 86400;
        WHEN 'h' THEN in_months := false; size := 3600;
        WHEN 'n' THEN in_months := false; size := 60;
        WHEN 's' THEN in_months := false; size := 1;
        ELSE {INVALID};
    END CASE;
END $$)sql",
    // The month of a moment, counted from January of year 0.
    R"sql(CREATE OR REPLACE FUNCTION engine_month_index(moment bigint) RETURNS bigint
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT extract(year FROM d)::bigint * 12 + extract(month FROM d)::bigint - 1
    FROM (SELECT DATE '1899-12-30' + engine_floor_div(moment, 86400)::integer AS d) AS day
$$)sql",

    // Case mappings by ICU's root locale, whatever the database's own: they map the letters of
    // every script, and ß to SS, as the runtime does. The runtime lowers each letter by itself,
    // where ICU would make a word's last capital sigma a final one.
    R"sql(CREATE OR REPLACE FUNCTION dialect_ucase(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT upper(value COLLATE "und-x-icu") $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_lcase(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT lower(translate(value, 'Σ', 'σ') COLLATE "und-x-icu")
$$)sql",
    // Text without regard to case, as the runtime's case folding has it: lowercase, with the few
    // letters whose lowercase forms fold to another (final sigma, long s, the Greek symbol forms)
    // folded too.
    R"sql(CREATE OR REPLACE FUNCTION engine_fold(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT translate(lower(translate(value, 'Σ', 'σ') COLLATE "und-x-icu"),
        'ςſϐϑϕϖϰϱϵẛ' || chr(837) || chr(8126), 'σsβθφπκρεṡιι')
$$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_len(value text) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT length(value) $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_left(value text, count double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT left(value, engine_count(count, 0)) $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_right(value text, count double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT right(value, engine_count(count, 0)) $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_mid(value text, start double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT substr(value, engine_count(start, 1)) $$)sql",
    // The start is checked before the length, as the runtime does.
    R"sql(CREATE OR REPLACE FUNCTION dialect_mid(value text, start double precision,
    length double precision) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE place integer := engine_count(start, 1);
BEGIN
    RETURN substr(value, place, engine_count(length, 0));
END $$)sql",
    // Blanks only: tabs and line breaks stay, as in the runtime.
    R"sql(CREATE OR REPLACE FUNCTION dialect_trim(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT btrim(value, ' ') $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_ltrim(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT ltrim(value, ' ') $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_rtrim(value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT rtrim(value, ' ') $$)sql",
    // The runtime keeps the code's low 16 bits, so a negative Integer is a code past 32767. A
    // server's text holds no NUL character, so code 0 is refused rather than cut short.
    R"sql(CREATE OR REPLACE FUNCTION dialect_chr(code double precision) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE point integer := engine_short(code) & 65535;
BEGIN
    IF point = 0 OR point BETWEEN 55296 AND 57343 THEN
        {INVALID};
    END IF;
    RETURN chr(point);
END $$)sql",

    // Nz and IIf give back one of their values as it is, of whatever type the call's values
    // share; values of types with nothing in common (IIf(c, 1, 'a')) are the server's own type
    // error, as it can't return either one.
    R"sql(CREATE OR REPLACE FUNCTION dialect_nz(value anycompatible, otherwise anycompatible)
RETURNS anycompatible LANGUAGE sql IMMUTABLE AS $$ SELECT coalesce(value, otherwise) $$)sql",
    // The condition as a comparison gives it, as a number (True is -1, and any number but 0 is
    // true), or as text; Null is false.
    R"sql(CREATE OR REPLACE FUNCTION dialect_iif(condition boolean, if_true anycompatible,
    if_false anycompatible) RETURNS anycompatible LANGUAGE sql IMMUTABLE AS $$
    SELECT CASE WHEN condition THEN if_true ELSE if_false END
$$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_iif(condition double precision, if_true anycompatible,
    if_false anycompatible) RETURNS anycompatible LANGUAGE sql IMMUTABLE AS $$
    SELECT CASE WHEN condition <> 0 THEN if_true ELSE if_false END
$$)sql",
    // Text is True or False in any case, or a number; anything else is a type mismatch.
    R"sql(CREATE OR REPLACE FUNCTION engine_text_truth(condition text) RETURNS boolean
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    word text := lower(btrim(condition, E' \t\n\r\f\v') COLLATE "C");
    number double precision;
BEGIN
    IF word = 'true' THEN
        RETURN true;
    ELSIF word = 'false' THEN
        RETURN false;
    END IF;
    BEGIN
        number := word::double precision;
    EXCEPTION WHEN invalid_text_representation THEN
        {MISMATCH};
    END;
    RETURN number <> 0;
END $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_iif(condition text, if_true anycompatible,
    if_false anycompatible) RETURNS anycompatible LANGUAGE sql IMMUTABLE AS $$
    SELECT CASE WHEN engine_text_truth(condition) THEN if_true ELSE if_false END
$$)sql",
    // Operands rounded to Longs; the remainder takes the dividend's sign, and a divisor of -1
    // gives 0 even for the least Long, whose quotient has no Long.
    R"sql(CREATE OR REPLACE FUNCTION dialect_mod(dividend double precision,
    divisor double precision) RETURNS integer
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    a integer := engine_long(dividend);
    b integer := engine_long(divisor);
BEGIN
    IF b = 0 THEN
        {DIVISION};
    ELSIF b = -1 THEN
        RETURN 0;
    END IF;
    RETURN a % b;
END $$)sql",

    R"sql(CREATE OR REPLACE FUNCTION dialect_year(serial double precision) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT extract(year FROM engine_date(serial))::integer $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_month(serial double precision) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT extract(month FROM engine_date(serial))::integer $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_day(serial double precision) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT AS $$ SELECT extract(day FROM engine_date(serial))::integer $$)sql",
    // The date is taken in (Overflow off the calendar) before the interval is looked at, as the
    // embedded engine converts its arguments before the call. The number rounds half to even and
    // overflows past a Long; months keep the day of the month, or the month's last day if it is
    // shorter; any result off the calendar is an invalid argument.
    R"sql(CREATE OR REPLACE FUNCTION dialect_dateadd(unit text, number double precision,
    serial double precision) RETURNS double precision
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    start record := engine_day_seconds(serial);
    step record := engine_step(unit);
    steps bigint;
    shift bigint;
    month bigint;
    moved date;
BEGIN
    IF NOT (number > -2147483649::double precision AND number < 2147483648::double precision)
    THEN
        {OVERFLOW};
    END IF;
    steps := round(number)::bigint;
    IF NOT step.in_months THEN
        RETURN engine_serial(start.day * 86400 + start.seconds + steps * step.size);
    END IF;
    moved := DATE '1899-12-30' + start.day::integer;
    shift := greatest(least(steps * step.size, 120000), -120000);
    month := extract(year FROM moved)::bigint * 12 + extract(month FROM moved)::bigint - 1 + shift;
    IF month < 100 * 12 OR month >= 10000 * 12 THEN
        {INVALID};
    END IF;
    moved := (moved + make_interval(months => shift::integer))::date;
    RETURN engine_serial((moved - DATE '1899-12-30')::bigint * 86400 + start.seconds);
END $$)sql",
    // Counts the boundaries crossed from the first date to the second: of years, quarters or
    // months by the calendar; of weeks beginning on Sunday (serial 1) for "ww"; whole weeks of
    // days, cut toward zero, for "w"; of days at midnight, hours, minutes or seconds otherwise.
    // A count past a Long overflows.
    R"sql(CREATE OR REPLACE FUNCTION dialect_datediff(unit text, serial1 double precision,
    serial2 double precision) RETURNS integer
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    from_moment bigint := engine_moment(serial1);
    to_moment bigint := engine_moment(serial2);
    step record := engine_step(unit);
    count bigint;
BEGIN
    IF step.in_months THEN
        count := engine_floor_div(engine_month_index(to_moment), step.size)
            - engine_floor_div(engine_month_index(from_moment), step.size);
    ELSIF lower(unit COLLATE "C") = 'w' THEN
        count := (engine_floor_div(to_moment, 86400) - engine_floor_div(from_moment, 86400)) / 7;
    ELSIF lower(unit COLLATE "C") = 'ww' THEN
        count := engine_floor_div(to_moment - 86400, step.size)
            - engine_floor_div(from_moment - 86400, step.size);
    ELSE
        count := engine_floor_div(to_moment, step.size) - engine_floor_div(from_moment, step.size);
    END IF;
    IF count < -2147483648 OR count > 2147483647 THEN
        {OVERFLOW};
    END IF;
    RETURN count;
END $$)sql",

    // The dialect's LIKE pattern as a regular expression over lowercased text: * any run, ? one
    // character, # one digit, [a-c] one of a set or range, [!a] one not in it. A range whose ends
    // are the wrong way round holds nothing. Every other character, % and _ among them, stands
    // for itself, written as its code so that no character means anything to the server's
    // expressions.
    R"sql(CREATE OR REPLACE FUNCTION engine_like_expression(pattern text) RETURNS text
LANGUAGE plpgsql IMMUTABLE STRICT AS $$
DECLARE
    folded text := engine_fold(pattern);
    size integer := length(folded);
    expression text := '^';
    members text;
    negated boolean;
    i integer := 1;
    c integer;
    closing integer;
    ch text;
BEGIN
    WHILE i <= size LOOP
        ch := substr(folded, i, 1);
        IF ch = '*' THEN
            expression := expression || '.*';
        ELSIF ch = '?' THEN
            expression := expression || '.';
        ELSIF ch = '#' THEN
            expression := expression || '[0-9]';
        ELSIF ch = '[' THEN
            closing := strpos(substr(folded, i + 1), ']');
            IF closing = 0 THEN
                {BAD_PATTERN};
            END IF;
            closing := i + closing;
            c := i + 1;
            negated := c < closing AND substr(folded, c, 1) = '!';
            IF negated THEN
                c := c + 1;
            END IF;
            members := '';
            WHILE c < closing LOOP
                IF c + 2 < closing AND substr(folded, c + 1, 1) = '-' THEN
                    IF ascii(substr(folded, c, 1)) <= ascii(substr(folded, c + 2, 1)) THEN
                        members := members || engine_like_literal(substr(folded, c, 1)) || '-'
                            || engine_like_literal(substr(folded, c + 2, 1));
                    END IF;
                    c := c + 3;
                ELSE
                    members := members || engine_like_literal(substr(folded, c, 1));
                    c := c + 1;
                END IF;
            END LOOP;
            IF members <> '' THEN
                expression := expression || '[' || CASE WHEN negated THEN '^' ELSE '' END
                    || members || ']';
            ELSIF negated THEN
                expression := expression || '.';
            ELSE
                expression := expression || '[^\u0001-\U0010ffff]';
            END IF;
            i := closing;
        ELSE
            expression := expression || engine_like_literal(ch);
        END IF;
        i := i + 1;
    END LOOP;
    RETURN expression || '$';
END $$)sql",
    R"sql(CREATE OR REPLACE FUNCTION dialect_like(pattern text, value text) RETURNS boolean
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT engine_fold(value) ~ engine_like_expression(pattern)
$$)sql",
};

// Letters and digits of ASCII mean nothing in an expression by themselves; any other character is
// written as its code.
const char* const kLikeLiteral =
    R"sql(CREATE OR REPLACE FUNCTION engine_like_literal(ch text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT AS $$
    SELECT CASE
        WHEN ch ~ '^[a-z0-9]$' THEN ch
        WHEN ascii(ch) < 65536 THEN '\u' || lpad(to_hex(ascii(ch)), 4, '0')
        ELSE '\U' || lpad(to_hex(ascii(ch)), 8, '0')
    END
$$)sql";

}  // namespace

QStringList functionDefinitions() {
    QStringList definitions{filled(QString::fromUtf8(kLikeLiteral))};
    for (const char* definition : kDefinitions) {
        definitions.append(filled(QString::fromUtf8(definition)));
    }
    return definitions;
}

int errorNumber(const QString& sqlState) {
    static const QRegularExpression ours(QStringLiteral("^(?:OV(\\d{3})|O(\\d{4}))$"));
    const QRegularExpressionMatch match = ours.match(sqlState);
    if (!match.hasMatch()) {
        return 0;
    }
    return (match.captured(1).isEmpty() ? match.captured(2) : match.captured(1)).toInt();
}

}  // namespace engine::pg
