#pragma once

#include <QString>

namespace rt::detail {

// A finite number as decimal digits: value = 0.d1d2d3... x 10^(exponent + 1), that is d1 stands
// at the power `exponent`. Zero has no digits.
struct Decimal {
    bool negative = false;
    QString digits;  // no leading or trailing zeros
    int exponent = 0;

    bool isZero() const { return digits.isEmpty(); }
};

// The exact decimal expansion of a double (every double has a finite one).
Decimal exactDecimal(double value);

// Rounded to that many significant digits, ties away from zero.
Decimal roundSignificant(const Decimal& value, int digits);

// Rounded to that many digits behind the decimal point, ties away from zero.
Decimal roundFixed(const Decimal& value, int decimals);

// The digits before the decimal point ("0" when there are none) and after it, padded with zeros
// to at least `minDecimals` digits.
QString integerDigits(const Decimal& value);
QString fractionDigits(const Decimal& value, int minDecimals);

}  // namespace rt::detail
