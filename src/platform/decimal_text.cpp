#include "platform/decimal_text.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

namespace rt::detail {

namespace {

bool roundsUp(const Decimal& value, int keep, Ties ties) {
    const QChar next = value.digits[keep];
    const bool tie = next == QLatin1Char('5') && keep + 1 == value.digits.size();
    if (tie && ties == Ties::ToEven) {
        return keep > 0 && value.digits[keep - 1].digitValue() % 2 == 1;
    }
    return next >= QLatin1Char('5');
}

// Keeps the first `keep` digits, rounding on the digits after them.
Decimal roundAt(const Decimal& value, int keep, Ties ties) {
    if (value.isZero() || keep >= value.digits.size()) {
        return value;
    }
    if (keep < 0) {
        return {};
    }
    const bool up = roundsUp(value, keep, ties);
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

Decimal scaledDecimal(qint64 value, int decimals) {
    // Negated as unsigned, so that the lowest value has a magnitude too.
    const quint64 magnitude = value < 0 ? 0 - static_cast<quint64>(value) : value;
    const QString digits = QString::number(magnitude);
    return normalised(value < 0, digits, digits.size() - 1 - decimals);
}

std::optional<qint64> scaledInteger(const Decimal& value, int decimals) {
    if (value.isZero()) {
        return 0;
    }
    const int places = value.exponent + 1 + decimals;  // digits of the scaled whole number
    if (places < value.digits.size() || places > std::numeric_limits<qint64>::digits10 + 1) {
        return std::nullopt;
    }
    const quint64 magnitude = value.digits.leftJustified(places, '0').toULongLong();
    const quint64 limit = static_cast<quint64>(std::numeric_limits<qint64>::max()) + value.negative;
    if (magnitude > limit) {
        return std::nullopt;
    }
    return static_cast<qint64>(value.negative ? 0 - magnitude : magnitude);
}

double toDouble(const Decimal& value) {
    if (value.isZero()) {
        return 0;
    }
    const QString sign = value.negative ? QStringLiteral("-") : QString();
    return (sign + "0." + value.digits + "e" + QString::number(value.exponent + 1)).toDouble();
}

Decimal roundSignificant(const Decimal& value, int digits) {
    return roundAt(value, digits, Ties::AwayFromZero);
}

Decimal roundFixed(const Decimal& value, int decimals, Ties ties) {
    return roundAt(value, value.exponent + 1 + decimals, ties);
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
