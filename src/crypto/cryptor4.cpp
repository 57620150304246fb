// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor4.h"

#include <QStringList>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "crypto/code_page.h"
#include "crypto/pgp_keys.h"
#include "crypto/secure_wipe.h"

namespace keeper {

namespace {

constexpr char16_t kAlphabet[] =
    u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
/// The square of a residue still fits a signed 32-bit number.
constexpr std::int32_t kLargestModulus = 46'340;
constexpr std::int32_t kPrimeLimit = 1'000;
/// The smallest product of two different primes above 255, 7 times 37.
constexpr std::int32_t kSmallestLimit = 259;
/// The code that a key is tried on, the largest that a password can hold.
constexpr std::int32_t kProbe = 255;

std::int32_t multiplied(std::int32_t a, std::int32_t b, std::int32_t modulus) {
    const std::int64_t product = std::int64_t{a} * b;
    if (product < INT32_MIN || product > INT32_MAX) {
        throw CryptorError(6, QStringLiteral("cCryptor4.Mult"), QStringLiteral("溢出"));
    }
    return static_cast<std::int32_t>(product % modulus);
}

std::int32_t power(std::int32_t base, std::int32_t exponent, std::int32_t modulus) {
    if (modulus == 0) {
        throw CryptorError(11, QStringLiteral("cCryptor4.Mult"), QStringLiteral("除数为零"));
    }
    std::int32_t result = 1;
    while (exponent >= 1) {
        while (exponent % 2 == 0) {
            base = multiplied(base, base, modulus);
            exponent /= 2;
        }
        result = multiplied(result, base, modulus);
        --exponent;
    }
    return result;
}

/// Three characters below 256 to four digits; what is missing gives no digit.
QString toDigits(QStringView text) {
    QString digits;
    digits.reserve((text.size() + 2) / 3 * 4);
    for (qsizetype i = 0; i < text.size(); i += 3) {
        const qsizetype count = std::min<qsizetype>(3, text.size() - i);
        unsigned bits = 0;
        for (qsizetype j = 0; j < 3; ++j) {
            bits = bits << 8U | (j < count ? text[i + j].unicode() : 0U);
        }
        for (qsizetype j = 0; j <= count; ++j) {
            digits += QChar(kAlphabet[bits >> (18 - 6 * j) & 63U]);
        }
    }
    return digits;
}

std::optional<unsigned> digitValue(QChar digit) {
    const qsizetype value = QStringView(kAlphabet).indexOf(digit);
    return value < 0 ? std::nullopt : std::optional(static_cast<unsigned>(value));
}

/// Four digits to three characters. A character needs both digits that its bits are in.
QString fromDigits(QStringView digits) {
    QString text;
    text.reserve((digits.size() + 3) / 4 * 3);
    for (qsizetype i = 0; i < digits.size(); i += 4) {
        std::array<std::optional<unsigned>, 4> values;
        for (qsizetype j = 0; j < 4 && i + j < digits.size(); ++j) {
            values[static_cast<std::size_t>(j)] = digitValue(digits[i + j]);
        }
        for (unsigned j = 0; j < 3; ++j) {
            if (values[j] && values[j + 1]) {
                const unsigned bits = *values[j] << 6U | *values[j + 1];
                text += QChar(static_cast<char16_t>(bits >> (4 - 2 * j) & 0xFFU));
            }
        }
    }
    return text;
}

bool isPrime(std::int32_t number) {
    for (std::int32_t divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0) {
            return false;
        }
    }
    return number >= 2;
}

/// Extended Euclidean algorithm; 0 when there is no inverse.
std::int32_t inverse(std::int32_t number, std::int32_t modulus) {
    std::int32_t r0 = modulus;
    std::int32_t r1 = number % modulus;
    std::int32_t t0 = 0;
    std::int32_t t1 = 1;
    while (r1 != 0) {
        const std::int32_t quotient = r0 / r1;
        r0 = std::exchange(r1, r0 - quotient * r1);
        t0 = std::exchange(t1, t0 - quotient * t1);
    }
    if (r0 != 1) {
        return 0;
    }
    return t0 < 0 ? t0 + modulus : t0;
}

/// Once and twice there and back; not a key that leaves the text readable or opens what it closed.
bool isUsable(const Cryptor4::Key& key) {
    const auto [e, d, n] = key;
    try {
        const std::int32_t once = power(kProbe, e, n);
        const std::int32_t twice = power(once, e, n);
        return e != d && once != kProbe && power(once, d, n) == kProbe &&
               power(power(twice, d, n), d, n) == kProbe;
    } catch (const CryptorError&) {
        return false;
    }
}

}  // namespace

Cryptor4::Cryptor4(CryptorHost& host, RandomFill random)
    : m_host(host), m_random(std::move(random)) {}

QString Cryptor4::Encode(const QString& text, std::int32_t exponent, std::int32_t modulus) {
    if (text.isEmpty() || exponent == 0 || modulus == 0) {
        return text;
    }
    QString numbers;
    const WipeGuard wipe(numbers);
    // A number has up to ten digits and a sign; growth would leave unwiped copies behind.
    numbers.reserve(text.size() * 12);
    try {
        for (const QChar character : text) {
            if (!numbers.isEmpty()) {
                numbers += u'+';
            }
            numbers += QString::number(power(ansiCode(character) % modulus, exponent, modulus));
        }
    } catch (const CryptorError& error) {
        showMultFailure(error);
        return QString();
    }
    return toDigits(numbers);
}

QString Cryptor4::Decode(const QString& text, std::int32_t exponent, std::int32_t modulus) {
    if (text.isEmpty() || exponent == 0 || modulus == 0) {
        return text;
    }
    QString numbers = fromDigits(text);
    const WipeGuard wipe(numbers);
    QString decoded;
    decoded.reserve(numbers.size());
    try {
        for (const QStringView piece : QStringView(numbers).split(u'+')) {
            bool isNumber = false;
            const int number = piece.toInt(&isNumber);
            if (!isNumber) {
                secureWipe(decoded);
                return QString();
            }
            const auto residue = static_cast<std::int32_t>(std::int64_t{number} % modulus);
            const std::int32_t code = power(residue, exponent, modulus);
            decoded += ansiCharacter(static_cast<std::uint8_t>(code % 256));
        }
    } catch (const CryptorError& error) {
        secureWipe(decoded);
        showMultFailure(error);
    }
    return decoded;
}

Cryptor4::Key Cryptor4::GenKey(std::int32_t limit) {
    if (limit != 0 && limit < kSmallestLimit) {
        throw std::invalid_argument("GenKey: the limit leaves no key");
    }
    for (;;) {
        const std::int32_t p = randomPrime();
        const std::int32_t q = randomPrime();
        const std::int32_t n = p * q;
        if (p == q || n <= kProbe || n > kLargestModulus || (limit != 0 && n > limit)) {
            continue;
        }
        const auto d = static_cast<std::int32_t>(randomBelow(static_cast<std::uint32_t>(n)));
        const std::int32_t e = inverse(d, (p - 1) * (q - 1));
        const Key key = {e, d, n};
        if (d > 1 && e > 1 && isUsable(key)) {
            m_lastKey = key;
            return key;
        }
    }
}

std::int32_t Cryptor4::Mult(std::int32_t base, std::int32_t exponent, std::int32_t modulus) {
    try {
        return power(base, exponent, modulus);
    } catch (const CryptorError& error) {
        showMultFailure(error);
        return 0;
    }
}

QString Cryptor4::RanPwd4PGP(std::int16_t minLength, std::int16_t maxLength) {
    if (minLength > maxLength || maxLength <= 0) {
        return QString();
    }
    const int shortest = std::max<int>(minLength, 0);
    const auto spread = static_cast<std::uint32_t>(maxLength - shortest + 1);
    const int length = shortest + static_cast<int>(randomBelow(spread));
    QString password;
    password.reserve(length);
    for (int i = 0; i < length; ++i) {
        password += ansiCharacter(static_cast<std::uint8_t>(1 + randomBelow(255)));
    }
    return password;
}

void Cryptor4::GetPGPKey(std::int16_t index, Key& key) {
    const int size = static_cast<int>(kPgpKeys.size());
    key = kPgpKeys[static_cast<std::size_t>((index % size + size) % size)];
}

std::uint32_t Cryptor4::randomBelow(std::uint32_t bound) {
    // Values at the ragged end of the range would favour small results: draw again.
    const std::uint32_t limit = UINT32_MAX - UINT32_MAX % bound;
    for (;;) {
        std::array<std::uint8_t, 4> bytes{};
        m_random(bytes);
        const std::uint32_t value =
            std::accumulate(bytes.begin(), bytes.end(), std::uint32_t{0},
                            [](std::uint32_t sum, std::uint8_t byte) { return sum << 8U | byte; });
        secureWipe(bytes.data(), bytes.size());
        if (value < limit) {
            return value % bound;
        }
    }
}

std::int32_t Cryptor4::randomPrime() {
    for (;;) {
        const auto number = static_cast<std::int32_t>(randomBelow(kPrimeLimit));
        if (isPrime(number)) {
            return number;
        }
    }
}

void Cryptor4::showMultFailure(const CryptorError& error) {
    m_host.showMessage(CryptorHost::Severity::Critical,
                       QStringLiteral("[%1]cCryptor4.Mult:\r\n%2")
                           .arg(QString::number(error.number()), error.description()));
}

}  // namespace keeper
