#pragma once

#include <QString>

#include <optional>

namespace rt::detail {

// A finite number as decimal digits: value = 0.d1d2d3... x 10^(exponent + 1), that is d1 stands
// at the power `exponent`. Zero has no digits.
struct Decimal {
    bool negative = false;
    QString digits;  // no leading or trailing zeros
    int exponent = 0;

    bool isZero() const { return digits.isEmpty(); }
};

// How a digit string ending in exactly 5 rounds.
enum class Ties { AwayFromZero, ToEven };

// Digits with the first one at the power `exponent`; leading and trailing zeros are dropped.
Decimal normalised(bool negative, QString digits, int exponent);

// The exact decimal expansion of a double (every double has a finite one).
Decimal exactDecimal(double value);

// An integer counting units of 10^-decimals, such as a Currency, as the number it stands for.
Decimal scaledDecimal(qint64 value, int decimals);

// The value times 10^decimals, when that is a whole number in the 64-bit range.
std::optional<qint64> scaledInteger(const Decimal& value, int decimals);

// The nearest double.
double toDouble(const Decimal& value);

// Rounded to that many significant digits, ties away from zero.
Decimal roundSignificant(const Decimal& value, int digits);

// Rounded to that many digits behind the decimal point.
Decimal roundFixed(const Decimal& value, int decimals, Ties ties = Ties::AwayFromZero);

// The digits before the decimal point ("0" when there are none) and after it, padded with zeros
// to at least `minDecimals` digits.
QString integerDigits(const Decimal& value);
QString fractionDigits(const Decimal& value, int minDecimals);

}  // namespace rt::detail
