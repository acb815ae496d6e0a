#include "platform/decimal_text.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace rt::detail {

namespace {

Decimal normalised(bool negative, QString digits, int exponent) {
    int lead = 0;
    while (lead < digits.size() && digits[lead] == '0') {
        ++lead;
    }
    digits.remove(0, lead);
    exponent -= lead;
    while (!digits.isEmpty() && digits.back() == '0') {
        digits.chop(1);
    }
    if (digits.isEmpty()) {
        return {};
    }
    return {negative, digits, exponent};
}

// Keeps the first `keep` digits, rounding half away from zero on the digit after them.
Decimal roundAt(const Decimal& value, int keep) {
    if (value.isZero() || keep >= value.digits.size()) {
        return value;
    }
    if (keep < 0) {
        return {};
    }
    const bool up = value.digits[keep] >= QLatin1Char('5');
    QString kept = value.digits.left(keep);
    int exponent = value.exponent;
    if (up) {
        int i = kept.size() - 1;
        while (i >= 0 && kept[i] == '9') {
            kept[i] = '0';
            --i;
        }
        if (i >= 0) {
            kept[i] = QChar(kept[i].unicode() + 1);
        } else {
            kept.prepend('1');
            ++exponent;
        }
    }
    return normalised(value.negative, kept, exponent);
}

}  // namespace

Decimal exactDecimal(double value) {
    if (value == 0 || !std::isfinite(value)) {
        return {};
    }
    // 770 digits cover the longest exact expansion of a double, so glibc prints it exactly.
    std::vector<char> buffer(1024);
    std::snprintf(buffer.data(), buffer.size(), "%.770e", std::fabs(value));
    const QString text = QString::fromLatin1(buffer.data());
    const int e = text.indexOf('e');
    QString digits = text.left(e);
    digits.remove('.');
    return normalised(value < 0, digits, text.mid(e + 1).toInt());
}

Decimal roundSignificant(const Decimal& value, int digits) {
    return roundAt(value, digits);
}

Decimal roundFixed(const Decimal& value, int decimals) {
    return roundAt(value, value.exponent + 1 + decimals);
}

QString integerDigits(const Decimal& value) {
    if (value.isZero() || value.exponent < 0) {
        return QStringLiteral("0");
    }
    QString digits = value.digits.left(value.exponent + 1);
    return digits.leftJustified(value.exponent + 1, '0');
}

QString fractionDigits(const Decimal& value, int minDecimals) {
    QString fraction;
    if (!value.isZero()) {
        if (value.exponent < 0) {
            fraction = QString(-value.exponent - 1, '0') + value.digits;
        } else {
            fraction = value.digits.mid(value.exponent + 1);
        }
    }
    return fraction.leftJustified(minDecimals, '0');
}

}  // namespace rt::detail
