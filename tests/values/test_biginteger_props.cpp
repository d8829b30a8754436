// CBigInteger against __int128 arithmetic on seeded random integers of up to 36 digits.
#include "values/BigInteger.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace QzXmlLib16;

namespace {

typedef __int128 Int128;

std::string ToText(Int128 value) {
    if (value == 0) {
        return "0";
    }
    bool negative = value < 0;
    unsigned __int128 magnitude = negative ? -static_cast<unsigned __int128>(value) : value;
    std::string digits;
    while (magnitude != 0) {
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(magnitude % 10)));
        magnitude /= 10;
    }
    return negative ? "-" + digits : digits;
}

// A value of 1 to maxDigits random digits (leading zeros allowed) and a random sign.
Int128 RandomValue(std::mt19937_64& rng, int maxDigits) {
    int count = std::uniform_int_distribution<int>(1, maxDigits)(rng);
    std::uniform_int_distribution<int> digit(0, 9);
    Int128 value = 0;
    for (int i = 0; i < count; ++i) {
        value = value * 10 + digit(rng);
    }
    return (rng() & 1) != 0 ? -value : value;
}

const int kCases = 3000;

} // namespace

TEST(CBigIntegerPropertyTest, AdditionSubtractionAndOrderMatchInt128) {
    std::mt19937_64 rng(20261121);
    for (int i = 0; i < kCases; ++i) {
        Int128 a = RandomValue(rng, 36);
        Int128 b = (i % 7 == 0) ? -a : RandomValue(rng, 36);
        SCOPED_TRACE(ToText(a) + " , " + ToText(b));
        CBigInteger x(ToText(a).c_str());
        CBigInteger y(ToText(b).c_str());
        ASSERT_EQ(ToText(a + b), (x + y).ToString());
        ASSERT_EQ(ToText(a - b), (x - y).ToString());
        CBigInteger z(x);
        z += y;
        ASSERT_EQ(ToText(a + b), z.ToString());
        ASSERT_EQ(a < b, x < y);
        ASSERT_EQ(a > b, x > y);
        ASSERT_EQ(a <= b, x <= y);
        ASSERT_EQ(a >= b, x >= y);
        ASSERT_EQ(a == b, x == y);
        ASSERT_EQ(a != b, x != y);
    }
}

TEST(CBigIntegerPropertyTest, MultiplicationMatchesInt128) {
    std::mt19937_64 rng(7);
    for (int i = 0; i < kCases; ++i) {
        Int128 a = RandomValue(rng, 18);
        Int128 b = RandomValue(rng, 19);
        SCOPED_TRACE(ToText(a) + " * " + ToText(b));
        ASSERT_EQ(ToText(a * b),
                  (CBigInteger(ToText(a).c_str()) * CBigInteger(ToText(b).c_str())).ToString());
    }
}

// Quotients truncate towards zero and remainders follow the dividend, as in C++.
TEST(CBigIntegerPropertyTest, DivisionByPositiveDivisorsMatchesInt128) {
    std::mt19937_64 rng(42);
    for (int i = 0; i < kCases; ++i) {
        Int128 a = RandomValue(rng, 36);
        Int128 b = RandomValue(rng, (i % 3 == 0) ? 3 : 30);
        if (b < 0) {
            b = -b;
        }
        if (b == 0) {
            b = 1 + static_cast<Int128>(i);
        }
        SCOPED_TRACE(ToText(a) + " / " + ToText(b));
        CBigInteger x(ToText(a).c_str());
        CBigInteger y(ToText(b).c_str());
        ASSERT_EQ(ToText(a / b), (x / y).ToString());
        ASSERT_EQ(ToText(a % b), (x % y).ToString());
        CBigInteger q(x);
        q /= y;
        ASSERT_EQ(ToText(a / b), q.ToString());
        CBigInteger r(x);
        r %= y;
        ASSERT_EQ(ToText(a % b), r.ToString());
    }
}

TEST(CBigIntegerPropertyTest, IntConversionMatchesWithinRange) {
    std::mt19937_64 rng(99);
    for (int i = 0; i < kCases; ++i) {
        long long v = static_cast<long long>(static_cast<int>(rng()));
        ASSERT_EQ(v, static_cast<int>(CBigInteger(ToText(v).c_str())));
        long long small = static_cast<long long>(rng() % 4294967296ULL) * ((rng() & 1) ? -1 : 1);
        ASSERT_EQ(small, static_cast<long long>(CBigInteger(small)));
    }
}

// The root r of n satisfies r * r <= n < (r + 1) * (r + 1).
TEST(CBigIntegerPropertyTest, SquareRootIsTheFloorOfTheRoot) {
    std::mt19937_64 rng(314);
    for (int i = 0; i < 500; ++i) {
        Int128 n = RandomValue(rng, 36);
        if (n < 0) {
            n = -n;
        }
        if (n == 0) {
            continue;
        }
        SCOPED_TRACE(ToText(n));
        std::string rootText = CBigInteger(ToText(n).c_str()).SquareRoot().ToString();
        Int128 root = 0;
        for (char c : rootText) {
            root = root * 10 + (c - '0');
        }
        ASSERT_LE(root * root, n);
        ASSERT_GT((root + 1) * (root + 1), n);
    }
}
